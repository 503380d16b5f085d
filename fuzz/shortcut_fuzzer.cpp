// The shortcut reader on any bytes: the target text of a .lnk file, the paths that text may lead
// to, and the whole road from the file on disk, read through the dialog's limit and the list's.

#include "FuzzCheck.h"
#include "browser/Shortcut.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <cstddef>
#include <cstdint>

namespace {

using korvel::fuzz::Require;

void CheckCandidates(const QString& text) {
    const QStringList candidates = korvel::ShortcutCandidates(text);
    Require(!text.isEmpty() || candidates.isEmpty(), "an empty target leads nowhere");
    Require(candidates.size() <= 2, "at most two candidates");
    for (const QString& candidate : candidates) {
        Require(candidate.startsWith(u'/'), "a candidate is an absolute path");
        Require(!candidate.contains(u'\\'), "a candidate has no backslash");
    }
    if (candidates.size() == 2) {
        Require(candidates[0] == QStringLiteral("/usr/bin") + candidates[1],
                "a bare program name is tried in /usr/bin/ first, then in /");
        Require(candidates[1].endsWith(QStringLiteral(".exe"), Qt::CaseInsensitive),
                "only a program name is followed without a leading separator");
    }
}

void CheckText(QByteArrayView bytes) {
    const QString text = korvel::ParseShortcutText(bytes);
    Require(!text.contains(QChar(u'\0')), "the target text ends at a NUL");
    Require(!text.contains(QStringLiteral("\r\n")), "the target text ends at a CR LF");
    Require(text.isEmpty() || bytes.contains('#'), "a target text needs a '#'");
    // Whatever follows the first CR LF is ignored.
    QByteArray followed = bytes.toByteArray();
    followed.append("\r\n9#\\ignored.exe");
    Require(korvel::ParseShortcutText(followed) == text, "text after a CR LF is ignored");
    CheckCandidates(text);
}

// The one .lnk file every input is written to, in a folder that goes when the run ends. On a
// tmpfs when there is one: ext4 flushes a file truncated and closed, over ten times slower.
const QString& ShortcutPath() {
    static const QString parent = QFileInfo(QStringLiteral("/dev/shm")).isWritable()
                                      ? QStringLiteral("/dev/shm")
                                      : QDir::tempPath();
    static const QTemporaryDir folder(parent + QStringLiteral("/korvel-shortcut-fuzz-XXXXXX"));
    static const QString path = folder.filePath(QStringLiteral("fuzz.lnk"));
    return path;
}

void CheckResolution(QByteArrayView bytes, qsizetype readLimit) {
    const QString text = korvel::ParseShortcutText(bytes.first(qMin(readLimit, bytes.size())));
    QString expected;
    for (const QString& candidate : korvel::ShortcutCandidates(text)) {
        if (QFileInfo::exists(candidate)) {
            expected = candidate;
            break;
        }
    }
    const auto target = korvel::ResolveShortcut(ShortcutPath(), readLimit);
    Require(target.has_value() == !expected.isEmpty(),
            "a shortcut resolves exactly when a candidate of its first bytes exists");
    Require(!target || target->path == expected, "the first existing candidate is the target");
    Require(!target || target->isFolder == QFileInfo(expected).isDir(),
            "the target says whether it is a folder");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArrayView bytes(data, qsizetype(size));
    CheckText(bytes);

    QFile file(ShortcutPath());
    Require(file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
                file.write(bytes.data(), bytes.size()) == bytes.size(),
            "the shortcut file is written");
    file.close();
    CheckResolution(bytes, korvel::kShortcutReadLimit);
    CheckResolution(bytes, korvel::kListShortcutReadLimit);
    return 0;
}
