#include "macro/MacroWriter.h"

#include "MacroTestSupport.h"
#include "macro/MacroChecker.h"
#include "macro/MacroFile.h"
#include "macro/MacroSyntax.h"

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

// Commands as the checker produces them, with texts full of what the escapes, the quotes and
// the reader's line length must get right.
class CommandGenerator {
public:
    MacroCommand Next() {
        constexpr Code kCodes[] = {
            Code::Type,    Code::FindUpward, Code::Find,        Code::Replace, Code::ReplaceAll,
            Code::NewFile, Code::Open,       Code::Save,        Code::Copy,    Code::Cut,
            Code::Paste,   Code::Lock,       Code::Unlock,      Code::Select,  Code::Unselect,
            Code::Sleep,   Code::Goto,       Code::EnableWindow};
        constexpr const char* kKeys[] = {"UP",  "DOWN",      "LEFT", "RIGHT",  "HOME",
                                         "END", "BACKSPACE", "BS",   "DELETE", "DEL"};
        MacroCommand c = Cmd(kCodes[Below(std::size(kCodes))], {}, int(Below(2)));
        switch (c.code) {
        case Code::Type:
            c.value = 0;
            c.text = Below(2) ? QString::fromLatin1(kKeys[Below(10)]) : Token();
            c.ctrl = Below(2), c.shift = Below(2), c.alt = Below(2);
            break;
        case Code::Find:
        case Code::FindUpward:
            c.text = Decoded();
            break;
        case Code::Replace:
        case Code::ReplaceAll:
            c.text = Decoded() + u"\r\n"_s + Decoded();
            break;
        case Code::Open:
            c.text = macro::WithoutQuotes(Token()).toString();
            break;
        case Code::Save:
            c.text = c.value ? QString() : macro::WithoutQuotes(Token()).toString();
            break;
        case Code::Lock:
        case Code::Unlock:
            (c.value ? c.shift : c.ctrl) = true;
            c.value = 0;
            break;
        case Code::Select:
            c.value = int(Below(4));
            break;
        case Code::Sleep:
            c.value = int(1 + Below(30000));
            break;
        case Code::Goto: {
            const char* kTexts[] = {"HOME", "END", "VIEWTOP", "+", "-", ""};
            c.text = QString::fromLatin1(kTexts[Below(6)]);
            c.value = c.text.size() > 1 ? 0 : int(rng_()) | 1;
            if (c.text.isEmpty())
                c.value &= 0x7FFFFFFF;
            break;
        }
        case Code::Copy:
        case Code::Cut:
        case Code::Paste:
            c.value = 0;
            break;
        default:
            break;
        }
        return c;
    }

private:
    std::size_t Below(std::size_t n) { return rng_() % n; }

    // Now and then longer than a line of the reader.
    QString Raw() {
        static const QString kAlphabet = u"aZあ\\\"\t\n\r +/#n"_s;
        QString text;
        const std::size_t length = Below(8) ? Below(12) : Below(2500);
        for (std::size_t i = 0; i < length; ++i)
            text += kAlphabet[qsizetype(Below(std::size_t(kAlphabet.size())))];
        return text;
    }
    // A CR LF in a FIND text is written as two texts, and reads back as two: left out.
    QString Decoded() {
        QString text = Raw();
        while (text.contains(u"\r\n"_s))
            text.replace(u"\r\n"_s, u"\n"_s);
        return text;
    }
    // A quoted token as the checker cuts it from the rest of a line.
    QString Token() { return macro::TokenReader(u'"' + Raw().remove(u'\n')).Next()->text; }

    std::mt19937 rng_{20240601};
};

TEST(MacroWriter, EveryCommandReadsBackAsWritten) {
    CommandGenerator generator;
    for (int i = 0; i < 4000; ++i) {
        const MacroCommand command = generator.Next();
        const QString line = MacroCommandLine(command);
        const CheckedMacro back = CheckMacro(line + u"\nCOPY"_s);
        ASSERT_EQ(back.commands, (std::vector{command, Cmd(Code::Copy)})) << line.toStdString();
    }
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
