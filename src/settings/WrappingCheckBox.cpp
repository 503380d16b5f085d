#include "settings/WrappingCheckBox.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>

namespace korvel {

WrappingCheckBox::WrappingCheckBox(const QString& text, QWidget* parent)
    : QWidget(parent), box_(new QCheckBox(this)), label_(new QLabel(text, this)) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(box_, 0, Qt::AlignTop);
    layout->addWidget(label_, 1);
    label_->setWordWrap(true);
    label_->installEventFilter(this);
    box_->setAccessibleName(text);
    setFocusProxy(box_);
}

QString WrappingCheckBox::text() const {
    return label_->text();
}

bool WrappingCheckBox::isChecked() const {
    return box_->isChecked();
}

void WrappingCheckBox::setChecked(bool checked) {
    box_->setChecked(checked);
}

bool WrappingCheckBox::eventFilter(QObject* watched, QEvent* event) {
    if (watched == label_ && event->type() == QEvent::MouseButtonRelease &&
        static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton && isEnabled()) {
        box_->setFocus(Qt::MouseFocusReason);
        box_->toggle();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace korvel
