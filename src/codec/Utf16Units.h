#pragma once

// UTF-16LE code units read from a byte source of any alignment, and the ASCII shortcut that
// every encoder shares.

#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace korvel::detail {

inline char16_t LoadUnit(const std::uint8_t* p) {
    char16_t unit;
    std::memcpy(&unit, p, sizeof unit);
    return unit;
}

// Two bytes of output in one store, the first at d.
inline void StoreBytes(std::uint8_t* d, std::uint16_t bytes) {
    std::memcpy(d, &bytes, sizeof bytes);
}

// Writes the eight UTF-16LE units at source as eight bytes when all of them are ASCII, which
// UTF-8, CP932, JIS and EUC all keep as they are.
inline bool NarrowAscii8(const std::uint8_t* source, std::uint8_t* d) {
#if defined(__SSE2__)
    const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source));
    const __m128i high = _mm_and_si128(units, _mm_set1_epi16(-0x80));
    if (_mm_movemask_epi8(_mm_cmpeq_epi16(high, _mm_setzero_si128())) != 0xFFFF) {
        return false;
    }
    _mm_storel_epi64(reinterpret_cast<__m128i*>(d), _mm_packus_epi16(units, units));
    return true;
#else
    std::uint64_t words[2];
    std::memcpy(words, source, sizeof words);
    if (((words[0] | words[1]) & 0xFF80FF80FF80FF80ULL) != 0) {
        return false;
    }
    for (int k = 0; k < 4; ++k) {
        d[k] = static_cast<std::uint8_t>(words[0] >> (16 * k));
        d[k + 4] = static_cast<std::uint8_t>(words[1] >> (16 * k));
    }
    return true;
#endif
}

} // namespace korvel::detail
