#pragma once

#include "support/ScratchFolder.h"

namespace korvel::testing {

// Makes entries from lines: "a/b.txt=text" a file, "a/" a folder, "a->b" a link holding "b"; a
// trailing
// "!" makes the entry read-only, once everything is in place.
inline void MakeTree(const ScratchFolder& scratch, const QStringList& lines) {
    QStringList locked;
    for (QString line : lines) {
        if (line.endsWith(u'!')) {
            line.chop(1);
            locked.prepend(line.section(u'=', 0, 0).section(QStringLiteral("->"), 0, 0));
        }
        if (line.contains(QStringLiteral("->"))) {
            scratch.link(line.section(QStringLiteral("->"), 0, 0),
                         line.section(QStringLiteral("->"), 1));
        } else if (line.endsWith(u'/')) {
            scratch.makeFolder(line);
        } else {
            scratch.write(line.section(u'=', 0, 0), line.section(u'=', 1).toUtf8());
        }
    }
    for (const QString& entry : locked)
        scratch.setReadOnly(entry);
}

// The lines MakeTree takes for what is under a folder now, sorted; a folder has a line of its own
// only when it is empty or read-only, and a file longer than 16 bytes shows its size and hash.
inline QStringList TreeOf(const ScratchFolder& scratch, const QString& relative = {}) {
    const QString base = scratch.path(relative);
    QStringList lines;
    QDirIterator it(base, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QFileInfo info(it.next());
        QString line = info.filePath().mid(base.size() + 1);
        const bool locked = !info.isSymLink() && !(info.permissions() & QFileDevice::WriteOwner);
        if (info.isSymLink()) {
            char target[4096];
            const ssize_t length =
                ::readlink(QFile::encodeName(info.filePath()).constData(), target, sizeof target);
            line += QStringLiteral("->") + QFile::decodeName(QByteArray(target, qMax(length, 0)));
        } else if (info.isDir()) {
            if (!locked && !QDir(info.filePath()).isEmpty())
                continue;
            line += u'/';
        } else {
            QFile file(info.filePath());
            const QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : "?";
            line += u'=' + (bytes.size() <= 16
                                ? QString::fromUtf8(bytes)
                                : QStringLiteral("%1#%2").arg(bytes.size()).arg(qHash(bytes)));
        }
        lines.append(locked ? line + u'!' : line);
    }
    lines.sort();
    return lines;
}

inline QStringList Sorted(QStringList lines) {
    lines.sort();
    return lines;
}

} // namespace korvel::testing
