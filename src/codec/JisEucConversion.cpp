#include "codec/JisEucConversion.h"

#include "codec/JisArithmetic.h"
#include "codec/OutputBlock.h"

#include <limits>

namespace korvel {

using detail::ByteAt;

namespace {

using detail::EscapeMatch;
using detail::IsHalfWidthKatakana;
using detail::IsJisLeadByte;
using detail::JisPairToShiftJis;
using detail::kBlackSquare;
using detail::kEsc;
using detail::MatchEscapeBody;
using detail::ShiftJisPairToJis;

constexpr EscapeMatch kNoEscape{3, 10, 0};

// Full-width CP932 characters for the half-width katakana 0xA1 to 0xDF.
constexpr std::uint16_t kFullWidthKatakana[63] = {
    0x8142, 0x8175, 0x8176, 0x8141, 0x8145, 0x8392, 0x8340, 0x8342, 0x8344, 0x8346, 0x8348,
    0x8383, 0x8385, 0x8387, 0x8362, 0x815B, 0x8341, 0x8343, 0x8345, 0x8347, 0x8349, 0x834A,
    0x834C, 0x834E, 0x8350, 0x8352, 0x8354, 0x8356, 0x8358, 0x835A, 0x835C, 0x835E, 0x8360,
    0x8363, 0x8365, 0x8367, 0x8369, 0x836A, 0x836B, 0x836C, 0x836D, 0x836E, 0x8371, 0x8374,
    0x8377, 0x837A, 0x837D, 0x837E, 0x8380, 0x8381, 0x8382, 0x8384, 0x8386, 0x8388, 0x8389,
    0x838A, 0x838B, 0x838C, 0x838D, 0x838F, 0x8393, 0x814A, 0x814B};

} // namespace

int ParseJisEscape(const std::uint8_t* bytes, bool withEsc, int* characterSet, int* length) {
    EscapeMatch match = kNoEscape;
    if (bytes != nullptr && (!withEsc || bytes[0] == kEsc)) {
        // The reads stop at the first byte that does not match, and 0 matches nothing, so a
        // NUL-terminated buffer is never read past its terminator.
        match =
            MatchEscapeBody(withEsc ? bytes + 1 : bytes, std::numeric_limits<std::size_t>::max());
    }
    if (characterSet != nullptr) {
        *characterSet = match.characterSet;
    }
    if (length != nullptr) {
        *length = withEsc ? match.length : match.length - 1;
    }
    return match.mode;
}

int HalfKanaToFullWidth(std::uint8_t scratch[2]) {
    const std::uint8_t kana = scratch[0];
    const std::uint8_t mark = scratch[1];
    if (!IsHalfWidthKatakana(kana)) {
        return 0;
    }
    std::uint16_t full = kFullWidthKatakana[kana - 0xA1];
    int merged = 0;
    // Only ｶ to ﾄ take ﾞ, only ﾊ to ﾎ take ﾞ and ﾟ; their marked forms follow them directly
    // in CP932. ｳﾞ and ﾅ to ﾉ stay two characters on purpose.
    if (mark == 0xDE && ((kana >= 0xB6 && kana <= 0xC4) || (kana >= 0xCA && kana <= 0xCE))) {
        full += 1;
        merged = 1;
    } else if (mark == 0xDF && kana >= 0xCA && kana <= 0xCE) {
        full += 2;
        merged = 1;
    }
    scratch[0] = static_cast<std::uint8_t>(full >> 8);
    scratch[1] = static_cast<std::uint8_t>(full);
    return merged;
}

CodecStatus JisToShiftJis(const void* source, std::size_t byteLength, std::uint8_t** output,
                          std::size_t* outputLength) {
    if (source == nullptr || output == nullptr || outputLength == nullptr) {
        return CodecInvalidArgument;
    }
    const auto* bytes = static_cast<const std::uint8_t*>(source);
    detail::OutputBlock out;
    // A pair cut off by the end of the data still writes two bytes.
    if (!out.Reserve(detail::BoundBytes(byteLength, 1, 1))) {
        return CodecOutOfMemory;
    }
    std::uint8_t* d = out.bytes();
    int mode = 0;
    std::size_t i = 0;
    while (i < byteLength) {
        const std::uint8_t b = bytes[i];
        if (b == kEsc) {
            const EscapeMatch match = MatchEscapeBody(bytes + i + 1, byteLength - i - 1);
            if (match.mode == 3) {
                mode = 0; // only the ESC is dropped; what follows is read as text
                ++i;
            } else {
                mode = match.mode;
                i += static_cast<std::size_t>(match.length);
            }
            continue;
        }
        if (mode == 1) {
            JisPairToShiftJis(b, ByteAt(bytes, byteLength, i + 1), d);
            d += 2;
            i += 2;
        } else if (mode == 2) {
            *d++ = static_cast<std::uint8_t>(b | 0x80);
            ++i;
        } else {
            *d++ = b;
            ++i;
        }
    }
    return out.Deliver(static_cast<std::size_t>(d - out.bytes()), 1, output, outputLength);
}

CodecStatus EucToShiftJis(const void* source, std::size_t byteLength, std::uint8_t** output,
                          std::size_t* outputLength) {
    if (source == nullptr || output == nullptr || outputLength == nullptr) {
        return CodecInvalidArgument;
    }
    const auto* bytes = static_cast<const std::uint8_t*>(source);
    detail::OutputBlock out;
    if (!out.Reserve(detail::BoundBytes(byteLength, 1, 1))) {
        return CodecOutOfMemory;
    }
    std::uint8_t* d = out.bytes();
    std::size_t i = 0;
    while (i < byteLength) {
        const std::uint8_t b = bytes[i];
        if (b == 0x8E) {
            *d++ = ByteAt(bytes, byteLength, i + 1);
            i += 2;
        } else if (b == 0x8F) {
            // Two bytes used, not three: the third byte of the JIS X 0212 triple is read
            // again as a lead byte. Kept on purpose.
            d[0] = kBlackSquare[0];
            d[1] = kBlackSquare[1];
            d += 2;
            i += 2;
        } else if (b >= 0xA1) {
            JisPairToShiftJis(b & 0x7F, ByteAt(bytes, byteLength, i + 1) & 0x7F, d);
            d += 2;
            i += 2;
        } else {
            *d++ = b;
            ++i;
        }
    }
    return out.Deliver(static_cast<std::size_t>(d - out.bytes()), 1, output, outputLength);
}

CodecStatus GarbledMailToShiftJis(void* source, std::size_t byteLength, std::uint8_t** output,
                                  std::size_t* outputLength) {
    if (source == nullptr || output == nullptr || outputLength == nullptr) {
        return CodecInvalidArgument;
    }
    auto* bytes = static_cast<std::uint8_t*>(source);
    detail::OutputBlock repaired;
    // Each inserted ESC comes with a body of at least two bytes that it skips.
    if (!repaired.Reserve(detail::BoundBytes(byteLength, 2, 0))) {
        return CodecOutOfMemory;
    }
    std::uint8_t* d = repaired.bytes();
    std::size_t i = 0;
    while (i < byteLength) {
        // Only the current byte loses its eighth bit before the test; the bytes after it are
        // tested as they stand.
        bytes[i] &= 0x7F;
        const EscapeMatch match = MatchEscapeBody(bytes + i, byteLength - i);
        if (match.mode != 3 && (i == 0 || bytes[i - 1] != kEsc)) {
            const auto bodyLength = static_cast<std::size_t>(match.length - 1);
            *d++ = kEsc;
            for (std::size_t k = 0; k < bodyLength; ++k) {
                *d++ = bytes[i + k];
            }
            i += bodyLength;
        } else {
            *d++ = bytes[i];
            ++i;
        }
    }
    return JisToShiftJis(repaired.bytes(), static_cast<std::size_t>(d - repaired.bytes()), output,
                         outputLength);
}

CodecStatus ShiftJisToEuc(const void* source, std::size_t byteLength, std::uint8_t** output,
                          std::size_t* outputLength) {
    if (source == nullptr || output == nullptr || outputLength == nullptr) {
        return CodecInvalidArgument;
    }
    const auto* bytes = static_cast<const std::uint8_t*>(source);
    detail::OutputBlock out;
    if (!out.Reserve(detail::BoundBytes(byteLength, 2, 2))) {
        return CodecOutOfMemory;
    }
    std::uint8_t* d = out.bytes();
    std::size_t i = 0;
    while (i < byteLength) {
        const std::uint8_t b = bytes[i];
        if (IsHalfWidthKatakana(b)) {
            d[0] = 0x8E;
            d[1] = b;
            d += 2;
            ++i;
        } else if (IsJisLeadByte(b)) {
            ShiftJisPairToJis(b, ByteAt(bytes, byteLength, i + 1), d);
            d[0] |= 0x80;
            d[1] |= 0x80;
            d += 2;
            i += 2;
        } else {
            *d++ = b; // ASCII, and 0x80, 0xA0, 0xF0 to 0xFF unchanged
            ++i;
        }
    }
    return out.Deliver(static_cast<std::size_t>(d - out.bytes()), 1, output, outputLength);
}

CodecStatus ShiftJisToJis(const void* source, std::size_t byteLength, std::uint8_t** output,
                          std::size_t* outputLength, int katakanaMode) {
    if (source == nullptr || output == nullptr || outputLength == nullptr) {
        return CodecInvalidArgument;
    }
    const auto* bytes = static_cast<const std::uint8_t*>(source);
    detail::OutputBlock out;
    // Worst case per source byte: an escape and a pair; one closing escape at the end.
    if (!out.Reserve(detail::BoundBytes(byteLength, 5, 8))) {
        return CodecOutOfMemory;
    }
    enum State { Ascii, Kanji, Katakana };
    State state = Ascii;
    std::uint8_t* d = out.bytes();
    auto switchTo = [&](State wanted) {
        if (state == wanted) {
            return;
        }
        d[0] = kEsc;
        d[1] = wanted == Kanji ? '$' : '(';
        d[2] = wanted == Kanji ? 'B' : wanted == Katakana ? 'I' : 'B';
        d += 3;
        state = wanted;
    };
    std::size_t i = 0;
    while (i < byteLength) {
        const std::uint8_t b = bytes[i];
        if (IsJisLeadByte(b)) {
            switchTo(Kanji);
            ShiftJisPairToJis(b, ByteAt(bytes, byteLength, i + 1), d);
            d += 2;
            i += 2;
        } else if (IsHalfWidthKatakana(b) && katakanaMode != 1) {
            switchTo(Kanji);
            const std::uint8_t next = ByteAt(bytes, byteLength, i + 1);
            std::uint8_t scratch[2] = {b, (next == 0xDE || next == 0xDF) ? next : std::uint8_t{0}};
            i += HalfKanaToFullWidth(scratch) != 0 ? 2 : 1;
            ShiftJisPairToJis(scratch[0], scratch[1], d);
            d += 2;
        } else if (IsHalfWidthKatakana(b)) {
            switchTo(Katakana);
            *d++ = static_cast<std::uint8_t>(b - 0x80);
            ++i;
        } else {
            switchTo(Ascii); // so CR and LF always end a kanji or katakana stretch
            *d++ = b;
            ++i;
        }
    }
    switchTo(Ascii);
    return out.Deliver(static_cast<std::size_t>(d - out.bytes()), 1, output, outputLength);
}

namespace detail {

EscapeMatch MatchEscapeBody(const std::uint8_t* body, std::size_t available) {
    auto at = [&](std::size_t i) { return ByteAt(body, available, i); };
    switch (at(0)) {
    case '$':
        switch (at(1)) {
        case '@':
            return {1, 0, 3};
        case 'B':
            return {1, 1, 3};
        case '(':
            switch (at(2)) {
            case 'D':
                return {1, 2, 4};
            case 'O':
            case 'P':
                return {1, 4, 4};
            }
            break;
        }
        break;
    case '&':
        if (at(1) == '@' && at(2) == kEsc && at(3) == '$' && at(4) == 'B') {
            return {1, 3, 6};
        }
        break;
    case '(':
        switch (at(1)) {
        case 'I':
            return {2, 6, 3};
        case 'B':
            return {0, 7, 3};
        case 'J':
            return {0, 8, 3};
        case 'H':
            return {0, 9, 3};
        }
        break;
    }
    return {3, 10, 0};
}

} // namespace detail

} // namespace korvel
