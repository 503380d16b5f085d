#include "BenchCorpus.h"
#include "codec/Detection.h"

#include <benchmark/benchmark.h>
#include <string>

namespace korvel::bench {
namespace {

template <auto Detector> void RunDetector(benchmark::State& state, const std::string& file) {
    const auto* input = CorpusFile(state, file);
    if (input == nullptr) {
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(Detector(input->data(), input->size()));
    }
    ReportInputBytes(state, input->size());
}

bool IsUtf8TextOnly(const std::uint8_t* bytes, std::size_t length) {
    bool asciiOnly = false;
    return IsUtf8Text(bytes, length, &asciiOnly);
}

void BM_DetectTextEncoding(benchmark::State& state, const std::string& file) {
    RunDetector<DetectTextEncoding>(state, file);
}
void BM_IsUtf8Text(benchmark::State& state, const std::string& file) {
    RunDetector<IsUtf8TextOnly>(state, file);
}
void BM_IsShiftJisText(benchmark::State& state, const std::string& file) {
    RunDetector<IsShiftJisText>(state, file);
}
void BM_IsEucText(benchmark::State& state, const std::string& file) {
    RunDetector<IsEucText>(state, file);
}
void BM_DetectLineEnding(benchmark::State& state, const std::string& file) {
    RunDetector<DetectLineEnding>(state, file);
}

// ascii and utf8 end after the UTF-8 pass; sjis and euc take all three passes. jis and utf16le
// are left out: they end at their first escape or 0 byte, in constant time.
BENCHMARK_CAPTURE(BM_DetectTextEncoding, ascii, "ascii.txt")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DetectTextEncoding, utf8, "utf8.txt")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DetectTextEncoding, utf8bom, "utf8bom.txt")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DetectTextEncoding, sjis, "sjis.txt")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DetectTextEncoding, euc, "euc.txt")->Unit(benchmark::kMillisecond);

BENCHMARK_CAPTURE(BM_IsUtf8Text, ascii, "ascii.txt")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_IsUtf8Text, utf8, "utf8.txt")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_IsShiftJisText, sjis, "sjis.txt")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_IsEucText, euc, "euc.txt")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DetectLineEnding, sjis, "sjis.txt")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DetectLineEnding, utf16le, "utf16le-bom.txt")->Unit(benchmark::kMillisecond);

} // namespace
} // namespace korvel::bench
