#include "ReferenceCodec.h"

#include "Cp932Oracle.h"

#include <array>
#include <string_view>

namespace korvel::reference {

namespace {

constexpr std::uint8_t kEsc = 0x1B;

// The data followed by four 0 bytes, as in the loader's read buffer. Reads are bounds-checked
// so that the model itself cannot look further than that buffer allows.
class Padded {
public:
    explicit Padded(ByteView bytes) : bytes_(bytes.begin(), bytes.end()), size_(bytes.size()) {
        bytes_.insert(bytes_.end(), 4, 0);
    }
    std::size_t size() const { return size_; }
    std::uint8_t operator[](std::size_t i) const { return bytes_.at(i); }
    std::uint8_t& at(std::size_t i) { return bytes_.at(i); }
    const std::uint8_t* from(std::size_t i) const { return &bytes_.at(i); }
    Bytes data() const { return Bytes(bytes_.begin(), bytes_.begin() + size_); }

private:
    Bytes bytes_;
    std::size_t size_;
};

bool IsHalfKana(std::uint8_t b) {
    return b >= 0xA1 && b <= 0xDF;
}

bool IsShiftJisLead(std::uint8_t b) {
    return (b >= 0x81 && b <= 0x9F) || (b >= 0xE0 && b <= 0xEF);
}

void Append(Bytes& out, BytePair pair) {
    out.push_back(pair.first);
    out.push_back(pair.second);
}

void Append(Bytes& out, std::string_view text) {
    out.insert(out.end(), text.begin(), text.end());
}

} // namespace

TextEncoding DetectTextEncoding(ByteView bytes) {
    if (bytes.empty()) {
        return TextEncoding::Undetermined;
    }
    bool asciiOnly = false;
    if (bytes.size() >= 3 && bytes[0] == 0xEF && bytes[1] == 0xBB && bytes[2] == 0xBF) {
        if (IsUtf8Text(bytes, &asciiOnly)) {
            return TextEncoding::Utf8;
        }
        return IsEucText(bytes) ? TextEncoding::Euc : TextEncoding::Undetermined;
    }
    if (IsUtf8Text(bytes, &asciiOnly)) {
        return asciiOnly ? TextEncoding::AsciiOnly : TextEncoding::Utf8N;
    }
    const Padded p(bytes);
    for (std::size_t i = 0; i < p.size(); ++i) {
        if (p[i] == 0) {
            return TextEncoding::Unicode;
        }
        if (p[i] == kEsc && (p[i + 1] == '$' || p[i + 1] == '(')) {
            return TextEncoding::Jis;
        }
    }
    if (IsShiftJisText(bytes)) {
        return TextEncoding::ShiftJis;
    }
    return IsEucText(bytes) ? TextEncoding::Euc : TextEncoding::Undetermined;
}

int Utf8LeadLength(std::uint8_t b) {
    int ones = 0;
    for (int bit = 7; bit >= 0 && (b >> bit & 1) != 0; --bit) {
        ++ones;
    }
    return ones < 2 || ones > 6 ? -1 : ones;
}

bool IsUtf8Text(ByteView bytes, bool* asciiOnly) {
    *asciiOnly = true;
    const Padded p(bytes);
    std::size_t i = 0;
    while (i < p.size()) {
        const std::uint8_t b = p[i];
        if (b == 0x0A || b == 0x0D || b == 0x09) {
            ++i;
            continue;
        }
        if (b < 0x20) {
            return false;
        }
        if (b < 0x80) {
            ++i;
            continue;
        }
        const int length = Utf8LeadLength(b);
        if (length < 0) {
            return false;
        }
        for (int k = 1; k < length; ++k) {
            if ((p[i + k] & 0xC0) != 0x80) {
                return false;
            }
        }
        *asciiOnly = false;
        i += length;
    }
    return true;
}

bool IsShiftJisText(ByteView bytes) {
    bool trailDue = false;
    for (const std::uint8_t b : bytes) {
        if (trailDue) {
            if (!((b >= 0x40 && b <= 0x7E) || (b >= 0x80 && b <= 0xFC))) {
                return false;
            }
            trailDue = false;
        } else if (IsShiftJisLead(b)) {
            trailDue = true;
        } else if (!((b >= 0x20 && b <= 0x7E) || b == 0x0A || b == 0x0D || b == 0x09 ||
                     IsHalfKana(b))) {
            return false;
        }
    }
    return true;
}

bool IsEucText(ByteView bytes) {
    const Padded p(bytes);
    bool secondDue = false;
    std::size_t i = 0;
    auto inRange = [](std::uint8_t b, std::uint8_t low, std::uint8_t high) {
        return b >= low && b <= high;
    };
    while (i < p.size()) {
        const std::uint8_t b = p[i];
        if (secondDue) {
            if (!inRange(b, 0xA1, 0xFE)) {
                return false;
            }
            secondDue = false;
            ++i;
        } else if (inRange(b, 0xA1, 0xFE)) {
            secondDue = true;
            ++i;
        } else if (b == 0x8E) {
            if (!inRange(p[i + 1], 0xA1, 0xDF)) {
                return false;
            }
            i += 2;
        } else if (b == 0x8F) {
            if (!inRange(p[i + 1], 0xA1, 0xFE) || !inRange(p[i + 2], 0xA1, 0xFE)) {
                return false;
            }
            i += 3;
        } else if (inRange(b, 0x20, 0x7E) || b == 0x0A || b == 0x0D || b == 0x09) {
            ++i;
        } else {
            return false;
        }
    }
    return true;
}

LineEnding DetectLineEnding(ByteView bytes) {
    const Padded p(bytes);
    unsigned cr = 0;
    unsigned crlf = 0;
    unsigned lf = 0;
    for (std::size_t i = 0; i < p.size(); ++i) {
        if (p[i] == 0x0D) {
            ++cr;
            if (p[i + 1] == 0x0A || (p[i + 1] == 0 && p[i + 2] == 0x0A && p[i + 3] == 0)) {
                ++crlf;
            }
        } else if (p[i] == 0x0A) {
            ++lf;
        }
    }
    if (crlf > 0) {
        if (crlf * 100 / cr < 50) {
            return LineEnding::Cr;
        }
        return crlf * 100 / lf >= 50 ? LineEnding::CrLf : LineEnding::Lf;
    }
    if (cr == 0 && lf == 0) {
        return LineEnding::NoLineBreak;
    }
    return cr >= lf ? LineEnding::Cr : LineEnding::Lf;
}

std::u16string Utf8ToUnicode(ByteView bytes) {
    const Padded p(bytes);
    std::u16string text;
    std::size_t i = 0;
    while (i < p.size()) {
        const std::uint8_t b = p[i];
        if (b < 0x80) {
            text.push_back(b);
            ++i;
            continue;
        }
        const int length = Utf8LeadLength(b);
        if (length == 2) {
            text.push_back(static_cast<char16_t>((b & 0x1F) << 6 | (p[i + 1] & 0x3F)));
        } else if (length == 3) {
            text.push_back(static_cast<char16_t>((b & 0x0F) << 12 | (p[i + 1] & 0x3F) << 6 |
                                                 (p[i + 2] & 0x3F)));
        } else if (length > 3) {
            text.push_back(u'\u25A0');
        }
        i += length < 0 ? 1 : length;
    }
    return text;
}

Bytes EncodeUtf8Unit(char16_t unit) {
    if (unit < 0x80) {
        return {static_cast<std::uint8_t>(unit)};
    }
    if (unit < 0x800) {
        return {static_cast<std::uint8_t>(0xC0 | unit >> 6),
                static_cast<std::uint8_t>(0x80 | (unit & 0x3F))};
    }
    return {static_cast<std::uint8_t>(0xE0 | unit >> 12),
            static_cast<std::uint8_t>(0x80 | (unit >> 6 & 0x3F)),
            static_cast<std::uint8_t>(0x80 | (unit & 0x3F))};
}

Bytes UnicodeToUtf8(std::u16string_view text) {
    Bytes out;
    for (const char16_t unit : text) {
        const Bytes bytes = EncodeUtf8Unit(unit);
        out.insert(out.end(), bytes.begin(), bytes.end());
    }
    return out;
}

BytePair JisPairToShiftJis(std::uint8_t j1, std::uint8_t j2) {
    const unsigned s1 = ((j1 + 1u) >> 1) + (j1 <= 0x5E ? 0x70u : 0xB0u);
    unsigned s2;
    if (j1 % 2 == 0) {
        s2 = j2 + 0x7Eu;
    } else {
        s2 = j2 < 0x60 ? j2 + 0x1Fu : j2 + 0x20u;
    }
    return {static_cast<std::uint8_t>(s1), static_cast<std::uint8_t>(s2)};
}

BytePair ShiftJisPairToJis(std::uint8_t s1, std::uint8_t s2) {
    const unsigned d = s1 <= 0x9F ? 0xE1u : 0x161u;
    if (s2 < 0x9F) {
        return {static_cast<std::uint8_t>(2u * s1 - d),
                static_cast<std::uint8_t>(s2 < 0x7F ? s2 - 0x1Fu : s2 - 0x20u)};
    }
    return {static_cast<std::uint8_t>(2u * s1 - d + 1u), static_cast<std::uint8_t>(s2 - 0x7Eu)};
}

JisEscape ParseJisEscape(const std::uint8_t* bytes, bool withEsc) {
    struct Row {
        std::string_view body; // the bytes after ESC
        int mode;
        int characterSet;
    };
    static constexpr Row kRows[] = {
        {"$@", 1, 0},       {"$B", 1, 1}, {"$(D", 1, 2}, {"$(O", 1, 4}, {"$(P", 1, 4},
        {"&@\x1B$B", 1, 3}, {"(I", 2, 6}, {"(B", 0, 7},  {"(J", 0, 8},  {"(H", 0, 9},
    };
    const int escLength = withEsc ? 1 : 0;
    if (withEsc && bytes[0] != kEsc) {
        return {3, 10, 0};
    }
    const std::uint8_t* body = bytes + escLength;
    for (const Row& row : kRows) {
        std::size_t k = 0;
        while (k < row.body.size() && body[k] == static_cast<std::uint8_t>(row.body[k])) {
            ++k;
        }
        if (k == row.body.size()) {
            return {row.mode, row.characterSet, static_cast<int>(row.body.size()) + escLength};
        }
    }
    return {3, 10, escLength - 1};
}

FullWidthKana HalfKanaToFullWidth(std::uint8_t kana, std::uint8_t next) {
    static const Bytes kFullWidth = Cp932FromUtf8(
        "。「」、・ヲァィゥェォャュョッーアイウエオカキクケコサシスセソタチツテトナニヌネノハヒ"
        "フヘホマミムメモヤユヨラリルレロワン゛゜");
    static const Bytes kVoiced = Cp932FromUtf8("ガギグゲゴザジズゼゾダヂヅデドバビブベボ");
    static const Bytes kSemiVoiced = Cp932FromUtf8("パピプペポ");
    auto pairAt = [](const Bytes& table, std::size_t index) {
        return BytePair{table.at(2 * index), table.at(2 * index + 1)};
    };
    if (next == 0xDE && kana >= 0xB6 && kana <= 0xC4) {
        return {pairAt(kVoiced, kana - 0xB6), true};
    }
    if (next == 0xDE && kana >= 0xCA && kana <= 0xCE) {
        return {pairAt(kVoiced, 15 + kana - 0xCA), true};
    }
    if (next == 0xDF && kana >= 0xCA && kana <= 0xCE) {
        return {pairAt(kSemiVoiced, kana - 0xCA), true};
    }
    return {pairAt(kFullWidth, kana - 0xA1), false};
}

Converted JisToShiftJis(ByteView bytes) {
    const Padded p(bytes);
    Converted out;
    int mode = 0;
    std::size_t i = 0;
    while (i < p.size()) {
        const std::uint8_t b = p[i];
        if (b == kEsc) {
            const JisEscape escape = ParseJisEscape(p.from(i), true);
            if (escape.mode == 3) {
                mode = 0;
                ++i;
            } else {
                mode = escape.mode;
                i += escape.length;
            }
        } else if (mode == 1) {
            if (i + 1 == p.size()) {
                out.cutAt = out.bytes.size();
            }
            Append(out.bytes, JisPairToShiftJis(b, p[i + 1]));
            i += 2;
        } else {
            out.bytes.push_back(mode == 2 ? b | 0x80 : b);
            ++i;
        }
    }
    return out;
}

Converted EucToShiftJis(ByteView bytes) {
    const Padded p(bytes);
    Converted out;
    std::size_t i = 0;
    while (i < p.size()) {
        const std::uint8_t b = p[i];
        if (b != 0x8E && b != 0x8F && b < 0xA1) {
            out.bytes.push_back(b);
            ++i;
            continue;
        }
        if (i + 1 == p.size()) {
            out.cutAt = out.bytes.size();
        }
        if (b == 0x8E) {
            out.bytes.push_back(p[i + 1]);
        } else if (b == 0x8F) {
            Append(out.bytes, BytePair{0x81, 0xA1});
        } else {
            Append(out.bytes, JisPairToShiftJis(b & 0x7F, p[i + 1] & 0x7F));
        }
        i += 2;
    }
    return out;
}

Converted GarbledMailToShiftJis(ByteView bytes, Bytes* repairedSource) {
    Padded p(bytes);
    Bytes repaired;
    std::size_t i = 0;
    while (i < p.size()) {
        p.at(i) &= 0x7F;
        const JisEscape escape = ParseJisEscape(p.from(i), false);
        if (escape.mode != 3 && (i == 0 || p[i - 1] != kEsc)) {
            repaired.push_back(kEsc);
            for (int k = 0; k < escape.length; ++k) {
                repaired.push_back(p[i + k]);
            }
            i += escape.length;
        } else {
            repaired.push_back(p[i]);
            ++i;
        }
    }
    *repairedSource = p.data();
    return JisToShiftJis(repaired);
}

Converted ShiftJisToEuc(ByteView bytes) {
    const Padded p(bytes);
    Converted out;
    std::size_t i = 0;
    while (i < p.size()) {
        const std::uint8_t b = p[i];
        if (IsHalfKana(b)) {
            Append(out.bytes, BytePair{0x8E, b});
            ++i;
        } else if (IsShiftJisLead(b)) {
            if (i + 1 == p.size()) {
                out.cutAt = out.bytes.size();
            }
            const BytePair jis = ShiftJisPairToJis(b, p[i + 1]);
            Append(out.bytes, BytePair{static_cast<std::uint8_t>(jis.first | 0x80),
                                       static_cast<std::uint8_t>(jis.second | 0x80)});
            i += 2;
        } else {
            out.bytes.push_back(b);
            ++i;
        }
    }
    return out;
}

Converted ShiftJisToJis(ByteView bytes, int katakanaMode) {
    const Padded p(bytes);
    Converted out;
    int state = 0;
    auto switchTo = [&](int next, std::string_view escape) {
        if (state != next) {
            Append(out.bytes, escape);
            state = next;
        }
    };
    std::size_t i = 0;
    while (i < p.size()) {
        const std::uint8_t b = p[i];
        if (IsShiftJisLead(b)) {
            if (i + 1 == p.size()) {
                out.cutAt = out.bytes.size();
            }
            switchTo(1, "\x1B$B");
            Append(out.bytes, ShiftJisPairToJis(b, p[i + 1]));
            i += 2;
        } else if (IsHalfKana(b) && katakanaMode != 1) {
            switchTo(1, "\x1B$B");
            const std::uint8_t next = p[i + 1] == 0xDE || p[i + 1] == 0xDF ? p[i + 1] : 0;
            const FullWidthKana kana = HalfKanaToFullWidth(b, next);
            const BytePair full = kana.shiftJis;
            Append(out.bytes, ShiftJisPairToJis(full.first, full.second));
            i += kana.merged ? 2 : 1;
        } else if (IsHalfKana(b)) {
            switchTo(2, "\x1B(I");
            out.bytes.push_back(b - 0x80);
            ++i;
        } else {
            switchTo(0, "\x1B(B");
            out.bytes.push_back(b);
            ++i;
        }
    }
    switchTo(0, "\x1B(B");
    return out;
}

} // namespace korvel::reference
