#include "settings/ColorSwatch.h"

#include "settings/PenTargets.h"

#include <QPainter>

namespace korvel {

ColorSwatch::ColorSwatch(const QColor& color, QWidget* parent) : QAbstractButton(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(kPenTarget, kPenTarget);
    setColor(color);
}

void ColorSwatch::setColor(const QColor& color) {
    color_ = color;
    setToolTip(QStringLiteral("赤 %1, 緑 %2, 青 %3")
                   .arg(color.red())
                   .arg(color.green())
                   .arg(color.blue()));
    update();
}

QSize ColorSwatch::sizeHint() const {
    return QSize(kPenTarget, kPenTarget);
}

void ColorSwatch::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QRect patch = rect().adjusted(2, 2, -3, -3);
    painter.fillRect(patch, color_);
    // A dark frame: a white patch must still show its edge on a white dialog.
    painter.setPen(isChecked() || hasFocus() ? palette().color(QPalette::Highlight)
                                             : palette().color(QPalette::Dark));
    painter.drawRect(patch);
    if (isChecked() || hasFocus())
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

} // namespace korvel
