#pragma once

#include "fileops/FileOpPrompt.h"
#include "messages/MessageFormat.h"
#include "messages/StringTable.h"
#include "messages/testing/ScriptedMessageService.h"

#include <QByteArray>
#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QString>
#include <QTemporaryDir>
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <ostream>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/xattr.h>
#include <unistd.h>

// Readable strings in test failure output.
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace korvel::testing {

inline struct stat StatusOf(const QString& path) {
    struct stat status {};
    ::lstat(QFile::encodeName(path).constData(), &status);
    return status;
}

// A real folder on disk for one test; paths are given relative to it.
class ScratchFolder {
public:
    explicit ScratchFolder(const QString& base = QDir::tempPath())
        : dir_(base + QStringLiteral("/korvel-test-XXXXXX")) {
        EXPECT_TRUE(dir_.isValid());
    }
    // Read-only entries would keep an unprivileged user from cleaning up.
    ~ScratchFolder() {
        QDirIterator it(dir_.path(),
                        QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot | QDir::System,
                        QDirIterator::Subdirectories);
        setWritable(dir_.path());
        while (it.hasNext())
            setWritable(it.next());
    }

    // The entry's path; the folder's own path without a trailing "/".
    QString path(const QString& relative = {}) const {
        return relative.isEmpty() ? dir_.path() : dir_.path() + u'/' + relative;
    }
    // A folder's path with one trailing "/", as the browser keeps it.
    QString folder(const QString& relative = {}) const { return path(relative) + u'/'; }

    void write(const QString& relative, const QByteArray& content = {}) const {
        QDir().mkpath(QFileInfo(path(relative)).path());
        QFile file(path(relative));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            << relative.toStdString();
        ASSERT_EQ(file.write(content), content.size());
    }
    // Runs a shell command in the folder; "~" in it stands for 250 letters, so that "~e.txt" is a
    // name at the file system's limit of 255 bytes. False when the command fails.
    bool shell(const QString& command) const {
        return std::system(QFile::encodeName(
                               QStringLiteral("cd '%1' && %2").arg(path(), longNames(command)))
                               .constData()) == 0;
    }
    static QString longNames(QString text) { return text.replace(u'~', QString(250, u'x')); }
    void writeSized(const QString& relative, qint64 size) const {
        write(relative);
        ASSERT_TRUE(QFile::resize(path(relative), size));
    }
    QByteArray read(const QString& relative) const {
        QFile file(path(relative));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
    }
    void makeFolder(const QString& relative) const {
        ASSERT_TRUE(QDir().mkpath(path(relative))) << relative.toStdString();
    }
    // A symbolic link holding `target` as given, relative or not.
    void link(const QString& relative, const QString& target) const {
        ASSERT_EQ(::symlink(QFile::encodeName(target).constData(),
                            QFile::encodeName(path(relative)).constData()),
                  0)
            << relative.toStdString();
    }
    void setModified(const QString& relative, const QDateTime& time) const {
        const qint64 ms = time.toMSecsSinceEpoch();
        const timeval times[2] = {{ms / 1000, (ms % 1000) * 1000}, {ms / 1000, (ms % 1000) * 1000}};
        ASSERT_EQ(::utimes(QFile::encodeName(path(relative)).constData(), times), 0);
    }
    void setReadOnly(const QString& relative, bool readOnly = true) const {
        const QFileDevice::Permissions writable = QFileDevice::WriteOwner | QFileDevice::WriteUser |
                                                  QFileDevice::WriteGroup | QFileDevice::WriteOther;
        const QFileDevice::Permissions now = QFile::permissions(path(relative));
        QFile::setPermissions(path(relative),
                              readOnly ? now & ~writable : now | QFileDevice::WriteOwner);
    }
    bool isReadOnly(const QString& relative) const {
        return !(QFile::permissions(path(relative)) & QFileDevice::WriteOwner);
    }
    bool exists(const QString& relative) const {
        return QFileInfo(path(relative)).exists() || QFileInfo(path(relative)).isSymLink();
    }
    // Every name in a folder, hidden ones included, sorted.
    QStringList names(const QString& relative = {}) const {
        return QDir(path(relative))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                       QDir::Name);
    }
    // Every entry below the folder, sorted, with its kind, mode, link count, owner, group, extended
    // attributes, and its target or (withBytes) its bytes: what a failed write must leave exactly
    // as it was, and a successful one all but the bytes.
    QStringList snapshot(bool withBytes = true) const {
        QStringList entries;
        QDirIterator it(path(),
                        QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot | QDir::System,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString entry = it.next();
            const QString name = entry.mid(path().size() + 1);
            const struct stat status = StatusOf(entry);
            char attributes[1024] = {};
            const ssize_t length =
                ::llistxattr(QFile::encodeName(entry).constData(), attributes, sizeof attributes);
            const bool bytes = withBytes && S_ISREG(status.st_mode);
            entries.append(
                QStringLiteral("%1 %2 %3 %4:%5 [%6] %7%8")
                    .arg(name)
                    .arg(status.st_mode, 0, 8)
                    .arg(status.st_nlink)
                    .arg(status.st_uid)
                    .arg(status.st_gid)
                    .arg(QString::fromLatin1(attributes, qMax<ssize_t>(length, 0)),
                         QFile::symLinkTarget(entry),
                         bytes ? QString::fromLatin1(read(name).toHex(' ')) : QString()));
        }
        entries.sort();
        return entries;
    }
    // The text of a shortcut file leading to an entry of this folder.
    QByteArray lnkTo(const QString& relative) const {
        return "1#\"" + path(relative).toUtf8() + "\"\r\n";
    }

private:
    static void setWritable(const QString& path) {
        if (!QFileInfo(path).isSymLink())
            QFile::setPermissions(path, QFile::permissions(path) | QFileDevice::WriteOwner);
    }

    QTemporaryDir dir_;
};

// While alive, files this process writes may not grow past a few bytes, and a write that tries
// fails with EFBIG instead of killing the process: what a full disk does to a save, on demand.
class ScopedFileSizeLimit {
public:
    explicit ScopedFileSizeLimit(rlim_t bytes) {
        ::getrlimit(RLIMIT_FSIZE, &previousLimit_);
        previousHandler_ = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{bytes, previousLimit_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ScopedFileSizeLimit(const ScopedFileSizeLimit&) = delete;
    ScopedFileSizeLimit& operator=(const ScopedFileSizeLimit&) = delete;
    ~ScopedFileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &previousLimit_);
        std::signal(SIGXFSZ, previousHandler_);
    }

private:
    rlimit previousLimit_{};
    void (*previousHandler_)(int) = SIG_DFL;
};

// Where to put thousands of entries: a memory file system when the machine has one, since on a busy
// journalled disk each folder costs a millisecond or more.
inline QString ManyEntriesBase() {
    const QFileInfo memory(QStringLiteral("/dev/shm"));
    return memory.isDir() && memory.isWritable() ? memory.filePath() : QDir::tempPath();
}

// The text a box shows for one of the file operations' messages.
inline QString TextOf(FileOpMessage message, const QStringList& arguments = {}) {
    const QString format =
        message.text != nullptr ? QString::fromUtf16(message.text) : LoadString(message.id);
    return FormatMessage(format, arguments);
}

inline QStringList ShownTexts(const ScriptedMessageService& messages) {
    QStringList texts;
    for (const ShownMessage& box : messages.shown())
        texts.append(box.text);
    return texts;
}

} // namespace korvel::testing
