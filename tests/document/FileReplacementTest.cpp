#include "document/FileReplacement.h"

#include "support/ScopedFileSizeLimit.h"
#include "support/ScratchFolder.h"

#include <cerrno>
#include <cstring>
#include <functional>
#include <grp.h>
#include <gtest/gtest.h>
#include <optional>
#include <sys/sysmacros.h>
#include <sys/wait.h>

namespace korvel {
namespace {

using testing::RunningAsRoot;
using testing::ScratchFolder;

// Users and groups that exist only as numbers: root can give files to them.
constexpr uid_t kOtherOwner = 4242;
constexpr gid_t kSharedGroup = 4243;
constexpr uid_t kGroupMember = 4244;

ReplaceOutcome Replace(const QString& path, std::string_view bytes) {
    const std::span<const std::uint8_t> parts[] = {
        {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}};
    return ReplaceFileContents(QFile::encodeName(path).toStdString(), parts);
}

// A name that begins with '~' is padded to the file system's limit of 255 bytes.
QString Named(const QString& name) {
    return name.startsWith(u'~') ? QString(256 - name.size(), u'x') + name.mid(1) : name;
}

// Makes the entries of a row, one per comma: "f NAME [MODE]" a file of "old bytes", "d NAME" a
// folder, "p NAME" a pipe, "c NAME" what /dev/null is, "l NAME TARGET" a symbolic link,
// "h NAME FILE" a hard link, "o NAME MODE" a file given to another user and group, "x NAME" a
// file with a note in its extended attributes. False when this machine or user cannot.
bool Make(const ScratchFolder& s, const char* entries) {
    for (const QString& entry : QString::fromLatin1(entries).split(u',', Qt::SkipEmptyParts)) {
        const QStringList w = entry.split(u' ', Qt::SkipEmptyParts);
        const char kind = w[0][0].toLatin1();
        const QByteArray name = QFile::encodeName(s.path(Named(w[1])));
        const QString third = w.value(2);
        const mode_t mode = third.isEmpty() ? 0644 : third.toUInt(nullptr, 8);
        if (kind == 'f' || kind == 'o' || kind == 'x') {
            s.writeFile(Named(w[1]), "old bytes", mode);
        }
        const bool made =
            kind == 'd'   ? QDir().mkpath(s.path(w[1]))
            : kind == 'p' ? ::mkfifo(name.constData(), 0644) == 0
            : kind == 'c' ? ::mknod(name.constData(), S_IFCHR | 0666, ::makedev(1, 3)) == 0
            : kind == 'l' ? ::symlink(QFile::encodeName(third).constData(), name.constData()) == 0
            : kind == 'h'
                ? ::link(QFile::encodeName(s.path(third)).constData(), name.constData()) == 0
            : kind == 'o' ? ::chown(name.constData(), kOtherOwner, kSharedGroup) == 0 &&
                                ::chmod(name.constData(), mode) == 0
            : kind == 'x' ? ::setxattr(name.constData(), "user.korvel.note", "kept", 4, 0) == 0
                          : kind == 'f';
        if (!made) {
            return false;
        }
    }
    return true;
}

struct Row {
    const char* name;
    const char* entries;
    const char* write; // the path written
    ReplaceFailure failure = ReplaceFailure::None;
    int systemError = 0;
    bool diskFull = false;
    const char* landsIn = nullptr; // where the bytes go, when not the path written
    mode_t umask = 022;
};

constexpr ReplaceFailure kSystem = ReplaceFailure::System;

const Row kRows[] = {
    // Refused, and the folder stays exactly as it was.
    {"Folder", "d d", "d", ReplaceFailure::Folder},
    {"Pipe", "p pipe", "pipe", ReplaceFailure::NotRegularFile},
    {"LinkToAPipe", "p pipe, l out pipe", "out", ReplaceFailure::NotRegularFile},
    {"DeviceNode", "c null", "null", ReplaceFailure::NotRegularFile},
    {"LinkLoop", "l a b, l b a", "a", kSystem, ELOOP},
    {"DiskFull", "f old.txt", "old.txt", kSystem, EFBIG, true},
    {"DiskFullForANewFile", "", "new.txt", kSystem, EFBIG, true},
    // Written in place: the room is reserved before any old byte goes.
    {"DiskFullForAHardLinkedFile", "f old.txt, h second old.txt", "old.txt", kSystem, EFBIG, true},
    // Replaced: everything but the bytes stays, and no other file is left.
    {"Private", "f old.txt 600", "old.txt"},
    {"GroupReadableUnderUmask077", "f old.txt 640", "old.txt", {}, 0, false, nullptr, 077},
    {"Executable", "f old.txt 755", "old.txt"},
    // What root may do is not what the owner may: no owner execute bit appears.
    {"GroupExecutable", "f old.txt 654", "old.txt"},
    {"AnotherUsersSetIdFile", "o old.txt 6775", "old.txt"},
    {"ExtendedAttributes", "x old.txt", "old.txt"},
    {"HardLinked", "f old.txt, h second old.txt", "old.txt", {}, 0, false, "second"},
    {"SymbolicLink", "f old.txt, l link old.txt", "link", {}, 0, false, "old.txt"},
    {"NameAtTheLimit", "f ~e.txt", "~e.txt"},
    // A new file gets the umask's mode; so does a dangling link's target.
    {"New", "", "new.txt"},
    {"NewUnderUmask077", "", "new.txt", {}, 0, false, nullptr, 077},
    {"NewNameAtTheLimit", "", "~n.txt"},
    {"DanglingLink", "l link made.txt", "link", {}, 0, false, "made.txt"},
};

void PrintTo(const Row& row, std::ostream* os) {
    *os << row.name;
}

class Replacing : public ::testing::TestWithParam<Row> {};

TEST_P(Replacing, GivesTheNewBytesOrSaysWhyAndChangesNothing) {
    const Row& row = GetParam();
    ScratchFolder scratch;
    if (!Make(scratch, row.entries)) {
        GTEST_SKIP() << "needs root and user extended attributes";
    }
    const bool refused = row.failure != ReplaceFailure::None;
    const QString landsIn = Named(QString::fromLatin1(row.landsIn ? row.landsIn : row.write));
    const bool made = !scratch.exists(landsIn);
    const QStringList before = scratch.snapshot(refused);
    ReplaceOutcome outcome;
    {
        std::optional<testing::ScopedFileSizeLimit> disk;
        if (row.diskFull) {
            disk.emplace(16);
        }
        const mode_t umask = ::umask(row.umask);
        outcome = Replace(scratch.path(Named(QString::fromLatin1(row.write))),
                          refused ? "new bytes, longer than the old" : "new");
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

INSTANTIATE_TEST_SUITE_P(Rows, Replacing, ::testing::ValuesIn(kRows),
                         [](const ::testing::TestParamInfo<Row>& info) {
                             return std::string(info.param.name);
                         });

// Runs body in a child process that has become kGroupMember of kSharedGroup, and returns its
// exit status.
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

// A member of the file's group may write it but not make a file that belongs to its owner: the
// file is written in place, whole or not at all, and stays the owner's.
TEST(Replacing, AGroupMembersSaveKeepsTheOwnerOrChangesNothing) {
    ScratchFolder scratch;
    if (!RunningAsRoot() || !Make(scratch, "o shared.txt 664")) {
        GTEST_SKIP() << "only root can act as two other users";
    }
    ASSERT_EQ(::chmod(QFile::encodeName(scratch.path()).constData(), 0777), 0);
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
