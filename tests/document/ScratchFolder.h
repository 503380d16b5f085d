#pragma once

// A real folder for one save test, and what a failed save must leave exactly as it was.

#include "TestInputs.h"

#include <QByteArray>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace korvel::testing {

inline QByteArray AsQBytes(const Bytes& bytes) {
    return QByteArray(reinterpret_cast<const char*>(bytes.data()),
                      static_cast<qsizetype>(bytes.size()));
}

inline bool RunningAsRoot() {
    return ::geteuid() == 0;
}

// A real folder for one test, made writable again before it goes so that cleaning up works
// after a test took write permission away.
class Scratch {
public:
    QString path(const QString& name) const { return dir_.path() + u'/' + name; }

    QString write(const QString& name, const QByteArray& bytes, mode_t mode = 0644) const {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << name.toStdString();
        file.write(bytes);
        file.close();
        EXPECT_EQ(::chmod(QFile::encodeName(path(name)).constData(), mode), 0);
        return path(name);
    }
    QString write(const QString& name, const Bytes& bytes, mode_t mode = 0644) const {
        return write(name, AsQBytes(bytes), mode);
    }

    // Every entry below the folder with its kind, mode, owner, group and bytes: what a failed save
    // must leave exactly as it was.
    std::string snapshot() const {
        QStringList entries;
        QDirIterator it(dir_.path(),
                        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString entry = it.next();
            const QFileInfo info(entry);
            QString line = entry.mid(dir_.path().size() + 1);
            if (info.isSymLink()) {
                line += QStringLiteral(" -> ") + info.symLinkTarget();
            } else {
                const struct stat status = StatusOf(entry);
                line += QStringLiteral(" %1 %2:%3")
                            .arg(status.st_mode, 0, 8)
                            .arg(status.st_uid)
                            .arg(status.st_gid);
                if (info.isFile()) {
                    line += u' ' + QString::fromLatin1(Read(entry).toHex(' '));
                }
            }
            entries.append(line);
        }
        entries.sort();
        return entries.join(u'\n').toStdString();
    }

    static QByteArray Read(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
    }
    static struct stat StatusOf(const QString& path) {
        struct stat status {};
        ::stat(QFile::encodeName(path).constData(), &status);
        return status;
    }
    static mode_t ModeOf(const QString& path) { return StatusOf(path).st_mode & 07777; }

    ~Scratch() {
        QDirIterator it(dir_.path(), QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            ::chmod(QFile::encodeName(it.next()).constData(), 0755);
        }
    }

private:
    QTemporaryDir dir_;
};

} // namespace korvel::testing
