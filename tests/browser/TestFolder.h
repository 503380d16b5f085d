#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QString>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <ostream>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

// Readable strings in test failure output.
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace korvel::testing {

// A scratch folder on disk with the few ways the browser tests need to shape its entries.
class TestFolder {
public:
    TestFolder() { EXPECT_TRUE(dir_.isValid()); }
    // A read-only folder would keep an unprivileged user from cleaning up.
    ~TestFolder() {
        QDirIterator it(dir_.path(), QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                        QDirIterator::Subdirectories);
        while (it.hasNext())
            ::chmod(QFile::encodeName(it.next()).constData(), 0755);
    }

    // The folder's path with one trailing "/".
    QString path() const { return QDir::cleanPath(dir_.path()) + u'/'; }
    QString pathOf(const QString& relative) const { return path() + relative; }

    void writeFile(const QString& relative, const QByteArray& bytes = {}) const {
        QFile file(pathOf(relative));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            << relative.toStdString();
        ASSERT_EQ(file.write(bytes), bytes.size());
    }
    void writeSizedFile(const QString& relative, qint64 size) const {
        writeFile(relative);
        ASSERT_TRUE(QFile::resize(pathOf(relative), size));
    }
    void makeFolder(const QString& relative) const {
        ASSERT_TRUE(QDir(path()).mkpath(relative)) << relative.toStdString();
    }
    void makeLink(const QString& relative, const QString& target) const {
        ASSERT_EQ(::symlink(QFile::encodeName(target).constData(),
                            QFile::encodeName(pathOf(relative)).constData()),
                  0);
    }
    void setModified(const QString& relative, const QDateTime& time) const {
        const qint64 ms = time.toMSecsSinceEpoch();
        const timeval times[2] = {{ms / 1000, (ms % 1000) * 1000}, {ms / 1000, (ms % 1000) * 1000}};
        ASSERT_EQ(::utimes(QFile::encodeName(pathOf(relative)).constData(), times), 0);
    }
    void setReadOnly(const QString& relative, bool readOnly) const {
        ASSERT_EQ(::chmod(QFile::encodeName(pathOf(relative)).constData(), readOnly ? 0555 : 0755),
                  0);
    }
    bool exists(const QString& relative) const { return QFile::exists(pathOf(relative)); }

private:
    QTemporaryDir dir_;
};

} // namespace korvel::testing
