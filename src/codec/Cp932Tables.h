#pragma once

#include <cstddef>
#include <cstdint>

namespace korvel::cp932 {

struct Cp932Pair {
    std::uint16_t from;
    std::uint16_t to;
};

// The converter's mappings as generated; see tools/generate-cp932-tables.py.
extern const Cp932Pair kDecodePairs[];
extern const std::size_t kDecodePairsCount;
extern const Cp932Pair kEncodePairs[];
extern const std::size_t kEncodePairsCount;

// Marks an entry of the flat tables that has no mapping.
inline constexpr std::uint16_t kUnmapped = 0xFFFF;

// Flat lookup tables built once from the generated pairs.
struct FlatTables {
    std::uint16_t singleByte[256];    // byte -> code unit, or kUnmapped (lead bytes too)
    std::uint16_t doubleByte[65536];  // lead << 8 | trail -> code unit, or kUnmapped
    std::uint16_t fromUnicode[65536]; // code unit -> CP932 code (< 0x100: one byte), or kUnmapped

    // The same mappings with the converters' substitutions folded in, so that the fast paths
    // look up a character without a branch on its length or on a missing mapping.
    // b0 << 8 | b1 -> the code unit of the character that begins with b0 (b1 counts only when
    // it is the trail of a pair): U+FFFD where the decoder substitutes.
    std::uint16_t decodedUnits[65536];
    // code unit -> its CP932 bytes in output order (b0 | b1 << 8; one byte when b1 is 0), "?"
    // for no mapping, or kUnmapped for the surrogates, which need the next unit.
    std::uint16_t encodedBytes[65536];
};

const FlatTables& Tables();

// Lead bytes of CP932 (user-defined area F0-F9 included) and the trail range 40-7E, 80-FC.
constexpr bool IsLeadByte(std::uint8_t b) {
    return (b >= 0x81 && b <= 0x9F) || (b >= 0xE0 && b <= 0xFC);
}
constexpr bool IsTrailByte(std::uint8_t b) {
    return b >= 0x40 && b <= 0xFC && b != 0x7F;
}
constexpr bool IsSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit <= 0xDFFF;
}

inline constexpr std::uint16_t kSubstitute = 0xFFFD;   // for bytes that decode to nothing
inline constexpr std::uint8_t kDefaultCharacter = '?'; // for units that encode to nothing

} // namespace korvel::cp932
