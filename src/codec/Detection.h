#pragma once

#include "codec/CodecTypes.h"

#include <cstddef>
#include <cstdint>

namespace korvel {

// Every detector behaves as if four 0 bytes followed the data, without reading them.

// Names the code set of a whole file by the fixed series of byte tests.
TextEncoding DetectTextEncoding(const std::uint8_t* bytes, std::size_t length);

// True when the run is UTF-8 text (printable ASCII, TAB, CR, LF and multibyte sequences).
// asciiOnly tells whether no byte of 0x80 or more was seen.
bool IsUtf8Text(const std::uint8_t* bytes, std::size_t length, bool* asciiOnly);

// Length of the UTF-8 sequence that byte b begins (2 to 6), or -1.
int Utf8LeadLength(std::uint8_t b);

bool IsShiftJisText(const std::uint8_t* bytes, std::size_t length);
bool IsEucText(const std::uint8_t* bytes, std::size_t length);

LineEnding DetectLineEnding(const std::uint8_t* bytes, std::size_t length);

} // namespace korvel
