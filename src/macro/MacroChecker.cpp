#include "macro/MacroChecker.h"

#include "macro/MacroSyntax.h"
#include "messages/MessageFormat.h"
#include "messages/StringTable.h"

#include <algorithm>
#include <array>
#include <span>

namespace korvel {
namespace {

using namespace macro;

struct Keyword {
    QLatin1StringView word;
    MacroCommandCode code;
};

// Tried in this order, each as a prefix of the line: COPYX is COPY with the stray text X.
constexpr std::array kCommands = {
    Keyword{QLatin1StringView("TYPE"), MacroCommandCode::Type},
    Keyword{QLatin1StringView("VERSION"), MacroCommandCode::Version},
    Keyword{QLatin1StringView("TOOLTIP"), MacroCommandCode::Tooltip},
    Keyword{QLatin1StringView("EXPLAIN"), MacroCommandCode::Explain},
    Keyword{QLatin1StringView("FIND"), MacroCommandCode::Find},
    Keyword{QLatin1StringView("REPLACE"), MacroCommandCode::Replace},
    Keyword{QLatin1StringView("NEWFILE"), MacroCommandCode::NewFile},
    Keyword{QLatin1StringView("OPEN"), MacroCommandCode::Open},
    Keyword{QLatin1StringView("SAVE"), MacroCommandCode::Save},
    Keyword{QLatin1StringView("COPY"), MacroCommandCode::Copy},
    Keyword{QLatin1StringView("CUT"), MacroCommandCode::Cut},
    Keyword{QLatin1StringView("PASTE"), MacroCommandCode::Paste},
    Keyword{QLatin1StringView("LOCK"), MacroCommandCode::Lock},
    Keyword{QLatin1StringView("UNLOCK"), MacroCommandCode::Unlock},
    Keyword{QLatin1StringView("SELECT"), MacroCommandCode::Select},
    Keyword{QLatin1StringView("UNSELECT"), MacroCommandCode::Unselect},
    Keyword{QLatin1StringView("SLEEP"), MacroCommandCode::Sleep},
    Keyword{QLatin1StringView("GOTO"), MacroCommandCode::Goto},
    Keyword{QLatin1StringView("ENABLEWINDOW"), MacroCommandCode::EnableWindow},
    Keyword{QLatin1StringView("SETFOCUS"), MacroCommandCode::SetFocus},
};

constexpr std::array<QLatin1StringView, 10> kKeyNames = {
    QLatin1StringView("UP"),        QLatin1StringView("DOWN"), QLatin1StringView("LEFT"),
    QLatin1StringView("RIGHT"),     QLatin1StringView("HOME"), QLatin1StringView("END"),
    QLatin1StringView("BACKSPACE"), QLatin1StringView("BS"),   QLatin1StringView("DELETE"),
    QLatin1StringView("DEL"),
};

constexpr QLatin1StringView kGotoKeywords[] = {QLatin1StringView("HOME"), QLatin1StringView("END"),
                                               QLatin1StringView("VIEWTOP")};

enum Option : unsigned { OptionA = 1, OptionI = 2, OptionU = 4, OptionF = 8 };

constexpr std::array<std::pair<QLatin1StringView, Option>, 4> kOptions = {{
    {QLatin1StringView("/A"), OptionA},
    {QLatin1StringView("/I"), OptionI},
    {QLatin1StringView("/U"), OptionU},
    {QLatin1StringView("/F"), OptionF},
}};

const QString kLockUsage = QStringLiteral("CTRL | SHIFT");
const QString kGotoUsage = QStringLiteral("HOME | END | VIEWTOP | [+|-]行番号");

MacroCommand Command(MacroCommandCode code, QString text = QString(), std::int32_t value = 0) {
    MacroCommand command;
    command.code = code;
    command.text = std::move(text);
    command.value = value;
    return command;
}

struct LogicalLine {
    QString text;
    int number = 0; // of its first physical line
};

// Reads the file as the device's line reader did: pieces of at most 1023 characters, each cut
// at a NUL, a backslash at the end joining the next piece.
class LineReader {
public:
    explicit LineReader(QStringView text) : text_(text) {}

    bool Next(LogicalLine& line) {
        if (pos_ >= text_.size())
            return false;
        line.number = physicalLines_ + 1;
        line.text.clear();
        while (pos_ < text_.size()) {
            const QStringView piece = NextPhysical();
            if (!piece.endsWith(u'\\')) {
                line.text += piece;
                break;
            }
            line.text += piece.chopped(1);
        }
        return true;
    }

private:
    QStringView NextPhysical() {
        QStringView piece = text_.sliced(pos_, std::min(text_.size() - pos_, kLineBufferChars - 1));
        if (const qsizetype lf = piece.indexOf(u'\n'); lf >= 0)
            piece.truncate(lf + 1);
        pos_ += piece.size();
        ++physicalLines_;
        if (const qsizetype nul = piece.indexOf(QChar(u'\0')); nul >= 0)
            piece.truncate(nul);
        if (piece.endsWith(QLatin1StringView("\r\n")))
            piece.chop(2);
        else if (piece.endsWith(u'\n'))
            piece.chop(1);
        return piece;
    }

    QStringView text_;
    qsizetype pos_ = 0;
    int physicalLines_ = 0;
};

QStringView WithoutLeadingBlanks(QStringView text) {
    while (!text.isEmpty() && IsBlank(text.front()))
        text = text.sliced(1);
    return text;
}

QStringView WithoutTrailingBlanks(QStringView text) {
    while (!text.isEmpty() && IsBlank(text.back()))
        text.chop(1);
    return text;
}

bool IsComment(QStringView line) {
    return line.isEmpty() || line.startsWith(u'#') || line.startsWith(u':') ||
           line.startsWith(QLatin1StringView("//"));
}

// TOOLTIP and EXPLAIN drop up to two opening quotes but keep the closing one; macros written
// for the device rely on it, so it stays.
QString WithoutOpeningQuotes(QStringView text) {
    for (int round = 0; round < 2 && text.startsWith(u'"'); ++round)
        text = WithoutTrailingBlanks(text.sliced(1));
    return text.toString();
}

class Checker {
public:
    CheckedMacro Check(QStringView fileText) {
        LineReader reader(fileText);
        LogicalLine line;
        while (reader.Next(line)) {
            const QStringView text = WithoutLeadingBlanks(line.text);
            if (IsComment(text))
                continue;
            lineNumber_ = line.number;
            CheckLine(text);
        }
        if (macro_.hasError)
            macro_.commands.clear();
        return std::move(macro_);
    }

private:
    void CheckLine(QStringView line) {
        const auto keyword = std::ranges::find_if(
            kCommands, [&](const Keyword& k) { return StartsWithWord(line, k.word); });
        if (keyword == kCommands.end()) {
            Error(33035, {FirstToken(line)});
            return;
        }
        const QStringView argument = WithoutLeadingBlanks(line.sliced(keyword->word.size()));
        TokenReader tokens(argument);
        std::optional<MacroCommand> command;
        switch (keyword->code) {
        case MacroCommandCode::Version:
            CheckVersion(argument);
            break;
        case MacroCommandCode::Tooltip:
            macro_.tooltip = WithoutOpeningQuotes(argument);
            break;
        case MacroCommandCode::Explain:
            macro_.explanation = DecodeMacroText(WithoutOpeningQuotes(argument))
                                     .replace(u'\n', QLatin1StringView("\r\n"));
            break;
        case MacroCommandCode::Type:
            command = CheckType(tokens);
            break;
        case MacroCommandCode::Find:
            command = CheckFind(tokens);
            break;
        case MacroCommandCode::Replace:
            command = CheckReplace(tokens);
            break;
        case MacroCommandCode::Open:
            command = CheckOpen(tokens);
            break;
        case MacroCommandCode::Save:
            command = CheckSave(tokens);
            break;
        case MacroCommandCode::Lock:
        case MacroCommandCode::Unlock:
            command = CheckLock(tokens, *keyword);
            break;
        case MacroCommandCode::Select:
            command = CheckChoice(tokens, *keyword, kSelectChoices, 33017);
            break;
        case MacroCommandCode::Unselect:
            command = CheckChoice(tokens, *keyword, kUnselectChoices, 33018);
            break;
        case MacroCommandCode::EnableWindow:
            command = CheckChoice(tokens, *keyword, kEnableWindowChoices, 33021);
            break;
        case MacroCommandCode::Sleep:
            command = CheckSleep(tokens);
            break;
        case MacroCommandCode::Goto:
            command = CheckGoto(tokens);
            break;
        case MacroCommandCode::SetFocus:
            // The command exists in the language, but this version refuses to load it.
            ReadOptions(tokens, keyword->word, 0);
            WarnLeftOver(tokens);
            Error(33035, {FirstToken(line)});
            break;
        default: // NEWFILE, COPY, CUT, PASTE
            command = CheckPlain(tokens, *keyword);
        }
        if (command)
            macro_.commands.push_back(*std::move(command));
    }

    void CheckVersion(QStringView argument) {
        const qsizetype point = argument.indexOf(u'.');
        if (point < 0) {
            // A plain major number raises no warning: kept as the device did it.
            const std::int32_t major = DecimalValue(argument);
            if (major > macro_.majorVersion) {
                macro_.majorVersion = major;
                macro_.minorVersion = 0;
            }
            return;
        }
        const std::int32_t major = DecimalValue(argument.first(point));
        const std::int32_t minor = DecimalValue(argument.sliced(point + 1));
        if (major > macro_.majorVersion) {
            macro_.majorVersion = major;
            macro_.minorVersion = minor;
        } else if (major == macro_.majorVersion) {
            macro_.minorVersion = std::max(macro_.minorVersion, minor);
        }
        if (macro_.majorVersion > 1 || (macro_.majorVersion == 1 && macro_.minorVersion > 0)) {
            Append(FormatMessage(LoadString(33028), {QString::number(macro_.majorVersion),
                                                     QString::number(macro_.minorVersion)}));
        }
    }

    std::optional<MacroCommand> CheckType(TokenReader& tokens) {
        MacroCommand command = Command(MacroCommandCode::Type);
        while (std::optional<MacroToken> token = tokens.Next()) {
            if (token->text.startsWith(u'"')) {
                command.text = token->text;
                if (token->unbalanced)
                    Warning(33023);
                WarnLeftOver(tokens, 33024);
                return command;
            }
            if (IsWord(token->text, QLatin1StringView("CTRL"))) {
                command.ctrl = true;
            } else if (IsWord(token->text, QLatin1StringView("SHIFT"))) {
                command.shift = true;
            } else if (IsWord(token->text, QLatin1StringView("ALT"))) {
                command.alt = true;
            } else if (token->text != u"+") {
                const auto key = std::ranges::find_if(
                    kKeyNames, [&](QLatin1StringView name) { return IsWord(token->text, name); });
                if (key == kKeyNames.end()) {
                    Warning(33025, {token->text});
                    continue;
                }
                command.text = *key;
                WarnLeftOver(tokens, 33024);
                return command;
            }
        }
        Error(33022);
        return std::nullopt;
    }

    std::optional<MacroCommand> CheckFind(TokenReader& tokens) {
        const unsigned options = ReadOptions(tokens, QLatin1StringView("FIND"), OptionI | OptionU);
        const std::optional<MacroToken> text = tokens.Next();
        if (!text) {
            Error(33009);
            return std::nullopt;
        }
        if (text->unbalanced)
            Warning(33011);
        WarnLeftOver(tokens);
        return Command(options & OptionU ? MacroCommandCode::FindUpward : MacroCommandCode::Find,
                       DecodeMacroText(text->text), (options & OptionI) ? 1 : 0);
    }

    std::optional<MacroCommand> CheckReplace(TokenReader& tokens) {
        const unsigned options =
            ReadOptions(tokens, QLatin1StringView("REPLACE"), OptionA | OptionI);
        const std::optional<MacroToken> from = tokens.Next();
        if (from && from->unbalanced)
            Warning(33030);
        const std::optional<MacroToken> to = from ? tokens.Next() : std::nullopt;
        if (!to) {
            Error(33013);
            return std::nullopt;
        }
        if (to->unbalanced)
            Warning(33031);
        WarnLeftOver(tokens);
        return Command(options & OptionA ? MacroCommandCode::ReplaceAll : MacroCommandCode::Replace,
                       DecodeMacroText(from->text) + QLatin1StringView("\r\n") +
                           DecodeMacroText(to->text),
                       (options & OptionI) ? 1 : 0);
    }

    std::optional<MacroCommand> CheckOpen(TokenReader& tokens) {
        const unsigned options = ReadOptions(tokens, QLatin1StringView("OPEN"), OptionF);
        std::optional<QString> path = ReadPath(tokens);
        if (!path) {
            Error(33014);
            return std::nullopt;
        }
        return Command(MacroCommandCode::Open, *std::move(path), (options & OptionF) ? 1 : 0);
    }

    std::optional<MacroCommand> CheckSave(TokenReader& tokens) {
        if (ReadOptions(tokens, QLatin1StringView("SAVE"), OptionA) & OptionA) {
            if (const std::optional<MacroToken> path = tokens.Next())
                Warning(33033, {WithoutQuotes(path->text).toString()});
            WarnLeftOver(tokens);
            return Command(MacroCommandCode::Save, QString(), 1);
        }
        std::optional<QString> path = ReadPath(tokens);
        if (!path) {
            Error(33032);
            return std::nullopt;
        }
        return Command(MacroCommandCode::Save, *std::move(path));
    }

    // The path of OPEN and SAVE keeps its backslashes: they are folder separators.
    std::optional<QString> ReadPath(TokenReader& tokens) {
        const std::optional<MacroToken> path = tokens.Next();
        if (!path)
            return std::nullopt;
        if (path->unbalanced)
            Warning(33011);
        WarnLeftOver(tokens);
        return WithoutQuotes(path->text).toString();
    }

    // An unknown word is shown as written: decoded, its escapes could break the diagnostic's one
    // line in two.
    std::optional<MacroCommand> CheckLock(TokenReader& tokens, const Keyword& keyword) {
        ReadOptions(tokens, keyword.word, 0);
        const std::optional<MacroToken> token = tokens.Next();
        if (!token) {
            Error(33034, {keyword.word, kLockUsage});
            return std::nullopt;
        }
        MacroCommand command = Command(keyword.code);
        const QString word = DecodeMacroText(token->text);
        command.ctrl = IsWord(word, QLatin1StringView("CTRL"));
        command.shift = IsWord(word, QLatin1StringView("SHIFT"));
        if (!command.ctrl && !command.shift)
            Error(keyword.code == MacroCommandCode::Lock ? 33016 : 33015, {token->text});
        WarnLeftOver(tokens);
        return command;
    }

    std::optional<MacroCommand> CheckChoice(TokenReader& tokens, const Keyword& keyword,
                                            std::span<const MacroChoice> choices, int unknownId) {
        ReadOptions(tokens, keyword.word, 0);
        // SELECT, UNSELECT and ENABLEWINDOW alike mean 1 without an argument.
        MacroCommand command = Command(keyword.code, QString(), 1);
        const std::optional<MacroToken> token = tokens.Next();
        if (!token)
            return command;
        const QString word = DecodeMacroText(token->text);
        const auto choice = std::ranges::find_if(
            choices, [&](const MacroChoice& c) { return IsWord(word, c.word); });
        if (choice == choices.end())
            Error(unknownId, {token->text});
        else
            command.value = choice->value;
        WarnLeftOver(tokens);
        return command;
    }

    std::optional<MacroCommand> CheckSleep(TokenReader& tokens) {
        ReadOptions(tokens, QLatin1StringView("SLEEP"), 0);
        const std::optional<MacroToken> token = tokens.Next();
        const std::int32_t ms = token ? DecimalValue(DecodeMacroText(token->text)) : 0;
        // Compared as unsigned, so a negative time is as wrong as a long one.
        if (ms == 0 || std::uint32_t(ms) > 30000)
            Error(33019);
        WarnLeftOver(tokens);
        return Command(MacroCommandCode::Sleep, QString(), ms);
    }

    std::optional<MacroCommand> CheckGoto(TokenReader& tokens) {
        ReadOptions(tokens, QLatin1StringView("GOTO"), 0);
        const std::optional<MacroToken> token = tokens.Next();
        if (!token) {
            Error(33034, {QStringLiteral("GOTO"), kGotoUsage});
            return std::nullopt;
        }
        const QString word = DecodeMacroText(token->text);
        MacroCommand command = Command(MacroCommandCode::Goto);
        const auto keyword = std::ranges::find_if(
            kGotoKeywords, [&](QLatin1StringView name) { return IsWord(word, name); });
        if (keyword != std::end(kGotoKeywords)) {
            command.text = *keyword;
        } else {
            if (word == u"+") {
                // "+" takes its number from the rest of the line: GOTO + 5 and GOTO +5 agree.
                command.text = word;
                command.value = DecimalValue(tokens.Rest());
                tokens.Finish();
            } else if (word.startsWith(u'-')) {
                command.text = QStringLiteral("-");
                command.value = DecimalValue(QStringView(word).sliced(1));
            } else if (!word.isEmpty() && word.front() >= u'0' && word.front() <= u'9') {
                command.value = DecimalValue(word);
            }
            if (command.value == 0)
                Error(33020);
        }
        WarnLeftOver(tokens);
        return command;
    }

    std::optional<MacroCommand> CheckPlain(TokenReader& tokens, const Keyword& keyword) {
        const unsigned taken = keyword.code == MacroCommandCode::NewFile ? unsigned(OptionF) : 0u;
        const unsigned options = ReadOptions(tokens, keyword.word, taken);
        WarnLeftOver(tokens);
        return Command(keyword.code, QString(), (options & OptionF) ? 1 : 0);
    }

    // Reads the options in front of the main argument and leaves the reader at that argument.
    unsigned ReadOptions(TokenReader& tokens, QLatin1StringView command, unsigned taken) {
        unsigned options = 0;
        for (;;) {
            const qsizetype before = tokens.Position();
            const std::optional<MacroToken> token = tokens.Next();
            const auto option =
                !token ? kOptions.end() : std::ranges::find_if(kOptions, [&](const auto& o) {
                    return IsWord(token->text, o.first);
                });
            if (option == kOptions.end()) {
                tokens.Rewind(before);
                return options;
            }
            if (taken & option->second)
                options |= option->second;
            else
                Warning(33029, {command, token->text});
        }
    }

    void WarnLeftOver(TokenReader& tokens, int id = 33012) {
        if (const QStringView rest = tokens.Rest(); !rest.isEmpty())
            Warning(id, {rest.toString()});
    }

    static QString FirstToken(QStringView line) { return TokenReader(line).Next()->text; }

    void Error(int id, const QStringList& arguments = {}) {
        Diagnose(id, arguments);
        macro_.hasError = true;
    }
    void Warning(int id, const QStringList& arguments = {}) { Diagnose(id, arguments); }
    void Diagnose(int id, const QStringList& arguments) {
        Append(
            FormatMessage(LoadString(id), QStringList{QString::number(lineNumber_)} + arguments));
    }
    void Append(const QString& diagnostic) {
        macro_.diagnostics += diagnostic;
        macro_.diagnostics += QLatin1StringView("\r\n");
    }

    CheckedMacro macro_;
    int lineNumber_ = 0;
};

} // namespace

CheckedMacro CheckMacro(QStringView fileText) {
    return Checker().Check(fileText);
}

QString LoadReport(const CheckedMacro& macro) {
    if (!macro.hasError)
        return macro.diagnostics;
    return macro.diagnostics + QLatin1StringView("\r\n ----------------------------\r\n") +
           LoadString(40007);
}

} // namespace korvel
