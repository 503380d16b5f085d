// The Shift_JIS and UTF-8 converters on any bytes, read both as a byte run and as UTF-16 text.
// Besides memory safety: every code unit survives UTF-8 and back, Shift_JIS text survives
// Unicode and back, and text that goes to Shift_JIS comes back with as many characters.

#include "FuzzCheck.h"
#include "codec/CodecBlock.h"
#include "codec/ShiftJisConversion.h"
#include "codec/Utf8Conversion.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace {

using korvel::CodecOk;
using korvel::CodecResult;
using korvel::RunConverter;
using korvel::fuzz::Require;

constexpr char16_t kSubstitute = 0xFFFD;
constexpr char16_t kDefaultCharacter = u'?';

bool IsHighSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
bool IsLowSurrogate(char16_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

// Callers read converter output as NUL-terminated strings, wide or narrow.
bool Terminated(CodecResult& result, int zeros) {
    const std::uint8_t* end = result.block.data() + result.block.size();
    return std::all_of(end, end + zeros, [](std::uint8_t b) { return b == 0; });
}

void CheckUtf8(const std::uint8_t* data, std::size_t size) {
    CodecResult decoded = RunConverter(korvel::Utf8ToUnicode, data, size);
    Require(decoded.status == CodecOk, "Utf8ToUnicode succeeds");
    Require(decoded.block.size() % 2 == 0 && Terminated(decoded, 2),
            "Utf8ToUnicode gives terminated UTF-16");

    CodecResult encoded = RunConverter(korvel::UnicodeToUtf8, data, size);
    Require(encoded.status == CodecOk, "UnicodeToUtf8 succeeds");
    Require(Terminated(encoded, 2), "UnicodeToUtf8 output is terminated");
    CodecResult back =
        RunConverter(korvel::Utf8ToUnicode, encoded.block.data(), encoded.block.size());
    Require(back.status == CodecOk, "Utf8ToUnicode of UnicodeToUtf8 succeeds");
    const std::size_t evenSize = size / 2 * 2;
    Require(back.block.size() == evenSize &&
                std::equal(data, data + evenSize, back.block.bytes().begin()),
            "every code unit survives UTF-8 and back");
}

void CheckShiftJisBytes(const std::uint8_t* data, std::size_t size) {
    CodecResult decoded = RunConverter(korvel::ShiftJisToUnicode, data, size);
    Require(decoded.status == CodecOk, "ShiftJisToUnicode succeeds");
    Require(decoded.block.size() % 2 == 0 && Terminated(decoded, 2),
            "ShiftJisToUnicode gives terminated UTF-16");
    const std::u16string_view text = decoded.block.units();
    if (text.empty() || text.find(kSubstitute) != std::u16string_view::npos) {
        return; // undecodable bytes have no way back
    }
    CodecResult encoded = RunConverter(korvel::UnicodeToShiftJis, text.data(), text.size() * 2);
    Require(encoded.status == CodecOk, "UnicodeToShiftJis of decoded text succeeds");
    CodecResult back =
        RunConverter(korvel::ShiftJisToUnicode, encoded.block.data(), encoded.block.size());
    Require(back.status == CodecOk && back.block.units() == text,
            "decoded Shift_JIS text survives Shift_JIS and back");
}

void CheckShiftJisText(const std::uint8_t* data, std::size_t size) {
    CodecResult encoded = RunConverter(korvel::UnicodeToShiftJis, data, size);
    if (size < 2) {
        Require(encoded.status == korvel::CodecUnconvertible,
                "an empty text is unconvertible, as the platform conversion says");
        return;
    }
    Require(encoded.status == CodecOk, "UnicodeToShiftJis succeeds");
    Require(Terminated(encoded, 1), "UnicodeToShiftJis output is terminated");
    CodecResult back =
        RunConverter(korvel::ShiftJisToUnicode, encoded.block.data(), encoded.block.size());
    Require(back.status == CodecOk, "ShiftJisToUnicode of encoded text succeeds");

    // Each character comes back as one decodable character: ASCII as itself, a surrogate pair
    // as one default character. Others may come back changed: the system converter that the
    // tables come from maps some characters one way only (U+00A2 to the full-width cent).
    std::u16string original(size / 2, u'\0');
    std::memcpy(original.data(), data, original.size() * 2);
    const std::u16string_view result = back.block.units();
    std::size_t i = 0;
    std::size_t j = 0;
    for (; i < original.size() && j < result.size(); ++i, ++j) {
        const char16_t unit = original[i];
        if (IsHighSurrogate(unit) && i + 1 < original.size() && IsLowSurrogate(original[i + 1])) {
            ++i;
            Require(result[j] == kDefaultCharacter, "a surrogate pair becomes one default");
            continue;
        }
        Require(result[j] != kSubstitute, "the encoder writes only decodable bytes");
        Require(unit >= 0x80 || result[j] == unit, "ASCII comes back as itself");
    }
    Require(i == original.size() && j == result.size(), "no character is lost or added");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The converters refuse a null source; the empty input may come without a buffer.
    static const std::uint8_t kEmpty[1] = {0};
    const std::uint8_t* bytes = size == 0 ? kEmpty : data;
    CheckUtf8(bytes, size);
    CheckShiftJisBytes(bytes, size);
    CheckShiftJisText(bytes, size);
    return 0;
}
