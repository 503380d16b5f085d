#include "browser/Shortcut.h"

#include "support/ScratchFolder.h"

#include <QElapsedTimer>
#include <fcntl.h>
#include <future>
#include <gtest/gtest.h>
#include <random>

namespace korvel {
namespace {

using testing::ScratchFolder;

TEST(ShortcutText, TakesTheTextAfterTheFirstHashUpToCrLfDroppingOnePairOfQuotes) {
    const std::pair<QByteArrayView, const char16_t*> rows[] = {
        {"13#\"\\My Documents\\a.txt\"\r\nrest", u"\\My Documents\\a.txt"},
        {"9#\\a.txt\r\n7#\\b.txt", u"\\a.txt"},
        // The count is never checked; only the first "#" separates.
        {"x#\\a#b.txt", u"\\a#b.txt"},
        // A lone LF or CR does not end the text.
        {"1#\\a\nb", u"\\a\nb"},
        // Quotes go only in pairs.
        {"1#\"\\a.txt", u"\"\\a.txt"},
        {"1#\\a.txt\"", u"\\a.txt\""},
        {"1#\"", u"\""},
        {"1#\"\"", u""},
        // No "#", no target; the text ends at a NUL, so a "#" behind one is never seen.
        {"", u""},
        {"\\a.txt", u""},
        {"1", u""},
        {QByteArrayView("1\0#\\a.txt", 9), u""},
        {"1\r\n#\\a.txt", u""},
        // The code page: "テスト" in CP932.
        {"5#\\\x83\x65\x83\x58\x83\x67.txt\r\n", u"\\テスト.txt"},
    };
    for (const auto& [bytes, text] : rows)
        EXPECT_EQ(ParseShortcutText(bytes), QString::fromUtf16(text))
            << bytes.toByteArray().toStdString();
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

// Backslashes read as slashes, the Windows folder as /usr/bin, and a bare name only for a program.
TEST(ShortcutCandidates, MapTheTextToPathsToTry) {
    const std::pair<const char16_t*, QStringList> rows[] = {
        {u"\\My Documents\\a.txt", {"/My Documents/a.txt"}},
        {u"\\Windows\\calc.exe", {"/usr/bin/calc.exe"}},
        {u"\\WINDOWS\\notes.txt", {"/usr/bin/notes.txt"}},
        {u"/home/a.txt", {"/home/a.txt"}},
        {u"calc.exe", {"/usr/bin/calc.exe", "/calc.exe"}},
        {u"tools\\Calc.EXE", {"/usr/bin/tools/Calc.EXE", "/tools/Calc.EXE"}},
        {u"notes.txt", {}},
        {u"calc", {}},
        {u"", {}},
    };
    for (const auto& [text, candidates] : rows)
        EXPECT_EQ(ShortcutCandidates(QString::fromUtf16(text)), candidates)
            << QString::fromUtf16(text).toStdString();
}

TEST(ResolveShortcut, LeadsToAnExistingFileOrFolderThroughALnkFileOrALink) {
    ScratchFolder folder;
    folder.write("a.txt");
    folder.makeFolder("sub");
    folder.write("file.LNK", folder.lnkTo("a.txt"));
    folder.write("folder.lnk", folder.lnkTo("sub"));
    folder.link("to-file", "a.txt");
    folder.link("to-folder", folder.path("sub"));
    // Neither a .lnk file without a target nor a link to nothing leads anywhere, and only a
    // regular file named ".lnk" (in any case) is read.
    folder.write("gone.lnk", folder.lnkTo("gone"));
    folder.write("bare.lnk", "4#notes.txt\r\n");
    folder.write("empty.lnk");
    folder.makeFolder("dir.lnk");
    folder.write("x.txt", folder.lnkTo("a.txt"));
    folder.write("lnk", folder.lnkTo("a.txt"));
    folder.link("broken.lnk", "nowhere");

    const std::tuple<const char*, const char*, bool> leading[] = {
        {"file.LNK", "a.txt", false},
        {"folder.lnk", "sub", true},
        {"to-file", "a.txt", false},
        {"to-folder", "sub", true},
    };
    for (const auto& [shortcut, target, isFolder] : leading) {
        const auto resolved = ResolveShortcut(folder.path(shortcut));
        ASSERT_TRUE(resolved) << shortcut;
        EXPECT_EQ(resolved->path, folder.path(target)) << shortcut;
        EXPECT_EQ(resolved->isFolder, isFolder) << shortcut;
    }
    for (const char* shortcut : {"gone.lnk", "bare.lnk", "empty.lnk", "dir.lnk", "x.txt", "lnk",
                                 "broken.lnk", "missing.lnk"})
        EXPECT_FALSE(ResolveShortcut(folder.path(shortcut))) << shortcut;
}

// Opening a named pipe for reading waits for a writer that never comes; the list must not hang
// on one that happens to be named like a shortcut.
TEST(ResolveShortcut, NeverOpensANamedPipe) {
    ScratchFolder folder;
    const QByteArray pipe = QFile::encodeName(folder.path("x.lnk"));
    ASSERT_EQ(::mkfifo(pipe.constData(), 0600), 0);
    auto resolved =
        std::async(std::launch::async, [&folder] { return ResolveShortcut(folder.path("x.lnk")); });
    if (resolved.wait_for(std::chrono::seconds(5)) != std::future_status::ready) {
        // Let the blocked reader go with an end of file before failing.
        const int writer = ::open(pipe.constData(), O_WRONLY | O_NONBLOCK);
        ::close(writer);
        resolved.wait();
        FAIL() << "the pipe was opened";
    }
    EXPECT_FALSE(resolved.get());
}

TEST(ResolveShortcut, TheListReadsLessThanTheDialog) {
    ScratchFolder folder;
    folder.makeFolder(QString(200, u'd'));
    const QString target = folder.path(QString(200, u'd'));
    folder.write("long.lnk", QByteArray(600 - target.size(), '0') + "#" + target.toUtf8() + "\r\n");
    EXPECT_TRUE(ResolveShortcut(folder.path("long.lnk"), kShortcutReadLimit));
    EXPECT_FALSE(ResolveShortcut(folder.path("long.lnk"), kListShortcutReadLimit));
}

} // namespace
} // namespace korvel
