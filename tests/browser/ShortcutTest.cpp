#include "browser/Shortcut.h"

#include "support/ScratchFolder.h"

namespace korvel {
namespace {

using testing::ScratchFolder;

// The properties every text obeys run over the fuzz seeds; these are the rows they cannot state.
TEST(ShortcutText, TakesTheTextAfterTheFirstHashDroppingOnePairOfQuotes) {
    const std::pair<QByteArrayView, const char16_t*> rows[] = {
        {"13#\"\\My Documents\\a.txt\"\r\nrest", u"\\My Documents\\a.txt"},
        {"x#\\a#b.txt", u"\\a#b.txt"}, // the count is never checked
        {"1#\\a\nb", u"\\a\nb"},       // a lone LF does not end the text
        {"1#\"\\a.txt", u"\"\\a.txt"},
        {"1#\\a.txt\"", u"\\a.txt\""},
        {"1#\"", u"\""},
        {"1#\"\"", u""},
        {QByteArrayView("1\0#\\a.txt", 9), u""},
        {"5#\\\x83\x65\x83\x58\x83\x67.txt\r\n", u"\\テスト.txt"}, // CP932
    };
    for (const auto& [bytes, text] : rows)
        EXPECT_EQ(ParseShortcutText(bytes), QString::fromUtf16(text))
            << bytes.toByteArray().toStdString();
}

// Backslashes read as slashes, the Windows folder as /usr/bin, and a bare name only for a program.
TEST(ShortcutCandidates, MapTheTextToPathsToTry) {
    const std::pair<const char16_t*, QStringList> rows[] = {
        {u"\\My Documents\\a.txt", {"/My Documents/a.txt"}},
        {u"\\WINDOWS\\notes.txt", {"/usr/bin/notes.txt"}},
        {u"tools\\Calc.EXE", {"/usr/bin/tools/Calc.EXE", "/tools/Calc.EXE"}},
        {u"notes.txt", {}},
    };
    for (const auto& [text, candidates] : rows)
        EXPECT_EQ(ShortcutCandidates(QString::fromUtf16(text)), candidates)
            << QString::fromUtf16(text).toStdString();
}

// A .lnk file (only a regular one, named so in any case) or a link, of any name, leads to what
// exists; the list reads less of a .lnk file than the dialog.
TEST(ResolveShortcut, LeadsToAnExistingFileOrFolder) {
    ScratchFolder folder;
    folder.write("a.txt");
    folder.makeFolder(QString(200, u'd'));
    const QString far = folder.path(QString(200, u'd'));
    folder.write("file.LNK", folder.lnkTo("a.txt"));
    folder.write("far.lnk", QByteArray(600 - far.size(), '0') + "#" + far.toUtf8() + "\r\n");
    folder.link("to-file", "a.txt");
    folder.write("gone.lnk", folder.lnkTo("gone"));
    folder.write("x.txt", folder.lnkTo("a.txt"));
    folder.makeFolder("dir.lnk");
    folder.link("broken.lnk", "nowhere");
    const std::tuple<const char*, qsizetype, QString, bool> rows[] = {
        {"file.LNK", kListShortcutReadLimit, folder.path("a.txt"), false},
        {"far.lnk", kShortcutReadLimit, far, true},
        {"to-file", kListShortcutReadLimit, folder.path("a.txt"), false},
        {"far.lnk", kListShortcutReadLimit, {}, false},
        {"gone.lnk", kShortcutReadLimit, {}, false},
        {"x.txt", kShortcutReadLimit, {}, false},
        {"dir.lnk", kShortcutReadLimit, {}, false},
        {"broken.lnk", kShortcutReadLimit, {}, false},
        {"missing.lnk", kShortcutReadLimit, {}, false},
    };
    for (const auto& [name, limit, path, isFolder] : rows) {
        const auto target = ResolveShortcut(folder.path(name), limit);
        EXPECT_EQ(target ? target->path : QString(), path) << name << " " << limit;
        EXPECT_EQ(target && target->isFolder, isFolder) << name;
    }
}

} // namespace
} // namespace korvel
