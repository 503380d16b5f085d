#include "browser/Shortcut.h"

#include "codec/CodecBlock.h"
#include "codec/ShiftJisConversion.h"

#include <QFile>
#include <QFileInfo>

namespace korvel {
namespace {

QString DecodeCp932(QByteArrayView bytes) {
    if (bytes.isEmpty())
        return {};
    std::uint8_t* output = nullptr;
    std::size_t length = 0;
    if (ShiftJisToUnicode(bytes.data(), static_cast<std::size_t>(bytes.size()), &output, &length) !=
        CodecOk)
        return {};
    const CodecBlock block(output, length);
    const std::u16string_view units = block.units();
    return QString(reinterpret_cast<const QChar*>(units.data()), qsizetype(units.size()));
}

bool HasProgramExtension(QStringView path) {
    const qsizetype dot = path.lastIndexOf(u'.');
    return dot >= 0 && path.sliced(dot).compare(u".exe", Qt::CaseInsensitive) == 0;
}

std::optional<ShortcutTarget> TargetIfExists(const QString& path) {
    const QFileInfo info(path);
    if (!info.exists())
        return std::nullopt;
    return ShortcutTarget{path, info.isDir()};
}

} // namespace

bool HasShortcutExtension(QStringView name) {
    const qsizetype dot = name.lastIndexOf(u'.');
    return dot >= 0 && name.sliced(dot).compare(u".lnk", Qt::CaseInsensitive) == 0;
}

QString ParseShortcutText(QByteArrayView bytes) {
    // The text ends at a NUL as well: the file was always read as a C string.
    const qsizetype nul = bytes.indexOf('\0');
    if (nul >= 0)
        bytes = bytes.first(nul);
    const qsizetype lineEnd = bytes.indexOf(QByteArrayView("\r\n"));
    if (lineEnd >= 0)
        bytes = bytes.first(lineEnd);
    // Neither "#", the quote nor CR LF can be the second byte of a CP932 character, so the text
    // is cut before it is decoded.
    const qsizetype hash = bytes.indexOf('#');
    if (hash < 0)
        return {};
    QByteArrayView target = bytes.sliced(hash + 1);
    if (target.size() >= 2 && target.front() == '"' && target.back() == '"')
        target = target.sliced(1, target.size() - 2);
    return DecodeCp932(target);
}

QStringList ShortcutCandidates(const QString& targetText) {
    if (targetText.isEmpty())
        return {};
    QString target = targetText;
    target.replace(u'\\', u'/');
    static constexpr QStringView windowsFolder = u"/Windows/";
    if (target.startsWith(windowsFolder, Qt::CaseInsensitive))
        target.replace(0, windowsFolder.size(), QStringLiteral("/usr/bin/"));
    if (target.startsWith(u'/'))
        return {target};
    if (!HasProgramExtension(target))
        return {};
    return {QStringLiteral("/usr/bin/") + target, u'/' + target};
}

std::optional<ShortcutTarget> ResolveShortcut(const QString& path, qsizetype readLimit) {
    const QFileInfo info(path);
    if (info.isSymLink()) {
        const QString target = info.symLinkTarget();
        if (target.isEmpty())
            return std::nullopt;
        return TargetIfExists(target);
    }
    // Only a regular file is opened: reading a named pipe that happens to end in ".lnk" would
    // hang the list.
    if (!HasShortcutExtension(path) || !info.isFile())
        return std::nullopt;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray bytes = file.read(readLimit);
    for (const QString& candidate : ShortcutCandidates(ParseShortcutText(bytes))) {
        if (auto target = TargetIfExists(candidate))
            return target;
    }
    return std::nullopt;
}

} // namespace korvel
