#pragma once

#include "fileops/FileOpPrompt.h"
#include "messages/MessageFormat.h"
#include "messages/StringTable.h"
#include "messages/testing/ScriptedMessageService.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace korvel::testing {

// A real folder on disk for one test; paths are given relative to it.
class ScratchFolder {
public:
    explicit ScratchFolder(const QString& base = QDir::tempPath())
        : dir_(base + QStringLiteral("/korvel-fileops-XXXXXX")) {}
    // Read-only entries would keep an unprivileged user from cleaning up.
    ~ScratchFolder() {
        QDirIterator it(dir_.path(),
                        QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot | QDir::System,
                        QDirIterator::Subdirectories);
        setWritable(dir_.path());
        while (it.hasNext()) {
            setWritable(it.next());
        }
    }

    QString path(const QString& relative = {}) const {
        return relative.isEmpty() ? dir_.path() : dir_.path() + u'/' + relative;
    }
    QString folder(const QString& relative = {}) const { return path(relative) + u'/'; }

    void write(const QString& relative, const QByteArray& content = "text") const {
        QDir().mkpath(QFileInfo(path(relative)).path());
        QFile file(path(relative));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << relative.toStdString();
        file.write(content);
    }
    QByteArray read(const QString& relative) const {
        QFile file(path(relative));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
    }
    void makeFolder(const QString& relative) const {
        ASSERT_TRUE(QDir().mkpath(path(relative))) << relative.toStdString();
    }
    void link(const QString& relative, const QString& target) const {
        ASSERT_TRUE(QFile::link(target, path(relative))) << relative.toStdString();
    }
    void setReadOnly(const QString& relative) const {
        const QFileDevice::Permissions writable = QFileDevice::WriteOwner | QFileDevice::WriteUser |
                                                  QFileDevice::WriteGroup | QFileDevice::WriteOther;
        QFile::setPermissions(path(relative), QFile::permissions(path(relative)) & ~writable);
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

private:
    static void setWritable(const QString& path) {
        if (!QFileInfo(path).isSymLink()) {
            QFile::setPermissions(path, QFile::permissions(path) | QFileDevice::WriteOwner);
        }
    }

    QTemporaryDir dir_;
};

// Where to put thousands of entries: a memory file system when the machine has one, since on
// a busy journalled disk each folder costs a millisecond or more.
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
    for (const ShownMessage& box : messages.shown()) {
        texts.append(box.text);
    }
    return texts;
}

} // namespace korvel::testing
