// The Shift_JIS and UTF-8 converters on any bytes, read both as a byte run and as UTF-16 text.
// Shift_JIS both ways must give what glibc's CP932 gives, character by character. UTF-8 has no
// outside judge for its quirks (stray bytes dropped, long forms as one square, continuation
// bytes not tested), so its block decoder is held against a literal byte-wise reading, its
// encoder against EncodeUtf8Unit one unit at a time, and every code unit must survive the trip.

#include "Cp932Oracle.h"
#include "FuzzCheck.h"
#include "codec/CodecBlock.h"
#include "codec/Detection.h"
#include "codec/ShiftJisConversion.h"
#include "codec/Utf8Conversion.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace {

using korvel::CodecOk;
using korvel::CodecResult;
using korvel::RunConverter;
using korvel::fuzz::ForEachVectorLevel;
using korvel::fuzz::Require;

// Callers read converter output as NUL-terminated strings, wide or narrow.
bool Delivered(CodecResult& result, int zeros) {
    const std::uint8_t* end = result.block.data() + result.block.size();
    return result.status == CodecOk &&
           std::all_of(end, end + zeros, [](std::uint8_t b) { return b == 0; });
}

// The decoding rules read literally, byte by byte; past the end the loader's 0 bytes are seen.
std::u16string ModelUtf8ToUnicode(const std::uint8_t* data, std::size_t size) {
    auto at = [&](std::size_t i) { return i < size ? data[i] : std::uint8_t{0}; };
    std::u16string text;
    for (std::size_t i = 0; i < size;) {
        const std::uint8_t b = data[i];
        const int length = korvel::Utf8LeadLength(b);
        if (b < 0x80) {
            text.push_back(b);
        } else if (length == 2) {
            text.push_back(static_cast<char16_t>((b & 0x1F) << 6 | (at(i + 1) & 0x3F)));
        } else if (length == 3) {
            text.push_back(static_cast<char16_t>((b & 0x0F) << 12 | (at(i + 1) & 0x3F) << 6 |
                                                 (at(i + 2) & 0x3F)));
        } else if (length > 3) {
            text.push_back(u'\u25A0');
        }
        i += length < 0 ? 1 : static_cast<std::size_t>(length);
    }
    return text;
}

void CheckUtf8(const std::uint8_t* data, std::size_t size) {
    const std::u16string model = ModelUtf8ToUnicode(data, size);
    ForEachVectorLevel([&] {
        CodecResult decoded = RunConverter(korvel::Utf8ToUnicode, data, size);
        Require(Delivered(decoded, 2), "Utf8ToUnicode gives terminated UTF-16");
        Require(decoded.block.size() % 2 == 0 && decoded.block.units() == model,
                "Utf8ToUnicode reads every sequence as the byte-wise rules do");
    });

    std::vector<std::uint8_t> expected;
    for (std::size_t i = 0; i + 1 < size; i += 2) {
        std::uint8_t unit[3];
        const int count =
            korvel::EncodeUtf8Unit(static_cast<std::uint16_t>(data[i] | data[i + 1] << 8), unit);
        expected.insert(expected.end(), unit, unit + count);
    }
    CodecResult encoded;
    ForEachVectorLevel([&] {
        encoded = RunConverter(korvel::UnicodeToUtf8, data, size);
        Require(Delivered(encoded, 2), "UnicodeToUtf8 gives terminated output");
        Require(std::ranges::equal(encoded.block.bytes(), expected),
                "UnicodeToUtf8 encodes each code unit as EncodeUtf8Unit does");
    });
    CodecResult back =
        RunConverter(korvel::Utf8ToUnicode, encoded.block.data(), encoded.block.size());
    const std::size_t evenSize = size / 2 * 2;
    Require(back.status == CodecOk && back.block.size() == evenSize &&
                std::equal(data, data + evenSize, back.block.bytes().begin()),
            "every code unit survives UTF-8 and back");
}

void CheckShiftJis(const std::uint8_t* data, std::size_t size) {
    CodecResult decoded = RunConverter(korvel::ShiftJisToUnicode, data, size);
    Require(Delivered(decoded, 2), "ShiftJisToUnicode gives terminated UTF-16");
    Require(decoded.block.units() == korvel::reference::ShiftJisToUnicode({data, size}),
            "ShiftJisToUnicode decodes as glibc's CP932");

    if (size < 2) {
        Require(RunConverter(korvel::UnicodeToShiftJis, data, size).status ==
                    korvel::CodecUnconvertible,
                "an empty text is unconvertible, as the platform conversion says");
        return;
    }
    std::u16string text(size / 2, u'\0');
    std::memcpy(text.data(), data, text.size() * 2);
    const korvel::reference::Bytes expected = korvel::reference::UnicodeToShiftJis(text);
    ForEachVectorLevel([&] {
        CodecResult encoded = RunConverter(korvel::UnicodeToShiftJis, data, size);
        Require(Delivered(encoded, 1), "UnicodeToShiftJis gives terminated output");
        Require(std::ranges::equal(encoded.block.bytes(), expected),
                "UnicodeToShiftJis encodes as glibc's CP932");
    });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The converters refuse a null source; the empty input may come without a buffer.
    static const std::uint8_t kEmpty[1] = {0};
    const std::uint8_t* bytes = size == 0 ? kEmpty : data;
    CheckUtf8(bytes, size);
    CheckShiftJis(bytes, size);
    return 0;
}
