#include "codec/Utf8Conversion.h"

#include "codec/ByteMasks.h"
#include "codec/Detection.h"
#include "codec/OutputBlock.h"
#include "codec/TableEncoding.h"
#include "codec/Utf16Units.h"
#include "codec/VectorSupport.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace korvel {

namespace {

constexpr char16_t kBlackSquare = 0x25A0; // stands for a character beyond the BMP

inline std::uint64_t Load64(const std::uint8_t* p) {
    std::uint64_t word;
    std::memcpy(&word, p, sizeof word);
    return word;
}

// The code unit of the sequence that begins at bytes[0], whose continuation bytes are known to
// be in place; branch-free so that the characters of a block do not wait on one another.
inline char16_t DecodeWellFormed(const std::uint8_t* bytes) {
    const unsigned b0 = bytes[0];
    const unsigned b1 = bytes[1] & 0x3F;
    const unsigned b2 = bytes[2] & 0x3F;
    const unsigned two = ((b0 & 0x1F) << 6) | b1;
    const unsigned three = ((b0 & 0x0F) << 12) | (b1 << 6) | b2;
    const unsigned unit = b0 < 0x80 ? b0 : b0 < 0xE0 ? two : b0 < 0xF0 ? three : kBlackSquare;
    return static_cast<char16_t>(unit);
}

#if defined(__x86_64__)
// Four characters of one to three bytes each, in 12 bytes or fewer: how a shuffle lays each one
// out in a four-byte slot, last byte first. Indexed by the characters' lengths less one, in
// base 3, the first character lowest.
using Utf8Unpacking = std::array<std::uint8_t, 16>;

constexpr std::array<Utf8Unpacking, 81> MakeUtf8Unpackings() {
    std::array<Utf8Unpacking, 81> unpackings{};
    for (unsigned pattern = 0; pattern < 81; ++pattern) {
        Utf8Unpacking& unpacking = unpackings[pattern];
        unpacking.fill(0x80); // pshufb writes 0 for a byte with its high bit set
        unsigned start = 0;
        unsigned lengths = pattern;
        for (unsigned c = 0; c < 4; ++c, lengths /= 3) {
            const unsigned length = lengths % 3 + 1;
            for (unsigned b = 0; b < length; ++b) {
                unpacking[4 * c + b] = static_cast<std::uint8_t>(start + length - 1 - b);
            }
            start += length;
        }
    }
    return unpackings;
}

constexpr std::array<Utf8Unpacking, 81> kUtf8Unpackings = MakeUtf8Unpackings();
constexpr std::uint16_t kNoPattern = 0xFF;

// The pattern of the first four characters of 12 bytes whose bit i says byte i ends a
// character, their length in bytes above it (so that the next step's start waits on one load,
// not two), or kNoPattern when one of them is longer than three bytes.
constexpr std::array<std::uint16_t, 4096> MakeUtf8Patterns() {
    std::array<std::uint16_t, 4096> patterns{};
    for (unsigned ends = 0; ends < 4096; ++ends) {
        unsigned pattern = 0;
        unsigned weight = 1;
        unsigned start = 0;
        for (unsigned c = 0; c < 4 && pattern != kNoPattern; ++c, weight *= 3) {
            unsigned end = start;
            while (end < 12 && end < start + 3 && (ends >> end & 1) == 0) {
                ++end;
            }
            if (end == 12 || (ends >> end & 1) == 0) {
                pattern = kNoPattern;
                break;
            }
            pattern += (end - start) * weight;
            start = end + 1;
        }
        patterns[ends] =
            static_cast<std::uint16_t>(pattern == kNoPattern ? pattern : pattern | start << 8);
    }
    return patterns;
}

constexpr std::array<std::uint16_t, 4096> kUtf8Patterns = MakeUtf8Patterns();

// Decodes the characters of a well-formed block of sequences of one to three bytes, four at a
// time with one shuffle, while four of them end in the block; returns where the characters it
// left begin. starts marks the bytes that begin a character, ends those that end one: past the
// block no byte is marked, so a step whose characters do not all end in it finds no pattern.
// Reads up to 79 bytes from block.
__attribute__((target("ssse3"))) int DecodeShortFormsSsse3(const std::uint8_t* block,
                                                           std::uint64_t starts, std::uint64_t ends,
                                                           char16_t*& d) {
    int p = std::countr_zero(starts);
    while (p < detail::kMaskBlock) {
        const std::uint16_t pattern = kUtf8Patterns[(ends >> p) & 0xFFF];
        if (pattern == kNoPattern) {
            break;
        }
        const Utf8Unpacking& unpacking = kUtf8Unpackings[pattern & 0xFF];
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block + p));
        const __m128i slots = _mm_shuffle_epi8(
            bytes, _mm_loadu_si128(reinterpret_cast<const __m128i*>(unpacking.data())));
        // Slot: last byte, middle byte, lead. The masks keep the payload bits of each; the lead
        // of a two-byte form sits where a middle byte would, and its 0 bit 5 keeps it right.
        const __m128i units = _mm_or_si128(
            _mm_or_si128(_mm_and_si128(slots, _mm_set1_epi32(0x7F)),
                         _mm_srli_epi32(_mm_and_si128(slots, _mm_set1_epi32(0x3F00)), 2)),
            _mm_srli_epi32(_mm_and_si128(slots, _mm_set1_epi32(0x0F0000)), 4));
        const __m128i narrow = _mm_shuffle_epi8(
            units, _mm_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, -1, -1, -1, -1, -1, -1, -1, -1));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(d), narrow);
        d += 4;
        p += pattern >> 8;
    }
    return p;
}

__attribute__((target("avx512f,avx512bw"))) inline __m512i Widen32(const std::uint8_t* bytes) {
    return _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes)));
}

// DecodeShortFormsSsse3 for a whole block: each byte's lane works out the unit of the sequence
// that would begin there, and one compress a half keeps the lanes where sequences begin. Reads
// 66 bytes from block; writes 32 units past d per half whatever the count, which the output
// has room for while 64 bytes of input remain.
__attribute__((target("avx512f,avx512bw,avx512vbmi2,popcnt"))) void
DecodeShortFormsAvx512(const std::uint8_t* block, std::uint64_t starts, char16_t*& d) {
    const __m512i payload = _mm512_set1_epi16(0x3F);
    for (int half = 0; half < 2; ++half) {
        const std::uint8_t* at = block + 32 * half;
        const __m512i lead = Widen32(at);
        const __m512i middle = _mm512_and_si512(Widen32(at + 1), payload);
        const __m512i last = _mm512_and_si512(Widen32(at + 2), payload);
        // Three bytes: the lead's low four bits land on top of the 16-bit lane by themselves.
        const __m512i three = _mm512_or_si512(
            _mm512_or_si512(_mm512_slli_epi16(lead, 12), _mm512_slli_epi16(middle, 6)), last);
        const __m512i two = _mm512_or_si512(
            _mm512_slli_epi16(_mm512_and_si512(lead, _mm512_set1_epi16(0x1F)), 6), middle);
        __m512i units = _mm512_mask_mov_epi16(
            lead, _mm512_cmpge_epu16_mask(lead, _mm512_set1_epi16(0xC0)), two);
        units = _mm512_mask_mov_epi16(units, _mm512_cmpge_epu16_mask(lead, _mm512_set1_epi16(0xE0)),
                                      three);
        const auto here = static_cast<__mmask32>(starts >> (32 * half));
        _mm512_storeu_si512(d, _mm512_maskz_compress_epi16(here, units));
        d += std::popcount(static_cast<std::uint32_t>(here));
    }
}
#endif

// Decodes one 64-byte block whose sequences are all well formed (the continuation bytes are
// exactly those the lead bytes ask for, and there is no FE or FF); owed says how many of its
// first bytes finish a sequence of the block before and is updated for the next block.
// Returns false, writing nothing, for a block that is not well formed.
bool DecodeWellFormedBlock(const std::uint8_t* block, char16_t*& d, std::uint64_t& owed,
                           bool ssse3) {
    const std::uint64_t high = detail::HighBitMask(block);
    if (high == 0 && owed == 0) {
        for (int k = 0; k < detail::kMaskBlock; ++k) {
            d[k] = block[k];
        }
        d += detail::kMaskBlock;
        return true;
    }
    const std::uint64_t continuation = detail::RangeMask(block, 0x80, 0xBF);
    std::uint64_t nextOwed = 0;
    if (detail::RangeMask(block, 0xF0, 0xFF) == 0) {
        // Sequences of two and three bytes only, as nearly all text in the BMP: the masks
        // of the longer forms are all zero and need not be made.
        const std::uint64_t leads = high & ~continuation;
        const std::uint64_t from3 = detail::RangeMask(block, 0xE0, 0xEF);
        if ((owed | leads << 1 | from3 << 2) != continuation) {
            return false;
        }
        nextOwed = leads >> 63 | from3 >> 62;
#if defined(__x86_64__)
        if (detail::Vectors().avx512) {
            DecodeShortFormsAvx512(block, ~continuation, d);
            owed = nextOwed;
            return true;
        }
        if (ssse3) {
            // Byte 63 ends a character unless the next block owes it a continuation.
            const std::uint64_t starts = ~continuation;
            const std::uint64_t ends = starts >> 1 | (~nextOwed & 1) << 63;
            const int rest = DecodeShortFormsSsse3(block, starts, ends, d);
            for (std::uint64_t left = rest < detail::kMaskBlock ? starts >> rest << rest : 0;
                 left != 0; left &= left - 1) {
                *d++ = DecodeWellFormed(block + std::countr_zero(left));
            }
            owed = nextOwed;
            return true;
        }
#endif
    } else {
        const detail::Utf8BlockMasks masks = detail::Utf8Masks(block, owed);
        if (masks.wanted != continuation || detail::RangeMask(block, 0xFE, 0xFF) != 0) {
            return false;
        }
        nextOwed = masks.nextOwed;
    }
    for (std::uint64_t starts = ~continuation; starts != 0; starts &= starts - 1) {
        *d++ = DecodeWellFormed(block + std::countr_zero(starts));
    }
    owed = nextOwed;
    return true;
}

// EncodeUtf8Unit without branches: all four bytes at d are written, the unit's 1, 2 or 3 of
// them first; returns the count. The output block has room for the extra bytes of the last one.
inline int EncodeUtf8UnitWide(char16_t unit, std::uint8_t* d) {
    const std::uint32_t u = unit;
    const std::uint32_t one = u;
    const std::uint32_t two = (0xC0 | u >> 6) | (0x80 | (u & 0x3F)) << 8;
    const std::uint32_t three =
        (0xE0 | u >> 12) | (0x80 | ((u >> 6) & 0x3F)) << 8 | (0x80 | (u & 0x3F)) << 16;
    const std::uint32_t word = u < 0x80 ? one : u < 0x800 ? two : three;
    std::memcpy(d, &word, sizeof word);
    return 1 + static_cast<int>(u >= 0x80) + static_cast<int>(u >= 0x800);
}

// Writes the eight units at source as eight three-byte sequences when all of them are 0x800 or
// more (kana and kanji: most of a Japanese text), four bytes at a time; the fourth byte of each
// store is overwritten by the next, the last lands in the room kept for the terminator.
inline bool EncodeThreeByteUnits8(const std::uint8_t* source, std::uint8_t* d) {
#if defined(__SSE2__) && defined(__x86_64__)
    const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source));
    const __m128i below800 =
        _mm_cmpeq_epi16(_mm_and_si128(units, _mm_set1_epi16(-0x800)), _mm_setzero_si128());
    if (_mm_movemask_epi8(below800) != 0) {
        return false;
    }
    const __m128i sixBits = _mm_set1_epi16(0x3F);
    const __m128i first = _mm_or_si128(_mm_srli_epi16(units, 12), _mm_set1_epi16(0xE0));
    const __m128i second =
        _mm_or_si128(_mm_and_si128(_mm_srli_epi16(units, 6), sixBits), _mm_set1_epi16(0x80));
    const __m128i third = _mm_or_si128(_mm_and_si128(units, sixBits), _mm_set1_epi16(0x80));
    const __m128i firstTwo = _mm_or_si128(first, _mm_slli_epi16(second, 8));
    const __m128i halves[2] = {_mm_unpacklo_epi16(firstTwo, third),
                               _mm_unpackhi_epi16(firstTwo, third)};
    for (const __m128i& words : halves) {
        const auto low = static_cast<std::uint64_t>(_mm_cvtsi128_si64(words));
        const auto high =
            static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(words, words)));
        const std::uint32_t sequences[4] = {
            static_cast<std::uint32_t>(low), static_cast<std::uint32_t>(low >> 32),
            static_cast<std::uint32_t>(high), static_cast<std::uint32_t>(high >> 32)};
        for (const std::uint32_t sequence : sequences) {
            std::memcpy(d, &sequence, sizeof sequence);
            d += 3;
        }
    }
    return true;
#else
    (void)source;
    (void)d;
    return false;
#endif
}

#if defined(__x86_64__)
// How four units of 1, 2 or 3 bytes, each laid out in its own four-byte slot, close up: the
// shuffle that packs the used bytes of the slots together, and their count. Indexed by the
// units' lengths less one, two bits per unit, the first unit lowest.
using Utf8Packing = detail::BytePacking;

constexpr std::array<Utf8Packing, 256> MakeUtf8Packings() {
    std::array<Utf8Packing, 256> packings{};
    for (unsigned index = 0; index < 256; ++index) {
        Utf8Packing& packing = packings[index];
        packing.shuffle.fill(0x80); // pshufb writes 0 for a byte with its high bit set
        unsigned out = 0;
        for (unsigned unit = 0; unit < 4; ++unit) {
            const unsigned length = std::min((index >> (2 * unit) & 3) + 1, 3u);
            for (unsigned b = 0; b < length; ++b) {
                packing.shuffle[out++] = static_cast<std::uint8_t>(4 * unit + b);
            }
        }
        packing.length = static_cast<std::uint8_t>(out);
    }
    return packings;
}

constexpr std::array<Utf8Packing, 256> kUtf8Packings = MakeUtf8Packings();

// Bit k of a four-bit mask moved to bit 2k.
constexpr std::array<unsigned, 16> kSpreadBits = {0x00, 0x01, 0x04, 0x05, 0x10, 0x11, 0x14, 0x15,
                                                  0x40, 0x41, 0x44, 0x45, 0x50, 0x51, 0x54, 0x55};

// Encodes the eight units at source, whatever their lengths (surrogates as three bytes, as
// EncodeUtf8Unit does), with two byte shuffles and no branch; writes 16 bytes at d twice, the
// second store overlapping the first, and returns the bytes the units take. The output block
// keeps room behind the last unit for the stores' tails.
__attribute__((target("ssse3"))) inline int EncodeUtf8Units8Ssse3(const std::uint8_t* source,
                                                                  std::uint8_t* d) {
    const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source));
    const __m128i zero = _mm_setzero_si128();
    const __m128i sixBits = _mm_set1_epi16(0x3F);
    const __m128i continuation = _mm_set1_epi16(0x80);
    // All ones in the lanes of units of two or more bytes, and of three.
    const __m128i long2 = _mm_xor_si128(
        _mm_cmpeq_epi16(_mm_and_si128(units, _mm_set1_epi16(-0x80)), zero), _mm_set1_epi16(-1));
    const __m128i long3 = _mm_xor_si128(
        _mm_cmpeq_epi16(_mm_and_si128(units, _mm_set1_epi16(-0x800)), zero), _mm_set1_epi16(-1));
    const __m128i last = _mm_or_si128(_mm_and_si128(units, sixBits), continuation);
    const __m128i middle =
        _mm_or_si128(_mm_and_si128(_mm_srli_epi16(units, 6), sixBits), continuation);
    const __m128i lead3 = _mm_or_si128(_mm_srli_epi16(units, 12), _mm_set1_epi16(0xE0));
    const __m128i lead2 = _mm_or_si128(_mm_srli_epi16(units, 6), _mm_set1_epi16(0xC0));
    // Slot bytes: the lead (or the unit itself), then the second and the third byte.
    const __m128i first =
        _mm_or_si128(_mm_or_si128(_mm_and_si128(long3, lead3),
                                  _mm_andnot_si128(long3, _mm_and_si128(long2, lead2))),
                     _mm_andnot_si128(long2, units));
    const __m128i second =
        _mm_or_si128(_mm_and_si128(long3, middle), _mm_andnot_si128(long3, last));
    const __m128i firstTwo = _mm_or_si128(first, _mm_slli_epi16(second, 8));
    const __m128i slots[2] = {_mm_unpacklo_epi16(firstTwo, last),
                              _mm_unpackhi_epi16(firstTwo, last)};
    const auto lengths = static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(long2, long3)));
    const unsigned indexes[2] = {kSpreadBits[lengths & 0xF] + kSpreadBits[lengths >> 8 & 0xF],
                                 kSpreadBits[lengths >> 4 & 0xF] +
                                     kSpreadBits[lengths >> 12 & 0xF]};
    int written = 0;
    for (int half = 0; half < 2; ++half) {
        const Utf8Packing& packing = kUtf8Packings[indexes[half]];
        const __m128i shuffle =
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(packing.shuffle.data()));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + written),
                         _mm_shuffle_epi8(slots[half], shuffle));
        written += packing.length;
    }
    return written;
}

// The whole run of eight-unit groups in one function compiled for SSSE3, so that the groups
// inline into its loop; returns the unit where it stopped.
__attribute__((target("ssse3"))) std::size_t
EncodeUtf8GroupsSsse3(const std::uint8_t* source, std::size_t unitCount, std::uint8_t*& d) {
    std::size_t k = 0;
    for (; k + 8 <= unitCount; k += 8) {
        d += EncodeUtf8Units8Ssse3(source + 2 * k, d);
    }
    return k;
}
#endif

} // namespace

int EncodeUtf8Unit(std::uint16_t unit, std::uint8_t* destination) {
    if (unit < 0x80) {
        destination[0] = static_cast<std::uint8_t>(unit);
        return 1;
    }
    if (unit < 0x800) {
        destination[0] = static_cast<std::uint8_t>(0xC0 | (unit >> 6));
        destination[1] = static_cast<std::uint8_t>(0x80 | (unit & 0x3F));
        return 2;
    }
    destination[0] = static_cast<std::uint8_t>(0xE0 | (unit >> 12));
    destination[1] = static_cast<std::uint8_t>(0x80 | ((unit >> 6) & 0x3F));
    destination[2] = static_cast<std::uint8_t>(0x80 | (unit & 0x3F));
    return 3;
}

CodecStatus Utf8ToUnicode(const void* source, std::size_t byteLength, std::uint8_t** output,
                          std::size_t* outputLength) {
    if (source == nullptr || output == nullptr || outputLength == nullptr) {
        return CodecInvalidArgument;
    }
    const auto* bytes = static_cast<const std::uint8_t*>(source);
    detail::OutputBlock out;
    if (!out.Reserve(detail::BoundBytes(byteLength, 2, 0))) {
        return CodecOutOfMemory;
    }
    char16_t* d = out.units();
    std::size_t i = 0;
    // Well-formed blocks convert through masks; a block that is not goes through the byte-wise
    // loop below, which then hands back to the blocks at the next sequence start. The last
    // sequence of a block may read up to 5 bytes beyond it, the shuffles' loads 15.
    constexpr std::size_t kReach = detail::kMaskBlock + 15;
    const bool ssse3 = detail::Vectors().ssse3;
    std::uint64_t owed = 0;
    std::size_t bytewiseUntil = 0;
    while (i < byteLength) {
        if (i >= bytewiseUntil && byteLength - i >= kReach) {
            if (DecodeWellFormedBlock(bytes + i, d, owed, ssse3)) {
                i += detail::kMaskBlock;
                continue;
            }
            bytewiseUntil = i + detail::kMaskBlock;
        }
        if (owed != 0) {
            // These bytes end a sequence already written, as the byte-wise jump past it would.
            i += static_cast<std::size_t>(std::popcount(owed));
            owed = 0;
            continue;
        }
        if (i + 8 <= byteLength && (Load64(bytes + i) & 0x8080808080808080ULL) == 0) {
            for (int k = 0; k < 8; ++k) {
                d[k] = bytes[i + k];
            }
            d += 8;
            i += 8;
            continue;
        }
        const std::uint8_t b0 = bytes[i];
        if (b0 < 0x80) {
            *d++ = b0;
            ++i;
            continue;
        }
        // Continuation bytes are taken as they come: the detector has tested them, and a user
        // who forced UTF-8 gets the arithmetic's result.
        const int sequenceLength = Utf8LeadLength(b0);
        switch (sequenceLength) {
        case -1:
            ++i; // a stray byte is dropped
            break;
        case 2:
            *d++ = static_cast<char16_t>(((b0 & 0x1F) << 6) |
                                         (detail::ByteAt(bytes, byteLength, i + 1) & 0x3F));
            i += 2;
            break;
        case 3:
            *d++ = static_cast<char16_t>(((b0 & 0x0F) << 12) |
                                         ((detail::ByteAt(bytes, byteLength, i + 1) & 0x3F) << 6) |
                                         (detail::ByteAt(bytes, byteLength, i + 2) & 0x3F));
            i += 3;
            break;
        default:
            *d++ = kBlackSquare; // no surrogate pairs: 4- to 6-byte forms become one square
            i += static_cast<std::size_t>(sequenceLength);
            break;
        }
    }
    const auto units = static_cast<std::size_t>(d - out.units());
    return out.Deliver(units * 2, 2, output, outputLength);
}

CodecStatus UnicodeToUtf8(const void* source, std::size_t byteLength, std::uint8_t** output,
                          std::size_t* outputLength) {
    if (source == nullptr || output == nullptr || outputLength == nullptr) {
        return CodecInvalidArgument;
    }
    const auto* bytes = static_cast<const std::uint8_t*>(source);
    const std::size_t unitCount = byteLength / 2;
    detail::OutputBlock out;
    // The shuffles' last store reaches 2 bytes past three per unit, the terminator's room 2.
    if (!out.Reserve(detail::BoundBytes(unitCount, 3, 2))) {
        return CodecOutOfMemory;
    }
    std::uint8_t* d = out.bytes();
    std::size_t k = 0;
#if defined(__x86_64__)
    if (detail::Vectors().ssse3) {
        k = EncodeUtf8GroupsSsse3(bytes, unitCount, d);
    }
#endif
    // Eight units at a time: ASCII as it is, anything else through the branch-free form, since
    // text that mixes ASCII and Japanese mispredicts a branch on each unit's length.
    for (; k + 8 <= unitCount; k += 8) {
        if (detail::NarrowAscii8(bytes + 2 * k, d)) {
            d += 8;
            continue;
        }
        if (EncodeThreeByteUnits8(bytes + 2 * k, d)) {
            d += 24;
            continue;
        }
        for (int j = 0; j < 8; ++j) {
            d += EncodeUtf8UnitWide(detail::LoadUnit(bytes + 2 * (k + j)), d);
        }
    }
    for (; k < unitCount; ++k) {
        d += EncodeUtf8Unit(detail::LoadUnit(bytes + 2 * k), d);
    }
    return out.Deliver(static_cast<std::size_t>(d - out.bytes()), 2, output, outputLength);
}

} // namespace korvel
