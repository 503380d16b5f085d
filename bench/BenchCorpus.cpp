#include "BenchCorpus.h"

#include <charconv>
#include <fstream>
#include <map>
#include <utility>

namespace korvel::bench {

namespace {

CorpusOptions gOptions;
std::map<std::string, std::vector<std::uint8_t>> gFiles;

// UTF-16LE files must be cut after a whole 0A 00 unit at an even offset; every other corpus file
// returns to single-byte mode before its CR LF, so cutting after any LF is safe.
std::size_t SliceEnd(const std::vector<std::uint8_t>& bytes, std::size_t limit, bool utf16) {
    for (std::size_t end = limit; end >= 2; --end) {
        if (!utf16 && bytes[end - 1] == 0x0A) {
            return end;
        }
        if (utf16 && end % 2 == 0 && bytes[end - 2] == 0x0A && bytes[end - 1] == 0x00) {
            return end;
        }
    }
    return limit;
}

bool ReadWholeFile(const std::filesystem::path& path, std::vector<std::uint8_t>* bytes) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    std::ifstream in(path, std::ios::binary);
    if (error || !in) {
        return false;
    }
    bytes->resize(size);
    in.read(reinterpret_cast<char*>(bytes->data()), static_cast<std::streamsize>(size));
    return static_cast<std::uintmax_t>(in.gcount()) == size;
}

} // namespace

void SetCorpusOptions(CorpusOptions options) {
    gOptions = std::move(options);
}

bool ParseByteCount(std::string_view text, std::size_t* bytes) {
    std::size_t value = 0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || rest == text.data()) {
        return false;
    }
    const std::string_view suffix(rest, text.data() + text.size() - rest);
    if (suffix == "K" || suffix == "k") {
        value <<= 10;
    } else if (suffix == "M" || suffix == "m") {
        value <<= 20;
    } else if (!suffix.empty()) {
        return false;
    }
    *bytes = value;
    return true;
}

const std::vector<std::uint8_t>* CorpusFile(benchmark::State& state, const std::string& name) {
    if (const auto found = gFiles.find(name); found != gFiles.end()) {
        return &found->second;
    }
    const std::filesystem::path path = gOptions.folder / name;
    std::vector<std::uint8_t> bytes;
    if (!ReadWholeFile(path, &bytes) || bytes.empty()) {
        const std::string message =
            "cannot read " + path.string() + " (scripts/bench.sh builds it)";
        state.SkipWithError(message.c_str());
        return nullptr;
    }
    if (gOptions.sliceBytes != 0 && gOptions.sliceBytes < bytes.size()) {
        const bool utf16 = name.starts_with("utf16");
        bytes.resize(SliceEnd(bytes, gOptions.sliceBytes, utf16));
    }
    return &gFiles.emplace(name, std::move(bytes)).first->second;
}

} // namespace korvel::bench
