// Every detector on any bytes against a slow, literal reading of the detection rules, in which
// the data is followed by four 0 bytes as in the loader's read buffer. The engine skips plain
// text a block at a time, checks multibyte text in 64-byte masks and bounds its reads near the
// end of the data; none of that may change a single answer.

#include "FuzzCheck.h"
#include "codec/Detection.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

using korvel::LineEnding;
using korvel::TextEncoding;

// The data and four 0 bytes; a read beyond those throws, so the model cannot look further.
struct Padded : std::vector<std::uint8_t> {
    Padded(const std::uint8_t* data, std::size_t size) : vector(data, data + size), size(size) {
        resize(size + 4, 0);
    }
    std::uint8_t operator[](std::size_t i) const { return at(i); }
    std::size_t size;
};

bool In(std::uint8_t b, std::uint8_t low, std::uint8_t high) {
    return b >= low && b <= high;
}

bool IsText(std::uint8_t b, std::uint8_t highest) {
    return In(b, 0x20, highest) || b == 0x09 || b == 0x0A || b == 0x0D;
}

int LeadLength(std::uint8_t b) {
    int ones = 0;
    while (ones < 8 && (b << ones & 0x80) != 0) {
        ++ones;
    }
    return ones < 2 || ones > 6 ? -1 : ones;
}

bool ModelUtf8(const Padded& p, bool& asciiOnly) {
    asciiOnly = true;
    for (std::size_t i = 0; i < p.size; ++i) {
        const int length = p[i] < 0x80 ? 1 : LeadLength(p[i]);
        if (length < 0 || (length == 1 && !IsText(p[i], 0x7F))) {
            return false;
        }
        for (int k = 1; k < length; ++k) {
            if ((p[++i] & 0xC0) != 0x80) {
                return false;
            }
        }
        asciiOnly &= length == 1;
    }
    return true;
}

// A trail or second byte still due at the end of the data is accepted.
bool ModelShiftJis(const Padded& p) {
    for (std::size_t i = 0; i < p.size; ++i) {
        const bool lead = In(p[i], 0x81, 0x9F) || In(p[i], 0xE0, 0xEF);
        if (!lead && !IsText(p[i], 0x7E) && !In(p[i], 0xA1, 0xDF)) {
            return false;
        }
        if (lead && ++i < p.size && (!In(p[i], 0x40, 0xFC) || p[i] == 0x7F)) {
            return false;
        }
    }
    return true;
}

bool ModelEuc(const Padded& p) {
    for (std::size_t i = 0; i < p.size; ++i) {
        const std::uint8_t b = p[i];
        bool valid = IsText(b, 0x7E);
        if (In(b, 0xA1, 0xFE)) {
            valid = ++i == p.size || In(p[i], 0xA1, 0xFE);
        } else if (b == 0x8E) {
            valid = In(p[++i], 0xA1, 0xDF);
        } else if (b == 0x8F) {
            valid = In(p[i + 1], 0xA1, 0xFE) && In(p[i + 2], 0xA1, 0xFE);
            i += 2;
        }
        if (!valid) {
            return false;
        }
    }
    return true;
}

TextEncoding ModelEncoding(const Padded& p) {
    using enum TextEncoding;
    bool asciiOnly = true;
    const bool utf8 = ModelUtf8(p, asciiOnly);
    if (p.size == 0) {
        return Undetermined;
    }
    if (p[0] == 0xEF && p[1] == 0xBB && p[2] == 0xBF) {
        return utf8 ? Utf8 : ModelEuc(p) ? Euc : Undetermined;
    }
    if (utf8) {
        return asciiOnly ? AsciiOnly : Utf8N;
    }
    for (std::size_t i = 0; i < p.size; ++i) {
        if (p[i] == 0 || (p[i] == 0x1B && (p[i + 1] == '$' || p[i + 1] == '('))) {
            return p[i] == 0 ? Unicode : Jis;
        }
    }
    return ModelShiftJis(p) ? ShiftJis : ModelEuc(p) ? Euc : Undetermined;
}

LineEnding ModelLineEnding(const Padded& p) {
    using enum LineEnding;
    std::size_t cr = 0;
    std::size_t lf = 0;
    std::size_t crlf = 0;
    for (std::size_t i = 0; i < p.size; ++i) {
        cr += p[i] == 0x0D;
        lf += p[i] == 0x0A;
        crlf += p[i] == 0x0D &&
                (p[i + 1] == 0x0A || (p[i + 1] == 0 && p[i + 2] == 0x0A && p[i + 3] == 0));
    }
    if (crlf > 0) {
        return crlf * 100 / cr < 50 ? Cr : crlf * 100 / lf >= 50 ? CrLf : Lf;
    }
    return cr == 0 && lf == 0 ? NoLineBreak : cr >= lf ? Cr : Lf;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using korvel::fuzz::Require;
    // libFuzzer may hand over a null pointer for the empty input; the detectors read that as
    // "no data", so give them a real empty run.
    static const std::uint8_t kEmpty[1] = {0};
    const std::uint8_t* bytes = size == 0 ? kEmpty : data;
    const Padded padded(bytes, size);

    bool asciiOnly = false;
    bool modelAsciiOnly = false;
    const bool utf8 = korvel::IsUtf8Text(bytes, size, &asciiOnly);
    Require(utf8 == ModelUtf8(padded, modelAsciiOnly), "IsUtf8Text agrees");
    Require(!utf8 || asciiOnly == modelAsciiOnly, "IsUtf8Text asciiOnly agrees");
    Require(korvel::IsShiftJisText(bytes, size) == ModelShiftJis(padded), "IsShiftJisText agrees");
    Require(korvel::IsEucText(bytes, size) == ModelEuc(padded), "IsEucText agrees");
    Require(korvel::DetectTextEncoding(bytes, size) == ModelEncoding(padded),
            "DetectTextEncoding agrees");
    const korvel::LineEnding lineEnding = ModelLineEnding(padded);
    korvel::fuzz::ForEachVectorLevel([&] {
        Require(korvel::DetectLineEnding(bytes, size) == lineEnding, "DetectLineEnding agrees");
    });
    return 0;
}
