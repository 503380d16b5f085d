#pragma once

// One character of CP932 at a time, in both directions: the slow paths of every converter that
// reads or writes CP932, and the twins that the block loops are held against. The JIS and EUC
// converters feed their Shift_JIS bytes through these one by one, which gives the bytes that
// their two-step route through a whole Shift_JIS buffer gives, without the buffer.

#include "codec/Cp932Tables.h"
#include "codec/Utf16Units.h"

#include <cstddef>
#include <cstdint>

namespace korvel::detail {

// Length of an entry of encodedBytes (or of a table of the same form).
inline int EncodedLength(std::uint16_t bytes) {
    return bytes > 0xFF ? 2 : 1;
}

// CP932 decoding fed one byte at a time. A lead byte waits for the next byte; when that is no
// trail byte the lead becomes U+FFFD and the byte is read on its own (81 0A keeps its LF).
class ShiftJisUnitWriter {
public:
    explicit ShiftJisUnitWriter(char16_t* out) : out_(out), units_(cp932::Tables().decodedUnits) {}

    void Put(std::uint8_t b) {
        if (lead_ != 0) {
            *out_++ = units_[lead_ << 8 | b];
            lead_ = 0;
            if (cp932::IsTrailByte(b)) {
                return;
            }
        }
        if (cp932::IsLeadByte(b)) {
            lead_ = b;
            return;
        }
        *out_++ = units_[b << 8];
    }

    // A lead byte at the end reads the terminator, which is no trail byte.
    void Finish() {
        if (lead_ != 0) {
            *out_++ = units_[lead_ << 8];
            lead_ = 0;
        }
    }

    // No lead byte waiting: a whole character may be written past Put.
    bool Idle() const { return lead_ == 0; }
    char16_t*& out() { return out_; }

private:
    char16_t* out_;
    const std::uint16_t* units_;
    std::uint8_t lead_ = 0; // 0 is never a lead byte
};

struct EncodedCharacter {
    std::uint16_t bytes; // output order, as in encodedBytes
    std::size_t units;   // code units used
};

// The CP932 bytes of the character at unit k of source, which holds unitCount UTF-16LE units.
inline EncodedCharacter EncodeShiftJisCharacter(const std::uint16_t* encodedBytes,
                                                const std::uint8_t* source, std::size_t k,
                                                std::size_t unitCount) {
    const char16_t unit = LoadUnit(source + 2 * k);
    const std::uint16_t bytes = encodedBytes[unit];
    if (bytes != cp932::kUnmapped) {
        return {bytes, 1};
    }
    // A surrogate pair is one character without a CP932 form: one "?" for the pair.
    const bool pair = unit <= 0xDBFF && k + 1 < unitCount &&
                      LoadUnit(source + 2 * k + 2) >= 0xDC00 &&
                      LoadUnit(source + 2 * k + 2) <= 0xDFFF;
    return {cp932::kDefaultCharacter, pair ? std::size_t{2} : std::size_t{1}};
}

} // namespace korvel::detail
