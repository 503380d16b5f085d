#include "shell/FindBar.h"

#include "shell/BarParts.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QToolButton>

namespace korvel {

FindBar::FindBar(QWidget* parent) : QWidget(parent), text_(new QLineEdit(this)) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(2, 2, kBarRightMargin, 2);
    layout->setSpacing(1);
    towardsStart_ = MakeBarButton(QStringLiteral("▲"), QStringLiteral("前を検索"), this);
    towardsEnd_ = MakeBarButton(QStringLiteral("▼"), QStringLiteral("次を検索"), this);
    close_ = MakeBarButton(QStringLiteral("×"), QStringLiteral("閉じる"), this);
    layout->addWidget(text_, 1);
    layout->addSpacing(2);
    layout->addWidget(towardsStart_);
    layout->addWidget(towardsEnd_);
    case_ = new CaseButtons(this, layout);
    layout->addSpacing(4);
    layout->addWidget(close_);

    connect(towardsStart_, &QToolButton::clicked, this, &FindBar::findTowardsStart);
    connect(towardsEnd_, &QToolButton::clicked, this, &FindBar::findTowardsEnd);
    connect(close_, &QToolButton::clicked, this, &FindBar::closeRequested);
    text_->installEventFilter(this);
}

bool FindBar::eventFilter(QObject* watched, QEvent* event) {
    if (watched == text_ && HandleBarKey(
                                event,
                                [this] {
                                    // The match is selected in the text, but the typing stays here:
                                    // a second Enter finds the next one instead of typing over this
                                    // one.
                                    emit findTowardsEnd();
                                    text_->setFocus();
                                },
                                [this] { emit closeRequested(); }))
        return true;
    return QWidget::eventFilter(watched, event);
}

} // namespace korvel
