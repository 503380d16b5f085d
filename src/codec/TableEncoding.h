#pragma once

// Table-driven encoding of eight UTF-16 units at a time for the encoders whose tables give each
// character's one or two bytes in output order (CP932, EUC).

#include "codec/Utf16Units.h"

#include <array>
#include <cstddef>
#include <cstdint>

#if defined(__x86_64__)
#include <tmmintrin.h>
#endif

namespace korvel::detail {

#if defined(__x86_64__)
// How the bytes of eight table entries close up: the shuffle that packs them together, and
// their count. Indexed by a mask whose bit k says entry k has two bytes.
struct BytePacking {
    std::array<std::uint8_t, 16> shuffle;
    std::uint8_t length;
};

constexpr std::array<BytePacking, 256> MakeBytePackings() {
    std::array<BytePacking, 256> packings{};
    for (unsigned index = 0; index < 256; ++index) {
        BytePacking& packing = packings[index];
        packing.shuffle.fill(0x80); // pshufb writes 0 for a byte with its high bit set
        unsigned out = 0;
        for (unsigned entry = 0; entry < 8; ++entry) {
            packing.shuffle[out++] = static_cast<std::uint8_t>(2 * entry);
            if ((index >> entry & 1) != 0) {
                packing.shuffle[out++] = static_cast<std::uint8_t>(2 * entry + 1);
            }
        }
        packing.length = static_cast<std::uint8_t>(out);
    }
    return packings;
}

inline constexpr std::array<BytePacking, 256> kBytePackings = MakeBytePackings();

// Encodes the eight units at source when each has its bytes in table (CP932 or EUC, in output
// order, one byte below 0x100): eight lookups, one shuffle and one 16-byte store at d, without
// a branch on the characters' lengths. Returns the bytes written, or -1, writing nothing, when
// an entry is kUnmapped (a character for the slow path).
__attribute__((target("ssse3"))) inline int
EncodeUnits8Ssse3(const std::uint16_t* table, const std::uint8_t* source, std::uint8_t* d) {
    const auto entry = [&](int k) { return static_cast<short>(table[LoadUnit(source + 2 * k)]); };
    const __m128i entries = _mm_set_epi16(entry(7), entry(6), entry(5), entry(4), entry(3),
                                          entry(2), entry(1), entry(0));
    const __m128i unmapped = _mm_cmpeq_epi16(entries, _mm_set1_epi16(-1));
    const __m128i oneByte =
        _mm_cmpeq_epi16(_mm_and_si128(entries, _mm_set1_epi16(-0x100)), _mm_setzero_si128());
    const auto masks = static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(oneByte, unmapped)));
    if ((masks >> 8) != 0) {
        return -1;
    }
    const BytePacking& packing = kBytePackings[~masks & 0xFF];
    const __m128i shuffle =
        _mm_loadu_si128(reinterpret_cast<const __m128i*>(packing.shuffle.data()));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm_shuffle_epi8(entries, shuffle));
    return packing.length;
}

// Encodes the groups of eight units from unit k on while each is ASCII or has all its bytes in
// table; returns the unit where it stopped. One function for the whole run, so that the group
// steps inline into one loop compiled for SSSE3.
__attribute__((target("ssse3"))) inline std::size_t
EncodeGroupsSsse3(const std::uint16_t* table, const std::uint8_t* source, std::size_t k,
                  std::size_t unitCount, std::uint8_t*& d) {
    for (; k + 8 <= unitCount; k += 8) {
        if (NarrowAscii8(source + 2 * k, d)) {
            d += 8;
            continue;
        }
        const int written = EncodeUnits8Ssse3(table, source + 2 * k, d);
        if (written < 0) {
            break;
        }
        d += written;
    }
    return k;
}
#endif

} // namespace korvel::detail
