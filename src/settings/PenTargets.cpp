#include "settings/PenTargets.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>
#include <QSlider>
#include <QSpinBox>
#include <QWidget>
#include <algorithm>

namespace korvel {

void EnlargeForPen(QWidget& root) {
    for (QWidget* widget : root.findChildren<QWidget*>()) {
        if (qobject_cast<QAbstractButton*>(widget) || qobject_cast<QLineEdit*>(widget) ||
            qobject_cast<QComboBox*>(widget) || qobject_cast<QSlider*>(widget) ||
            qobject_cast<QAbstractSpinBox*>(widget))
            widget->setMinimumHeight(std::max(widget->minimumHeight(), kPenTarget));
    }
}

} // namespace korvel
