#include "document/DocumentBytes.h"

#include "codec/Detection.h"
#include "codec/JisEucConversion.h"
#include "codec/OutputBlock.h"
#include "codec/ShiftJisConversion.h"
#include "codec/Utf8Conversion.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace korvel {

namespace {

constexpr char16_t kCr = u'\r';
constexpr char16_t kLf = u'\n';
constexpr std::uint8_t kUtf16Mark[] = {0xFF, 0xFE};
constexpr std::uint8_t kUtf8Mark[] = {0xEF, 0xBB, 0xBF};
// Converters refuse a null source, and an empty span may have none.
constexpr std::uint8_t kNoBytes[1] = {0};
constexpr char16_t kNoText[1] = {0};

TextEncoding ChooseEncoding(std::span<const std::uint8_t> bytes, TextEncoding requested) {
    TextEncoding encoding = requested;
    if (encoding == TextEncoding::AutoDetect) {
        encoding = DetectTextEncoding(bytes.data(), bytes.size());
    }
    switch (encoding) {
    case TextEncoding::AsciiOnly:
    case TextEncoding::AutoDetect:
    case TextEncoding::Undetermined:
        return TextEncoding::ShiftJis;
    default:
        return encoding;
    }
}

CodecResult ShiftJisResultToUnicode(CodecResult shiftJis) {
    if (shiftJis.status != CodecOk) {
        return shiftJis;
    }
    return RunConverter(ShiftJisToUnicode, shiftJis.block.data(), shiftJis.block.size());
}

CodecResult ConvertToUnicode(const std::uint8_t* bytes, std::size_t length, TextEncoding encoding) {
    switch (encoding) {
    case TextEncoding::Jis:
        return RunConverter(JisToUnicode, bytes, length);
    case TextEncoding::Euc:
        return RunConverter(EucToUnicode, bytes, length);
    case TextEncoding::GarbledMail: {
        // The repair clears eighth bits in its source, so it works on a copy of its own.
        auto* copy = static_cast<std::uint8_t*>(std::malloc(length + 1));
        if (copy == nullptr) {
            return {CodecOutOfMemory, {}};
        }
        CodecBlock owner(copy, length);
        std::memcpy(copy, bytes, length);
        std::uint8_t* output = nullptr;
        std::size_t outputLength = 0;
        CodecResult shiftJis;
        shiftJis.status = GarbledMailToShiftJis(copy, length, &output, &outputLength);
        if (shiftJis.status == CodecOk) {
            shiftJis.block = CodecBlock(output, outputLength);
        }
        return ShiftJisResultToUnicode(std::move(shiftJis));
    }
    case TextEncoding::Utf8:
        // The mark is skipped without being tested; a file shorter than it reads as empty.
        return length <= 3 ? RunConverter(Utf8ToUnicode, kNoBytes, 0)
                           : RunConverter(Utf8ToUnicode, bytes + 3, length - 3);
    case TextEncoding::Utf8N:
        return RunConverter(Utf8ToUnicode, bytes, length);
    default:
        return RunConverter(ShiftJisToUnicode, bytes, length);
    }
}

// Unicode files are UTF-16LE as they stand: a mark (either order) is skipped, a big-endian
// file is not swapped. An odd last byte reads with the 0 byte that follows every file.
DecodedDocument TakeUtf16Units(const std::uint8_t* start, std::size_t available) {
    DecodedDocument result;
    if (available % 2 == 0 && reinterpret_cast<std::uintptr_t>(start) % alignof(char16_t) == 0) {
        result.text = {reinterpret_cast<const char16_t*>(start), available / 2};
        return result;
    }
    const std::size_t units = (available + 1) / 2;
    auto* copy = static_cast<std::uint8_t*>(std::malloc(units * 2 + 2));
    if (copy == nullptr) {
        result.status = CodecOutOfMemory;
        return result;
    }
    std::memcpy(copy, start, available);
    std::memset(copy + available, 0, units * 2 + 2 - available);
    result.storage = CodecBlock(copy, units * 2);
    result.text = result.storage.units();
    return result;
}

DecodedDocument TakeUtf16(const std::uint8_t* bytes, std::size_t length) {
    std::size_t skip = 0;
    if (length >= 2) {
        const unsigned first = bytes[0] | (bytes[1] << 8);
        if (first == 0xFEFF || first == 0xFFFE) {
            skip = 2;
        }
    }
    return TakeUtf16Units(bytes + skip, length - skip);
}

// Widens every `from` character to CR LF (CR for Cr files, LF for Lf files); the other lone
// break character is kept as it is, so that it can be written back unchanged. Decoded text is
// widened in its own block, from the back, so that a file never has two copies of its text;
// text that points into the file bytes gets its one copy here.
bool WidenBreaks(DecodedDocument& document, char16_t from) {
    const std::u16string_view text = document.text;
    const auto extra = static_cast<std::size_t>(std::count(text.begin(), text.end(), from));
    if (extra == 0) {
        return true;
    }
    const std::size_t units = text.size() + extra;
    const bool inPlace = text.data() == reinterpret_cast<const char16_t*>(document.storage.data());
    void* block = inPlace ? std::realloc(document.storage.data(), (units + 1) * sizeof(char16_t))
                          : std::malloc((units + 1) * sizeof(char16_t));
    if (block == nullptr) {
        return false;
    }
    if (!inPlace) {
        detail::AdviseHugePages(static_cast<std::uint8_t*>(block), units * sizeof(char16_t));
    }
    auto* wide = static_cast<char16_t*>(block);
    const char16_t* source = inPlace ? wide : text.data();
    static_cast<void>(document.storage.release());
    document.storage = CodecBlock(static_cast<std::uint8_t*>(block), units * 2);
    char16_t* d = wide + units;
    *d = 0;
    for (std::size_t k = text.size(); k-- > 0;) {
        const char16_t unit = source[k];
        if (unit == from) {
            *--d = kLf;
            *--d = kCr;
        } else {
            *--d = unit;
        }
    }
    document.text = document.storage.units();
    return true;
}

// Narrows every CR LF pair to `to`; null storage and the same view when there is none.
CodecStatus NarrowBreaks(std::u16string_view& text, CodecBlock& storage, char16_t to) {
    std::size_t pairs = 0;
    for (std::size_t i = 0; i + 1 < text.size(); ++i) {
        if (text[i] == kCr && text[i + 1] == kLf) {
            ++pairs;
            ++i;
        }
    }
    if (pairs == 0) {
        return CodecOk;
    }
    const std::size_t units = text.size() - pairs;
    auto* narrow = static_cast<char16_t*>(std::malloc((units + 1) * sizeof(char16_t)));
    if (narrow == nullptr) {
        return CodecOutOfMemory;
    }
    detail::AdviseHugePages(reinterpret_cast<std::uint8_t*>(narrow), units * sizeof(char16_t));
    char16_t* d = narrow;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == kCr && i + 1 < text.size() && text[i + 1] == kLf) {
            *d++ = to;
            ++i;
        } else {
            *d++ = text[i];
        }
    }
    *d = 0;
    storage = CodecBlock(reinterpret_cast<std::uint8_t*>(narrow), units * 2);
    text = storage.units();
    return CodecOk;
}

} // namespace

TextEncoding ChooseDocumentEncoding(std::span<const std::uint8_t> fileBytes,
                                    TextEncoding requested) {
    return ChooseEncoding(fileBytes, requested);
}

LineEnding ChooseDocumentLineEnding(std::span<const std::uint8_t> fileBytes) {
    const LineEnding lineEnding =
        DetectLineEnding(fileBytes.empty() ? kNoBytes : fileBytes.data(), fileBytes.size());
    return lineEnding == LineEnding::NoLineBreak ? LineEnding::CrLf : lineEnding;
}

DecodedDocument DecodeDocumentBytes(std::span<const std::uint8_t> fileBytes,
                                    TextEncoding requested) {
    return DecodeDocumentPiece(fileBytes, ChooseEncoding(fileBytes, requested),
                               ChooseDocumentLineEnding(fileBytes), true);
}

DecodedDocument DecodeDocumentPiece(std::span<const std::uint8_t> pieceBytes, TextEncoding encoding,
                                    LineEnding lineEnding, bool first) {
    const std::uint8_t* bytes = pieceBytes.empty() ? kNoBytes : pieceBytes.data();
    const std::size_t length = pieceBytes.size();
    DecodedDocument result;
    if (encoding == TextEncoding::Unicode) {
        result = first ? TakeUtf16(bytes, length) : TakeUtf16Units(bytes, length);
    } else {
        // Only the start of a file has a mark to skip.
        const TextEncoding code =
            encoding == TextEncoding::Utf8 && !first ? TextEncoding::Utf8N : encoding;
        CodecResult converted = ConvertToUnicode(bytes, length, code);
        result.status = converted.status;
        result.storage = std::move(converted.block);
        result.text = result.storage.units();
    }
    // Repaired mail is kept as Shift_JIS text: that is what a later save writes.
    result.encoding = encoding == TextEncoding::GarbledMail ? TextEncoding::ShiftJis : encoding;
    result.lineEnding = lineEnding;
    if (result.status != CodecOk) {
        result.text = {};
        return result;
    }
    if (lineEnding != LineEnding::CrLf &&
        !WidenBreaks(result, lineEnding == LineEnding::Cr ? kCr : kLf)) {
        result.status = CodecOutOfMemory;
        result.text = {};
    }
    return result;
}

EncodedDocument EncodeDocumentText(std::u16string_view text, TextEncoding encoding,
                                   LineEnding lineEnding, int jisKatakanaMode) {
    EncodedDocument result;
    CodecBlock narrowed;
    if (lineEnding == LineEnding::Cr || lineEnding == LineEnding::Lf) {
        result.status = NarrowBreaks(text, narrowed, lineEnding == LineEnding::Cr ? kCr : kLf);
        if (result.status != CodecOk) {
            return result;
        }
    }
    const char16_t* units = text.empty() ? kNoText : text.data();
    const std::size_t byteLength = text.size() * sizeof(char16_t);

    CodecResult converted;
    switch (encoding) {
    case TextEncoding::Unicode:
        result.mark = kUtf16Mark;
        result.body = {reinterpret_cast<const std::uint8_t*>(units), byteLength};
        result.storage = std::move(narrowed);
        return result;
    case TextEncoding::Utf8:
    case TextEncoding::Utf8N:
        if (encoding == TextEncoding::Utf8) {
            result.mark = kUtf8Mark;
        }
        converted = RunConverter(UnicodeToUtf8, units, byteLength);
        break;
    default:
        if (text.empty()) {
            return result; // the platform conversion cannot convert nothing: an empty file
        }
        if (encoding == TextEncoding::Jis) {
            converted = RunConverter(UnicodeToJis, units, byteLength, jisKatakanaMode);
        } else if (encoding == TextEncoding::Euc) {
            converted = RunConverter(UnicodeToEuc, units, byteLength);
        } else {
            converted = RunConverter(UnicodeToShiftJis, units, byteLength);
        }
        break;
    }
    result.status = converted.status;
    if (result.status == CodecOk) {
        result.storage = std::move(converted.block);
        result.body = result.storage.bytes();
    }
    return result;
}

} // namespace korvel
