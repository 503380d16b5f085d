#include "macro/MacroWriter.h"

#include "codec/CodecBlock.h"
#include "codec/ShiftJisConversion.h"
#include "macro/MacroSyntax.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <algorithm>
#include <span>

namespace korvel {
namespace {

using namespace macro;

constexpr int kMaxProposedNumber = 255;

QString ChoiceWord(std::span<const MacroChoice> choices, std::int32_t value) {
    const auto choice =
        std::ranges::find_if(choices, [&](const MacroChoice& c) { return c.value == value; });
    // A value no keyword stands for is written as the number, which the checker refuses rather
    // than silently reading as another choice.
    return choice == choices.end() ? QString::number(value) : QString(choice->word);
}

// A quoted text ends where the checker finds its closing quote. A text that ended the line
// without one (the checker supplied it) may end in a backslash that would escape a written
// quote; it is written without the quote, as it was read.
QString AsRead(QString quoted) {
    if (quoted.startsWith(u'"') && TokenReader(quoted).Next()->text != quoted)
        quoted.chop(1);
    return quoted;
}

QString Flag(bool set, QLatin1StringView text) {
    return set ? QString(text) : QString();
}

QString TypeLine(const MacroCommand& command) {
    QString line = QStringLiteral("TYPE ");
    bool modifier = false;
    for (const auto& [set, word] : {std::pair{command.ctrl, QLatin1StringView("CTRL ")},
                                    std::pair{command.shift, QLatin1StringView("SHIFT ")},
                                    std::pair{command.alt, QLatin1StringView("ALT ")}}) {
        if (!set)
            continue;
        if (modifier)
            line += QLatin1StringView("+ ");
        line += word;
        modifier = true;
    }
    return line + AsRead(command.text);
}

QString LogicalLine(const MacroCommand& command) {
    const QString number = QString::number(command.value);
    switch (command.code) {
    case MacroCommandCode::Version:
        return QStringLiteral("VERSION 1.00");
    case MacroCommandCode::Type:
        return TypeLine(command);
    case MacroCommandCode::FindUpward:
    case MacroCommandCode::Find:
        return QStringLiteral("FIND ") + Flag(command.value, QLatin1StringView("/I ")) +
               Flag(command.code == MacroCommandCode::FindUpward, QLatin1StringView("/U ")) +
               EscapeMacroText(command.text);
    case MacroCommandCode::Replace:
    case MacroCommandCode::ReplaceAll:
        return QStringLiteral("REPLACE ") + Flag(command.value, QLatin1StringView("/I ")) +
               Flag(command.code == MacroCommandCode::ReplaceAll, QLatin1StringView("/A ")) +
               EscapeMacroText(command.text);
    case MacroCommandCode::NewFile:
        return QStringLiteral("NEWFILE") + Flag(command.value, QLatin1StringView(" /F"));
    case MacroCommandCode::Open:
        return QStringLiteral("OPEN ") + Flag(command.value, QLatin1StringView("/F ")) +
               AsRead(u'"' + command.text + u'"');
    case MacroCommandCode::Save:
        return command.value ? QStringLiteral("SAVE /A ")
                             : QStringLiteral("SAVE ") + AsRead(u'"' + command.text + u'"');
    case MacroCommandCode::Copy:
        return QStringLiteral("COPY");
    case MacroCommandCode::Cut:
        return QStringLiteral("CUT");
    case MacroCommandCode::Paste:
        return QStringLiteral("PASTE");
    case MacroCommandCode::Lock:
    case MacroCommandCode::Unlock:
        return (command.code == MacroCommandCode::Lock ? QStringLiteral("LOCK ")
                                                       : QStringLiteral("UNLOCK ")) +
               (command.shift ? QStringLiteral("SHIFT") : QStringLiteral("CTRL"));
    case MacroCommandCode::Select:
        return QStringLiteral("SELECT ") + ChoiceWord(kSelectChoices, command.value);
    case MacroCommandCode::Unselect:
        return QStringLiteral("UNSELECT ") + ChoiceWord(kUnselectChoices, command.value);
    case MacroCommandCode::Sleep:
        return QStringLiteral("SLEEP ") + number;
    case MacroCommandCode::Goto:
        if (command.text.isEmpty() || command.text == u"+" || command.text == u"-")
            return QStringLiteral("GOTO ") + command.text + number;
        return QStringLiteral("GOTO ") + command.text;
    case MacroCommandCode::EnableWindow:
        return QStringLiteral("ENABLEWINDOW ") + ChoiceWord(kEnableWindowChoices, command.value);
    case MacroCommandCode::SetFocus:
        return QStringLiteral("SETFOCUS");
    case MacroCommandCode::Tooltip:
    case MacroCommandCode::Explain:
    case MacroCommandCode::Unknown:
        break;
    }
    return QString();
}

// The reader takes at most 1023 characters at a time, line feed included, and joins a line that
// ends in a backslash to the next one. A longer line is continued in pieces that fit, and a
// final backslash is followed by an empty line, which ends the join without adding anything.
QString PhysicalLines(QString line) {
    constexpr qsizetype kPiece = kLineBufferChars - 3; // then the backslash and the line feed
    QString lines;
    while (line.size() > kPiece) {
        lines += line.first(kPiece) + QLatin1StringView("\\\n");
        line.remove(0, kPiece);
    }
    if (line.endsWith(u'\\'))
        line += QLatin1StringView("\\\n");
    return lines + line;
}

} // namespace

QString MacroCommandLine(const MacroCommand& command) {
    return PhysicalLines(LogicalLine(command));
}

QString MacroFileHeader(QDate today) {
    return QStringLiteral("# ================================\n"
                          "# ==  Korvelエディタ マクロファイル\n"
                          "# ==\n"
                          "# ==  作成日：%1年%2月%3日\n\n"
                          "VERSION 1.00\n\n")
        .arg(today.year(), 4)
        .arg(today.month(), 2)
        .arg(today.day(), 2);
}

bool WriteMacroFile(const QString& path, const std::vector<MacroCommand>& commands, QDate today) {
    QString text = MacroFileHeader(today);
    for (const MacroCommand& command : commands)
        text += MacroCommandLine(command) + u'\n';
    const CodecResult bytes =
        RunConverter(UnicodeToShiftJis, text.utf16(), std::size_t(text.size()) * 2);
    if (bytes.status != CodecOk)
        return false;
    QSaveFile file(path);
    const auto body = bytes.block.bytes();
    return file.open(QIODevice::WriteOnly) &&
           file.write(reinterpret_cast<const char*>(body.data()), qint64(body.size())) ==
               qint64(body.size()) &&
           file.commit();
}

QString ProposedMacroFileName(const QString& folder) {
    const QDir dir(folder);
    QString name;
    for (int number = 1; number <= kMaxProposedNumber; ++number) {
        name = QStringLiteral("新規マクロ(%1).mcr").arg(number);
        if (!QFileInfo::exists(dir.filePath(name)))
            break;
    }
    return name;
}

} // namespace korvel
