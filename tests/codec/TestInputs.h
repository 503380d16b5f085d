#pragma once

// Inputs for comparing the engine with the reference: random runs from fixed seeds (a failure
// names its input, and the same seed makes it again) and real-looking texts cut at every length.

#include "ReferenceCodec.h"

#include <cstdint>
#include <ostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace korvel::testing {

using reference::Bytes;
using reference::ByteView;

// Bytes that steer the detectors and converters: controls, escape bodies, the edges of the
// lead, trail, katakana and UTF-8 ranges, and their images with the eighth bit set.
inline constexpr std::uint8_t kInterestingBytes[] = {
    0x00, 0x09, 0x0A, 0x0D, 0x1B, '$',  '(',  'B',  '@',  'I',  'J',  'H',  'D',  'O',  'P',
    '&',  0x20, 0x21, 0x22, 0x24, 0x41, 0x5F, 0x60, 0x7E, 0x7F, 0x80, 0x81, 0x82, 0x8E, 0x8F,
    0x9B, 0x9F, 0xA0, 0xA1, 0xA2, 0xA4, 0xA8, 0xB0, 0xB6, 0xBB, 0xBF, 0xC0, 0xC2, 0xC3, 0xCA,
    0xD8, 0xDC, 0xDE, 0xDF, 0xE0, 0xE3, 0xEF, 0xF0, 0xF8, 0xFC, 0xFD, 0xFE, 0xFF};

// Small runs of every length 0..40, built byte by byte from kInterestingBytes and token by
// token from multibyte pieces (escapes, characters of each code set, line breaks, marks) cut
// off wherever the length ends; then a few runs of some KB.
std::vector<Bytes> GeneratedInputs(unsigned seed);

// Real-looking texts in every code set, each cut at every length.
std::vector<Bytes> TruncatedTexts();

// Valid texts of some hundred bytes in every code set (the fast paths work on blocks of 32 and
// 64 bytes), each cut at every length from either end and spoilt at every position once.
std::vector<Bytes> LongTexts(unsigned seed);

// The inputs of all kinds above.
std::vector<Bytes> CrossCheckInputs(unsigned seed);

// "1B 24 42" style, for failure messages.
std::string Hex(ByteView bytes);
std::string Hex(std::u16string_view units);

// Byte and text literals without casts.
Bytes BytesOf(std::string_view text);
ByteView ViewOf(std::string_view text);
ByteView ViewOf(std::u16string_view text);

} // namespace korvel::testing

namespace korvel {

// Names instead of raw numbers in failure messages.
void PrintTo(TextEncoding encoding, std::ostream* os);
void PrintTo(LineEnding lineEnding, std::ostream* os);

} // namespace korvel
