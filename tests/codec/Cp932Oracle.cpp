#include "Cp932Oracle.h"

#include <array>
#include <iconv.h>
#include <map>
#include <memory>
#include <stdexcept>

namespace korvel::reference {

namespace {

// Lead bytes 81-9F and E0-FC (the user-defined area F0-F9 included); trails 40-7E and 80-FC.
constexpr bool IsLead(std::uint8_t b) {
    return (b >= 0x81 && b <= 0x9F) || (b >= 0xE0 && b <= 0xFC);
}
constexpr bool IsTrail(std::uint8_t b) {
    return b >= 0x40 && b <= 0xFC && b != 0x7F;
}

constexpr std::uint16_t kNoChar = 0xFFFF; // not a character CP932 decodes to

// Asking iconv once per character for all of CP932 takes a fraction of a second; the answers
// are kept for the rest of the run.
struct OracleTables {
    std::array<std::optional<Bytes>, 0x10000> encode;
    std::array<std::uint16_t, 0x10000> decode; // single byte b at b, pair at lead << 8 | trail
};

std::unique_ptr<OracleTables> AskIconv() {
    auto tables = std::make_unique<OracleTables>();
    tables->decode.fill(kNoChar);
    for (std::uint32_t code = 0; code < 0x10000; ++code) {
        const auto low = static_cast<std::uint8_t>(code);
        const auto high = static_cast<std::uint8_t>(code >> 8);
        const std::uint8_t unit[2] = {low, high};
        const std::uint8_t pair[2] = {high, low};
        if (code < 0xD800 || code > 0xDFFF) {
            tables->encode[code] = Iconv("CP932", "UTF-16LE", unit);
        }
        const bool single = high == 0 && !IsLead(low);
        const std::optional<Bytes> out =
            single || (IsLead(high) && IsTrail(low))
                ? Iconv("UTF-16LE", "CP932", single ? ByteView(pair + 1, 1) : ByteView(pair))
                : std::nullopt;
        if (out && out->size() == 2) {
            tables->decode[code] = static_cast<std::uint16_t>((*out)[0] | (*out)[1] << 8);
        }
    }
    return tables;
}

const OracleTables& Tables() {
    static const std::unique_ptr<OracleTables> tables = AskIconv();
    return *tables;
}

} // namespace

std::optional<Bytes> Iconv(const char* to, const char* from, ByteView input) {
    // One converter per direction for the whole run, set back to its first state for each call.
    using Converter = std::unique_ptr<void, int (*)(iconv_t)>;
    static std::map<std::pair<std::string, std::string>, Converter> converters;
    const auto [entry, added] = converters.try_emplace({to, from}, nullptr, iconv_close);
    if (added) {
        const iconv_t opened = iconv_open(to, from);
        entry->second.reset(opened == reinterpret_cast<iconv_t>(-1) ? nullptr : opened);
    }
    const iconv_t handle = entry->second.get();
    if (handle == nullptr) {
        throw std::runtime_error(std::string("iconv cannot convert ") + from + " to " + to);
    }
    iconv(handle, nullptr, nullptr, nullptr, nullptr);
    Bytes out(input.size() * 4 + 16);
    char* inPtr = const_cast<char*>(reinterpret_cast<const char*>(input.data())); // only read
    std::size_t inLeft = input.size();
    char* outPtr = reinterpret_cast<char*>(out.data());
    std::size_t outLeft = out.size();
    const bool done =
        iconv(handle, &inPtr, &inLeft, &outPtr, &outLeft) != static_cast<std::size_t>(-1) &&
        inLeft == 0 &&
        iconv(handle, nullptr, nullptr, &outPtr, &outLeft) != static_cast<std::size_t>(-1);
    if (!done) {
        return std::nullopt;
    }
    out.resize(out.size() - outLeft);
    return out;
}

std::optional<Bytes> EncodeCp932(char16_t unit) {
    return Tables().encode[unit];
}

std::optional<char16_t> DecodeCp932(ByteView code) {
    std::uint16_t unit = kNoChar;
    if (code.size() == 1 && !IsLead(code[0])) {
        unit = Tables().decode[code[0]];
    } else if (code.size() == 2 && IsLead(code[0]) && IsTrail(code[1])) {
        unit = Tables().decode[code[0] << 8 | code[1]];
    }
    if (unit == kNoChar) {
        return std::nullopt;
    }
    return static_cast<char16_t>(unit);
}

Bytes UnicodeToShiftJis(std::u16string_view text) {
    Bytes out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (const std::optional<Bytes> code = EncodeCp932(text[i])) {
            out.insert(out.end(), code->begin(), code->end());
            continue;
        }
        out.push_back('?');
        const bool pair = text[i] >= 0xD800 && text[i] <= 0xDBFF && i + 1 < text.size() &&
                          text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF;
        i += pair ? 1 : 0;
    }
    return out;
}

std::u16string ShiftJisToUnicode(ByteView bytes) {
    std::u16string text;
    for (std::size_t i = 0; i < bytes.size();) {
        const std::size_t used =
            IsLead(bytes[i]) && i + 1 < bytes.size() && IsTrail(bytes[i + 1]) ? 2 : 1;
        text.push_back(DecodeCp932(bytes.subspan(i, used)).value_or(u'\uFFFD'));
        i += used;
    }
    return text;
}

} // namespace korvel::reference
