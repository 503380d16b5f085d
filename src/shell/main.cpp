#include "settings/SettingsStore.h"
#include "shell/AppIcon.h"
#include "shell/CMainFrame.h"

#include <QApplication>

namespace {

// A path from the command line may come wrapped in double quotes by the caller.
QString UnquotedPath(QString path) {
    path = path.trimmed();
    while (path.startsWith(QLatin1Char('"')))
        path.remove(0, 1);
    while (path.endsWith(QLatin1Char('"')))
        path.chop(1);
    return path;
}

} // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Harrow Apps"));
    QApplication::setApplicationName(QStringLiteral("Korvelエディタ"));
    QApplication::setDesktopFileName(QStringLiteral("korveledit"));
    QApplication::setWindowIcon(korvel::ApplicationIcon());

    korvel::SettingsStore store;
    korvel::CMainFrame frame(store);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() > 1) {
        const QString path = UnquotedPath(arguments.at(1));
        if (!path.isEmpty())
            frame.openPath(path);
    }
    frame.show();
    return QApplication::exec();
}
