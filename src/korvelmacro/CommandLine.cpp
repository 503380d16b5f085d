#include "korvelmacro/CommandLine.h"

#include "macro/MacroChecker.h"
#include "macro/MacroFile.h"
#include "macro/MacroWriter.h"
#include "messages/MessageFormat.h"
#include "messages/StringTable.h"

#include <QLatin1StringView>
#include <algorithm>
#include <cstdio>
#include <limits>
#include <optional>

namespace korvel::macrotool {
namespace {

constexpr qsizetype kAnyCount = std::numeric_limits<qsizetype>::max();

void Write(std::FILE* stream, const QString& text) {
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, std::size_t(bytes.size()), stream);
}

void ReportError(const QString& message) {
    Write(stderr, QStringLiteral("korvelmacro: ") + message + u'\n');
}

// The load-error dialog's text with LF line ends, ending in one.
QString ReportLines(const CheckedMacro& macro) {
    QString report = LoadReport(macro).replace(QLatin1StringView("\r\n"), QLatin1StringView("\n"));
    if (!report.isEmpty() && !report.endsWith(u'\n'))
        report += u'\n';
    return report;
}

// Reads and checks a file as the editor's loader does; an unreadable file is reported with the
// editor's own message.
std::optional<CheckedMacro> Load(const QString& path) {
    const std::optional<QString> text = ReadMacroFile(path);
    if (!text) {
        Write(stderr, FormatMessage(LoadString(33008), {path}) + u'\n');
        return std::nullopt;
    }
    return CheckMacro(*text);
}

int Check(const QStringList& files) {
    int status = kExitLoaded;
    for (const QString& path : files) {
        const std::optional<CheckedMacro> macro = Load(path);
        if (!macro) {
            status = kExitUnreadable;
            continue;
        }
        QString report = ReportLines(*macro);
        if (!report.isEmpty() && files.size() > 1)
            report.prepend(QStringLiteral("==> ") + path + QStringLiteral(" <==\n"));
        Write(stdout, report);
        if (macro->hasError)
            status = std::max<int>(status, kExitMacroError);
    }
    return status;
}

// The diagnostics go to standard error, so that standard output is the command list alone.
int List(const QStringList& files) {
    const std::optional<CheckedMacro> macro = Load(files.front());
    if (!macro)
        return kExitUnreadable;
    Write(stderr, ReportLines(*macro));
    if (macro->hasError)
        return kExitMacroError;
    QString lines;
    for (const MacroCommand& command : macro->commands)
        lines += MacroCommandLine(command) + u'\n';
    Write(stdout, lines);
    return kExitLoaded;
}

struct SubCommand {
    QLatin1StringView name;
    qsizetype minFiles, maxFiles;
    int (*run)(const QStringList& files);
};

constexpr SubCommand kSubCommands[] = {
    {QLatin1StringView("check"), 1, kAnyCount, Check},
    {QLatin1StringView("list"), 1, 1, List},
};

} // namespace

int RunCommandLine(const QStringList& arguments) {
    if (!arguments.isEmpty() && (arguments.front() == u"--help" || arguments.front() == u"-h")) {
        Write(stdout, UsageText());
        return kExitLoaded;
    }
    if (arguments.isEmpty()) {
        ReportError(QStringLiteral("no sub-command given; see korvelmacro --help"));
        return kExitUnreadable;
    }
    const auto sub = std::ranges::find_if(
        kSubCommands, [&](const SubCommand& s) { return arguments.front() == s.name; });
    if (sub == std::end(kSubCommands)) {
        ReportError(QStringLiteral("unknown sub-command '%1'; see korvelmacro --help")
                        .arg(arguments.front()));
        return kExitUnreadable;
    }
    const QStringList files = arguments.mid(1);
    if (files.size() < sub->minFiles || files.size() > sub->maxFiles) {
        ReportError(QStringLiteral("wrong number of files for '%1'; see korvelmacro --help")
                        .arg(sub->name));
        return kExitUnreadable;
    }
    return sub->run(files);
}

QString UsageText() {
    return QStringLiteral(R"(Usage: korvelmacro check FILE...
       korvelmacro list FILE
       korvelmacro --help

Reads macro files (.mcr) exactly as KorvelEdit loads them.

  check FILE...  print, for each file, what the editor's load-error dialog would show: the
                 numbered errors and warnings, and the notice that the load was stopped;
                 nothing for a clean macro. With several files, each report is headed by
                 "==> FILE <==".
  list FILE      print the file's commands as the editor writes them, one per line, when it
                 loads; the errors and warnings go to standard error.
  --help         show this help

Output is UTF-8 with LF line ends.
Exit status: 0 every file loads (warnings allowed), 1 a macro has an error,
2 a file cannot be read or the command line is wrong (2 wins over 1).
)");
}

} // namespace korvel::macrotool
