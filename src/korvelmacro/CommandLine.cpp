#include "korvelmacro/CommandLine.h"

#include "korvelmacro/MacroRun.h"
#include "macro/MacroChecker.h"
#include "macro/MacroFile.h"
#include "macro/MacroWriter.h"
#include "messages/MessageFormat.h"
#include "messages/StringTable.h"
#include "settings/SettingsStore.h"

#include <QApplication>
#include <QFile>
#include <QLatin1StringView>
#include <QSettings>
#include <QTemporaryDir>
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

// A macro that is to be used, not only checked: its diagnostics go to standard error, and it
// must load. Nothing, with status set, when it cannot be read or has an error.
std::optional<CheckedMacro> LoadForUse(const QString& path, int& status) {
    std::optional<CheckedMacro> macro = Load(path);
    if (!macro) {
        status = kExitUnreadable;
        return std::nullopt;
    }
    Write(stderr, ReportLines(*macro));
    if (macro->hasError) {
        status = kExitMacroError;
        return std::nullopt;
    }
    return macro;
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
    int status = kExitLoaded;
    const std::optional<CheckedMacro> macro = LoadForUse(files.front(), status);
    if (!macro)
        return status;
    QString lines;
    for (const MacroCommand& command : macro->commands)
        lines += MacroCommandLine(command) + u'\n';
    Write(stdout, lines);
    return kExitLoaded;
}

// The user's settings (fonts, tab width, code-set choices) without touching them: the window
// writes its own settings back when it closes, and a batch run must leave no trace.
std::unique_ptr<SettingsStore> CopyOfUserSettings(const QTemporaryDir& folder) {
    const QString copy = folder.filePath(QStringLiteral("settings.ini"));
    QFile::copy(QSettings(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("Harrow Apps"),
                          QStringLiteral("Korvelエディタ"))
                    .fileName(),
                copy);
    QFile::setPermissions(copy, QFile::ReadOwner | QFile::WriteOwner);
    return std::make_unique<SettingsStore>(copy);
}

int Run(const QStringList& arguments) {
    const bool show = arguments.front() == u"--show";
    const QStringList files = arguments.mid(show ? 1 : 0);
    if (files.size() < 2) {
        ReportError(
            QStringLiteral("run needs a macro and at least one file; see korvelmacro --help"));
        return kExitUnreadable;
    }
    int status = kExitLoaded;
    const std::optional<CheckedMacro> macro = LoadForUse(files.front(), status);
    if (!macro)
        return status;
    if (!show)
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // Standard error carries the message boxes; the toolkit's notes about the platform would
    // only bury them.
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
        if (type == QtCriticalMsg || type == QtFatalMsg)
            Write(stderr, text + u'\n');
    });
    static char name[] = "korvelmacro";
    static char* argv[] = {name, nullptr};
    int argc = 1;
    QApplication application(argc, argv);
    QTemporaryDir settingsFolder;
    const std::unique_ptr<SettingsStore> store = CopyOfUserSettings(settingsFolder);
    return RunMacroOverFiles(macro->commands, files.mid(1), *store) ? kExitLoaded : kExitMacroError;
}

struct SubCommand {
    QLatin1StringView name;
    qsizetype minFiles, maxFiles;
    int (*run)(const QStringList& files);
};

constexpr SubCommand kSubCommands[] = {
    {QLatin1StringView("check"), 1, kAnyCount, Check},
    {QLatin1StringView("list"), 1, 1, List},
    {QLatin1StringView("run"), 1, kAnyCount, Run},
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
       korvelmacro run [--show] MACRO FILE...
       korvelmacro --help

Reads macro files (.mcr) exactly as KorvelEdit loads them.

  check FILE...  print, for each file, what the editor's load-error dialog would show: the
                 numbered errors and warnings, and the notice that the load was stopped;
                 nothing for a clean macro. With several files, each report is headed by
                 "==> FILE <==".
  list FILE      print the file's commands as the editor writes them, one per line, when it
                 loads; the errors and warnings go to standard error.
  run MACRO FILE...
                 open each FILE in an editor window of its own (not shown; --show shows
                 it), play MACRO to its end, and save the file in its own code set and line
                 ending when the macro changed it and did not save it. Message boxes are
                 printed to standard error as "[id] text" and answered with their default
                 button. A file that fails (cannot be opened, an error box while playing, a
                 failed save) is left as it was, and the next file goes on. The user's
                 settings are read, never written.
  --help         show this help

Output is UTF-8 with LF line ends.
Exit status: 0 every file loads (warnings allowed) or, for run, every file ran; 1 a macro
has an error, or a file failed to run; 2 a file cannot be read or the command line is wrong
(2 wins over 1).
)");
}

} // namespace korvel::macrotool
