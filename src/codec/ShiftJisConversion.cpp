#include "codec/ShiftJisConversion.h"

#include "codec/ByteMasks.h"
#include "codec/Cp932Tables.h"
#include "codec/OutputBlock.h"

#include <bit>
#include <cstring>

namespace korvel {

namespace {

constexpr char16_t kSubstitute = 0xFFFD;
constexpr std::uint8_t kDefaultCharacter = '?';
constexpr std::uint64_t kHighBits8 = 0x8080808080808080ULL;
constexpr std::uint64_t kNonAsciiUnits4 = 0xFF80FF80FF80FF80ULL;

inline std::uint64_t Load64(const std::uint8_t* p) {
    std::uint64_t word;
    std::memcpy(&word, p, sizeof word);
    return word;
}

inline char16_t LoadUnit(const std::uint8_t* p) {
    char16_t unit;
    std::memcpy(&unit, p, sizeof unit);
    return unit;
}

} // namespace

CodecStatus UnicodeToShiftJis(const void* source, std::size_t byteLength, std::uint8_t** output,
                              std::size_t* outputLength) {
    if (source == nullptr || output == nullptr || outputLength == nullptr) {
        return CodecInvalidArgument;
    }
    const auto* bytes = static_cast<const std::uint8_t*>(source);
    const std::size_t unitCount = byteLength / 2; // an odd last byte is ignored
    if (unitCount == 0) {
        return CodecUnconvertible; // the platform conversion converts nothing here
    }
    detail::OutputBlock out;
    if (!out.Reserve(detail::BoundBytes(unitCount, 2, 0))) {
        *output = nullptr;
        return CodecOutOfMemory;
    }
    const std::uint16_t* fromUnicode = cp932::Tables().fromUnicode;
    std::uint8_t* d = out.bytes();
    std::size_t k = 0;
    while (k < unitCount) {
        if (k + 4 <= unitCount) {
            const std::uint64_t word = Load64(bytes + 2 * k);
            if ((word & kNonAsciiUnits4) == 0) {
                d[0] = static_cast<std::uint8_t>(word);
                d[1] = static_cast<std::uint8_t>(word >> 16);
                d[2] = static_cast<std::uint8_t>(word >> 32);
                d[3] = static_cast<std::uint8_t>(word >> 48);
                d += 4;
                k += 4;
                continue;
            }
        }
        const char16_t unit = LoadUnit(bytes + 2 * k);
        ++k;
        if (unit >= 0xD800 && unit <= 0xDFFF) {
            // A surrogate pair is one character without a CP932 form: one "?" for the pair.
            if (unit <= 0xDBFF && k < unitCount) {
                const char16_t low = LoadUnit(bytes + 2 * k);
                if (low >= 0xDC00 && low <= 0xDFFF) {
                    ++k;
                }
            }
            *d++ = kDefaultCharacter;
            continue;
        }
        const std::uint16_t code = fromUnicode[unit];
        if (code == cp932::kUnmapped) {
            *d++ = kDefaultCharacter;
        } else if (code < 0x100) {
            *d++ = static_cast<std::uint8_t>(code);
        } else {
            d[0] = static_cast<std::uint8_t>(code >> 8);
            d[1] = static_cast<std::uint8_t>(code);
            d += 2;
        }
    }
    return out.Deliver(static_cast<std::size_t>(d - out.bytes()), 1, output, outputLength);
}

CodecStatus ShiftJisToUnicode(const void* source, std::size_t byteLength, std::uint8_t** output,
                              std::size_t* outputLength) {
    if (source == nullptr || output == nullptr || outputLength == nullptr) {
        return CodecInvalidArgument;
    }
    const auto* bytes = static_cast<const std::uint8_t*>(source);
    detail::OutputBlock out;
    if (!out.Reserve(detail::BoundBytes(byteLength, 2, 0))) {
        return CodecOutOfMemory;
    }
    const cp932::FlatTables& tables = cp932::Tables();
    char16_t* d = out.units();
    std::size_t i = 0;
    // Whole blocks first: their masks say where each character starts, so the characters
    // convert independently of one another instead of waiting on the previous one's length.
    // A block reads one byte beyond itself, the trail of its last byte.
    std::uint64_t carry = 0;
    for (; i + detail::kMaskBlock + 1 <= byteLength; i += detail::kMaskBlock) {
        const std::uint8_t* block = bytes + i;
        if (carry == 0 && detail::HighBitMask(block) == 0) {
            for (int k = 0; k < detail::kMaskBlock; ++k) {
                d[k] = block[k]; // CP932 maps ASCII to itself
            }
            d += detail::kMaskBlock;
            continue;
        }
        const std::uint64_t leads =
            detail::RangeMask(block, 0x81, 0x9F) | detail::RangeMask(block, 0xE0, 0xFC);
        const std::uint64_t trailNext =
            detail::RangeMask(block + 1, 0x40, 0xFC) & ~detail::ByteMask(block + 1, 0x7F);
        std::uint64_t pairs = leads & trailNext;
        std::uint64_t starts = ~detail::SecondBytePositions(pairs, carry);
        pairs &= starts;
        while (starts != 0) {
            const int k = std::countr_zero(starts);
            starts &= starts - 1;
            const std::uint8_t b = block[k];
            const std::uint16_t unit = ((pairs >> k) & 1) != 0
                                           ? tables.doubleByte[(b << 8) | block[k + 1]]
                                           : tables.singleByte[b];
            *d++ = unit == cp932::kUnmapped ? kSubstitute : unit;
        }
    }
    i += carry; // the trail of the last block's last character
    while (i < byteLength) {
        if (i + 8 <= byteLength && (Load64(bytes + i) & kHighBits8) == 0) {
            for (int k = 0; k < 8; ++k) {
                d[k] = bytes[i + k]; // CP932 maps ASCII to itself
            }
            d += 8;
            i += 8;
            continue;
        }
        const std::uint8_t b = bytes[i];
        if (cp932::IsLeadByte(b)) {
            const std::uint8_t trail = detail::ByteAt(bytes, byteLength, i + 1);
            if (cp932::IsTrailByte(trail)) {
                const std::uint16_t unit = tables.doubleByte[(b << 8) | trail];
                *d++ = unit == cp932::kUnmapped ? kSubstitute : unit;
                i += 2;
                continue;
            }
            // A lead byte never swallows a byte outside the trail range (81 0A keeps its LF).
            *d++ = kSubstitute;
            ++i;
            continue;
        }
        const std::uint16_t unit = tables.singleByte[b];
        *d++ = unit == cp932::kUnmapped ? kSubstitute : unit;
        ++i;
    }
    const auto units = static_cast<std::size_t>(d - out.units());
    return out.Deliver(units * 2, 2, output, outputLength);
}

} // namespace korvel
