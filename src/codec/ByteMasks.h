#pragma once

// Bit masks over 64-byte blocks, the building blocks of the fast paths of the detectors and the
// Shift_JIS decoder. Each SIMD function has a scalar twin with the same results; the tests hold
// them against each other.

#include <bit>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace korvel::detail {

inline constexpr int kMaskBlock = 64;

// The set bits of a mask. Without the popcnt instruction, which the x86-64 baseline lacks,
// std::popcount is a library call that took a fifth of the line-ending scan; this is the
// branch-free form.
inline int CountBits(std::uint64_t x) {
#if defined(__POPCNT__) || !defined(__x86_64__)
    return std::popcount(x);
#else
    x -= (x >> 1) & 0x5555555555555555ULL;
    x = (x & 0x3333333333333333ULL) + ((x >> 2) & 0x3333333333333333ULL);
    x = (x + (x >> 4)) & 0x0F0F0F0F0F0F0F0FULL;
    return static_cast<int>((x * 0x0101010101010101ULL) >> 56);
#endif
}

// Bit k is set when low <= bytes[k] <= high, for k in 0..63.
inline std::uint64_t RangeMaskScalar(const std::uint8_t* bytes, std::uint8_t low,
                                     std::uint8_t high) {
    std::uint64_t mask = 0;
    for (int k = 0; k < kMaskBlock; ++k) {
        const bool inRange = static_cast<std::uint8_t>(bytes[k] - low) <= high - low;
        mask |= static_cast<std::uint64_t>(inRange) << k;
    }
    return mask;
}

inline std::uint64_t RangeMask(const std::uint8_t* bytes, std::uint8_t low, std::uint8_t high) {
#if defined(__SSE2__)
    // Unsigned range test: (x - low) <= (high - low), done as min(x - low, span) == x - low.
    const __m128i lowest = _mm_set1_epi8(static_cast<char>(low));
    const __m128i span = _mm_set1_epi8(static_cast<char>(high - low));
    std::uint64_t mask = 0;
    for (int q = 0; q < 4; ++q) {
        const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + 16 * q));
        const __m128i offset = _mm_sub_epi8(chunk, lowest);
        const __m128i inRange = _mm_cmpeq_epi8(_mm_min_epu8(offset, span), offset);
        mask |= static_cast<std::uint64_t>(static_cast<std::uint32_t>(_mm_movemask_epi8(inRange)))
                << (16 * q);
    }
    return mask;
#else
    return RangeMaskScalar(bytes, low, high);
#endif
}

// Bit k is set when bytes[k] is 0x80 or more; the scalar twin is RangeMaskScalar(0x80, 0xFF).
inline std::uint64_t HighBitMask(const std::uint8_t* bytes) {
#if defined(__SSE2__)
    std::uint64_t mask = 0;
    for (int q = 0; q < 4; ++q) {
        const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + 16 * q));
        mask |= static_cast<std::uint64_t>(static_cast<std::uint32_t>(_mm_movemask_epi8(chunk)))
                << (16 * q);
    }
    return mask;
#else
    return RangeMaskScalar(bytes, 0x80, 0xFF);
#endif
}

// Bit k is set when bytes[k] is exactly value; the scalar twin is RangeMaskScalar(value, value).
inline std::uint64_t ByteMask(const std::uint8_t* bytes, std::uint8_t value) {
#if defined(__SSE2__)
    const __m128i wanted = _mm_set1_epi8(static_cast<char>(value));
    std::uint64_t mask = 0;
    for (int q = 0; q < 4; ++q) {
        const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + 16 * q));
        const __m128i equal = _mm_cmpeq_epi8(chunk, wanted);
        mask |= static_cast<std::uint64_t>(static_cast<std::uint32_t>(_mm_movemask_epi8(equal)))
                << (16 * q);
    }
    return mask;
#else
    return RangeMaskScalar(bytes, value, value);
#endif
}

#if defined(__x86_64__)
// The masks in one AVX-512 comparison each, for block loops compiled for AVX-512 (BW), into
// which they inline.
__attribute__((target("avx512f,avx512bw"))) inline std::uint64_t
RangeMaskAvx512(const std::uint8_t* bytes, std::uint8_t low, std::uint8_t high) {
    const __m512i offset =
        _mm512_sub_epi8(_mm512_loadu_si512(bytes), _mm512_set1_epi8(static_cast<char>(low)));
    return _mm512_cmple_epu8_mask(offset, _mm512_set1_epi8(static_cast<char>(high - low)));
}

__attribute__((target("avx512f,avx512bw"))) inline std::uint64_t
HighBitMaskAvx512(const std::uint8_t* bytes) {
    return _mm512_movepi8_mask(_mm512_loadu_si512(bytes));
}

__attribute__((target("avx512f,avx512bw"))) inline std::uint64_t
ByteMaskAvx512(const std::uint8_t* bytes, std::uint8_t value) {
    return _mm512_cmpeq_epi8_mask(_mm512_loadu_si512(bytes),
                                  _mm512_set1_epi8(static_cast<char>(value)));
}
#endif

// The UTF-8 sequence structure of one block. owed marks the continuation bytes that the block
// before still expects at this block's start; nextOwed is the same for the next block. wanted
// marks where a continuation byte must stand, continuation where one does; the block is well
// formed where the two agree. Lead bytes of the old five- and six-byte forms count, as the
// program's UTF-8 always accepted them.
struct Utf8BlockMasks {
    std::uint64_t continuation;
    std::uint64_t leads; // every byte C0..FD
    std::uint64_t wanted;
    std::uint64_t nextOwed;
};

inline Utf8BlockMasks Utf8Masks(const std::uint8_t* block, std::uint64_t owed) {
    const std::uint64_t from6 = RangeMask(block, 0xFC, 0xFD);
    const std::uint64_t from5 = from6 | RangeMask(block, 0xF8, 0xFB);
    const std::uint64_t from4 = from5 | RangeMask(block, 0xF0, 0xF7);
    const std::uint64_t from3 = from4 | RangeMask(block, 0xE0, 0xEF);
    const std::uint64_t from2 = from3 | RangeMask(block, 0xC0, 0xDF);
    return {RangeMask(block, 0x80, 0xBF), from2,
            owed | from2 << 1 | from3 << 2 | from4 << 3 | from5 << 4 | from6 << 5,
            from2 >> 63 | from3 >> 62 | from4 >> 61 | from5 >> 60 | from6 >> 59};
}

// Positions consumed as the second byte of a two-byte character. leads marks the bytes that
// take the next byte when they stand at a character start; carry says the block's first byte
// is already taken by the last lead of the block before, and is updated for the next block.
// A run of lead bytes pairs up from its start, so the byte after an odd-length run is taken.
inline std::uint64_t SecondBytePositions(std::uint64_t leads, std::uint64_t& carry) {
    constexpr std::uint64_t kEvenBits = 0x5555555555555555ULL;
    leads &= ~carry;
    const std::uint64_t followsLead = (leads << 1) | carry;
    const std::uint64_t oddRunStarts = leads & ~kEvenBits & ~followsLead;
    std::uint64_t evenRuns = 0;
    carry = __builtin_add_overflow(oddRunStarts, leads, &evenRuns) ? 1 : 0;
    const std::uint64_t invert = evenRuns << 1;
    return (kEvenBits ^ invert) & followsLead;
}

// The scalar twin of SecondBytePositions: walks the block character by character.
inline std::uint64_t SecondBytePositionsScalar(std::uint64_t leads, std::uint64_t& carry) {
    std::uint64_t seconds = 0;
    int k = 0;
    if (carry != 0) {
        seconds |= 1;
        k = 1;
    }
    carry = 0;
    for (; k < kMaskBlock; ++k) {
        if (((leads >> k) & 1) == 0) {
            continue;
        }
        if (k + 1 == kMaskBlock) {
            carry = 1;
        } else {
            seconds |= std::uint64_t{1} << (k + 1);
        }
        ++k;
    }
    return seconds;
}

} // namespace korvel::detail
