#include "TestInputs.h"

#include <cstdio>

namespace korvel::testing {

namespace {

template <typename Unit>
std::string HexOf(const Unit* units, std::size_t count, const char* format, const char* open) {
    std::string text = open;
    char digits[8];
    for (std::size_t i = 0; i < count; ++i) {
        std::snprintf(digits, sizeof digits, format, static_cast<unsigned>(units[i]));
        if (i > 0) {
            text += ' ';
        }
        text += digits;
    }
    return text + "]";
}

} // namespace

std::string Hex(ByteView bytes) {
    return HexOf(bytes.data(), bytes.size(), "%02X", "[");
}

std::string Hex(std::u16string_view units) {
    return HexOf(units.data(), units.size(), "%04X", "u[");
}

Bytes BytesOf(std::string_view text) {
    return Bytes(text.begin(), text.end());
}

ByteView ViewOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

ByteView ViewOf(std::u16string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size() * 2};
}

} // namespace korvel::testing

namespace korvel {

void PrintTo(TextEncoding encoding, std::ostream* os) {
    static constexpr const char* kNames[] = {"AsciiOnly",   "ShiftJis",    "Jis",     "Euc",
                                             "Utf8",        "Utf8N",       "Unicode", "AutoDetect",
                                             "GarbledMail", "Undetermined"};
    const auto value = static_cast<std::uint32_t>(encoding);
    *os << (value < std::size(kNames) ? kNames[value] : "?") << " (" << value << ")";
}

void PrintTo(LineEnding lineEnding, std::ostream* os) {
    static constexpr const char* kNames[] = {"CrLf", "Cr", "Lf", "NoLineBreak"};
    const auto value = static_cast<std::uint32_t>(lineEnding);
    *os << (value < std::size(kNames) ? kNames[value] : "?") << " (" << value << ")";
}

} // namespace korvel
