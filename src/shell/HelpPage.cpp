#include "shell/HelpPage.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace korvel {

QString DataFilePath(const QString& executableFolder, QStringView installedPath,
                     QStringView sourcePath) {
    // The data folder is found relative to the executable, not at the configured prefix, so an
    // installed tree still works after it is moved or installed with another --prefix.
    const QDir dataFolder(QDir(executableFolder).filePath(QStringLiteral(KORVEL_DATA_FROM_BINDIR)));
    const QString installed = QDir::cleanPath(dataFolder.filePath(installedPath.toString()));
    if (QFileInfo(installed).isFile())
        return installed;
    const QString source =
        QDir(QStringLiteral(KORVEL_SOURCE_DATA_DIR)).filePath(sourcePath.toString());
    if (QFileInfo(source).isFile())
        return source;
    return QString();
}

QUrl HelpPageUrl(const QString& executableFolder) {
    const QString page =
        DataFilePath(executableFolder, u"korveledit/help/KORVEL100.htm", u"help/KORVEL100.htm");
    if (page.isEmpty())
        return QUrl();
    QUrl url = QUrl::fromLocalFile(page);
    // Some launchers drop the fragment of a file URL; the contents stand at the top of the page,
    // so the page still opens where it should.
    url.setFragment(QStringLiteral("MAIN_CONTENTS"));
    return url;
}

QUrl HelpPageUrl() {
    return HelpPageUrl(QCoreApplication::applicationDirPath());
}

} // namespace korvel
