#include "widgets/ElidedLabel.h"

#include <QFontMetrics>

namespace korvel {

ElidedLabel::ElidedLabel(QWidget* parent) : QLabel(parent) {
    setTextInteractionFlags(Qt::TextSelectableByMouse);
}

void ElidedLabel::setFullText(const QString& text) {
    fullText_ = text;
    setToolTip(text);
    elide();
}

QSize ElidedLabel::sizeHint() const {
    // Wide enough for a usual path; a longer one is elided rather than stretching the dialog.
    const QFontMetrics metrics = fontMetrics();
    const int wanted =
        std::min(metrics.horizontalAdvance(fullText_), metrics.averageCharWidth() * 48);
    return {wanted + contentsMargins().left() + contentsMargins().right(),
            QLabel::sizeHint().height()};
}

QSize ElidedLabel::minimumSizeHint() const {
    // Any width will do: the text gives way instead of widening the dialog off the screen.
    return {fontMetrics().horizontalAdvance(QStringLiteral("…")) * 8,
            QLabel::minimumSizeHint().height()};
}

void ElidedLabel::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    elide();
}

void ElidedLabel::elide() {
    setText(fontMetrics().elidedText(fullText_, Qt::ElideMiddle, contentsRect().width()));
}

} // namespace korvel
