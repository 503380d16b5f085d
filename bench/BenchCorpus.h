#pragma once

#include <benchmark/benchmark.h>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace korvel::bench {

// Where the corpus lives and how much of each file to use; set once before any benchmark runs.
struct CorpusOptions {
    std::filesystem::path folder;
    std::size_t sliceBytes = 0; // 0: whole files
};

void SetCorpusOptions(CorpusOptions options);

// Reads a size such as "4M", "512K" or "1048576"; returns false on anything else.
bool ParseByteCount(std::string_view text, std::size_t* bytes);

// The named corpus file, read on first use and kept for the whole run. With a slice it is cut
// after the last line break within the slice, so no multibyte character or JIS escape stretch
// is cut in half. A file that cannot be read marks the benchmark skipped and gives null.
const std::vector<std::uint8_t>* CorpusFile(benchmark::State& state, const std::string& name);

// Every benchmark measures throughput against the bytes it was given.
inline void ReportInputBytes(benchmark::State& state, std::size_t bytesPerIteration) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(bytesPerIteration));
}

} // namespace korvel::bench
