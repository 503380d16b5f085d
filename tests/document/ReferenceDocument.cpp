#include "ReferenceDocument.h"

#include "Cp932Oracle.h"

#include <algorithm>

namespace korvel::reference {

namespace {

// The Shift_JIS step of the load: a cut pair or a 0 byte leaves the text unsettled.
DecodedText FromShiftJis(const Converted& shiftJis) {
    const bool settled =
        !shiftJis.cutAt && std::ranges::find(shiftJis.bytes, 0) == shiftJis.bytes.end();
    return {TextEncoding::ShiftJis, LineEnding::CrLf, ShiftJisToUnicode(shiftJis.bytes), settled};
}

DecodedText FromUnicode(ByteView bytes) {
    std::u16string text;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        text.push_back(static_cast<char16_t>(bytes[i] | bytes[i + 1] << 8));
    }
    if (!text.empty() && (text[0] == 0xFEFF || text[0] == 0xFFFE)) {
        text.erase(0, 1);
    }
    const bool settled = bytes.size() % 2 == 0 && text.find(u'\0') == std::u16string::npos;
    return {TextEncoding::Unicode, LineEnding::CrLf, text, settled};
}

DecodedText Convert(ByteView bytes, TextEncoding encoding) {
    switch (encoding) {
    case TextEncoding::Jis:
        return FromShiftJis(JisToShiftJis(bytes));
    case TextEncoding::Euc:
        return FromShiftJis(EucToShiftJis(bytes));
    case TextEncoding::GarbledMail: {
        Bytes repairedSource;
        return FromShiftJis(GarbledMailToShiftJis(bytes, &repairedSource));
    }
    case TextEncoding::Utf8:
        return {encoding, LineEnding::CrLf,
                bytes.size() < 3 ? u"" : Utf8ToUnicode(bytes.subspan(3)), true};
    case TextEncoding::Utf8N:
        return {encoding, LineEnding::CrLf, Utf8ToUnicode(bytes), true};
    case TextEncoding::Unicode:
        return FromUnicode(bytes);
    default:
        return FromShiftJis({Bytes(bytes.begin(), bytes.end()), std::nullopt});
    }
}

// CR LF in memory to the file's line ending, and back.
std::u16string NarrowLineBreaks(std::u16string_view text, LineEnding lineEnding) {
    if (lineEnding != LineEnding::Cr && lineEnding != LineEnding::Lf) {
        return std::u16string(text);
    }
    std::u16string narrowed;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') {
            narrowed.push_back(lineEnding == LineEnding::Cr ? u'\r' : u'\n');
            ++i;
        } else {
            narrowed.push_back(text[i]);
        }
    }
    return narrowed;
}

std::u16string WidenLineBreaks(std::u16string_view text, LineEnding lineEnding) {
    if (lineEnding != LineEnding::Cr && lineEnding != LineEnding::Lf) {
        return std::u16string(text);
    }
    const char16_t lone = lineEnding == LineEnding::Cr ? u'\r' : u'\n';
    std::u16string widened;
    for (const char16_t unit : text) {
        if (unit == lone) {
            widened += u"\r\n";
        } else {
            widened.push_back(unit);
        }
    }
    return widened;
}

} // namespace

DecodedText DecodeDocument(ByteView fileBytes, TextEncoding requested) {
    TextEncoding encoding = requested;
    if (encoding == TextEncoding::AutoDetect) {
        encoding = DetectTextEncoding(fileBytes);
    }
    if (encoding == TextEncoding::AsciiOnly || encoding == TextEncoding::AutoDetect ||
        encoding == TextEncoding::Undetermined) {
        encoding = TextEncoding::ShiftJis;
    }
    DecodedText decoded = Convert(fileBytes, encoding);
    // The document keeps a code set it can be saved in; a later save of repaired mail writes
    // Shift_JIS, as the saver's fall-through for any other value does.
    decoded.encoding = encoding == TextEncoding::GarbledMail ? TextEncoding::ShiftJis : encoding;
    decoded.lineEnding = DetectLineEnding(fileBytes);
    if (decoded.lineEnding == LineEnding::NoLineBreak) {
        decoded.lineEnding = LineEnding::CrLf;
    }
    decoded.text = WidenLineBreaks(decoded.text, decoded.lineEnding);
    return decoded;
}

EncodedBytes EncodeDocument(std::u16string_view text, TextEncoding encoding, LineEnding lineEnding,
                            int jisKatakanaMode) {
    const std::u16string narrowed = NarrowLineBreaks(text, lineEnding);
    switch (encoding) {
    case TextEncoding::Unicode: {
        EncodedBytes encoded{{0xFF, 0xFE}, {}};
        for (const char16_t unit : narrowed) {
            encoded.body.push_back(static_cast<std::uint8_t>(unit));
            encoded.body.push_back(static_cast<std::uint8_t>(unit >> 8));
        }
        return encoded;
    }
    case TextEncoding::Utf8:
        return {{0xEF, 0xBB, 0xBF}, UnicodeToUtf8(narrowed)};
    case TextEncoding::Utf8N:
        return {{}, UnicodeToUtf8(narrowed)};
    default:
        break;
    }
    if (narrowed.empty()) {
        return {};
    }
    const Bytes shiftJis = UnicodeToShiftJis(narrowed);
    if (encoding == TextEncoding::Jis) {
        return {{}, ShiftJisToJis(shiftJis, jisKatakanaMode).bytes};
    }
    if (encoding == TextEncoding::Euc) {
        return {{}, ShiftJisToEuc(shiftJis).bytes};
    }
    return {{}, shiftJis};
}

} // namespace korvel::reference
