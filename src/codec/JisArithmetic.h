#pragma once

// The JIS X 0208 row-cell arithmetic and the byte classes that the JIS and EUC converters share,
// in both their Shift_JIS forms and their direct UTF-16 forms.

#include <cstddef>
#include <cstdint>

namespace korvel::detail {

inline constexpr std::uint8_t kEsc = 0x1B;

// One Shift_JIS character (81 A1) stands for every JIS X 0212 character of an EUC file.
inline constexpr std::uint8_t kBlackSquare[] = {0x81, 0xA1};

struct EscapeMatch {
    int mode;         // 0 single-byte, 1 double-byte, 2 half-width katakana, 3 none
    int characterSet; // 10 for no sequence
    int length;       // with ESC; 0 for no sequence
};

// Matches an escape body (the bytes after ESC) at body[0..available), reading the bytes one by
// one and only as far as the match goes. Past the end the reads see 0, which matches nothing.
EscapeMatch MatchEscapeBody(const std::uint8_t* body, std::size_t available);

// JIS pair to Shift_JIS, on bytes (modulo 256) and without validation.
inline void JisPairToShiftJis(std::uint8_t j1, std::uint8_t j2, std::uint8_t* out) {
    out[0] = static_cast<std::uint8_t>(((j1 + 1) >> 1) + (j1 <= 0x5E ? 0x70 : 0xB0));
    if ((j1 & 1) != 0) {
        out[1] = static_cast<std::uint8_t>(j2 < 0x60 ? j2 + 0x1F : j2 + 0x20);
    } else {
        out[1] = static_cast<std::uint8_t>(j2 + 0x7E);
    }
}

inline void ShiftJisPairToJis(std::uint8_t s1, std::uint8_t s2, std::uint8_t* out) {
    const int d = s1 <= 0x9F ? 0xE1 : 0x161;
    if (s2 < 0x9F) {
        out[0] = static_cast<std::uint8_t>(2 * s1 - d);
        out[1] = static_cast<std::uint8_t>(s2 < 0x7F ? s2 - 0x1F : s2 - 0x20);
    } else {
        out[0] = static_cast<std::uint8_t>(2 * s1 - d + 1);
        out[1] = static_cast<std::uint8_t>(s2 - 0x7E);
    }
}

constexpr bool IsHalfWidthKatakana(std::uint8_t b) {
    return b >= 0xA1 && b <= 0xDF;
}

// The Shift_JIS lead bytes that JIS and EUC carry; the user-defined F0 to FC are not among them.
constexpr bool IsJisLeadByte(std::uint8_t b) {
    return (b >= 0x81 && b <= 0x9F) || (b >= 0xE0 && b <= 0xEF);
}

} // namespace korvel::detail
