// How long the file list takes to read and sort a folder of ten thousand entries: the listing
// alone, timed in turns with `ls -l` sorting the same folder the same way; the sort alone; and
// the list control opening the folder on an offscreen screen, as the browse dialog does.
//
// The folder is made once per run in the temporary folder ($TMPDIR): files of varied names
// (ASCII in both cases, Japanese, with and without extension), sparse sizes from 0 bytes to past
// 4 GiB, modification times over five years, some .lnk shortcuts (to files, to folders, to
// nowhere) and some subfolders.

#include "browser/FileListCtrl.h"
#include "browser/FileListing.h"

#include <QApplication>
#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <iterator>
#include <random>
#include <spawn.h>
#include <string_view>
#include <sys/stat.h>
#include <sys/wait.h>
#include <vector>

extern char** environ;

namespace korvel::bench {
namespace {

constexpr int kEntries = 10'000;
constexpr int kFolders = 50;
constexpr int kShortcuts = 100;

// Set by main before any benchmark runs; ends in "/".
QString benchFolder;

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

QString EntryName(std::mt19937& random, int index) {
    static const char* const stems[] = {"report", "IMG_", "議事録", "Data ",  "メモ",
                                        "readme", "Zeta", "a",      "データ", "log."};
    static const char* const extensions[] = {".txt", ".JPG", ".htm", ".wav",   ".exe",
                                             ".csv", ".Txt", "",     ".tar.gz"};
    const QString stem = QString::fromUtf8(stems[random() % std::size(stems)]);
    const QString extension = QString::fromUtf8(extensions[random() % std::size(extensions)]);
    return stem + QString::number(index * 7919 % kEntries) + extension;
}

// Mostly small files, a long tail of large ones and a few past 4 GiB, which sort on the size's
// high word. Sparse, so the folder costs no disk space.
qint64 FileSize(std::mt19937& random) {
    if (random() % 10 == 0)
        return 0;
    if (random() % 100 == 0)
        return (qint64(4) << 30) + qint64(random() % (1u << 30));
    std::uniform_real_distribution<double> exponent(0.0, 28.0);
    return qint64(std::exp2(exponent(random)));
}

bool SetModified(const QString& path, std::mt19937& random) {
    constexpr std::int64_t kFiveYears = 5LL * 365 * 24 * 3600;
    const std::int64_t age = std::int64_t(random() % kFiveYears);
    const timespec modified = {time_t(std::time(nullptr) - age), long(random() % 1'000'000'000)};
    const timespec times[2] = {modified, modified};
    return utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, AT_SYMLINK_NOFOLLOW) ==
           0;
}

bool WriteFile(const QString& path, const QByteArray& bytes, qint64 size) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return false;
    return size <= bytes.size() || file.resize(size);
}

bool MakeBenchFolder(const QString& folder) {
    std::mt19937 random(20240601);
    QStringList files;
    QStringList folders;
    for (int i = 0; i < kFolders; ++i) {
        const QString path = folder + QStringLiteral("フォルダ%1").arg(i);
        if (!QDir().mkdir(path) || !SetModified(path, random))
            return false;
        folders.append(path);
    }
    for (int i = kFolders; i < kEntries - kShortcuts; ++i) {
        const QString path = folder + EntryName(random, i);
        if (!WriteFile(path, {}, FileSize(random)) || !SetModified(path, random))
            return false;
        files.append(path);
    }
    for (int i = 0; i < kShortcuts; ++i) {
        QString target;
        switch (i % 4) {
        case 0:
            target = folders[i % folders.size()];
            break;
        case 1:
            target = folder + QStringLiteral("gone%1.txt").arg(i);
            break;
        default:
            target = files[(i * 37) % files.size()];
        }
        const QByteArray text =
            QByteArray::number(target.size()) + "#\"" + target.toUtf8() + "\"\r\n";
        const QString path = folder + QStringLiteral("ショートカット%1.lnk").arg(i);
        if (!WriteFile(path, text, 0) || !SetModified(path, random))
            return false;
    }
    return true;
}

// One run of `ls -l` with the sort option, its output thrown away; false when it did not run.
// ls runs in the C.UTF-8 locale: byte-order names, the cheapest comparison it has.
bool RunLs(const char* sortOption) {
    const QByteArray folder = QFile::encodeName(benchFolder);
    std::vector<char*> arguments = {const_cast<char*>("ls"), const_cast<char*>("-l")};
    if (*sortOption != '\0')
        arguments.push_back(const_cast<char*>(sortOption));
    arguments.push_back(const_cast<char*>(folder.constData()));
    arguments.push_back(nullptr);
    std::vector<char*> environment;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        if (std::string_view(*variable).starts_with("LC_ALL="))
            continue;
        environment.push_back(*variable);
    }
    environment.push_back(const_cast<char*>("LC_ALL=C.UTF-8"));
    environment.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int spawned =
        posix_spawnp(&child, "ls", &actions, nullptr, arguments.data(), environment.data());
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    return spawned == 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) &&
           WEXITSTATUS(status) == 0;
}

// Lists and sorts the folder as the list does when it opens it, then runs `ls -l` sorting the
// same way. The two take turns in every iteration, so that a change in the load of a shared
// machine falls on both; speedup_vs_ls is ls's time over the list's.
void BM_ListAndSort(benchmark::State& state, int column, const char* lsSortOption) {
    FileListing listing;
    if (!listing.setFolder(benchFolder)) {
        state.SkipWithError("the benchmark folder is gone");
        return;
    }
    listing.setSortKey(MakeSortKey(column, false));
    double ownSeconds = 0;
    double lsSeconds = 0;
    for (auto _ : state) {
        const Clock::time_point start = Clock::now();
        listing.refresh();
        benchmark::DoNotOptimize(listing.rows().data());
        const double own = SecondsSince(start);
        state.SetIterationTime(own);
        ownSeconds += own;

        const Clock::time_point lsStart = Clock::now();
        if (!RunLs(lsSortOption)) {
            state.SkipWithError("ls -l did not run");
            return;
        }
        lsSeconds += SecondsSince(lsStart);
    }
    state.counters["entries"] = double(listing.rows().size());
    state.counters["ls_ms"] =
        benchmark::Counter(lsSeconds * 1e3, benchmark::Counter::kAvgIterations);
    state.counters["speedup_vs_ls"] = lsSeconds / ownSeconds;
}

// The sort alone, as a tap on a column header does it: each timed sort starts from the rows in
// the order of another column.
void BM_Sort(benchmark::State& state, int column) {
    FileListing listing;
    if (!listing.setFolder(benchFolder)) {
        state.SkipWithError("the benchmark folder is gone");
        return;
    }
    listing.refresh();
    const SortKey key = MakeSortKey(column, false);
    const SortKey other =
        MakeSortKey(column == sort_column::Time ? sort_column::Name : sort_column::Time, false);
    for (auto _ : state) {
        listing.sort(other);
        const Clock::time_point start = Clock::now();
        listing.sort(key);
        benchmark::DoNotOptimize(listing.rows().data());
        state.SetIterationTime(SecondsSince(start));
    }
}

// The list control opening the folder, sorted by name, until the details view has laid out and
// drawn the rows on screen.
void BM_ControlRefresh(benchmark::State& state) {
    FileListCtrl list;
    list.create(list_style::Details, list_option::ShowFolders, FileListSwitches{});
    list.resize(480, 640);
    list.show();
    if (!list.setFolder(benchFolder)) {
        state.SkipWithError("the benchmark folder is gone");
        return;
    }
    for (auto _ : state) {
        list.refresh();
        QApplication::processEvents();
    }
    state.counters["entries"] = list.rowCount();
}

BENCHMARK_CAPTURE(BM_ListAndSort, name, sort_column::Name, "")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ListAndSort, size, sort_column::Size, "--sort=size")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ListAndSort, time, sort_column::Time, "--sort=time")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

BENCHMARK_CAPTURE(BM_Sort, name, sort_column::Name)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Sort, size, sort_column::Size)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Sort, time, sort_column::Time)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Sort, type, sort_column::Type)->UseManualTime()->Unit(benchmark::kMillisecond);

BENCHMARK(BM_ControlRefresh)->UseRealTime()->Unit(benchmark::kMillisecond);

} // namespace
} // namespace korvel::bench

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);

    const QTemporaryDir folder;
    korvel::bench::benchFolder = QDir::cleanPath(folder.path()) + u'/';
    std::fprintf(stderr, "making %d entries in %s\n", korvel::bench::kEntries,
                 qPrintable(korvel::bench::benchFolder));
    if (!folder.isValid() || !korvel::bench::MakeBenchFolder(korvel::bench::benchFolder)) {
        std::fprintf(stderr, "could not make the benchmark folder\n");
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
