#include "macro/MacroFile.h"

#include "codec/CodecBlock.h"
#include "codec/ShiftJisConversion.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>
#include <algorithm>
#include <cstring>

namespace korvel {
namespace {

// The device decided on UTF-16 from this much of the file.
constexpr std::size_t kSniffBytes = 1024;

bool IsUtf16(std::string_view bytes) {
    const std::string_view head = bytes.substr(0, kSniffBytes);
    return head.starts_with("\xFF\xFE") || head.starts_with("\xFE\xFF") ||
           head.find('\0') != std::string_view::npos;
}

QString DecodeUtf16(std::string_view bytes) {
    // The bytes need not be aligned for char16_t; an odd last byte is no character.
    QString text(qsizetype(bytes.size() / 2), Qt::Uninitialized);
    std::memcpy(text.data(), bytes.data(), std::size_t(text.size()) * 2);
    if (text.startsWith(QChar(0xFEFF)) || text.startsWith(QChar(0xFFFE)))
        text.remove(0, 1);
    return text;
}

// Shift_JIS as the device read it, unless the bytes are UTF-8 with characters beyond ASCII: a
// macro written with a Linux text tool is UTF-8, and Japanese Shift_JIS text hardly ever passes
// as UTF-8 (its lead bytes 0x81-0x9F are UTF-8 continuation bytes), while much UTF-8 Japanese
// text ("日本" among it) also passes as Shift_JIS.
QString DecodeMultibyte(std::string_view bytes) {
    QString text;
    const bool ascii = std::all_of(bytes.begin(), bytes.end(),
                                   [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
    if (!ascii) {
        QStringDecoder utf8(QStringDecoder::Utf8);
        text = utf8(QByteArrayView(bytes.data(), qsizetype(bytes.size())));
        if (utf8.hasError())
            text.clear();
    }
    if (ascii || text.isNull()) {
        const CodecResult shiftJis = RunConverter(ShiftJisToUnicode, bytes.data(), bytes.size());
        const std::u16string_view units = shiftJis.block.units();
        text = QString::fromUtf16(units.data(), qsizetype(units.size()));
    }
    // Text mode: a CR LF reaches the reader as one LF.
    return text.replace(QLatin1StringView("\r\n"), QLatin1StringView("\n"));
}

} // namespace

QString DecodeMacroFile(std::string_view bytes) {
    return IsUtf16(bytes) ? DecodeUtf16(bytes) : DecodeMultibyte(bytes);
}

std::optional<QString> ReadMacroFile(const QString& path) {
    QFile file(path);
    if (QFileInfo(path).isDir() || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return std::nullopt;
    return DecodeMacroFile(std::string_view(bytes.constData(), std::size_t(bytes.size())));
}

} // namespace korvel
