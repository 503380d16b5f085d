#pragma once

// glibc iconv, the outside judge of the encoding engine. Its CP932 is asked one character at a
// time while the tests run: the shipped tables were generated from this converter, so a table
// or lookup fault shows as a disagreement.

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvel::reference {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

// The whole input as one iconv conversion, or nullopt when iconv refuses any of it.
std::optional<Bytes> Iconv(const char* to, const char* from, ByteView input);

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

} // namespace korvel::reference
