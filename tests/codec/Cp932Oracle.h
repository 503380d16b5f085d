#pragma once

// glibc iconv's CP932, asked one character at a time while the tests run. The shipped tables
// were generated from this converter, so a table or lookup fault shows as a disagreement.

#include "ReferenceCodec.h"

#include <optional>
#include <string>
#include <string_view>

namespace korvel::reference {

// Lead bytes 81-9F and E0-FC (the user-defined area F0-F9 included); trails 40-7E and 80-FC.
constexpr bool IsCp932Lead(std::uint8_t b) {
    return (b >= 0x81 && b <= 0x9F) || (b >= 0xE0 && b <= 0xFC);
}
constexpr bool IsCp932Trail(std::uint8_t b) {
    return (b >= 0x40 && b <= 0x7E) || (b >= 0x80 && b <= 0xFC);
}

// One code unit; nullopt when CP932 has no form for it (surrogates included).
std::optional<Bytes> EncodeCp932(char16_t unit);
// One single byte or one lead/trail pair; nullopt when CP932 cannot decode it.
std::optional<char16_t> DecodeCp932(ByteView code);

// Whole runs with the editor's substitutions: "?" for a unit with no CP932 form, and one "?"
// for a surrogate pair, as the platform treats the pair as one character; U+FFFD for an
// undecodable byte, for a lead byte whose next byte is no trail byte (that byte is then read
// on its own) and for an undecodable lead/trail pair.
Bytes UnicodeToShiftJis(std::u16string_view text);
std::u16string ShiftJisToUnicode(ByteView bytes);

// Converts UTF-8 text to CP932 bytes; every character must have a CP932 form.
Bytes Cp932FromUtf8(std::string_view utf8);

} // namespace korvel::reference
