#include "shell/ReplaceBar.h"

#include "shell/BarParts.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QToolButton>

namespace korvel {

ReplaceBar::ReplaceBar(QWidget* parent)
    : QWidget(parent), find_(new QLineEdit(this)), replacement_(new QLineEdit(this)) {
    find_->setPlaceholderText(QStringLiteral("置換元"));
    replacement_->setPlaceholderText(QStringLiteral("置換後"));
    close_ = MakeBarButton(QStringLiteral("×"), QStringLiteral("閉じる"), this);
    next_ = MakeBarButton(QStringLiteral("次"), QStringLiteral("次を検索"), this);
    replace_ = MakeBarButton(QStringLiteral("置"), QStringLiteral("置換して次を検索"), this);
    replaceAll_ = MakeBarButton(QStringLiteral("全"), QStringLiteral("すべて置換"), this);

    // The boxes share the first column, so they end at the same place; the buttons of each row
    // stand right-aligned in the second.
    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(2, 2, kBarRightMargin, 2);
    layout->setHorizontalSpacing(3);
    layout->setVerticalSpacing(1);
    layout->addWidget(find_, 0, 0);
    layout->addWidget(replacement_, 1, 0);
    auto* upper = new QHBoxLayout;
    upper->setSpacing(1);
    upper->addStretch();
    case_ = new CaseButtons(this, upper);
    upper->addSpacing(4);
    upper->addWidget(close_);
    auto* lower = new QHBoxLayout;
    lower->setSpacing(1);
    lower->addStretch();
    lower->addWidget(next_);
    lower->addWidget(replace_);
    lower->addWidget(replaceAll_);
    layout->addLayout(upper, 0, 1);
    layout->addLayout(lower, 1, 1);
    layout->setColumnStretch(0, 1);

    connect(next_, &QToolButton::clicked, this, &ReplaceBar::findNext);
    connect(replace_, &QToolButton::clicked, this, &ReplaceBar::replaceOne);
    connect(replaceAll_, &QToolButton::clicked, this, &ReplaceBar::replaceAll);
    connect(close_, &QToolButton::clicked, this, &ReplaceBar::closeRequested);
    find_->installEventFilter(this);
    replacement_->installEventFilter(this);
}

bool ReplaceBar::eventFilter(QObject* watched, QEvent* event) {
    auto* box = qobject_cast<QLineEdit*>(watched);
    if ((box == find_ || box == replacement_) &&
        HandleBarKey(
            event,
            [this, box] {
                emit findNext(); // as in the find bar, the typing stays in the box
                box->setFocus();
            },
            [this] { emit closeRequested(); }))
        return true;
    return QWidget::eventFilter(watched, event);
}

} // namespace korvel
