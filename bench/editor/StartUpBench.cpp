// How long the editor takes from its start to the first paint of its text view, as a whole
// process: with no file, and with a 1 MiB Shift_JIS file on its command line. Every run is timed
// in turns with korvel_bare_editor, a QPlainTextEdit that opens the same file the simplest way,
// and the same probe stops both clocks: PaintProbe.cpp, loaded through LD_PRELOAD, so that the
// editor runs as it ships. And how long a later start takes to hand the same file to a running
// editor, from its start until it ends (the running editor has then opened the file), in turns
// with a first start that shows the file.
//
// A run starts just before posix_spawn and ends when the probe in the child has seen the text
// view's first paint done; both read CLOCK_MONOTONIC. The programs keep their settings in the
// temporary folder ($XDG_CONFIG_HOME) and run on the display the launcher was started with
// (scripts/bench-editor.sh starts Xvfb), or on Qt's offscreen platform when there is none.

#include "SampleFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <optional>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sstream>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace korvel::bench {
namespace {

constexpr qint64 kFileBytes = 1 << 20;
// The descriptor on which the child's probe writes its line.
constexpr int kProbeFd = 3;
constexpr int kTimeoutMs = 60'000;

struct Setup {
    std::string editor = KORVEL_EDITOR_PATH;
    std::string bare = KORVEL_BARE_EDITOR_PATH;
    std::string probe = KORVEL_PAINT_PROBE_PATH;
    std::string samples = kDefaultSampleFolder;
    std::string folder; // the temporary folder, ending in "/"
    std::string shiftJisFile;
    std::vector<std::string> environment;
    // For the running editor and the starts that hand over to it: a run-time folder of their
    // own, and no probe.
    std::vector<std::string> handOverEnvironment;
    std::string handOverRuntime;
};

// Filled by main before any benchmark runs.
Setup setup;

long long MonotonicNanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

std::string LogTail(const std::string& path) {
    std::ifstream log(path);
    std::stringstream text;
    text << log.rdbuf();
    const std::string all = text.str();
    return all.size() > 600 ? all.substr(all.size() - 600) : all;
}

// Reads from fd until its end or the timeout; false on the timeout.
bool ReadAll(int fd, std::string* text) {
    const long long deadline = MonotonicNanoseconds() + kTimeoutMs * 1'000'000LL;
    char buffer[256];
    for (;;) {
        const long long left = (deadline - MonotonicNanoseconds()) / 1'000'000;
        pollfd ready = {fd, POLLIN, 0};
        const int polled = left > 0 ? poll(&ready, 1, static_cast<int>(left)) : 0;
        if (polled < 0 && errno == EINTR)
            continue;
        if (polled <= 0)
            return false;
        const ssize_t got = read(fd, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return true;
        text->append(buffer, static_cast<size_t>(got));
    }
}

struct FirstPaint {
    double seconds = 0;
    int characters = 0;
};

// Starts program (with file, unless empty) and waits for it to end; the time from the start to
// its first paint, or nullopt with the reason in error.
std::optional<FirstPaint> RunToFirstPaint(const std::string& program, const std::string& file,
                                          std::string* error) {
    int pipe[2];
    if (pipe2(pipe, O_CLOEXEC) != 0) {
        *error = "pipe2 failed";
        return std::nullopt;
    }
    const std::string logPath = setup.folder + "child.log";
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipe[1], kProbeFd);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, logPath.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0644);
    std::vector<char*> arguments = {const_cast<char*>(program.c_str())};
    if (!file.empty())
        arguments.push_back(const_cast<char*>(file.c_str()));
    arguments.push_back(nullptr);
    std::vector<char*> environment;
    for (const std::string& variable : setup.environment)
        environment.push_back(const_cast<char*>(variable.c_str()));
    environment.push_back(nullptr);

    const long long start = MonotonicNanoseconds();
    pid_t child = 0;
    const int spawned = posix_spawn(&child, program.c_str(), &actions, nullptr, arguments.data(),
                                    environment.data());
    posix_spawn_file_actions_destroy(&actions);
    close(pipe[1]);
    if (spawned != 0) {
        close(pipe[0]);
        *error = "cannot start " + program;
        return std::nullopt;
    }
    std::string line;
    const bool ended = ReadAll(pipe[0], &line);
    close(pipe[0]);
    if (!ended)
        kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);

    long long paintedAt = 0;
    FirstPaint result;
    const bool reported = std::sscanf(line.c_str(), "%lld %d", &paintedAt, &result.characters) == 2;
    if (!ended || !reported || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        *error = program + (ended ? " ended without a first paint" : " did not paint in time") +
                 "; its last words: " + LogTail(logPath);
        return std::nullopt;
    }
    result.seconds = static_cast<double>(paintedAt - start) * 1e-9;
    return result;
}

// Each iteration starts the editor and the bare program once, in an order that alternates from
// run to run, so that a change in the load of a shared machine falls on both. vs_bare is the
// editor's time over the bare program's.
void BM_StartUp(benchmark::State& state, bool withFile) {
    const std::string file = withFile ? setup.shiftJisFile : std::string();
    // The first start of each program fills the page cache and the font caches.
    static bool warmedUp[2] = {};
    std::string error;
    if (!warmedUp[withFile]) {
        warmedUp[withFile] = RunToFirstPaint(setup.editor, file, &error) &&
                             RunToFirstPaint(setup.bare, file, &error);
        if (!warmedUp[withFile]) {
            state.SkipWithError(error.c_str());
            return;
        }
    }
    static int round = 0;
    double ownSeconds = 0;
    double bareSeconds = 0;
    for (auto _ : state) {
        const bool editorFirst = round++ % 2 == 0;
        std::optional<FirstPaint> first =
            RunToFirstPaint(editorFirst ? setup.editor : setup.bare, file, &error);
        std::optional<FirstPaint> second =
            first ? RunToFirstPaint(editorFirst ? setup.bare : setup.editor, file, &error)
                  : std::nullopt;
        if (!second) {
            state.SkipWithError(error.c_str());
            break;
        }
        const FirstPaint& own = editorFirst ? *first : *second;
        const FirstPaint& bare = editorFirst ? *second : *first;
        // An empty view has one character, the end of its only paragraph.
        if (withFile && (own.characters <= 1 || bare.characters <= 1)) {
            state.SkipWithError("the text was not in the view at its first paint");
            break;
        }
        state.SetIterationTime(own.seconds);
        ownSeconds += own.seconds;
        bareSeconds += bare.seconds;
    }
    state.counters["bare_ms"] =
        benchmark::Counter(bareSeconds * 1e3, benchmark::Counter::kAvgIterations);
    state.counters["vs_bare"] = bareSeconds > 0 ? ownSeconds / bareSeconds : 0;
}

std::vector<char*> Pointers(const std::vector<std::string>& strings) {
    std::vector<char*> pointers;
    for (const std::string& string : strings)
        pointers.push_back(const_cast<char*>(string.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

// Starts the editor with the hand-over environment, its output thrown away.
pid_t SpawnEditor(const std::string& file) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    std::vector<std::string> arguments = {setup.editor};
    if (!file.empty())
        arguments.push_back(file);
    pid_t child = 0;
    const int spawned =
        posix_spawn(&child, setup.editor.c_str(), &actions, nullptr, Pointers(arguments).data(),
                    Pointers(setup.handOverEnvironment).data());
    posix_spawn_file_actions_destroy(&actions);
    return spawned == 0 ? child : -1;
}

// The running editor: started once, ready when its socket answers (a later start then finds
// it), ended with the benchmark.
class RunningEditor {
public:
    RunningEditor() : process_(SpawnEditor({})) {}
    ~RunningEditor() {
        if (process_ > 0) {
            kill(process_, SIGTERM);
            waitpid(process_, nullptr, 0);
        }
    }
    // Ready once its socket is in the run-time folder, which nothing else uses.
    bool ready() const {
        for (int waited = 0; process_ > 0 && waited < kTimeoutMs; waited += 50) {
            if (!QDir(QString::fromStdString(setup.handOverRuntime))
                     .entryList(QDir::System | QDir::NoDotAndDotDot)
                     .isEmpty())
                return true;
            usleep(50'000);
        }
        return false;
    }

private:
    pid_t process_;
};

// A later start with the file, until it ends: the running editor has the file open by then.
std::optional<double> HandOverSeconds(std::string* error) {
    const long long start = MonotonicNanoseconds();
    const pid_t later = SpawnEditor(setup.shiftJisFile);
    int status = 0;
    if (later <= 0 || waitpid(later, &status, 0) != later || !WIFEXITED(status) ||
        WEXITSTATUS(status) != 0) {
        *error = "the later start did not hand its file over";
        return std::nullopt;
    }
    return static_cast<double>(MonotonicNanoseconds() - start) * 1e-9;
}

// Each iteration hands the file over once and starts a first editor with it once, in an order
// that alternates; vs_first_start is the hand-over's time over the first start's.
void BM_HandOver(benchmark::State& state) {
    const RunningEditor running;
    std::string error;
    if (!running.ready() || !HandOverSeconds(&error) ||
        !RunToFirstPaint(setup.editor, setup.shiftJisFile, &error)) {
        state.SkipWithError(error.empty() ? "the running editor did not answer" : error.c_str());
        return;
    }
    static int round = 0;
    double handOverTotal = 0;
    double firstStartTotal = 0;
    for (auto _ : state) {
        const bool handOverFirst = round++ % 2 == 0;
        std::optional<double> handOver = handOverFirst ? HandOverSeconds(&error) : 0.0;
        std::optional<FirstPaint> firstStart =
            handOver ? RunToFirstPaint(setup.editor, setup.shiftJisFile, &error) : std::nullopt;
        if (firstStart && !handOverFirst)
            handOver = HandOverSeconds(&error);
        if (!handOver || !firstStart) {
            state.SkipWithError(error.c_str());
            break;
        }
        state.SetIterationTime(*handOver);
        handOverTotal += *handOver;
        firstStartTotal += firstStart->seconds;
    }
    state.counters["first_start_ms"] =
        benchmark::Counter(firstStartTotal * 1e3, benchmark::Counter::kAvgIterations);
    state.counters["vs_first_start"] = firstStartTotal > 0 ? handOverTotal / firstStartTotal : 0;
}

BENCHMARK_CAPTURE(BM_StartUp, no_file, false)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StartUp, shift_jis_1MiB, true)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

BENCHMARK(BM_HandOver)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

constexpr const char* kUsage =
    "korvel_startup_bench [--editor=PATH] [--bare=PATH] [--probe=PATH] [--samples=DIR]\n"
    "                     [--benchmark_...]\n"
    "  --editor=PATH   the editor (default: the one of this build tree)\n"
    "  --bare=PATH     the reference program, korvel_bare_editor\n"
    "  --probe=PATH    the first-paint probe, libkorvel_paint_probe.so\n"
    "  --samples=DIR   folder of Python's shift_jis.txt (default %s)\n"
    "One iteration per run; give --benchmark_repetitions for medians.\n";

bool ReadOptions(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        const auto value = [&](std::string_view option, std::string* target) {
            if (!argument.starts_with(option))
                return false;
            *target = argument.substr(option.size());
            return true;
        };
        if (!value("--editor=", &setup.editor) && !value("--bare=", &setup.bare) &&
            !value("--probe=", &setup.probe) && !value("--samples=", &setup.samples)) {
            std::fprintf(stderr, "unknown argument: %s\n", argv[i]);
            std::fprintf(stderr, kUsage, kDefaultSampleFolder);
            return false;
        }
    }
    return true;
}

// The launcher's own environment, with the probe preloaded, its own settings, data and
// run-time folders (so that a start never hands over to an editor the user has running), and a
// platform that works without a display.
std::vector<std::string> ChildEnvironment(const std::string& configFolder,
                                          const std::string& runtimeFolder) {
    std::vector<std::string> environment;
    std::string preload = setup.probe;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string_view entry = *variable;
        if (entry.starts_with("LD_PRELOAD=")) {
            preload.append(1, ':').append(entry.substr(11));
            continue;
        }
        if (entry.starts_with("XDG_CONFIG_HOME=") || entry.starts_with("XDG_DATA_HOME=") ||
            entry.starts_with("XDG_RUNTIME_DIR=") || entry.starts_with("KORVEL_PAINT_PROBE_FD="))
            continue;
        environment.emplace_back(entry);
    }
    environment.push_back("LD_PRELOAD=" + preload);
    // Its own data folder too: the start-up association check must find nothing to ask about.
    environment.push_back("XDG_CONFIG_HOME=" + configFolder);
    environment.push_back("XDG_DATA_HOME=" + configFolder);
    environment.push_back("XDG_RUNTIME_DIR=" + runtimeFolder);
    environment.push_back("KORVEL_PAINT_PROBE_FD=" + std::to_string(kProbeFd));
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY") &&
        qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        environment.push_back("QT_QPA_PLATFORM=offscreen");
    return environment;
}

std::string PlatformInUse() {
    if (!qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        return qgetenv("QT_QPA_PLATFORM").toStdString();
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return "wayland " + qgetenv("WAYLAND_DISPLAY").toStdString();
    if (!qEnvironmentVariableIsEmpty("DISPLAY"))
        return "xcb " + qgetenv("DISPLAY").toStdString();
    return "offscreen";
}

} // namespace
} // namespace korvel::bench

int main(int argc, char** argv) {
    using korvel::bench::setup;
    benchmark::Initialize(&argc, argv);
    if (!korvel::bench::ReadOptions(argc, argv))
        return 2;
    for (const std::string* program : {&setup.editor, &setup.bare, &setup.probe}) {
        if (access(program->c_str(), R_OK) != 0) {
            std::fprintf(stderr, "missing: %s\n", program->c_str());
            return 1;
        }
    }
    const QTemporaryDir folder;
    setup.folder = QDir::cleanPath(folder.path()).toStdString() + "/";
    const QString configFolder = folder.filePath(QStringLiteral("config"));
    const QString file = folder.filePath(QStringLiteral("shift_jis_1MiB.txt"));
    if (!folder.isValid() || !QDir().mkdir(configFolder) ||
        korvel::bench::WriteSampleFile(QString::fromStdString(setup.samples),
                                       korvel::bench::SampleForm::ShiftJisCrLf,
                                       korvel::bench::kFileBytes, file) < 0) {
        std::fprintf(stderr, "could not make the benchmark folder\n");
        return 1;
    }
    setup.shiftJisFile = file.toStdString();
    const QString firstStarts = folder.filePath(QStringLiteral("runtime"));
    const QString handOvers = folder.filePath(QStringLiteral("runtime-handover"));
    for (const QString& runtime : {firstStarts, handOvers}) {
        if (!QDir().mkdir(runtime) ||
            !QFile::setPermissions(runtime,
                                   QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner)) {
            std::fprintf(stderr, "could not make the run-time folders\n");
            return 1;
        }
    }
    setup.environment =
        korvel::bench::ChildEnvironment(configFolder.toStdString(), firstStarts.toStdString());
    setup.handOverRuntime = handOvers.toStdString();
    // The probe reads its descriptor from the environment; without it the probe stays quiet.
    // Settings of their own too: the running editor lists the file as open, and a first start
    // sharing its list would stop to warn about that.
    const QString handOverConfig = folder.filePath(QStringLiteral("config-handover"));
    QDir().mkdir(handOverConfig);
    for (const std::string& variable :
         korvel::bench::ChildEnvironment(handOverConfig.toStdString(), handOvers.toStdString())) {
        if (!variable.starts_with("KORVEL_PAINT_PROBE_FD="))
            setup.handOverEnvironment.push_back(variable);
    }
    benchmark::AddCustomContext("platform", korvel::bench::PlatformInUse());
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
