#include "BenchCorpus.h"
#include "document/DocumentBytes.h"

#include <benchmark/benchmark.h>
#include <string>

namespace korvel::bench {
namespace {

// Opening a file as the editor does: detection, conversion and line-ending widening.
void BM_DecodeDocumentBytes(benchmark::State& state, const std::string& file) {
    const auto* input = CorpusFile(state, file);
    if (input == nullptr) {
        return;
    }
    for (auto _ : state) {
        DecodedDocument document = DecodeDocumentBytes(*input, TextEncoding::AutoDetect);
        if (document.status != CodecOk) {
            state.SkipWithError("decoding failed");
            break;
        }
        benchmark::DoNotOptimize(document.text.data());
    }
    ReportInputBytes(state, input->size());
}
BENCHMARK_CAPTURE(BM_DecodeDocumentBytes, ascii, "ascii.txt")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DecodeDocumentBytes, sjis, "sjis.txt")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DecodeDocumentBytes, euc, "euc.txt")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DecodeDocumentBytes, jis, "jis.txt")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DecodeDocumentBytes, utf8, "utf8.txt")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DecodeDocumentBytes, utf8bom, "utf8bom.txt")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DecodeDocumentBytes, utf16le, "utf16le-bom.txt")
    ->Unit(benchmark::kMillisecond);

// The editor's text (CR LF breaks) as loaded from the UTF-16 corpus file, kept for the run.
const std::u16string* EditorText(benchmark::State& state) {
    static std::u16string text;
    if (text.empty()) {
        const auto* file = CorpusFile(state, "utf16le-bom.txt");
        if (file == nullptr) {
            return nullptr;
        }
        const DecodedDocument document = DecodeDocumentBytes(*file, TextEncoding::Unicode);
        if (document.status != CodecOk) {
            state.SkipWithError("decoding utf16le-bom.txt failed");
            return nullptr;
        }
        text = document.text;
    }
    return &text;
}

// Saving as the editor does; throughput counts the UTF-16 text handed in. Unicode with CR LF
// is left out: its body is the text itself, no work at all.
void BM_EncodeDocumentText(benchmark::State& state, TextEncoding encoding, LineEnding lineEnding) {
    const std::u16string* text = EditorText(state);
    if (text == nullptr) {
        return;
    }
    for (auto _ : state) {
        EncodedDocument document = EncodeDocumentText(*text, encoding, lineEnding, 0);
        if (document.status != CodecOk) {
            state.SkipWithError("encoding failed");
            break;
        }
        benchmark::DoNotOptimize(document.body.data());
    }
    ReportInputBytes(state, text->size() * sizeof(char16_t));
}
BENCHMARK_CAPTURE(BM_EncodeDocumentText, sjis, TextEncoding::ShiftJis, LineEnding::CrLf)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_EncodeDocumentText, sjis_lf, TextEncoding::ShiftJis, LineEnding::Lf)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_EncodeDocumentText, euc, TextEncoding::Euc, LineEnding::CrLf)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_EncodeDocumentText, jis, TextEncoding::Jis, LineEnding::CrLf)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_EncodeDocumentText, utf8, TextEncoding::Utf8, LineEnding::CrLf)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_EncodeDocumentText, utf8n_lf, TextEncoding::Utf8N, LineEnding::Lf)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_EncodeDocumentText, unicode_lf, TextEncoding::Unicode, LineEnding::Lf)
    ->Unit(benchmark::kMillisecond);

} // namespace
} // namespace korvel::bench
