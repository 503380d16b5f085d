#pragma once

#include <QString>
#include <QStringView>
#include <QUrl>

namespace korvel {

// A data file of the program: the installed copy, <data folder>/installedPath, when the program
// in executableFolder is an installed one, else the source tree's data/sourcePath, so that a
// program run from its build tree finds its files too. Empty when neither exists.
QString DataFilePath(const QString& executableFolder, QStringView installedPath,
                     QStringView sourcePath);

// The help page KORVEL100.htm at its table of contents (#MAIN_CONTENTS), for the program in
// executableFolder; without an argument, for the running program. Invalid when there is no page.
QUrl HelpPageUrl(const QString& executableFolder);
QUrl HelpPageUrl();

} // namespace korvel
