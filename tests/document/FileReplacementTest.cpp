#include "document/FileReplacement.h"

#include "support/ScratchFolder.h"

#include <cerrno>
#include <cstring>
#include <functional>
#include <grp.h>
#include <gtest/gtest.h>
#include <optional>
#include <sys/wait.h>
#include <sys/xattr.h>

namespace korvel {
namespace {

using testing::ScratchFolder;

// Users and groups that exist only as numbers: root gives files to 4242 and group 4243.
constexpr gid_t kSharedGroup = 4243;
constexpr uid_t kGroupMember = 4244;

ReplaceOutcome Replace(const QString& path, std::string_view bytes) {
    const std::span<const std::uint8_t> parts[] = {
        {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}};
    return ReplaceFileContents(QFile::encodeName(path).toStdString(), parts);
}

// Each row's folder starts with old.txt holding "old bytes", and a shell command makes the rest;
// "~" stands for a long prefix (ScratchFolder::shell). The bytes go to the path written, or to the
// name after a '>' in it.
struct Row {
    const char* name;
    const char* make;
    const char* write;
    ReplaceFailure failure = ReplaceFailure::None;
    int systemError = 0;
    bool diskFull = false;
    mode_t umask = 022;
};

constexpr ReplaceFailure kSystem = ReplaceFailure::System;

const Row kRows[] = {
    // Refused, and the folder stays exactly as it was.
    {"Folder", "mkdir d", "d", ReplaceFailure::Folder},
    {"Pipe", "mkfifo pipe", "pipe", ReplaceFailure::NotRegularFile},
    {"LinkToAPipe", "mkfifo pipe && ln -s pipe out", "out", ReplaceFailure::NotRegularFile},
    // What /dev/null is; root would otherwise turn it into a plain file.
    {"DeviceNode", "mknod null c 1 3", "null", ReplaceFailure::NotRegularFile},
    {"LinkLoop", "ln -s b a && ln -s a b", "a", kSystem, ELOOP},
    {"DiskFull", ":", "old.txt", kSystem, EFBIG, true},
    {"DiskFullForANewFile", ":", "new.txt", kSystem, EFBIG, true},
    // Written in place: the room is reserved before any old byte goes.
    {"DiskFullForAHardLinkedFile", "ln old.txt second", "old.txt", kSystem, EFBIG, true},
    // Replaced: everything but the bytes stays, and no other file is left.
    {"Private", "chmod 600 old.txt", "old.txt"},
    {"Executable", "chmod 755 old.txt", "old.txt"},
    // What root may do is not what the owner may: no owner execute bit appears.
    {"GroupExecutable", "chmod 654 old.txt", "old.txt"},
    // A change of owner clears the set-id bits, so they are given after it.
    {"AnotherUsersSetIdFile", "chown 4242:4243 old.txt && chmod 6775 old.txt", "old.txt"},
    {"ExtendedAttributes", ":", "old.txt"},
    {"HardLinked", "ln old.txt second", "old.txt>second"},
    {"SymbolicLink", "ln -s old.txt link", "link>old.txt"},
    {"NameAtTheLimit", "mv old.txt ~e.txt", "~e.txt"},
    // A new file gets the umask's mode; so does a dangling link's target.
    {"New", ":", "new.txt"},
    {"NewUnderUmask077", ":", "new.txt", {}, 0, false, 077},
    {"NewNameAtTheLimit", ":", "~n.txt"},
    {"DanglingLink", "ln -s made.txt link", "link>made.txt"},
};

TEST(ReplaceFileContents, GivesTheNewBytesOrSaysWhyAndChangesNothing) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        ScratchFolder scratch;
        const QStringList names =
            ScratchFolder::longNames(QString::fromLatin1(row.write)).split(u'>');
        const QString write = scratch.path(names.first());
        const QString landsIn = names.last();
        const bool noted = row.name == std::string_view("ExtendedAttributes");
        if (!scratch.shell(QStringLiteral("echo old bytes >old.txt && ") +
                           QString::fromLatin1(row.make)) ||
            (noted && ::setxattr(QFile::encodeName(write).constData(), "user.korvel.note", "kept",
                                 4, 0) != 0)) {
            continue; // only root makes device nodes and gives files away; no user xattrs here
        }
        const bool refused = row.failure != ReplaceFailure::None;
        const bool made = !scratch.exists(landsIn);
        const QStringList before = scratch.snapshot(refused);
        ReplaceOutcome outcome;
        {
            std::optional<testing::ScopedFileSizeLimit> disk;
            if (row.diskFull) {
                disk.emplace(16);
            }
            const mode_t umask = ::umask(row.umask);
            outcome = Replace(write, refused ? "new bytes, longer than the old" : "new");
            ::umask(umask);
        }
        EXPECT_EQ(outcome.failure, row.failure);
        EXPECT_EQ(outcome.systemError, row.systemError) << std::strerror(outcome.systemError);
        QStringList after = scratch.snapshot(refused);
        if (!refused) {
            EXPECT_EQ(scratch.read(landsIn), "new");
        }
        if (!refused && made) {
            EXPECT_EQ(testing::StatusOf(scratch.path(landsIn)).st_mode & 07777, 0666 & ~row.umask);
            after.removeIf([&](const QString& line) { return line.startsWith(landsIn + u' '); });
        }
        EXPECT_EQ(after, before);
    }
}

// Runs body in a child process that has become kGroupMember of kSharedGroup, and returns its exit
// status.
int RunAsGroupMember(const std::function<int()>& body) {
    const pid_t child = ::fork();
    if (child == 0) {
        const gid_t groups[] = {kSharedGroup};
        if (::setgroups(1, groups) != 0 || ::setgid(kSharedGroup) != 0 ||
            ::setuid(kGroupMember) != 0) {
            ::_exit(100);
        }
        ::_exit(body());
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 200;
}

// A member of the file's group may write it but not make a file that belongs to its owner: the file
// is written in place, whole or not at all, and stays the owner's.
TEST(ReplaceFileContents, AGroupMembersSaveKeepsTheOwnerOrChangesNothing) {
    ScratchFolder scratch;
    if (::geteuid() != 0 || !scratch.shell("chmod 777 . && echo old >shared.txt && "
                                           "chown 4242:4243 shared.txt && chmod 664 shared.txt")) {
        GTEST_SKIP() << "only root can act as two other users";
    }
    const QString path = scratch.path(QStringLiteral("shared.txt"));
    const QStringList kept = scratch.snapshot(false);
    const QStringList before = scratch.snapshot();
    EXPECT_EQ(RunAsGroupMember([&] {
                  const testing::ScopedFileSizeLimit diskFull(16);
                  return Replace(path, "a new text longer than the old").systemError;
              }),
              EFBIG);
    EXPECT_EQ(scratch.snapshot(), before);
    for (const char* bytes : {"a new text longer than the old", "short"}) {
        EXPECT_EQ(RunAsGroupMember([&] { return Replace(path, bytes).succeeded() ? 0 : 1; }), 0);
        EXPECT_EQ(scratch.read(QStringLiteral("shared.txt")), bytes);
    }
    EXPECT_EQ(scratch.snapshot(false), kept);
}

} // namespace
} // namespace korvel
