#include "Cp932Oracle.h"

#include <array>
#include <iconv.h>
#include <memory>
#include <stdexcept>

namespace korvel::reference {

namespace {

class Iconv {
public:
    Iconv(const char* to, const char* from) : handle_(iconv_open(to, from)) {
        if (handle_ == reinterpret_cast<iconv_t>(-1)) {
            throw std::runtime_error(std::string("iconv cannot convert ") + from + " to " + to);
        }
    }
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;
    ~Iconv() { iconv_close(handle_); }

    // The whole input as one conversion, or nullopt when iconv refuses any of it.
    std::optional<Bytes> Convert(ByteView input) const {
        iconv(handle_, nullptr, nullptr, nullptr, nullptr);
        Bytes in(input.begin(), input.end());
        Bytes out(input.size() * 4 + 16);
        char* inPtr = reinterpret_cast<char*>(in.data());
        std::size_t inLeft = in.size();
        char* outPtr = reinterpret_cast<char*>(out.data());
        std::size_t outLeft = out.size();
        if (iconv(handle_, &inPtr, &inLeft, &outPtr, &outLeft) == static_cast<std::size_t>(-1) ||
            inLeft != 0) {
            return std::nullopt;
        }
        out.resize(out.size() - outLeft);
        return out;
    }

private:
    iconv_t handle_;
};

constexpr std::uint16_t kNoChar = 0xFFFF; // not a character CP932 decodes to

// Asking iconv once per character for all of CP932 takes a fraction of a second; the answers
// are kept for the rest of the run.
struct OracleTables {
    std::array<std::optional<Bytes>, 0x10000> encode;
    std::array<std::uint16_t, 0x10000> decode; // single byte b at b, pair at lead << 8 | trail
};

std::unique_ptr<OracleTables> AskIconv() {
    auto tables = std::make_unique<OracleTables>();
    const Iconv toCp932("CP932", "UTF-16LE");
    for (std::uint32_t unit = 0; unit < 0x10000; ++unit) {
        if (unit >= 0xD800 && unit <= 0xDFFF) {
            continue;
        }
        const std::uint8_t le[2] = {static_cast<std::uint8_t>(unit),
                                    static_cast<std::uint8_t>(unit >> 8)};
        tables->encode[unit] = toCp932.Convert(le);
    }

    const Iconv fromCp932("UTF-16LE", "CP932");
    tables->decode.fill(kNoChar);
    auto decodeOne = [&](ByteView code) -> std::uint16_t {
        const std::optional<Bytes> out = fromCp932.Convert(code);
        if (!out || out->size() != 2) {
            return kNoChar;
        }
        return static_cast<std::uint16_t>((*out)[0] | (*out)[1] << 8);
    };
    for (unsigned b = 0; b < 0x100; ++b) {
        const std::uint8_t code[1] = {static_cast<std::uint8_t>(b)};
        if (!IsCp932Lead(code[0])) {
            tables->decode[b] = decodeOne(code);
        }
    }
    for (unsigned lead = 0x81; lead <= 0xFC; ++lead) {
        for (unsigned trail = 0x40; trail <= 0xFC; ++trail) {
            const std::uint8_t code[2] = {static_cast<std::uint8_t>(lead),
                                          static_cast<std::uint8_t>(trail)};
            if (IsCp932Lead(code[0]) && IsCp932Trail(code[1])) {
                tables->decode[lead << 8 | trail] = decodeOne(code);
            }
        }
    }
    return tables;
}

const OracleTables& Tables() {
    static const std::unique_ptr<OracleTables> tables = AskIconv();
    return *tables;
}

} // namespace

std::optional<Bytes> EncodeCp932(char16_t unit) {
    return Tables().encode[unit];
}

std::optional<char16_t> DecodeCp932(ByteView code) {
    std::uint16_t unit = kNoChar;
    if (code.size() == 1 && !IsCp932Lead(code[0])) {
        unit = Tables().decode[code[0]];
    } else if (code.size() == 2 && IsCp932Lead(code[0]) && IsCp932Trail(code[1])) {
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
        const std::optional<Bytes> code = EncodeCp932(text[i]);
        if (code) {
            out.insert(out.end(), code->begin(), code->end());
            continue;
        }
        out.push_back('?');
        const bool pair = text[i] >= 0xD800 && text[i] <= 0xDBFF && i + 1 < text.size() &&
                          text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF;
        if (pair) {
            ++i;
        }
    }
    return out;
}

std::u16string ShiftJisToUnicode(ByteView bytes) {
    std::u16string text;
    std::size_t i = 0;
    while (i < bytes.size()) {
        std::size_t used = 1;
        if (IsCp932Lead(bytes[i]) && i + 1 < bytes.size() && IsCp932Trail(bytes[i + 1])) {
            used = 2;
        }
        text.push_back(DecodeCp932(bytes.subspan(i, used)).value_or(u'\uFFFD'));
        i += used;
    }
    return text;
}

Bytes Cp932FromUtf8(std::string_view utf8) {
    static const Iconv fromUtf8("CP932", "UTF-8");
    const std::optional<Bytes> out =
        fromUtf8.Convert({reinterpret_cast<const std::uint8_t*>(utf8.data()), utf8.size()});
    if (!out) {
        throw std::runtime_error("no CP932 form for " + std::string(utf8));
    }
    return *out;
}

} // namespace korvel::reference
