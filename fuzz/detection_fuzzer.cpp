// Every detector on any bytes, checked against slow, literal readings of the detection rules:
// the engine skips plain-text blocks and bounds its reads near the end of the data, and those
// shortcuts must not change a single answer.

#include "FuzzCheck.h"
#include "codec/Detection.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace {

using korvel::LineEnding;
using korvel::TextEncoding;
using korvel::fuzz::Require;
using Bytes = std::span<const std::uint8_t>;

// The detectors promise the answers they would give with four 0 bytes behind the data.
std::uint8_t At(Bytes d, std::size_t i) {
    return i < d.size() ? d[i] : 0;
}

bool InRange(std::uint8_t b, std::uint8_t low, std::uint8_t high) {
    return b >= low && b <= high;
}
bool IsTextControl(std::uint8_t b) {
    return b == 0x09 || b == 0x0A || b == 0x0D;
}

int ReferenceLeadLength(std::uint8_t b) {
    int ones = 0;
    while (ones < 8 && (b & (0x80 >> ones)) != 0) {
        ++ones;
    }
    return ones < 2 || ones > 6 ? -1 : ones;
}

bool ReferenceIsUtf8(Bytes d, bool* asciiOnly) {
    *asciiOnly = true;
    for (std::size_t i = 0; i < d.size();) {
        const std::uint8_t b = d[i];
        if (b < 0x80) {
            if (b < 0x20 && !IsTextControl(b)) {
                return false;
            }
            ++i;
            continue;
        }
        const int length = ReferenceLeadLength(b);
        if (length < 0) {
            return false;
        }
        for (int k = 1; k < length; ++k) {
            if ((At(d, i + k) & 0xC0) != 0x80) {
                return false;
            }
        }
        *asciiOnly = false;
        i += static_cast<std::size_t>(length);
    }
    return true;
}

bool ReferenceIsShiftJis(Bytes d) {
    bool trailDue = false;
    for (const std::uint8_t b : d) {
        if (trailDue) {
            if (!InRange(b, 0x40, 0x7E) && !InRange(b, 0x80, 0xFC)) {
                return false;
            }
            trailDue = false;
        } else if (InRange(b, 0x81, 0x9F) || InRange(b, 0xE0, 0xEF)) {
            trailDue = true;
        } else if (!InRange(b, 0x20, 0x7E) && !IsTextControl(b) && !InRange(b, 0xA1, 0xDF)) {
            return false;
        }
    }
    return true;
}

bool ReferenceIsEuc(Bytes d) {
    bool secondDue = false;
    for (std::size_t i = 0; i < d.size(); ++i) {
        const std::uint8_t b = d[i];
        if (secondDue) {
            if (!InRange(b, 0xA1, 0xFE)) {
                return false;
            }
            secondDue = false;
        } else if (InRange(b, 0xA1, 0xFE)) {
            secondDue = true;
        } else if (b == 0x8E) {
            if (!InRange(At(d, i + 1), 0xA1, 0xDF)) {
                return false;
            }
            i += 1;
        } else if (b == 0x8F) {
            if (!InRange(At(d, i + 1), 0xA1, 0xFE) || !InRange(At(d, i + 2), 0xA1, 0xFE)) {
                return false;
            }
            i += 2;
        } else if (!InRange(b, 0x20, 0x7E) && !IsTextControl(b)) {
            return false;
        }
    }
    return true;
}

TextEncoding ReferenceDetect(Bytes d) {
    if (d.empty()) {
        return TextEncoding::Undetermined;
    }
    bool asciiOnly = true;
    if (At(d, 0) == 0xEF && At(d, 1) == 0xBB && At(d, 2) == 0xBF) {
        if (ReferenceIsUtf8(d, &asciiOnly)) {
            return TextEncoding::Utf8;
        }
        return ReferenceIsEuc(d) ? TextEncoding::Euc : TextEncoding::Undetermined;
    }
    if (ReferenceIsUtf8(d, &asciiOnly)) {
        return asciiOnly ? TextEncoding::AsciiOnly : TextEncoding::Utf8N;
    }
    for (std::size_t i = 0; i < d.size(); ++i) {
        if (d[i] == 0) {
            return TextEncoding::Unicode;
        }
        if (d[i] == 0x1B && (At(d, i + 1) == '$' || At(d, i + 1) == '(')) {
            return TextEncoding::Jis;
        }
    }
    if (ReferenceIsShiftJis(d)) {
        return TextEncoding::ShiftJis;
    }
    return ReferenceIsEuc(d) ? TextEncoding::Euc : TextEncoding::Undetermined;
}

LineEnding ReferenceLineEnding(Bytes d) {
    std::size_t cr = 0;
    std::size_t lf = 0;
    std::size_t crlf = 0;
    for (std::size_t i = 0; i < d.size(); ++i) {
        if (d[i] == 0x0A) {
            ++lf;
        }
        if (d[i] != 0x0D) {
            continue;
        }
        ++cr;
        if (At(d, i + 1) == 0x0A ||
            (At(d, i + 1) == 0 && At(d, i + 2) == 0x0A && At(d, i + 3) == 0)) {
            ++crlf;
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

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // libFuzzer may hand over a null pointer for the empty input; the detectors read that as
    // "no data", so give them a real empty run.
    static const std::uint8_t kEmpty[1] = {0};
    const std::uint8_t* bytes = size == 0 ? kEmpty : data;
    const Bytes d(bytes, size);

    bool asciiOnly = false;
    bool referenceAsciiOnly = false;
    const bool utf8 = korvel::IsUtf8Text(bytes, size, &asciiOnly);
    Require(utf8 == ReferenceIsUtf8(d, &referenceAsciiOnly), "IsUtf8Text agrees");
    Require(!utf8 || asciiOnly == referenceAsciiOnly, "IsUtf8Text asciiOnly agrees");
    Require(korvel::IsShiftJisText(bytes, size) == ReferenceIsShiftJis(d), "IsShiftJisText agrees");
    Require(korvel::IsEucText(bytes, size) == ReferenceIsEuc(d), "IsEucText agrees");
    Require(korvel::DetectTextEncoding(bytes, size) == ReferenceDetect(d),
            "DetectTextEncoding agrees");
    Require(korvel::DetectLineEnding(bytes, size) == ReferenceLineEnding(d),
            "DetectLineEnding agrees");
    if (size > 0) {
        Require(korvel::Utf8LeadLength(data[0]) == ReferenceLeadLength(data[0]),
                "Utf8LeadLength agrees");
    }
    return 0;
}
