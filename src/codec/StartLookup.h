#pragma once

// The code units of the characters that begin in a 64-byte block of EUC or JIS, looked up in a
// table indexed by a character's first byte above its second. The block loops find with masks
// where characters begin; these write the units of those characters in order.

#include "codec/ByteMasks.h"

#include <bit>
#include <cstdint>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace korvel::detail {

// starts marks the bytes that begin a character, jisPairs those of them that begin a JIS pair,
// which reads as its EUC form (both high bits set). A character at 63 reads block[64].
inline void LookUpStarts(const std::uint8_t* block, std::uint64_t starts, std::uint64_t jisPairs,
                         const std::uint16_t* table, char16_t*& d) {
    for (; starts != 0; starts &= starts - 1) {
        const int k = std::countr_zero(starts);
        const unsigned eucHighBits = static_cast<unsigned>(jisPairs >> k & 1) * 0x8080u;
        *d++ = table[(block[k] << 8 | block[k + 1]) | eucHighBits];
    }
}

#if defined(__x86_64__)
// LookUpStarts for 32 bytes a step. ASCII takes its unit from its byte; the indexes of the
// other characters, at most 16 as each has two bytes, are packed with a compress and looked up
// with one gather, then spread back to their lanes, and one more compress packs the units of
// all the starts. The gather reads two bytes past an entry, so the table has one entry more
// than its indexes reach; the store writes 32 units past d whatever the count, so the output
// has room for one unit per byte of the block. (The masked forms with every lane set stand for
// the plain ones, whose undefined upper lanes GCC 12 warns about.)
__attribute__((target("avx512f,avx512bw,avx512vbmi2,popcnt"))) inline void
LookUpStartsAvx512(const std::uint8_t* block, std::uint64_t starts, std::uint64_t jisPairs,
                   const std::uint16_t* table, char16_t*& d) {
    const __m512i eucHighBits = _mm512_set1_epi16(static_cast<short>(0x8080));
    const __m512i zero = _mm512_setzero_si512();
    for (int half = 0; half < 2; ++half) {
        const std::uint8_t* at = block + 32 * half;
        const __m512i first =
            _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(at)));
        const __m512i second =
            _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(at + 1)));
        __m512i index = _mm512_or_si512(_mm512_slli_epi16(first, 8), second);
        const auto pairsHere = static_cast<__mmask32>(jisPairs >> (32 * half));
        index = _mm512_mask_mov_epi16(index, pairsHere, _mm512_or_si512(index, eucHighBits));
        const auto here = static_cast<__mmask32>(starts >> (32 * half));
        const __mmask32 looked =
            (here & ~_mm512_cmplt_epu16_mask(first, _mm512_set1_epi16(0x80))) | pairsHere;
        const __m512i wide = _mm512_maskz_cvtepu16_epi32(
            0xFFFF,
            _mm512_maskz_extracti64x4_epi64(0xF, _mm512_maskz_compress_epi16(looked, index), 0));
        const __m256i found = _mm512_maskz_cvtepi32_epi16(
            0xFFFF, _mm512_mask_i32gather_epi32(zero, 0xFFFF, wide, table, 2));
        const __m512i units =
            _mm512_mask_expand_epi16(first, looked, _mm512_maskz_inserti64x4(0xFF, zero, found, 0));
        _mm512_storeu_si512(d, _mm512_maskz_compress_epi16(here, units));
        d += std::popcount(static_cast<std::uint32_t>(here));
    }
}
#endif

} // namespace korvel::detail
