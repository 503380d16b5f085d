#include "macro/MacroWriter.h"

#include "MacroTestSupport.h"
#include "macro/MacroChecker.h"
#include "macro/MacroFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <random>

namespace korvel {
namespace {

using namespace Qt::StringLiterals;
using Code = MacroCommandCode;

struct LineRow {
    MacroCommand command;
    QString line;
};

// The writer's forms that the recorder's files use.
const LineRow kLines[] = {
    {Cmd(Code::Type, u"RIGHT"_s, 0, "cs"), u"TYPE CTRL + SHIFT RIGHT"_s},
    {Cmd(Code::Type, u"\"a\""_s, 0, "sa"), u"TYPE SHIFT + ALT \"a\""_s},
    {Cmd(Code::Type, u"\"\\n\""_s), u"TYPE \"\\n\""_s},
    {Cmd(Code::FindUpward, u"a\t\"\\\n"_s, 1), u"FIND /I /U \"a\\t\\\"\\\\\\n\""_s},
    {Cmd(Code::ReplaceAll, u"a\r\nb"_s), u"REPLACE /A \"a\" \"b\""_s},
    {Cmd(Code::Replace, u"\r\n"_s, 1), u"REPLACE /I \"\" \"\""_s},
    {Cmd(Code::NewFile, {}, 1), u"NEWFILE /F"_s},
    {Cmd(Code::Open, u"C:\\a.txt"_s, 1), u"OPEN /F \"C:\\a.txt\""_s},
    {Cmd(Code::Save, {}, 1), u"SAVE /A "_s},
    {Cmd(Code::Save, u"/tmp/a b"_s), u"SAVE \"/tmp/a b\""_s},
    {Cmd(Code::Lock, {}, 0, "s"), u"LOCK SHIFT"_s},
    {Cmd(Code::Unlock, {}, 0, "c"), u"UNLOCK CTRL"_s},
    {Cmd(Code::Select, {}, 3), u"SELECT RIGHT"_s},
    {Cmd(Code::Unselect, {}, 0), u"UNSELECT TAIL"_s},
    {Cmd(Code::EnableWindow, {}, 0), u"ENABLEWINDOW FALSE"_s},
    {Cmd(Code::Sleep, {}, 250), u"SLEEP 250"_s},
    {Cmd(Code::Goto, u"+"_s, 5), u"GOTO +5"_s},
    {Cmd(Code::Goto, u"-"_s, 3), u"GOTO -3"_s},
    {Cmd(Code::Goto, {}, 12), u"GOTO 12"_s},
    {Cmd(Code::Goto, u"END"_s), u"GOTO END"_s},
    {Cmd(Code::SetFocus), u"SETFOCUS"_s},
    // A text read up to a final backslash is written without the quote that backslash would
    // escape, and an empty line keeps the backslash from joining the next command.
    {Cmd(Code::Open, u"dir\\"_s), u"OPEN \"dir\\\\\n"_s},
};

TEST(MacroWriter, CommandLines) {
    for (const LineRow& row : kLines)
        EXPECT_EQ(MacroCommandLine(row.command), row.line);
}

// Random lines of the language, with texts full of quotes, escapes, blanks and backslashes,
// now and then longer than a line of the reader (joined by continuations).
QString RandomLine(std::mt19937& random) {
    static const QStringList kCommands = u"TYPE FIND REPLACE NEWFILE OPEN SAVE COPY LOCK UNLOCK "
                                         u"SELECT UNSELECT SLEEP GOTO ENABLEWINDOW"_s.split(u' ');
    static const QStringList kWords = u"CTRL + SHIFT ALT RIGHT bs /I /U /A /F ALL TAIL - 7 "
                                      u"HOME FALSE"_s.split(u' ');
    static const QString kChars = u"aあ\\\t +/n\""_s; // no quote ends a long text
    QString line = kCommands[random() % kCommands.size()];
    for (std::uint32_t words = random() % 4; words > 0; --words) {
        if (random() % 2) {
            line += u' ' + kWords[random() % kWords.size()];
            continue;
        }
        line += u" \""_s;
        const bool isLong = random() % 4 == 0;
        for (std::uint32_t n = isLong ? 3000 : random() % 12; n > 0; --n)
            line += n % 500 ? kChars[random() % (kChars.size() - isLong)] : u"\\\n"_s;
    }
    return line;
}

TEST(MacroWriter, EveryCommandReadsBackAsWritten) {
    std::mt19937 random(20240601);
    int written = 0;
    for (int i = 0; i < 5000; ++i) {
        for (const MacroCommand& command : CheckMacro(RandomLine(random)).commands) {
            const QString line = MacroCommandLine(command);
            const CheckedMacro back = CheckMacro(line + u"\nCOPY"_s);
            ASSERT_EQ(back.commands, (std::vector{command, Cmd(Code::Copy)})) << line.toStdString();
            ++written;
        }
    }
    EXPECT_GT(written, 2000);
}

TEST(MacroWriter, FileInShiftJisWithLineFeeds) {
    QTemporaryDir dir;
    const QString path = dir.filePath(u"m.mcr"_s);
    const std::vector commands = {Cmd(Code::Find, u"日本語"_s), Cmd(Code::Goto, u"END"_s)};
    ASSERT_TRUE(WriteMacroFile(path, commands, QDate(2024, 6, 1)));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    EXPECT_TRUE(bytes.contains("\x93\xfa\x96\x7b\x8c\xea") && !bytes.contains('\r'));
    const CheckedMacro back = CheckMacro(*ReadMacroFile(path));
    EXPECT_EQ(back.commands, commands);
    EXPECT_TRUE(back.diagnostics.isEmpty());
    EXPECT_TRUE(MacroFileHeader(QDate(2024, 6, 1)).contains(u"：2024年 6月 1日\n\nVERSION"_s));
    // Nothing is left behind where the file cannot be written.
    EXPECT_FALSE(WriteMacroFile(dir.filePath(u"no/m.mcr"_s), commands, QDate(2024, 6, 1)));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries).size(), 1);
}

TEST(MacroWriter, ProposedNameIsTheFirstFree) {
    QTemporaryDir dir;
    for (int n : {1, 2, 4})
        QFile(dir.filePath(u"新規マクロ(%1).mcr"_s.arg(n))).open(QIODevice::WriteOnly);
    EXPECT_EQ(ProposedMacroFileName(dir.path()), u"新規マクロ(3).mcr"_s);
    for (int n = 1; n <= 256; ++n)
        QFile(dir.filePath(u"新規マクロ(%1).mcr"_s.arg(n))).open(QIODevice::WriteOnly);
    EXPECT_EQ(ProposedMacroFileName(dir.path()), u"新規マクロ(255).mcr"_s);
}

} // namespace
} // namespace korvel
