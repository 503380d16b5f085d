#include "document/FileReplacement.h"

#include "ScratchFolder.h"
#include "support/ScopedFileSizeLimit.h"

#include <cerrno>
#include <cstring>
#include <functional>
#include <grp.h>
#include <gtest/gtest.h>
#include <optional>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace korvel {
namespace {

using testing::RunningAsRoot;
using testing::Scratch;

// Users and groups that exist only as numbers: root can give files to them.
constexpr uid_t kOtherOwner = 4242;
constexpr gid_t kSharedGroup = 4243;
constexpr uid_t kGroupMember = 4244;

ReplaceOutcome Replace(const QString& path, std::string_view bytes) {
    const std::span<const std::uint8_t> parts[] = {
        {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}};
    return ReplaceFileContents(QFile::encodeName(path).toStdString(), parts);
}

ino_t InodeOf(const QString& path) {
    return Scratch::StatusOf(path).st_ino;
}

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

// --- What cannot be written is refused, and a failed write changes nothing ----------------

struct Refusal {
    const char* name;
    QString (*make)(const Scratch&);
    ReplaceFailure failure;
    int systemError = 0;
    bool diskFull = false;
    bool needsRoot = false;
};

QString MakeOldFile(const Scratch& s) {
    return s.write(QStringLiteral("old.txt"), QByteArray("old"));
}

const Refusal kRefusals[] = {
    {"Folder",
     [](const Scratch& s) {
         QDir().mkdir(s.path(QStringLiteral("folder")));
         return s.path(QStringLiteral("folder"));
     },
     ReplaceFailure::Folder},
    {"Pipe",
     [](const Scratch& s) {
         ::mkfifo(QFile::encodeName(s.path(QStringLiteral("pipe"))).constData(), 0644);
         return s.path(QStringLiteral("pipe"));
     },
     ReplaceFailure::NotRegularFile},
    // What /dev/null is; root would otherwise turn it into a plain file.
    {"DeviceNode",
     [](const Scratch& s) {
         const QString path = s.path(QStringLiteral("null"));
         ::mknod(QFile::encodeName(path).constData(), S_IFCHR | 0666, ::makedev(1, 3));
         return path;
     },
     ReplaceFailure::NotRegularFile, 0, false, true},
    {"LinkToAPipe",
     [](const Scratch& s) {
         ::mkfifo(QFile::encodeName(s.path(QStringLiteral("pipe"))).constData(), 0644);
         QFile::link(QStringLiteral("pipe"), s.path(QStringLiteral("out")));
         return s.path(QStringLiteral("out"));
     },
     ReplaceFailure::NotRegularFile},
    {"LinkLoop",
     [](const Scratch& s) {
         QFile::link(QStringLiteral("b"), s.path(QStringLiteral("a")));
         QFile::link(QStringLiteral("a"), s.path(QStringLiteral("b")));
         return s.path(QStringLiteral("a"));
     },
     ReplaceFailure::System, ELOOP},
    {"DiskFull", MakeOldFile, ReplaceFailure::System, EFBIG, true},
    {"DiskFullForANewFile", [](const Scratch& s) { return s.path(QStringLiteral("new.txt")); },
     ReplaceFailure::System, EFBIG, true},
    // Written in place: the room is reserved before any old byte goes.
    {"DiskFullForAHardLinkedFile",
     [](const Scratch& s) {
         const QString path = MakeOldFile(s);
         ::link(QFile::encodeName(path).constData(),
                QFile::encodeName(s.path(QStringLiteral("second"))).constData());
         return path;
     },
     ReplaceFailure::System, EFBIG, true},
};

void PrintTo(const Refusal& c, std::ostream* os) {
    *os << c.name;
}

class ReplaceRefused : public ::testing::TestWithParam<Refusal> {};

TEST_P(ReplaceRefused, SaysWhyAndLeavesTheFolderAsItWas) {
    const Refusal& c = GetParam();
    if (c.needsRoot && !RunningAsRoot()) {
        GTEST_SKIP() << "only root makes device nodes";
    }
    Scratch scratch;
    const QString path = c.make(scratch);
    const std::string before = scratch.snapshot();
    ReplaceOutcome outcome;
    {
        std::optional<testing::ScopedFileSizeLimit> disk;
        if (c.diskFull) {
            disk.emplace(4);
        }
        outcome = Replace(path, "new bytes, longer than the old");
    }
    EXPECT_EQ(outcome.failure, c.failure);
    EXPECT_EQ(outcome.systemError, c.systemError) << std::strerror(outcome.systemError);
    EXPECT_EQ(scratch.snapshot(), before);
}

INSTANTIATE_TEST_SUITE_P(Rows, ReplaceRefused, ::testing::ValuesIn(kRefusals),
                         [](const ::testing::TestParamInfo<Refusal>& info) {
                             return std::string(info.param.name);
                         });

// --- What a replaced file keeps -----------------------------------------------------------

TEST(ReplaceNames, ANameAtTheFileSystemsLimitIsWrittenAndMade) {
    Scratch scratch;
    const QString existing = scratch.write(QString(251, u'e') + QStringLiteral(".txt"), "old");
    const QString made = scratch.path(QString(251, u'm') + QStringLiteral(".txt"));
    for (const QString& path : {existing, made}) {
        ASSERT_TRUE(Replace(path, "new").succeeded());
        EXPECT_EQ(Scratch::Read(path), QByteArray("new"));
    }
}

TEST(ReplaceLinks, EveryNameOfAHardLinkedFileSeesTheNewBytes) {
    Scratch scratch;
    const QString first = scratch.write(QStringLiteral("first"), "a longer old text");
    const QString second = scratch.path(QStringLiteral("second"));
    ASSERT_EQ(::link(QFile::encodeName(first).constData(), QFile::encodeName(second).constData()),
              0);
    for (const std::string_view bytes : {"short", "a new text longer than the old one"}) {
        ASSERT_TRUE(Replace(first, bytes).succeeded());
        EXPECT_EQ(Scratch::Read(second), QByteArray(bytes.data(), qsizetype(bytes.size())));
        EXPECT_EQ(InodeOf(first), InodeOf(second));
    }
}

// A link is kept whether its target exists or is yet to be made.
TEST(ReplaceLinks, ASymbolicLinkStaysALinkAndItsTargetGetsTheBytes) {
    Scratch scratch;
    scratch.write(QStringLiteral("target.txt"), "old");
    for (const char* target : {"target.txt", "made.txt"}) {
        SCOPED_TRACE(target);
        const QString link = scratch.path(QStringLiteral("link-to-") + QString::fromLatin1(target));
        ASSERT_TRUE(QFile::link(QString::fromLatin1(target), link));
        ASSERT_TRUE(Replace(link, "new").succeeded());
        EXPECT_TRUE(QFileInfo(link).isSymLink());
        EXPECT_EQ(Scratch::Read(scratch.path(QString::fromLatin1(target))), QByteArray("new"));
    }
}

TEST(ReplacePermissions, AReplacedFileKeepsItsModeAndANewOneFollowsTheUmask) {
    const struct {
        const char* name;
        std::optional<mode_t> existing;
        mode_t umask;
        mode_t expected;
    } cases[] = {
        {"private", 0600, 022, 0600},
        {"group readable", 0640, 077, 0640},
        {"executable", 0755, 022, 0755},
        // What root may do is not what the owner may: no owner execute bit appears.
        {"group executable", 0654, 022, 0654},
        {"new, umask 022", std::nullopt, 022, 0644},
        {"new, umask 077", std::nullopt, 077, 0600},
    };
    Scratch scratch;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QString path = scratch.path(QString::fromLatin1(c.name));
        if (c.existing) {
            scratch.write(QString::fromLatin1(c.name), QByteArray("old"), *c.existing);
        }
        const mode_t previous = ::umask(c.umask);
        const bool replaced = Replace(path, "new").succeeded();
        ::umask(previous);
        ASSERT_TRUE(replaced);
        EXPECT_EQ(Scratch::ModeOf(path), c.expected);
    }
}

// Extended attributes carry ACLs and notes other programs keep on a file.
TEST(ReplaceAttributes, ExtendedAttributesStayWithTheFile) {
    Scratch scratch;
    const QString path = scratch.write(QStringLiteral("noted.txt"), "old");
    const QByteArray name = QFile::encodeName(path);
    if (::setxattr(name.constData(), "user.korvel.note", "kept", 4, 0) != 0) {
        GTEST_SKIP() << "no user attributes here: " << std::strerror(errno);
    }
    ASSERT_TRUE(Replace(path, "new").succeeded());
    char value[16] = {};
    EXPECT_EQ(::getxattr(name.constData(), "user.korvel.note", value, sizeof value), 4);
    EXPECT_STREQ(value, "kept");
    EXPECT_EQ(Scratch::Read(path), QByteArray("new"));
}

TEST(ReplaceOwnership, AnotherUsersFileKeepsItsOwnerGroupAndSetIdBits) {
    if (!RunningAsRoot()) {
        GTEST_SKIP() << "only root can give a file to another user";
    }
    Scratch scratch;
    const QString path = scratch.write(QStringLiteral("theirs.txt"), "old");
    const QByteArray name = QFile::encodeName(path);
    ASSERT_EQ(::chown(name.constData(), kOtherOwner, kSharedGroup), 0);
    ASSERT_EQ(::chmod(name.constData(), 02664), 0);

    ASSERT_TRUE(Replace(path, "new").succeeded());
    const struct stat after = Scratch::StatusOf(path);
    EXPECT_EQ(Scratch::Read(path), QByteArray("new"));
    EXPECT_EQ(after.st_uid, kOtherOwner);
    EXPECT_EQ(after.st_gid, kSharedGroup);
    EXPECT_EQ(after.st_mode & 07777, 02664u);
}

// A member of the file's group may write it but not make a file that belongs to its owner: the
// file is written in place, whole or not at all, and stays the owner's.
TEST(ReplaceOwnership, AGroupMembersSaveKeepsTheOwnerOrChangesNothing) {
    if (!RunningAsRoot()) {
        GTEST_SKIP() << "only root can act as two other users";
    }
    Scratch scratch;
    ASSERT_EQ(::chmod(QFile::encodeName(scratch.path({})).constData(), 0777), 0);
    const QString path = scratch.write(QStringLiteral("shared.txt"), "old", 0664);
    ASSERT_EQ(::chown(QFile::encodeName(path).constData(), kOtherOwner, kSharedGroup), 0);
    const ino_t inode = InodeOf(path);

    const std::string before = scratch.snapshot();
    EXPECT_EQ(RunAsGroupMember([&] {
                  const testing::ScopedFileSizeLimit diskFull(4);
                  return Replace(path, "a new text longer than the old").systemError;
              }),
              EFBIG);
    EXPECT_EQ(scratch.snapshot(), before);

    for (const std::string_view bytes : {"a new text longer than the old", "short"}) {
        EXPECT_EQ(RunAsGroupMember([&] { return Replace(path, bytes).succeeded() ? 0 : 1; }), 0);
        EXPECT_EQ(Scratch::Read(path), QByteArray(bytes.data(), qsizetype(bytes.size())));
    }
    const struct stat after = Scratch::StatusOf(path);
    EXPECT_EQ(after.st_uid, kOtherOwner);
    EXPECT_EQ(after.st_gid, kSharedGroup);
    EXPECT_EQ(after.st_mode & 07777, 0664u);
    EXPECT_EQ(after.st_ino, inode);
}

} // namespace
} // namespace korvel
