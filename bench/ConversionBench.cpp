#include "BenchCorpus.h"
#include "codec/CodecBlock.h"
#include "codec/JisEucConversion.h"
#include "codec/ShiftJisConversion.h"
#include "codec/Utf8Conversion.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <iterator>
#include <string>
#include <vector>

namespace korvel::bench {
namespace {

// The output block is freed inside the timed loop: a caller always pays for that too.
template <auto Converter, auto... Extra>
void RunConversion(benchmark::State& state, const std::string& file) {
    const auto* input = CorpusFile(state, file);
    if (input == nullptr) {
        return;
    }
    for (auto _ : state) {
        CodecResult result = RunConverter(Converter, input->data(), input->size(), Extra...);
        if (result.status != CodecOk) {
            state.SkipWithError("the converter failed");
            break;
        }
        benchmark::DoNotOptimize(result.block.data());
    }
    ReportInputBytes(state, input->size());
}

void BM_ShiftJisToUnicode(benchmark::State& state, const std::string& file) {
    RunConversion<ShiftJisToUnicode>(state, file);
}
void BM_UnicodeToShiftJis(benchmark::State& state, const std::string& file) {
    RunConversion<UnicodeToShiftJis>(state, file);
}
void BM_Utf8ToUnicode(benchmark::State& state, const std::string& file) {
    RunConversion<Utf8ToUnicode>(state, file);
}
void BM_UnicodeToUtf8(benchmark::State& state, const std::string& file) {
    RunConversion<UnicodeToUtf8>(state, file);
}
void BM_JisToUnicode(benchmark::State& state, const std::string& file) {
    RunConversion<JisToUnicode>(state, file);
}
void BM_EucToUnicode(benchmark::State& state, const std::string& file) {
    RunConversion<EucToUnicode>(state, file);
}
void BM_UnicodeToEuc(benchmark::State& state, const std::string& file) {
    RunConversion<UnicodeToEuc>(state, file);
}
void BM_UnicodeToJis(benchmark::State& state, const std::string& file) {
    RunConversion<UnicodeToJis, 0>(state, file);
}

BENCHMARK_CAPTURE(BM_ShiftJisToUnicode, sjis, "sjis.txt")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_UnicodeToShiftJis, utf16le, "utf16le.txt")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Utf8ToUnicode, utf8, "utf8.txt")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_UnicodeToUtf8, utf16le, "utf16le.txt")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_JisToUnicode, jis, "jis.txt")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_EucToUnicode, euc, "euc.txt")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_UnicodeToEuc, utf16le, "utf16le.txt")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_UnicodeToJis, utf16le, "utf16le.txt")->Unit(benchmark::kMillisecond);

// Mail that lost every ESC byte: the repair has to put each escape back before converting.
void BM_GarbledMailToShiftJis(benchmark::State& state, const std::string& file) {
    const auto* jis = CorpusFile(state, file);
    if (jis == nullptr) {
        return;
    }
    // The repair clears eighth bits in place; this input has none, so one copy serves every
    // iteration (and every call) unchanged.
    static std::vector<std::uint8_t> garbled;
    if (garbled.empty()) {
        std::copy_if(jis->begin(), jis->end(), std::back_inserter(garbled),
                     [](std::uint8_t b) { return b != 0x1B; });
    }
    for (auto _ : state) {
        std::uint8_t* output = nullptr;
        std::size_t outputLength = 0;
        if (GarbledMailToShiftJis(garbled.data(), garbled.size(), &output, &outputLength) !=
            CodecOk) {
            state.SkipWithError("the converter failed");
            break;
        }
        CodecBlock block(output, outputLength);
        benchmark::DoNotOptimize(block.data());
    }
    ReportInputBytes(state, garbled.size());
}
BENCHMARK_CAPTURE(BM_GarbledMailToShiftJis, jis, "jis.txt")->Unit(benchmark::kMillisecond);

} // namespace
} // namespace korvel::bench
