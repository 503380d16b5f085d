#pragma once

#include "codec/CodecTypes.h"

#include <cstddef>
#include <cstdint>

namespace korvel {

// Mode of an ISO-2022-JP escape: 0 single-byte, 1 double-byte, 2 half-width katakana,
// 3 for bytes that are no known sequence.
// With withEsc the pointer is at the ESC byte; without it, at the byte after ESC and the
// length reported is one less. The reader stops at a 0 byte, so a NUL-terminated buffer is
// never overrun.
int ParseJisEscape(const std::uint8_t* bytes, bool withEsc, int* characterSet, int* length);

CodecStatus JisToShiftJis(const void* source, std::size_t byteLength, std::uint8_t** output,
                          std::size_t* outputLength);
CodecStatus EucToShiftJis(const void* source, std::size_t byteLength, std::uint8_t** output,
                          std::size_t* outputLength);
// Repairs mail whose ESC bytes were lost or whose bytes got the eighth bit set. Clears the
// eighth bit of the source bytes in place, as the loader owns its read buffer.
CodecStatus GarbledMailToShiftJis(void* source, std::size_t byteLength, std::uint8_t** output,
                                  std::size_t* outputLength);
CodecStatus ShiftJisToEuc(const void* source, std::size_t byteLength, std::uint8_t** output,
                          std::size_t* outputLength);
// katakanaMode 1 keeps half-width katakana (ESC ( I); any other value makes them full width.
CodecStatus ShiftJisToJis(const void* source, std::size_t byteLength, std::uint8_t** output,
                          std::size_t* outputLength, int katakanaMode);

// The same conversions straight between JIS or EUC and UTF-16LE text, in one pass: each gives
// exactly what its route through Shift_JIS gives (JisToShiftJis then ShiftJisToUnicode, and
// UnicodeToShiftJis then ShiftJisToJis), on any input. UTF-16 output has two 0 bytes behind
// it, byte output one. An empty text gives CodecUnconvertible, as UnicodeToShiftJis does.
CodecStatus JisToUnicode(const void* source, std::size_t byteLength, std::uint8_t** output,
                         std::size_t* outputLength);
CodecStatus EucToUnicode(const void* source, std::size_t byteLength, std::uint8_t** output,
                         std::size_t* outputLength);
CodecStatus UnicodeToEuc(const void* source, std::size_t byteLength, std::uint8_t** output,
                         std::size_t* outputLength);
CodecStatus UnicodeToJis(const void* source, std::size_t byteLength, std::uint8_t** output,
                         std::size_t* outputLength, int katakanaMode);

// scratch holds a half-width katakana byte and the byte after it (or 0). Overwrites scratch
// with the full-width CP932 character and returns 1 when the following sound mark was merged.
int HalfKanaToFullWidth(std::uint8_t scratch[2]);

} // namespace korvel
