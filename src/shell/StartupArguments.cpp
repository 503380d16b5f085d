#include "shell/StartupArguments.h"

#include <QDir>
#include <QFile>
#include <cstring>

namespace korvel {

SplitArguments SplitAtDoubleDash(int argc, char** argv) {
    SplitArguments split;
    int i = 0;
    for (; i < argc && (i == 0 || std::strcmp(argv[i], "--") != 0); ++i) {
        split.forQt.push_back(argv[i]);
    }
    for (++i; i < argc; ++i) {
        split.fileNames.append(QFile::decodeName(argv[i]));
    }
    split.forQt.push_back(nullptr);
    return split;
}

QString TrimmedCommandLinePath(QString path) {
    path = path.trimmed();
    // The rule's second round never finds a quote at the start: the first quoted token holds
    // none, and an unclosed quote leaves none behind.
    if (path.startsWith(u'"')) {
        const qsizetype closing = path.indexOf(u'"', 1);
        path = path.mid(1, closing < 0 ? -1 : closing - 1).trimmed();
    }
    return path;
}

StartupFile StartupFileOf(const QStringList& leftByQt, const QStringList& fileNames,
                          const QString& workingFolder) {
    StartupFile file;
    QStringList names;
    for (const QString& argument : leftByQt) {
        if (argument.size() > 1 && argument.startsWith(u'-')) {
            file.unknownOption = argument;
            return file;
        }
        names.append(TrimmedCommandLinePath(argument));
    }
    // After "--" a name is taken as it stands, blanks and quotes included.
    names += fileNames;
    for (const QString& path : names) {
        if (path.isEmpty()) {
            continue;
        }
        if (!file.path.isEmpty()) {
            file.ignored.append(path);
            continue;
        }
        file.path = QDir::cleanPath(QDir(workingFolder).absoluteFilePath(path));
    }
    return file;
}

} // namespace korvel
