#include "macro/MacroChecker.h"

#include "MacroTestSupport.h"
#include "macro/MacroFile.h"
#include "messages/MessageFormat.h"
#include "messages/StringTable.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace korvel {
namespace {

using namespace Qt::StringLiterals;
using Code = MacroCommandCode;

struct Diagnostic {
    int id;
    int line; // 0: the diagnostic names no line
    QStringList arguments = {};
};

struct Row {
    const char* name;
    QString macro;
    std::vector<Diagnostic> diagnostics;
    std::vector<MacroCommand> commands;
};

QString Expected(const std::vector<Diagnostic>& diagnostics) {
    QString text;
    for (const Diagnostic& d : diagnostics) {
        const QStringList line = d.line ? QStringList{QString::number(d.line)} : QStringList{};
        text += FormatMessage(LoadString(d.id), line + d.arguments) + QStringLiteral("\r\n");
    }
    return text;
}

const QString kLong = QStringLiteral("COPY") + QString(1019, u' '); // fills one 1023-char read

// One row per rule of the checker; each names the fault it would catch.
// clang-format off
const Row kRows[] = {
    // Keywords and key names ignore case; "+" separates with or without blanks.
    {"type-case-and-plus", u"type ctrl + shift + right\nTYPE CTRL+SHIFT+RIGHT\nTYPE ALT bs"_s, {},
     {Cmd(Code::Type, u"RIGHT"_s, 0, "cs"), Cmd(Code::Type, u"RIGHT"_s, 0, "cs"), Cmd(Code::Type, u"BS"_s, 0, "a")}},
    // The text keeps its quotes and escapes; an unclosed one gets its quote and a warning.
    {"type-text-unclosed", u"TYPE \"a\\n b\n TYPE \"x\\\"\" SHIFT"_s, {{33023, 1}, {33024, 2, {u"SHIFT"_s}}},
     {Cmd(Code::Type, u"\"a\\n b\""_s), Cmd(Code::Type, u"\"x\\\"\""_s)}},
    {"type-unknown-word-alone", u"TYPE FOO"_s, {{33025, 1, {u"FOO"_s}}, {33022, 1}}, {}},
    // Paths keep their backslashes; FIND decodes \n \t \" \\ and leaves other backslashes.
    {"open-keeps-find-decodes", u"OPEN \"C:\\new\\t.txt\"\nFIND \"C:\\new\\t\\\"\\\\\\x\""_s, {},
     {Cmd(Code::Open, u"C:\\new\\t.txt"_s), Cmd(Code::Find, u"C:\new\t\"\\\\x"_s)}},
    {"sleep-out-of-range", u"SLEEP 0\nSLEEP abc\nSLEEP -5\nSLEEP 30001\nSLEEP"_s,
     {{33019, 1}, {33019, 2}, {33019, 3}, {33019, 4}, {33019, 5}}, {}},
    {"sleep-limit", u"SLEEP 30000\nsleep \"1\""_s, {}, {Cmd(Code::Sleep, {}, 30000), Cmd(Code::Sleep, {}, 1)}},
    // The diagnostic carries the first line's number and the next command counts both lines.
    {"continuation", u"SELECT \\\nALL\nCOPYX\nSELECT \\\n\\\nBAD"_s, {{33012, 3, {u"X"_s}}, {33017, 4, {u"BAD"_s}}}, {}},
    {"continued-select", u"SELECT \\\n  ALL"_s, {}, {Cmd(Code::Select, {}, 0)}},
    {"comments", u"   \n\t# a\n  : b\n// c\n\n/ d"_s, {{33035, 6, {u"/"_s}}}, {}},
    {"setfocus-never-loads", u"COPY\nSETFOCUS\nSETFOCUS now"_s,
     {{33035, 2, {u"SETFOCUS"_s}}, {33012, 3, {u"now"_s}}, {33035, 3, {u"SETFOCUS"_s}}}, {}},
    {"replace-one-text", u"REPLACE \"a\"\nREPLACE \"b"_s, {{33013, 1}, {33030, 2}, {33013, 2}}, {}},
    {"replace-texts-and-options", u"REPLACE /i /a /u \"a\\n\" b \"c\"\nREPLACE x \"y"_s,
     {{33029, 1, {u"REPLACE"_s, u"/u"_s}}, {33012, 1, {u"\"c\""_s}}, {33031, 2}},
     {Cmd(Code::ReplaceAll, u"a\n\r\nb"_s, 1), Cmd(Code::Replace, u"x\r\ny"_s)}},
    {"find-options", u"FIND /U /I x\nFIND \"y\nFIND /F"_s, {{33011, 2}, {33029, 3, {u"FIND"_s, u"/F"_s}}, {33009, 3}}, {}},
    {"files", u"NEWFILE /F\nOPEN /f a b\nSAVE /A \"x\"\nSAVE \"c\\d\"\nPASTE /I\nCUT"_s,
     {{33012, 2, {u"b"_s}}, {33033, 3, {u"x"_s}}, {33029, 5, {u"PASTE"_s, u"/I"_s}}},
     {Cmd(Code::NewFile, {}, 1), Cmd(Code::Open, u"a"_s, 1), Cmd(Code::Save, {}, 1),
      Cmd(Code::Save, u"c\\d"_s), Cmd(Code::Paste), Cmd(Code::Cut)}},
    {"files-missing", u"OPEN\nSAVE"_s, {{33014, 1}, {33032, 2}}, {}},
    {"lock", u"LOCK shift\nUNLOCK \"CTRL\" x\nLOCK\nUNLOCK ALT"_s,
     {{33012, 2, {u"x"_s}}, {33034, 3, {u"LOCK"_s, u"CTRL | SHIFT"_s}}, {33015, 4, {u"ALT"_s}}}, {}},
    {"flags-and-defaults", u"LOCK shift\nUNLOCK CTRL\nfind /u /i \"a b\"\nSELECT\nUNSELECT\n"
                           u"UNSELECT tail\nENABLEWINDOW\nENABLEWINDOW False"_s, {},
     {Cmd(Code::Lock, {}, 0, "s"), Cmd(Code::Unlock, {}, 0, "c"), Cmd(Code::FindUpward, u"a b"_s, 1),
      Cmd(Code::Select, {}, 1), Cmd(Code::Unselect, {}, 1), Cmd(Code::Unselect, {}, 0),
      Cmd(Code::EnableWindow, {}, 1), Cmd(Code::EnableWindow, {}, 0)}},
    {"goto", u"GOTO + 5\nGOTO -3\nGOTO 12\ngoto viewtop"_s, {},
     {Cmd(Code::Goto, u"+"_s, 5), Cmd(Code::Goto, u"-"_s, 3), Cmd(Code::Goto, {}, 12), Cmd(Code::Goto, u"VIEWTOP"_s)}},
    {"goto-bad", u"GOTO 0\nGOTO\nGOTO top"_s,
     {{33020, 1}, {33034, 2, {u"GOTO"_s, u"HOME | END | VIEWTOP | [+|-]行番号"_s}}, {33020, 3}}, {}},
    {"unknown-words", u"SELECT x\nUNSELECT y\nENABLEWINDOW z\nFOO bar"_s,
     {{33017, 1, {u"x"_s}}, {33018, 2, {u"y"_s}}, {33021, 3, {u"z"_s}}, {33035, 4, {u"FOO"_s}}}, {}},
    // The reader takes 1023 characters at a time and a NUL ends what it took.
    {"physical-lines", kLong + u"X\nCOPY\0junk\\\nCUT\r\n"_s, {{33035, 2, {u"X"_s}}}, {}},
    {"physical-lines-ok", kLong + u"\nCOPY\0junk\\\nCUT\r\n"_s, {}, {Cmd(Code::Copy), Cmd(Code::Copy), Cmd(Code::Cut)}},
};
// clang-format on

TEST(MacroChecker, Rows) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        const CheckedMacro macro = CheckMacro(row.macro);
        EXPECT_EQ(macro.diagnostics, Expected(row.diagnostics));
        EXPECT_EQ(macro.commands, row.commands);
        // The string table's error texts begin so; a warning raised as an error loads nothing.
        EXPECT_EQ(macro.hasError, macro.diagnostics.startsWith(u"*** ERROR ("_s) ||
                                      macro.diagnostics.contains(u"\n*** ERROR ("_s));
    }
}

// Only a dotted VERSION warns, and a smaller version never replaces a larger one.
TEST(MacroChecker, VersionTooltipAndExplanation) {
    CheckedMacro macro = CheckMacro(u"VERSION 1.01"_s);
    EXPECT_EQ(macro.diagnostics, Expected({{33028, 0, {u"1"_s, u"1"_s}}}));
    macro =
        CheckMacro(u"VERSION 2\nVERSION 1.5\nTOOLTIP \"tip\"  \nEXPLAIN x\nEXPLAIN \"a\\nb\""_s);
    EXPECT_EQ(macro.diagnostics, Expected({{33028, 0, {u"2"_s, u"0"_s}}}));
    EXPECT_EQ(std::pair(macro.majorVersion, macro.minorVersion), std::pair(2, 0));
    EXPECT_EQ(macro.tooltip, u"tip\""_s);
    EXPECT_EQ(macro.explanation, u"a\r\nb\""_s);
    EXPECT_TRUE(macro.commands.empty() && !macro.hasError);
    EXPECT_EQ(CheckMacro(u"VERSION 1.3\nVERSION 1.2"_s).minorVersion, 3);
}

struct FileRow {
    const char* name;
    std::string bytes;
    QString text;
};

// clang-format off
const FileRow kFileRows[] = {
    {"utf16-no-mark", std::string("C\0O\0P\0Y\0\r\0\n\0", 12), u"COPY\r\n"_s},
    {"utf16-mark", std::string("\xFF\xFE\x41\x00\x42", 5), u"A"_s},
    {"utf16-reversed-mark", std::string("\xFE\xFF\x41\x00", 4), u"A"_s},
    {"zero-in-first-1024", std::string(1023, 'A') + std::string("\0B", 2), QString(511, QChar(0x4141)) + u'A'},
    {"zero-after-1024", std::string(1024, 'A') + std::string("\0", 1), QString(1024, u'A') + QChar(0)},
    {"shift-jis-text-mode", "\x82\xa0\r\nB\rC", u"あ\nB\rC"_s},
    {"utf8-when-not-shift-jis", "\xe3\x81\x82\xe3\x81\x84\xe3\x81\x86", u"あいう"_s},
    {"utf8-when-both", "\xe6\x97\xa5\xe6\x9c\xac", u"日本"_s},
    {"shift-jis-when-not-utf8", "\x93\xfa\x96\x7b\xc3", u"日本ﾃ"_s},
};
// clang-format on

TEST(MacroFile, Decoding) {
    for (const FileRow& row : kFileRows)
        EXPECT_EQ(DecodeMacroFile(row.bytes), row.text) << row.name;
}

} // namespace
} // namespace korvel
