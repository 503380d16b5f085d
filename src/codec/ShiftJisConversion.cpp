#include "codec/ShiftJisConversion.h"

#include "codec/ByteMasks.h"
#include "codec/Cp932Tables.h"
#include "codec/OutputBlock.h"
#include "codec/ShiftJisSteps.h"
#include "codec/TableEncoding.h"
#include "codec/VectorSupport.h"

#include <bit>
#include <cstring>

namespace korvel {

namespace {

using detail::LoadUnit;
using detail::NarrowAscii8;

constexpr std::uint64_t kHighBits8 = 0x8080808080808080ULL;

inline std::uint64_t Load64(const std::uint8_t* p) {
    std::uint64_t word;
    std::memcpy(&word, p, sizeof word);
    return word;
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
    const std::uint16_t* encodedBytes = cp932::Tables().encodedBytes;
    std::uint8_t* d = out.bytes();
    std::size_t k = 0;
#if defined(__x86_64__)
    const bool ssse3 = detail::Vectors().ssse3;
#endif
    while (k < unitCount) {
#if defined(__x86_64__)
        // Sixteen bytes are stored whatever the eight characters take: 2 per unit at most.
        if (ssse3 && k + 8 <= unitCount) {
            const std::size_t stop =
                detail::EncodeGroupsSsse3(encodedBytes, bytes, k, unitCount, d);
            if (stop != k) {
                k = stop;
                continue;
            }
        }
#endif
        const char16_t unit = LoadUnit(bytes + 2 * k);
        if (unit < 0x80 && k + 8 <= unitCount && NarrowAscii8(bytes + 2 * k, d)) {
            d += 8;
            k += 8;
            continue;
        }
        // Both bytes are stored whatever the length: the second of a one-byte character is
        // overwritten next, or lands on the terminator's room.
        std::uint16_t encoded = encodedBytes[unit];
        std::size_t used = 1;
        if (encoded == cp932::kUnmapped) {
            const detail::EncodedCharacter character =
                detail::EncodeShiftJisCharacter(encodedBytes, bytes, k, unitCount);
            encoded = character.bytes;
            used = character.units;
        }
        detail::StoreBytes(d, encoded);
        d += detail::EncodedLength(encoded);
        k += used;
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
    const std::uint16_t* decodedUnits = cp932::Tables().decodedUnits;
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
            detail::RangeMask(block, 0x81, 0xFC) & ~detail::RangeMask(block, 0xA0, 0xDF);
        const std::uint64_t trails =
            detail::RangeMask(block, 0x40, 0xFC) & ~detail::ByteMask(block, 0x7F);
        const std::uint64_t trailNext =
            trails >> 1 | static_cast<std::uint64_t>(cp932::IsTrailByte(block[detail::kMaskBlock]))
                              << 63;
        // The table reads a lead without a trail as U+FFFD, so only the starts matter here.
        for (std::uint64_t starts = ~detail::SecondBytePositions(leads & trailNext, carry);
             starts != 0; starts &= starts - 1) {
            const std::uint8_t* character = block + std::countr_zero(starts);
            *d++ = decodedUnits[character[0] << 8 | character[1]];
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
        const std::uint8_t next = detail::ByteAt(bytes, byteLength, i + 1);
        *d++ = decodedUnits[b << 8 | next];
        // A lead byte never swallows a byte outside the trail range (81 0A keeps its LF).
        i += cp932::IsLeadByte(b) && cp932::IsTrailByte(next) ? 2 : 1;
    }
    const auto units = static_cast<std::size_t>(d - out.units());
    return out.Deliver(units * 2, 2, output, outputLength);
}

} // namespace korvel
