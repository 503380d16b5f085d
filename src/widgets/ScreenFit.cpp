#include "widgets/ScreenFit.h"

#include <QEvent>
#include <QPointer>
#include <QScreen>
#include <QTimer>
#include <QWidget>
#include <algorithm>

namespace korvel {
namespace {

// Until the window manager has framed a window, room is kept for a common title bar and
// border, so that the first fit is already close.
constexpr QMargins kLikelyFrame(4, 30, 4, 4);
// Window managers frame a new window within a few event rounds; later moves are the user's.
constexpr int kFramedAfterMs = 250;

QMargins FrameOf(const QWidget& window) {
    const QRect frame = window.frameGeometry();
    const QRect client = window.geometry();
    const QMargins margins(client.left() - frame.left(), client.top() - frame.top(),
                           frame.right() - client.right(), frame.bottom() - client.bottom());
    return margins.isNull() ? kLikelyFrame : margins;
}

void Fit(QWidget& window) {
    const QScreen* screen = window.screen();
    if (screen == nullptr)
        return;
    const QMargins frame = FrameOf(window);
    const QRect fitted = FittedGeometry(window.geometry(), frame, screen->availableGeometry(),
                                        window.minimumSizeHint());
    if (fitted.size() != window.size())
        window.resize(fitted.size());
    // A window's position is its frame's.
    if (fitted.topLeft() != window.geometry().topLeft())
        window.move(fitted.topLeft() - QPoint(frame.left(), frame.top()));
}

class FitOnShow : public QObject {
public:
    explicit FitOnShow(QWidget& window) : QObject(&window), window_(&window) {
        window.installEventFilter(this);
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Show) {
            Fit(*window_);
            QPointer<QWidget> window = window_;
            QTimer::singleShot(kFramedAfterMs, window, [window] {
                if (window)
                    Fit(*window);
            });
        }
        return false;
    }

private:
    QWidget* window_;
};

} // namespace

QRect FittedGeometry(QRect client, QMargins frame, QRect available, QSize minimum) {
    const QSize room = available.size().shrunkBy(frame);
    QSize size = client.size().boundedTo(room).expandedTo(minimum);
    QRect outer(client.topLeft() - QPoint(frame.left(), frame.top()), size.grownBy(frame));
    outer.moveLeft(
        std::max(available.left(), std::min(outer.left(), available.right() + 1 - outer.width())));
    outer.moveTop(
        std::max(available.top(), std::min(outer.top(), available.bottom() + 1 - outer.height())));
    return QRect(outer.topLeft() + QPoint(frame.left(), frame.top()), size);
}

void FitToScreen(QWidget& window, QSize wanted) {
    if (const QScreen* screen = window.screen())
        wanted = wanted.boundedTo(screen->availableGeometry().size().shrunkBy(kLikelyFrame));
    window.resize(wanted.expandedTo(window.minimumSizeHint()));
    new FitOnShow(window);
}

} // namespace korvel
