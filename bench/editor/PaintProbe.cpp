// Loaded into a Qt program through LD_PRELOAD by korvel_startup_bench, so that the program is
// measured exactly as it ships. When the viewport of a plain-text view has been painted for the
// first time, it writes the monotonic clock in nanoseconds and the view's character count, as
// one line, to the file descriptor named by KORVEL_PAINT_PROBE_FD, and ends the program. Without
// that variable it does nothing.

#include <QCoreApplication>
#include <QEvent>
#include <QPlainTextEdit>
#include <QPointer>
#include <cstdio>
#include <ctime>
#include <unistd.h>

namespace {

class FirstPaintProbe : public QObject {
public:
    FirstPaintProbe(int fd, QObject* parent) : QObject(parent), fd_(fd) {}

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (seen_ || event->type() != QEvent::Paint)
            return false;
        auto* edit = qobject_cast<QPlainTextEdit*>(watched->parent());
        if (edit == nullptr || edit->viewport() != watched)
            return false;
        seen_ = true;
        // A filter sees the event before the widget paints. The queued call runs once the paint
        // and the flush of the window to the screen that follows it are done.
        QMetaObject::invokeMethod(
            this, [this, view = QPointer<QPlainTextEdit>(edit)] { report(view); },
            Qt::QueuedConnection);
        return false;
    }

private:
    void report(const QPlainTextEdit* view) {
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC, &now);
        const long long nanoseconds = now.tv_sec * 1'000'000'000LL + now.tv_nsec;
        const int characters = view != nullptr ? view->document()->characterCount() : -1;
        char line[64];
        const int length = std::snprintf(line, sizeof line, "%lld %d\n", nanoseconds, characters);
        if (write(fd_, line, static_cast<size_t>(length)) != length)
            std::perror("paint probe");
        close(fd_);
        QCoreApplication::exit(0);
    }

    int fd_;
    bool seen_ = false;
};

void InstallFirstPaintProbe() {
    bool valid = false;
    const int fd = qEnvironmentVariableIntValue("KORVEL_PAINT_PROBE_FD", &valid);
    if (!valid)
        return;
    QCoreApplication* application = QCoreApplication::instance();
    application->installEventFilter(new FirstPaintProbe(fd, application));
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(InstallFirstPaintProbe)
