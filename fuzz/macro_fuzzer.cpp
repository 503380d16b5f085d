// The macro loader on any bytes: the file's text, the checker's diagnostics and commands, and
// every command loaded written back and read again.

#include "FuzzCheck.h"
#include "macro/MacroChecker.h"
#include "macro/MacroFile.h"
#include "macro/MacroWriter.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace {

using korvel::MacroCommandCode;
using korvel::fuzz::Require;

bool IsDiagnosticLine(QStringView line) {
    return line.startsWith(u"*** ERROR (") || line.startsWith(u"    Worning (") ||
           line.startsWith(u"*** Worning:");
}

// A CR LF inside a FIND or REPLACE text is written as the end of one quoted text and the start
// of the next, so it reads back as more texts than it had: known and kept. Only REPLACE's own
// separator is a CR LF that comes back.
bool SplitsOnWriting(const korvel::MacroCommand& command) {
    const bool replace =
        command.code == MacroCommandCode::Replace || command.code == MacroCommandCode::ReplaceAll;
    return command.text.count(QStringLiteral("\r\n")) > (replace ? 1 : 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QString text =
        korvel::DecodeMacroFile(std::string_view(reinterpret_cast<const char*>(data), size));
    const korvel::CheckedMacro macro = korvel::CheckMacro(text);

    Require(macro.diagnostics.isEmpty() || macro.diagnostics.endsWith(u"\r\n"),
            "the diagnostics end in CR LF");
    const QStringList lines = macro.diagnostics.split(QStringLiteral("\r\n"));
    for (qsizetype i = 0; i + 1 < lines.size(); ++i)
        Require(IsDiagnosticLine(lines[i]), "every diagnostic line is an error or a warning");
    // A warning may quote the user's text, which may look like an error: only line starts count.
    const bool errorLine = std::any_of(lines.begin(), lines.end(), [](const QString& line) {
        return line.startsWith(QStringLiteral("*** ERROR ("));
    });
    Require(macro.hasError == errorLine, "the error flag is set exactly by an error line");
    Require(!macro.hasError || macro.commands.empty(), "a macro with an error loads nothing");

    for (const korvel::MacroCommand& command : macro.commands) {
        if (SplitsOnWriting(command))
            continue;
        const korvel::CheckedMacro back = korvel::CheckMacro(korvel::MacroCommandLine(command));
        Require(!back.hasError && back.commands.size() == 1 && back.commands.front() == command,
                "a command written back reads as the same command");
    }
    return 0;
}
