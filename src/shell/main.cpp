#include "document/FileReplacement.h"
#include "settings/SettingsStore.h"
#include "shell/AppIcon.h"
#include "shell/Association.h"
#include "shell/CMainFrame.h"
#include "shell/MacroSession.h"
#include "shell/SingleInstance.h"
#include "shell/StartupArguments.h"

#include <QApplication>
#include <QDir>
#include <QLocalServer>
#include <QLocalSocket>
#include <cstdio>
#include <cstring>

namespace {

constexpr int kExitUsage = 2;
constexpr int kExitHandOverFailed = 1;
// The running instance answers once it has the file open, which may first ask its user about
// unsaved changes.
constexpr int kHandOverTimeoutMs = 60000;

constexpr char kUsage[] =
    "Usage: korveledit [OPTION]... [FILE]\n"
    "A text editor for Japanese text in every everyday code set.\n"
    "A running KorvelEdit of the same user opens FILE in its window.\n"
    "\n"
    "  --help       show this help and exit\n"
    "  --version    show the version and exit\n"
    "  --           everything after it is a file name, even one beginning with '-'\n";

// --help and --version answer before the program touches a display or the running instance.
bool AnsweredAtOnce(const std::vector<char*>& arguments) {
    for (char* argument : arguments) {
        if (argument == nullptr)
            break;
        if (std::strcmp(argument, "--help") == 0) {
            std::fputs(kUsage, stdout);
            return true;
        }
        if (std::strcmp(argument, "--version") == 0) {
            std::printf("korveledit %s\n", KORVEL_VERSION);
            return true;
        }
    }
    return false;
}

} // namespace

int main(int argc, char* argv[]) {
    korvel::ProtectFileReplacementFromSignals();
    korvel::SplitArguments split = korvel::SplitAtDoubleDash(argc, argv);
    if (AnsweredAtOnce(split.forQt))
        return 0;
    int qtArgc = static_cast<int>(split.forQt.size()) - 1;
    QApplication app(qtArgc, split.forQt.data());
    QApplication::setOrganizationName(QStringLiteral("Harrow Apps"));
    QApplication::setApplicationName(QStringLiteral("Korvelエディタ"));
    QApplication::setDesktopFileName(QStringLiteral("korveledit"));
    QApplication::setWindowIcon(korvel::ApplicationIcon());

    const korvel::StartupFile startup = korvel::StartupFileOf(QApplication::arguments().mid(1),
                                                              split.fileNames, QDir::currentPath());
    if (!startup.unknownOption.isEmpty()) {
        std::fprintf(stderr,
                     "korveledit: unknown option '%s' (a file whose name begins with '-' is "
                     "given after --, or as ./NAME)\n",
                     qPrintable(startup.unknownOption));
        return kExitUsage;
    }
    for (const QString& name : startup.ignored) {
        std::fprintf(stderr, "korveledit: one file at a time; not opened: %s\n", qPrintable(name));
    }

    korvel::InstanceClaim claim = korvel::ClaimInstance(korvel::InstanceSocketPath());
    if (claim.running) {
        if (korvel::HandOver(*claim.running, startup.path, kHandOverTimeoutMs))
            return 0;
        std::fprintf(stderr, "korveledit: the running KorvelEdit did not take the file: %s\n",
                     qPrintable(startup.path));
        return kExitHandOverFailed;
    }
    if (!claim.server)
        std::fprintf(stderr, "korveledit: cannot reach other starts of the program; this one "
                             "runs on its own\n");

    korvel::SettingsStore store;
    korvel::CMainFrame frame(store);
    if (!startup.path.isEmpty())
        frame.openPath(startup.path);
    frame.show();
    // From now on later starts hand their files to this window.
    std::unique_ptr<korvel::HandoverReceiver> receiver;
    if (claim.server)
        receiver = std::make_unique<korvel::HandoverReceiver>(
            std::move(claim.server),
            [&frame](const QString& path) { frame.receiveHandover(path); });
    frame.macros().loadAtStartup();
    korvel::StartupAssociationCheck(&frame);
    return QApplication::exec();
}
