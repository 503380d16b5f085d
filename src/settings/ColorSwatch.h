#pragma once

#include <QAbstractButton>
#include <QColor>

namespace korvel {

// A button that is a patch of one colour: the colour choices of the picker, and the text and
// background colours of the colour page.
class ColorSwatch : public QAbstractButton {
    Q_OBJECT
public:
    explicit ColorSwatch(const QColor& color, QWidget* parent = nullptr);

    const QColor& color() const { return color_; }
    void setColor(const QColor& color);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor color_;
};

} // namespace korvel
