#include "fileops/FileSystem.h"

#include "fileops/FileClipboard.h"
#include "support/ScratchFolder.h"

#include <QDateTime>
#include <sys/stat.h>

namespace korvel {
namespace {

using testing::ScratchFolder;
using Status = FileOpStatus;

TEST(FileSystemTest, CopyReplacesTheTargetWholeWithTheSourcesModeAndTime) {
    ScratchFolder scratch;
    scratch.write("source", QByteArray(200000, 'n'));
    scratch.write("target", "old");
    const QDateTime past = QDateTime::fromString("2006-03-14T09:05:01.250", Qt::ISODateWithMs);
    QFile source(scratch.path("source"));
    ASSERT_TRUE(source.open(QIODevice::ReadWrite));
    ASSERT_TRUE(source.setFileTime(past, QFileDevice::FileModificationTime));
    source.close();
    QFile::setPermissions(scratch.path("source"), QFileDevice::ReadOwner | QFileDevice::ReadUser);

    ASSERT_EQ(files::CopyFile(scratch.path("source"), scratch.path("target")), Status::Done);
    EXPECT_EQ(scratch.read("target"), QByteArray(200000, 'n'));
    EXPECT_TRUE(files::IsReadOnly(scratch.path("target")));
    EXPECT_EQ(QFileInfo(scratch.path("target")).lastModified(), past);
    EXPECT_EQ(scratch.names(), QStringList({"source", "target"}));
}

TEST(FileSystemTest, AFailedCopyLeavesTheTargetAsItWas) {
    ScratchFolder scratch;
    scratch.makeFolder("folder");
    ASSERT_EQ(::mkfifo(QFile::encodeName(scratch.path("pipe")).constData(), 0600), 0);
    scratch.write("target", "old");

    EXPECT_EQ(files::CopyFile(scratch.path("missing"), scratch.path("target")), Status::NotFound);
    EXPECT_EQ(files::CopyFile(scratch.path("folder"), scratch.path("target")), Status::Failed);
    EXPECT_EQ(files::CopyFile(scratch.path("pipe"), scratch.path("target")), Status::Failed);
    EXPECT_EQ(scratch.read("target"), "old");
    EXPECT_EQ(scratch.names(), QStringList({"folder", "pipe", "target"}));
}

TEST(FileSystemTest, LinksAreEntriesOfTheirOwn) {
    ScratchFolder scratch;
    scratch.makeFolder("locked");
    scratch.setReadOnly("locked");
    scratch.link("shortcut", scratch.path("locked"));

    EXPECT_EQ(files::KindOf(scratch.path("shortcut")), files::EntryKind::File);
    EXPECT_FALSE(files::IsReadOnly(scratch.path("shortcut")));
    EXPECT_TRUE(files::IsReadOnly(scratch.path("locked")));
    ASSERT_EQ(files::CopyFile(scratch.path("shortcut"), scratch.path("copy")), Status::Done);
    EXPECT_EQ(QFileInfo(scratch.path("copy")).symLinkTarget(), scratch.path("locked"));
}

TEST(FileSystemTest, FoldersAreComparedByWhatThePathLeadsTo) {
    ScratchFolder scratch;
    scratch.makeFolder("a/b/c");
    scratch.makeFolder("ab");
    scratch.link("to-b", scratch.path("a/b"));

    EXPECT_TRUE(files::IsSameFolder(scratch.folder("a"), scratch.path("a/b/..")));
    EXPECT_TRUE(files::IsSameFolder(scratch.path("to-b"), scratch.folder("a/b")));
    EXPECT_FALSE(files::IsSameFolder(scratch.path("a"), scratch.path("ab")));
    EXPECT_TRUE(files::IsWithin(scratch.path("a"), scratch.path("a")));
    EXPECT_TRUE(files::IsWithin(scratch.path("to-b/c"), scratch.path("a")));
    EXPECT_FALSE(files::IsWithin(scratch.path("ab"), scratch.path("a")));
    EXPECT_FALSE(files::IsWithin(scratch.path("a"), scratch.path("a/b")));
}

TEST(FileSystemTest, TheParentFolderEndsInOneSlashAndTheRootIsItsOwn) {
    const std::pair<QString, QString> cases[] = {
        {"/a/b/", "/a/"}, {"/a/b//", "/a/"}, {"/a/b", "/a/"}, {"/a", "/"}, {"/", "/"}};
    for (const auto& [path, parent] : cases) {
        EXPECT_EQ(files::ParentFolderOf(path), parent) << path.toStdString();
    }
}

TEST(FileSystemTest, RenameNeverReplacesAnEntry) {
    ScratchFolder scratch;
    scratch.write("one", "1");
    scratch.makeFolder("empty");
    EXPECT_EQ(files::RenameEntry(scratch.path("one"), scratch.path("empty")),
              files::RenameResult::Failed);
    EXPECT_EQ(scratch.read("one"), "1");
    EXPECT_TRUE(files::IsFolder(scratch.path("empty")));
}

// Needs a second file system; /dev/shm is one on most machines.
TEST(FileSystemTest, MovesAcrossFileSystemsCopyThenDelete) {
    ScratchFolder here;
    ScratchFolder there(QStringLiteral("/dev/shm"));
    struct stat hereStatus {};
    struct stat thereStatus {};
    if (!there.exists({}) || ::stat(QFile::encodeName(here.path()).constData(), &hereStatus) != 0 ||
        ::stat(QFile::encodeName(there.path()).constData(), &thereStatus) != 0 ||
        hereStatus.st_dev == thereStatus.st_dev) {
        GTEST_SKIP() << "no second file system to move to";
    }
    here.write("file", "f");
    here.write("T/deep/x.txt", "x");

    EXPECT_EQ(files::MoveFile(here.path("file"), there.path("file")), Status::Done);
    FileClipboard clipboard;
    clipboard.cut(here.path(), {"T"});
    EXPECT_EQ(clipboard.paste(there.path(), false, nullptr), Status::Done);
    EXPECT_EQ(there.read("file"), "f");
    EXPECT_EQ(there.read("T/deep/x.txt"), "x");
    EXPECT_TRUE(here.names().isEmpty());
}

} // namespace
} // namespace korvel
