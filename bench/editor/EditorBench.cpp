// How long the editor takes, in process on Qt's offscreen platform, to show its window (empty,
// and with a 1 MiB Shift_JIS file opened before it shows) and to open a 10 MiB file (Shift_JIS
// with CR LF, UTF-8 with LF) into the shown window, each until the paint of its text view is
// done. Every iteration also does the same the simplest way, in turns with the editor: a
// QPlainTextEdit given the file through QFile::readAll, QStringDecoder and setPlainText
// (BareEditor.h). vs_bare is the editor's time over that one's.
//
// The files are made in the temporary folder ($TMPDIR) from the sample text of Python's codec
// tests; the editor keeps its settings there too.

#include "BareEditor.h"
#include "SampleFiles.h"
#include "editor/CEditer.h"
#include "editor/EditControl.h"
#include "messages/MessageService.h"
#include "settings/SettingsStore.h"
#include "shell/CMainFrame.h"

#include <QApplication>
#include <QEventLoop>
#include <QPlainTextEdit>
#include <QTemporaryDir>
#include <QTimer>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <functional>
#include <optional>
#include <string_view>
#include <utility>

namespace korvel::bench {
namespace {

constexpr qint64 kWindowFileBytes = 1 << 20;
constexpr qint64 kOpenFileBytes = 10 << 20;
constexpr int kPaintTimeoutMs = 60'000;

struct BenchFile {
    QString path;
    const char* encoding; // the QStringDecoder name for the simple way
    qint64 bytes = 0;
};

// Set by main before any benchmark runs.
QString settingsPath;
BenchFile windowFile{{}, "Shift_JIS"};
BenchFile shiftJisOpenFile{{}, "Shift_JIS"};
BenchFile utf8OpenFile{{}, "UTF-8"};

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// Answers every box as Escape would, so that nothing waits for a user; a failed open reports
// the last text shown.
class AnsweringMessageService : public MessageService {
public:
    MessageAnswer show(const MessageRequest& request) override {
        lastText = MessageText(request);
        return EscapeAnswer(request.buttons);
    }
    QString lastText;
};

AnsweringMessageService messages;

// Calls painting on every paint event of the widget, before the widget handles it.
class PaintFilter : public QObject {
public:
    PaintFilter(QWidget* widget, std::function<void()> painting) : painting_(std::move(painting)) {
        widget->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint)
            painting_();
        return false;
    }

private:
    std::function<void()> painting_;
};

// Runs the event loop until viewport has been painted; false when no paint came in time. The
// filter sees the paint event before the widget handles it, so the loop ends on a queued call,
// after the paint and the flush that follows it.
bool WaitForPaint(QWidget* viewport) {
    QEventLoop loop;
    bool painted = false;
    const PaintFilter filter(viewport, [&] {
        if (painted)
            return;
        painted = true;
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    QTimer::singleShot(kPaintTimeoutMs, &loop, &QEventLoop::quit);
    loop.exec();
    return painted;
}

QWidget* TextViewport(const CMainFrame& frame) {
    return frame.view()->activeControl()->viewport();
}

// The editor's window made, given the file (unless none) and shown, until its text is painted;
// the seconds, or nullopt with the reason in error.
std::optional<double> ShowEditor(SettingsStore& store, const BenchFile* file, QString* error) {
    const Clock::time_point start = Clock::now();
    CMainFrame frame(store);
    if (file != nullptr && !frame.openPath(file->path)) {
        *error = QStringLiteral("the editor did not open the file: ") + messages.lastText;
        return std::nullopt;
    }
    frame.show();
    if (!WaitForPaint(TextViewport(frame))) {
        *error = QStringLiteral("the editor's window was not painted");
        return std::nullopt;
    }
    return SecondsSince(start);
}

// The same with a bare QPlainTextEdit of the same size.
std::optional<double> ShowBare(const BenchFile* file, QString* error) {
    const Clock::time_point start = Clock::now();
    QPlainTextEdit edit;
    if (file != nullptr && !OpenTheSimpleWay(edit, file->path, file->encoding)) {
        *error = QStringLiteral("the simple way did not open the file");
        return std::nullopt;
    }
    edit.resize(800, 600);
    edit.show();
    if (!WaitForPaint(edit.viewport())) {
        *error = QStringLiteral("the bare window was not painted");
        return std::nullopt;
    }
    return SecondsSince(start);
}

// The file opened into the shown editor window as its command line does, until the text is
// painted.
std::optional<double> OpenInEditor(CMainFrame& frame, const BenchFile& file, QString* error) {
    const Clock::time_point start = Clock::now();
    if (!frame.openPath(file.path)) {
        *error = QStringLiteral("the editor did not open the file: ") + messages.lastText;
        return std::nullopt;
    }
    if (!WaitForPaint(TextViewport(frame))) {
        *error = QStringLiteral("the editor did not paint the text");
        return std::nullopt;
    }
    return SecondsSince(start);
}

std::optional<double> OpenInBare(QPlainTextEdit& edit, const BenchFile& file, QString* error) {
    const Clock::time_point start = Clock::now();
    if (!OpenTheSimpleWay(edit, file.path, file.encoding)) {
        *error = QStringLiteral("the simple way did not open the file");
        return std::nullopt;
    }
    if (!WaitForPaint(edit.viewport())) {
        *error = QStringLiteral("the bare edit did not paint the text");
        return std::nullopt;
    }
    return SecondsSince(start);
}

// One timed pair per iteration, the editor and the simple way taking turns at going first, so
// that a change in the load of a shared machine falls on both.
class TurnTaking {
public:
    explicit TurnTaking(benchmark::State& state) : state_(state) {}
    ~TurnTaking() {
        state_.counters["bare_ms"] =
            benchmark::Counter(bareSeconds_ * 1e3, benchmark::Counter::kAvgIterations);
        state_.counters["vs_bare"] = bareSeconds_ > 0 ? ownSeconds_ / bareSeconds_ : 0;
    }
    TurnTaking(const TurnTaking&) = delete;
    TurnTaking& operator=(const TurnTaking&) = delete;

    // False, with the benchmark skipped, when either run failed.
    bool run(const std::function<std::optional<double>(QString*)>& own,
             const std::function<std::optional<double>(QString*)>& bare) {
        static int round = 0;
        const bool ownFirst = round++ % 2 == 0;
        QString error;
        std::optional<double> ownTime;
        std::optional<double> bareTime;
        if (ownFirst) {
            ownTime = own(&error);
            bareTime = ownTime ? bare(&error) : std::nullopt;
        } else {
            bareTime = bare(&error);
            ownTime = bareTime ? own(&error) : std::nullopt;
        }
        if (!ownTime || !bareTime) {
            state_.SkipWithError(qPrintable(error));
            return false;
        }
        state_.SetIterationTime(*ownTime);
        ownSeconds_ += *ownTime;
        bareSeconds_ += *bareTime;
        return true;
    }

private:
    benchmark::State& state_;
    double ownSeconds_ = 0;
    double bareSeconds_ = 0;
};

// The first run of each case fills the page cache and the font and glyph caches, untimed.
bool WarmUp(benchmark::State& state, SettingsStore& store, const BenchFile* file) {
    static QList<const BenchFile*> warmedUp;
    if (warmedUp.contains(file))
        return true;
    QString error;
    if (!ShowEditor(store, file, &error) || !ShowBare(file, &error)) {
        state.SkipWithError(qPrintable(error));
        return false;
    }
    warmedUp.append(file);
    return true;
}

void BM_Window(benchmark::State& state, const BenchFile* file) {
    SettingsStore store(settingsPath);
    if (!WarmUp(state, store, file))
        return;
    TurnTaking turns(state);
    for (auto _ : state) {
        if (!turns.run([&](QString* error) { return ShowEditor(store, file, error); },
                       [&](QString* error) { return ShowBare(file, error); }))
            break;
    }
}

void BM_Open(benchmark::State& state, const BenchFile* file) {
    SettingsStore store(settingsPath);
    if (!WarmUp(state, store, file))
        return;
    // Every timed open goes into an empty window. Each window is painted before the next one
    // shows: a paint already done cannot be waited for.
    CMainFrame frame(store);
    frame.show();
    QPlainTextEdit edit;
    edit.resize(800, 600);
    bool painted = WaitForPaint(TextViewport(frame));
    edit.show();
    painted = painted && WaitForPaint(edit.viewport());
    if (!painted) {
        state.SkipWithError("the empty windows were not painted");
        return;
    }
    TurnTaking turns(state);
    for (auto _ : state) {
        if (!turns.run([&](QString* error) { return OpenInEditor(frame, *file, error); },
                       [&](QString* error) { return OpenInBare(edit, *file, error); }))
            break;
    }
    state.SetBytesProcessed(state.iterations() * file->bytes);
}

// One iteration per run, so that --benchmark_repetitions gives the runs whose median counts; an
// open into an empty window cannot be repeated in the same window anyway.
BENCHMARK_CAPTURE(BM_Window, empty, nullptr)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Window, shift_jis_1MiB, &windowFile)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Open, shift_jis_10MiB, &shiftJisOpenFile)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Open, utf8_10MiB, &utf8OpenFile)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

bool MakeFile(const QString& samples, const QTemporaryDir& folder, const char* name,
              SampleForm form, qint64 bytes, BenchFile* file) {
    file->path = folder.filePath(QString::fromLatin1(name));
    file->bytes = WriteSampleFile(samples, form, bytes, file->path);
    return file->bytes > 0;
}

} // namespace
} // namespace korvel::bench

int main(int argc, char** argv) {
    using namespace korvel::bench;
    benchmark::Initialize(&argc, argv);
    QString samples = QString::fromLatin1(kDefaultSampleFolder);
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (!argument.starts_with("--samples=")) {
            std::fprintf(stderr,
                         "unknown argument: %s\nkorvel_editor_bench [--samples=DIR] "
                         "[--benchmark_...]\n  --samples=DIR  folder of Python's shift_jis.txt "
                         "and shift_jis-utf8.txt (default %s)\n",
                         argv[i], kDefaultSampleFolder);
            return 2;
        }
        samples = QString::fromLocal8Bit(argument.substr(10));
    }
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    korvel::MessageService::install(&messages);

    const QTemporaryDir folder;
    settingsPath = folder.filePath(QStringLiteral("settings.ini"));
    if (!folder.isValid() ||
        !MakeFile(samples, folder, "shift_jis_1MiB.txt", SampleForm::ShiftJisCrLf, kWindowFileBytes,
                  &windowFile) ||
        !MakeFile(samples, folder, "shift_jis_10MiB.txt", SampleForm::ShiftJisCrLf, kOpenFileBytes,
                  &shiftJisOpenFile) ||
        !MakeFile(samples, folder, "utf8_10MiB.txt", SampleForm::Utf8Lf, kOpenFileBytes,
                  &utf8OpenFile)) {
        std::fprintf(stderr, "could not make the benchmark files\n");
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    korvel::MessageService::install(nullptr);
    return 0;
}
