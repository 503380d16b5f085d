#include "shell/BarParts.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QToolButton>

namespace korvel {

CaseButtons::CaseButtons(QWidget* bar, QHBoxLayout* layout)
    : QObject(bar), caseMatters_(MakeBarButton(QStringLiteral("Aa"),
                                               QStringLiteral("大文字と小文字を区別する"), bar)),
      caseIgnored_(
          MakeBarButton(QStringLiteral("Aa"), QStringLiteral("大文字と小文字を区別しない"), bar)) {
    // The pressed look tells the two apart: case minded, as in most editors' "match case".
    caseMatters_->setCheckable(true);
    caseMatters_->setChecked(true);
    caseIgnored_->hide();
    layout->addWidget(caseMatters_);
    layout->addWidget(caseIgnored_);
    connect(caseMatters_, &QToolButton::clicked, this, [this] {
        caseMatters_->setChecked(true);
        toggle();
    });
    connect(caseIgnored_, &QToolButton::clicked, this, &CaseButtons::toggle);
}

bool CaseButtons::ignoresCase() const {
    return !caseIgnored_->isHidden();
}

void CaseButtons::toggle() {
    const bool ignore = !ignoresCase();
    caseIgnored_->setVisible(ignore);
    caseMatters_->setVisible(!ignore);
}

QToolButton* MakeBarButton(const QString& text, const QString& toolTip, QWidget* bar) {
    auto* button = new QToolButton(bar);
    button->setText(text);
    button->setToolTip(toolTip);
    button->setFocusPolicy(Qt::NoFocus);
    // Square buttons whatever the label, large enough for a finger.
    const int side = std::max(button->sizeHint().height(), 28);
    button->setFixedSize(side, side);
    return button;
}

bool HandleBarKey(QEvent* event, const std::function<void()>& enter,
                  const std::function<void()>& escape) {
    if (event->type() != QEvent::KeyPress)
        return false;
    const auto* key = static_cast<QKeyEvent*>(event);
    if (key->modifiers() & ~Qt::KeypadModifier)
        return false;
    switch (key->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        enter();
        return true;
    case Qt::Key_Escape:
        escape();
        return true;
    default:
        return false;
    }
}

} // namespace korvel
