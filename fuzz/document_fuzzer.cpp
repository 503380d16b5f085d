// The load and save byte pipeline on any file. The first input byte chooses the requested code
// set (low four bits), the line ending to save with (bits 4 and 5) and the JIS katakana mode
// (bit 6); the rest is the file. Besides memory safety: what a lossless code set loaded, it
// saves and loads again unchanged, as long as the saved file keeps its line ending.

#include "FuzzCheck.h"
#include "document/DocumentBytes.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace {

using korvel::CodecOk;
using korvel::LineEnding;
using korvel::TextEncoding;
using korvel::fuzz::Require;
using enum korvel::TextEncoding;

constexpr TextEncoding kRequests[] = {AutoDetect, ShiftJis, Jis,         Euc,       Utf8,
                                      Utf8N,      Unicode,  GarbledMail, AsciiOnly, Undetermined};
constexpr TextEncoding kSaveEncodings[] = {ShiftJis, Jis, Euc, Unicode, Utf8, Utf8N};
constexpr char16_t kSubstitute = 0xFFFD;

// Unicode and UTF-8 carry every code unit; Shift_JIS carries every character it decoded, which
// excludes the substitutes of undecodable bytes. JIS and EUC go through Shift_JIS by row-cell
// arithmetic, which does not give the same bytes back for every Shift_JIS character.
bool CarriesTextBack(TextEncoding encoding, std::u16string_view text) {
    if (encoding == ShiftJis) {
        return text.find(kSubstitute) == std::u16string_view::npos;
    }
    return encoding == Unicode || encoding == Utf8 || encoding == Utf8N;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const TextEncoding requested = kRequests[(data[0] & 0x0F) % std::size(kRequests)];
    const auto saveLineEnding = static_cast<LineEnding>((data[0] >> 4) & 0x03);
    const int katakanaMode = (data[0] >> 6) & 0x01;
    const std::span<const std::uint8_t> file(data + 1, size - 1);

    const korvel::DecodedDocument loaded = korvel::DecodeDocumentBytes(file, requested);
    Require(loaded.status == CodecOk, "any file loads");
    Require(std::ranges::find(kSaveEncodings, loaded.encoding) != std::end(kSaveEncodings),
            "a file is read in a code set it can be saved in");
    Require(loaded.lineEnding == LineEnding::CrLf || loaded.lineEnding == LineEnding::Cr ||
                loaded.lineEnding == LineEnding::Lf,
            "a file is read with a line ending it can be saved with");

    for (const TextEncoding encoding : kSaveEncodings) {
        const korvel::EncodedDocument saved =
            korvel::EncodeDocumentText(loaded.text, encoding, saveLineEnding, katakanaMode);
        Require(saved.status == CodecOk, "any text saves in any code set");
    }

    if (!CarriesTextBack(loaded.encoding, loaded.text)) {
        return 0;
    }
    const korvel::EncodedDocument saved =
        korvel::EncodeDocumentText(loaded.text, loaded.encoding, loaded.lineEnding, katakanaMode);
    Require(saved.status == CodecOk, "the text saves as it was loaded");
    std::vector<std::uint8_t> savedFile(saved.mark.begin(), saved.mark.end());
    savedFile.insert(savedFile.end(), saved.body.begin(), saved.body.end());
    const korvel::DecodedDocument reloaded =
        korvel::DecodeDocumentBytes(savedFile, loaded.encoding);
    Require(reloaded.status == CodecOk, "the saved file loads");
    // Saving turns the line ending's pairs back into single breaks, which can tip the count
    // that detects the line ending of a file with mixed breaks; only then may the text differ.
    if (reloaded.lineEnding != loaded.lineEnding) {
        return 0;
    }
    Require(reloaded.text == loaded.text, "the text survives a save and a reload");
    return 0;
}
