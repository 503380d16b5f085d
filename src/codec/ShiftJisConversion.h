#pragma once

#include "codec/CodecTypes.h"

#include <cstddef>
#include <cstdint>

namespace korvel {

// Converters share one form: source and its length in bytes, an output slot that receives a
// malloc'd block (the caller frees it) and an output-length slot that never counts the
// terminator. The source is never freed or changed (GarbledMailToShiftJis excepted).

// UTF-16LE text to CP932. A character with no CP932 form becomes "?".
// An empty text gives CodecUnconvertible, as the platform's conversion does.
CodecStatus UnicodeToShiftJis(const void* source, std::size_t byteLength, std::uint8_t** output,
                              std::size_t* outputLength);

// CP932 bytes to UTF-16LE text; two 0 bytes follow the output. An undecodable byte becomes
// one U+FFFD, and a lead byte takes its next byte only when that byte is in the trail range.
CodecStatus ShiftJisToUnicode(const void* source, std::size_t byteLength, std::uint8_t** output,
                              std::size_t* outputLength);

} // namespace korvel
