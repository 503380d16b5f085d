#pragma once

#include "codec/CodecTypes.h"

#include <cstddef>
#include <cstdint>

namespace korvel {

// UTF-8 (no mark) to UTF-16LE. Stray bytes are dropped; 4- to 6-byte sequences become U+25A0.
CodecStatus Utf8ToUnicode(const void* source, std::size_t byteLength, std::uint8_t** output,
                          std::size_t* outputLength);

// UTF-16LE to UTF-8 (no mark), one code unit at a time: surrogates become 3-byte sequences.
CodecStatus UnicodeToUtf8(const void* source, std::size_t byteLength, std::uint8_t** output,
                          std::size_t* outputLength);

// Writes the 1, 2 or 3 UTF-8 bytes of one code unit to destination; returns the count.
int EncodeUtf8Unit(std::uint16_t unit, std::uint8_t* destination);

} // namespace korvel
