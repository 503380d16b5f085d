#include "document/FileReplacement.h"
#include "settings/SettingsStore.h"
#include "shell/AppIcon.h"
#include "shell/CMainFrame.h"
#include "shell/StartupArguments.h"

#include <QApplication>
#include <QDir>
#include <cstdio>

namespace {

constexpr int kExitUsage = 2;

} // namespace

int main(int argc, char* argv[]) {
    korvel::ProtectFileReplacementFromSignals();
    korvel::SplitArguments split = korvel::SplitAtDoubleDash(argc, argv);
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

    korvel::SettingsStore store;
    korvel::CMainFrame frame(store);
    if (!startup.path.isEmpty())
        frame.openPath(startup.path);
    frame.show();
    return QApplication::exec();
}
