#include "BenchCorpus.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

constexpr const char* kUsage =
    "korvel_bench [--corpus=DIR] [--slice=SIZE] [--benchmark_...]\n"
    "  --corpus=DIR  corpus folder (default $KORVEL_CORPUS, else ./corpus)\n"
    "  --slice=SIZE  use only the first SIZE bytes of each file, e.g. 4M (default\n"
    "                $KORVEL_BENCH_SLICE, else whole files)\n";

bool ReadOptions(int argc, char** argv, korvel::bench::CorpusOptions* options) {
    const char* folder = std::getenv("KORVEL_CORPUS");
    options->folder = folder != nullptr && *folder != '\0' ? folder : "corpus";
    const char* slice = std::getenv("KORVEL_BENCH_SLICE");
    if (slice != nullptr && *slice != '\0' &&
        !korvel::bench::ParseByteCount(slice, &options->sliceBytes)) {
        std::fprintf(stderr, "KORVEL_BENCH_SLICE: not a size: %s\n", slice);
        return false;
    }
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument.starts_with("--corpus=")) {
            options->folder = argument.substr(9);
        } else if (argument.starts_with("--slice=")) {
            if (!korvel::bench::ParseByteCount(argument.substr(8), &options->sliceBytes)) {
                std::fprintf(stderr, "--slice: not a size: %s\n", argv[i]);
                return false;
            }
        } else {
            std::fprintf(stderr, "unknown argument: %s\n%s", argv[i], kUsage);
            return false;
        }
    }
    return true;
}

void PrintHelp() {
    std::fputs(kUsage, stdout);
    benchmark::PrintDefaultHelp();
}

} // namespace

int main(int argc, char** argv) {
    // Google Benchmark takes its own --benchmark_* flags out of argv and leaves ours.
    benchmark::Initialize(&argc, argv, PrintHelp);
    korvel::bench::CorpusOptions options;
    if (!ReadOptions(argc, argv, &options)) {
        return 2;
    }
    korvel::bench::SetCorpusOptions(options);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
