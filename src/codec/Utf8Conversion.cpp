#include "codec/Utf8Conversion.h"

#include "codec/Detection.h"
#include "codec/OutputBlock.h"

#include <cstring>

namespace korvel {

namespace {

constexpr char16_t kBlackSquare = 0x25A0; // stands for a character beyond the BMP

inline std::uint64_t Load64(const std::uint8_t* p) {
    std::uint64_t word;
    std::memcpy(&word, p, sizeof word);
    return word;
}

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
    while (i < byteLength) {
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
    if (!out.Reserve(detail::BoundBytes(unitCount, 3, 0))) {
        return CodecOutOfMemory;
    }
    std::uint8_t* d = out.bytes();
    std::size_t k = 0;
    while (k < unitCount) {
        if (k + 4 <= unitCount) {
            const std::uint64_t word = Load64(bytes + 2 * k);
            if ((word & 0xFF80FF80FF80FF80ULL) == 0) {
                d[0] = static_cast<std::uint8_t>(word);
                d[1] = static_cast<std::uint8_t>(word >> 16);
                d[2] = static_cast<std::uint8_t>(word >> 32);
                d[3] = static_cast<std::uint8_t>(word >> 48);
                d += 4;
                k += 4;
                continue;
            }
        }
        std::uint16_t unit;
        std::memcpy(&unit, bytes + 2 * k, sizeof unit);
        d += EncodeUtf8Unit(unit, d);
        ++k;
    }
    return out.Deliver(static_cast<std::size_t>(d - out.bytes()), 2, output, outputLength);
}

} // namespace korvel
