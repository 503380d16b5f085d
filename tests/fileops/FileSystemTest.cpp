#include "fileops/FileSystem.h"

#include "FileTree.h"

namespace korvel {
namespace {

using testing::ScratchFolder;
using Status = FileOpStatus;

// A copy replaces the target in one step with the source's bytes, mode and time; a failed one
// leaves it as it was, and a pipe is never waited on.
TEST(FileSystem, CopyReplacesTheTargetWholeOrNotAtAll) {
    ScratchFolder scratch;
    MakeTree(scratch, {"source", "target=old", "folder/"});
    scratch.writeSized("source", 200000);
    const QDateTime past = QDateTime::fromString("2006-03-14T09:05:01.250", Qt::ISODateWithMs);
    scratch.setModified("source", past);
    scratch.setReadOnly("source");
    ASSERT_EQ(::mkfifo(QFile::encodeName(scratch.path("pipe")).constData(), 0600), 0);
    for (const char* source : {"missing", "folder", "pipe"})
        EXPECT_NE(files::CopyFile(scratch.path(source), scratch.path("target")), Status::Done);
    EXPECT_EQ(scratch.read("target"), "old");

    ASSERT_EQ(files::CopyFile(scratch.path("source"), scratch.path("target")), Status::Done);
    EXPECT_EQ(scratch.read("target"), QByteArray(200000, '\0'));
    EXPECT_TRUE(files::IsReadOnly(scratch.path("target")));
    EXPECT_EQ(QFileInfo(scratch.path("target")).lastModified(), past);
    EXPECT_EQ(scratch.names(), QStringList({"folder", "pipe", "source", "target"}));
}

// A link is an entry of its own; folders are the same or within one another by what the path
// leads to, not by how it is spelt.
TEST(FileSystem, LinksAndFolderIdentity) {
    ScratchFolder scratch;
    MakeTree(scratch, {"a/b/c/", "ab/", "to-b->a/b", "locked/!", "to-locked->locked"});
    EXPECT_EQ(files::KindOf(scratch.path("to-b")), files::EntryKind::File);
    EXPECT_FALSE(files::IsReadOnly(scratch.path("to-locked")));
    EXPECT_TRUE(files::IsReadOnly(scratch.path("locked")));
    EXPECT_TRUE(files::IsSameFolder(scratch.folder("a"), scratch.path("a/b/..")));
    EXPECT_TRUE(files::IsSameFolder(scratch.path("to-b"), scratch.folder("a/b")));
    EXPECT_FALSE(files::IsSameFolder(scratch.path("a"), scratch.path("ab")));
    const std::tuple<const char*, const char*, bool> within[] = {
        {"a", "a", true}, {"to-b/c", "a", true}, {"ab", "a", false}, {"a", "a/b", false}};
    for (const auto& [path, folder, inside] : within)
        EXPECT_EQ(files::IsWithin(scratch.path(path), scratch.path(folder)), inside) << path;
    // A rename never replaces an entry, not even an empty folder.
    scratch.write("one", "1");
    EXPECT_EQ(files::RenameEntry(scratch.path("one"), scratch.path("ab")),
              files::RenameResult::Failed);
    EXPECT_EQ(scratch.read("one"), "1");
}

TEST(FileSystem, TheParentFolderEndsInOneSlashAndTheRootIsItsOwn) {
    const std::pair<QString, QString> cases[] = {
        {"/a/b/", "/a/"}, {"/a/b//", "/a/"}, {"/a/b", "/a/"}, {"/a", "/"}, {"/", "/"}};
    for (const auto& [path, parent] : cases)
        EXPECT_EQ(files::ParentFolderOf(path), parent) << path.toStdString();
}

} // namespace
} // namespace korvel
