#pragma once

#include <QObject>
#include <QPoint>
#include <QTimer>

class QWidget;

namespace korvel {

// The tap-and-hold gesture of one widget: a press of mouse, pen or finger held still for the
// hold time. Its owner decides which presses are watched (the tap rules differ per control);
// right clicks and the Menu key count as the gesture at once and are the owner's to handle.
class HoldGesture : public QObject {
    Q_OBJECT
public:
    // The hold time of the LONG_DELAY setting: "普通" or "長め".
    static int DelayFor(bool longDelay) { return longDelay ? 1000 : 600; }

    // Watches the mouse events of target, the widget that receives the presses.
    explicit HoldGesture(QWidget* target);

    void setDelay(int milliseconds) { timer_.setInterval(milliseconds); }
    // Starts timing a press at position (target coordinates).
    void watch(QPoint position);
    // The gesture was recognised during the press that lasts: its release belongs to the
    // gesture and is kept from the widget.
    bool isHeld() const { return swallowRelease_; }

signals:
    void recognised(QPoint position);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QTimer timer_;
    QPoint position_;
    bool swallowRelease_ = false;
};

} // namespace korvel
