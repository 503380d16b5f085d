#include "shell/AppIcon.h"

#include "shell/HelpPage.h"

#include <QCoreApplication>

namespace korvel {

QIcon ApplicationIcon() {
    // The rendered sizes rather than the SVG: they need no SVG support, and Qt scales the
    // nearer one for the sizes in between.
    static constexpr QStringView kIconFiles[] = {
        u"icons/hicolor/48x48/apps/korveledit.png",
        u"icons/hicolor/256x256/apps/korveledit.png",
    };
    const QString executableFolder = QCoreApplication::applicationDirPath();
    QIcon files;
    for (QStringView file : kIconFiles) {
        const QString path = DataFilePath(executableFolder, file, file);
        if (!path.isEmpty())
            files.addFile(path);
    }
    return QIcon::fromTheme(QStringLiteral("korveledit"), files);
}

} // namespace korvel
