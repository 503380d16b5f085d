#include "document/EncodingNames.h"

namespace korvel {

std::string_view EncodingDisplayName(TextEncoding encoding) {
    switch (encoding) {
    case TextEncoding::Jis:
        return "JIS";
    case TextEncoding::Euc:
        return "EUC";
    case TextEncoding::Utf8:
        return "UTF-8";
    case TextEncoding::Utf8N:
        return "UTF-8N";
    case TextEncoding::Unicode:
        return "Unicode";
    case TextEncoding::AutoDetect:
        return "自動判定";
    case TextEncoding::GarbledMail:
        return "文字化けメール";
    case TextEncoding::AsciiOnly:
    case TextEncoding::ShiftJis:
    case TextEncoding::Undetermined:
        break;
    }
    return "シフトJIS";
}

std::string_view LineEndingDisplayName(LineEnding lineEnding) {
    switch (lineEnding) {
    case LineEnding::Cr:
        return "CR";
    case LineEnding::Lf:
        return "LF";
    case LineEnding::CrLf:
    case LineEnding::NoLineBreak:
        break;
    }
    return "CR-LF";
}

} // namespace korvel
