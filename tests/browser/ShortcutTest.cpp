#include "browser/Shortcut.h"

#include "support/ScratchFolder.h"

#include <gtest/gtest.h>
#include <random>

namespace korvel {
namespace {

using testing::ScratchFolder;

TEST(ShortcutText, TakesTheTextAfterTheHashUpToTheFirstLineEnd) {
    EXPECT_EQ(ParseShortcutText("13#\"\\My Documents\\a.txt\"\r\nrest"),
              QStringLiteral("\\My Documents\\a.txt"));
    EXPECT_EQ(ParseShortcutText("9#\\a.txt\r\n7#\\b.txt"), QStringLiteral("\\a.txt"));
    // The count is never checked; only the first "#" separates.
    EXPECT_EQ(ParseShortcutText("x#\\a#b.txt"), QStringLiteral("\\a#b.txt"));
    // A lone LF or CR does not end the text.
    EXPECT_EQ(ParseShortcutText("1#\\a\nb"), QStringLiteral("\\a\nb"));
}

TEST(ShortcutText, DropsQuotesOnlyInPairs) {
    EXPECT_EQ(ParseShortcutText("1#\"\\a.txt"), QStringLiteral("\"\\a.txt"));
    EXPECT_EQ(ParseShortcutText("1#\\a.txt\""), QStringLiteral("\\a.txt\""));
    EXPECT_EQ(ParseShortcutText("1#\""), QStringLiteral("\""));
    EXPECT_EQ(ParseShortcutText("1#\"\""), QString());
}

TEST(ShortcutText, HasNoTargetWithoutAHash) {
    EXPECT_EQ(ParseShortcutText(""), QString());
    EXPECT_EQ(ParseShortcutText("\\a.txt"), QString());
    EXPECT_EQ(ParseShortcutText("1"), QString());
    // The text ends at a NUL, so a "#" behind one is never seen.
    EXPECT_EQ(ParseShortcutText(QByteArrayView("1\0#\\a.txt", 9)), QString());
    EXPECT_EQ(ParseShortcutText("1\r\n#\\a.txt"), QString());
}

TEST(ShortcutText, DecodesTheCodePage) {
    // "テスト" in CP932.
    EXPECT_EQ(ParseShortcutText("5#\\\x83\x65\x83\x58\x83\x67.txt\r\n"),
              QStringLiteral("\\テスト.txt"));
}

TEST(ShortcutText, TakesAnyBytes) {
    std::mt19937 random(20240601);
    for (int round = 0; round < 2000; ++round) {
        QByteArray bytes(qsizetype(random() % 800), '\0');
        for (char& byte : bytes)
            byte = char(random() % 8 == 0 ? '#' : random() % 256);
        const QString text = ParseShortcutText(bytes);
        ShortcutCandidates(text);
    }
}

TEST(ShortcutCandidates, ReadBackslashesAsSlashesAndWindowsAsUsrBin) {
    EXPECT_EQ(ShortcutCandidates(QStringLiteral("\\My Documents\\a.txt")),
              QStringList{QStringLiteral("/My Documents/a.txt")});
    EXPECT_EQ(ShortcutCandidates(QStringLiteral("\\Windows\\calc.exe")),
              QStringList{QStringLiteral("/usr/bin/calc.exe")});
    EXPECT_EQ(ShortcutCandidates(QStringLiteral("\\WINDOWS\\notes.txt")),
              QStringList{QStringLiteral("/usr/bin/notes.txt")});
    EXPECT_EQ(ShortcutCandidates(QStringLiteral("/home/a.txt")),
              QStringList{QStringLiteral("/home/a.txt")});
}

TEST(ShortcutCandidates, FollowABareNameOnlyForAProgram) {
    EXPECT_EQ(ShortcutCandidates(QStringLiteral("calc.exe")),
              (QStringList{QStringLiteral("/usr/bin/calc.exe"), QStringLiteral("/calc.exe")}));
    EXPECT_EQ(ShortcutCandidates(QStringLiteral("tools\\Calc.EXE")),
              (QStringList{QStringLiteral("/usr/bin/tools/Calc.EXE"),
                           QStringLiteral("/tools/Calc.EXE")}));
    EXPECT_TRUE(ShortcutCandidates(QStringLiteral("notes.txt")).isEmpty());
    EXPECT_TRUE(ShortcutCandidates(QStringLiteral("calc")).isEmpty());
    EXPECT_TRUE(ShortcutCandidates(QString()).isEmpty());
}

class ResolveShortcutTest : public ::testing::Test {
protected:
    QByteArray lnkTo(const QString& target) const {
        return QByteArray::number(target.size()) + "#\"" + target.toUtf8() + "\"\r\n";
    }

    ScratchFolder folder_;
};

TEST_F(ResolveShortcutTest, LeadsToAnExistingFileOrFolder) {
    folder_.write(QStringLiteral("a.txt"));
    folder_.makeFolder(QStringLiteral("sub"));
    folder_.write(QStringLiteral("file.lnk"), lnkTo(folder_.path(QStringLiteral("a.txt"))));
    folder_.write(QStringLiteral("folder.lnk"), lnkTo(folder_.path(QStringLiteral("sub"))));

    const auto file = ResolveShortcut(folder_.path(QStringLiteral("file.lnk")));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->path, folder_.path(QStringLiteral("a.txt")));
    EXPECT_FALSE(file->isFolder);
    const auto folder = ResolveShortcut(folder_.path(QStringLiteral("folder.lnk")));
    ASSERT_TRUE(folder);
    EXPECT_TRUE(folder->isFolder);
}

TEST_F(ResolveShortcutTest, NeedsTheLnkExtensionInAnyCase) {
    folder_.write(QStringLiteral("a.txt"));
    const QByteArray text = lnkTo(folder_.path(QStringLiteral("a.txt")));
    folder_.write(QStringLiteral("X.LNK"), text);
    folder_.write(QStringLiteral("x.txt"), text);
    folder_.write(QStringLiteral("lnk"), text);

    EXPECT_TRUE(ResolveShortcut(folder_.path(QStringLiteral("X.LNK"))));
    EXPECT_FALSE(ResolveShortcut(folder_.path(QStringLiteral("x.txt"))));
    EXPECT_FALSE(ResolveShortcut(folder_.path(QStringLiteral("lnk"))));
}

TEST_F(ResolveShortcutTest, FailsForMissingTargetsAndUnreadableFiles) {
    folder_.write(QStringLiteral("gone.lnk"), lnkTo(folder_.path(QStringLiteral("gone"))));
    folder_.write(QStringLiteral("bare.lnk"), "4#notes.txt\r\n");
    folder_.write(QStringLiteral("empty.lnk"));
    folder_.makeFolder(QStringLiteral("dir.lnk"));

    EXPECT_FALSE(ResolveShortcut(folder_.path(QStringLiteral("gone.lnk"))));
    EXPECT_FALSE(ResolveShortcut(folder_.path(QStringLiteral("bare.lnk"))));
    EXPECT_FALSE(ResolveShortcut(folder_.path(QStringLiteral("empty.lnk"))));
    EXPECT_FALSE(ResolveShortcut(folder_.path(QStringLiteral("dir.lnk"))));
    EXPECT_FALSE(ResolveShortcut(folder_.path(QStringLiteral("missing.lnk"))));
}

TEST_F(ResolveShortcutTest, TheListReadsLessThanTheDialog) {
    folder_.makeFolder(QString(200, u'd'));
    const QString target = folder_.path(QString(200, u'd'));
    folder_.write(QStringLiteral("long.lnk"),
                  QByteArray(600 - target.size(), '0') + "#" + target.toUtf8() + "\r\n");
    const QString shortcut = folder_.path(QStringLiteral("long.lnk"));

    EXPECT_TRUE(ResolveShortcut(shortcut, kShortcutReadLimit));
    EXPECT_FALSE(ResolveShortcut(shortcut, kListShortcutReadLimit));
}

TEST_F(ResolveShortcutTest, FollowsSymbolicLinksWhateverTheirName) {
    folder_.write(QStringLiteral("a.txt"));
    folder_.makeFolder(QStringLiteral("sub"));
    folder_.link(QStringLiteral("to-file"), QStringLiteral("a.txt"));
    folder_.link(QStringLiteral("to-folder"), folder_.path(QStringLiteral("sub")));
    folder_.link(QStringLiteral("broken.lnk"), QStringLiteral("nowhere"));

    const auto file = ResolveShortcut(folder_.path(QStringLiteral("to-file")));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->path, folder_.path(QStringLiteral("a.txt")));
    EXPECT_FALSE(file->isFolder);
    const auto folder = ResolveShortcut(folder_.path(QStringLiteral("to-folder")));
    ASSERT_TRUE(folder);
    EXPECT_TRUE(folder->isFolder);
    EXPECT_FALSE(ResolveShortcut(folder_.path(QStringLiteral("broken.lnk"))));
}

} // namespace
} // namespace korvel
