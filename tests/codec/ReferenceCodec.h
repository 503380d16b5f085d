#pragma once

// A slow, literal model of the encoding engine, kept as the oracle for the optimised code.
// Every routine copies its input into a buffer followed by four 0 bytes and reads past the end
// of the data exactly as the loader's read buffer lets the real routines do; the optimised code
// must give the same results without that padding.

#include "codec/CodecTypes.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvel::reference {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

// The output of a converter whose last pair may read the terminator as its trail byte. What
// such a cut pair turns into is the implementation's choice, so only the output before it
// (settled bytes) is exact when cutAt is set.
struct Converted {
    Bytes bytes;
    std::optional<std::size_t> cutAt;
};

// Detection.
TextEncoding DetectTextEncoding(ByteView bytes);
bool IsUtf8Text(ByteView bytes, bool* asciiOnly);
int Utf8LeadLength(std::uint8_t b);
bool IsShiftJisText(ByteView bytes);
bool IsEucText(ByteView bytes);
LineEnding DetectLineEnding(ByteView bytes);

// UTF-8.
std::u16string Utf8ToUnicode(ByteView bytes);
Bytes EncodeUtf8Unit(char16_t unit);
Bytes UnicodeToUtf8(std::u16string_view text);

// JIS X 0208 row-cell arithmetic, byte-wise (modulo 256) as the converters use it.
struct BytePair {
    std::uint8_t first;
    std::uint8_t second;
    bool operator==(const BytePair&) const = default;
};
BytePair JisPairToShiftJis(std::uint8_t j1, std::uint8_t j2);
BytePair ShiftJisPairToJis(std::uint8_t s1, std::uint8_t s2);

// ISO-2022-JP escapes; bytes must be followed by a 0 byte somewhere.
struct JisEscape {
    int mode;
    int characterSet;
    int length;
};
JisEscape ParseJisEscape(const std::uint8_t* bytes, bool withEsc);

// Half-width katakana byte (0xA1 to 0xDF) and the byte after it to full-width Shift_JIS.
struct FullWidthKana {
    BytePair shiftJis;
    bool merged;
};
FullWidthKana HalfKanaToFullWidth(std::uint8_t kana, std::uint8_t next);

Converted JisToShiftJis(ByteView bytes);
Converted EucToShiftJis(ByteView bytes);
// repairedSource receives the source as the converter leaves it (eighth bits cleared).
Converted GarbledMailToShiftJis(ByteView bytes, Bytes* repairedSource);
Converted ShiftJisToEuc(ByteView bytes);
Converted ShiftJisToJis(ByteView bytes, int katakanaMode);

} // namespace korvel::reference
