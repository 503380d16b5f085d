#include "macro/KeyInjection.h"

#include <QApplication>
#include <QEvent>
#include <QWidget>
#include <QWindow>

// Qt's entry for keys arriving from outside the program (exported for its test library): the
// event goes through the window system queue, where shortcuts and the focus widget see it as
// they see a real key. A key sent straight to a widget would skip the shortcuts.
Q_GUI_EXPORT void qt_handleKeyEvent(QWindow* window, QEvent::Type type, int key,
                                    Qt::KeyboardModifiers modifiers, const QString& text,
                                    bool autorepeat, ushort count);

namespace korvel {

namespace {

QWindow* KeyWindow() {
    if (QWindow* window = QGuiApplication::focusWindow())
        return window;
    // A window that is shown but not active (offscreen, or another program in front) still
    // takes the macro's keys in its focus widget.
    if (QWidget* active = QApplication::activeWindow())
        return active->windowHandle();
    if (QWidget* focus = QApplication::focusWidget())
        return focus->window()->windowHandle();
    return nullptr;
}

} // namespace

void SendKey(Qt::Key key, bool down, Qt::KeyboardModifiers modifiers, const QString& text) {
    QWindow* window = KeyWindow();
    if (window == nullptr)
        return;
    qt_handleKeyEvent(window, down ? QEvent::KeyPress : QEvent::KeyRelease, key, modifiers, text,
                      false, 1);
}

} // namespace korvel
