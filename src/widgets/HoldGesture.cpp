#include "widgets/HoldGesture.h"

#include <QApplication>
#include <QMouseEvent>
#include <QWidget>

namespace korvel {

HoldGesture::HoldGesture(QWidget* target) : QObject(target) {
    timer_.setSingleShot(true);
    timer_.setInterval(DelayFor(true));
    connect(&timer_, &QTimer::timeout, this, [this] {
        swallowRelease_ = true;
        emit recognised(position_);
    });
    target->installEventFilter(this);
}

void HoldGesture::watch(QPoint position) {
    position_ = position;
    swallowRelease_ = false;
    timer_.start();
}

bool HoldGesture::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        swallowRelease_ = false;
        break;
    case QEvent::MouseMove:
        if (timer_.isActive()) {
            const QPoint moved = static_cast<QMouseEvent*>(event)->position().toPoint() - position_;
            if (moved.manhattanLength() > QApplication::startDragDistance())
                timer_.stop();
        }
        break;
    case QEvent::MouseButtonRelease:
        timer_.stop();
        if (swallowRelease_) {
            swallowRelease_ = false;
            return true;
        }
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace korvel
