#include "shell/DesktopDatabases.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSaveFile>
#include <QStandardPaths>
#include <QXmlStreamWriter>

namespace korvel {
namespace {

constexpr QStringView kOwnTypePrefix = u"text/x-korvel-";
constexpr QStringView kPackageName = u"korveledit.xml";
// Above the 50 that shared-mime-info gives most extensions, so that a system that calls these
// files plain text still gives them our type.
constexpr QStringView kOwnGlobWeight = u"60";
constexpr int kToolTimeoutMs = 60000;

// An XDG base folder: the variable when it holds an absolute path (the only kind the standard
// accepts), else the default under the home folder.
QString BaseFolder(const char* variable, QStringView defaultUnderHome) {
    const QString value = qEnvironmentVariable(variable);
    if (QDir::isAbsolutePath(value))
        return QDir::cleanPath(value);
    return QDir::homePath() + u'/' + defaultUnderHome.toString();
}

QString DataHome() {
    return BaseFolder("XDG_DATA_HOME", u".local/share");
}

QStringList DataFolders() {
    QStringList folders{DataHome()};
    QString dirs = qEnvironmentVariable("XDG_DATA_DIRS");
    if (dirs.isEmpty())
        dirs = QStringLiteral("/usr/local/share:/usr/share");
    for (const QString& dir : dirs.split(u':', Qt::SkipEmptyParts)) {
        if (QDir::isAbsolutePath(dir))
            folders.append(QDir::cleanPath(dir));
    }
    return folders;
}

// Runs one of the desktop's cache builders when it is installed. The files it reads are written
// already, so a missing or failing tool only delays what the desktop sees.
void RunUpdateTool(const QString& tool, const QString& folder) {
    const QString program = QStandardPaths::findExecutable(tool);
    if (program.isEmpty())
        return;
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, {folder});
    if (process.waitForStarted())
        process.waitForFinished(kToolTimeoutMs);
}

QByteArray PackageText(const QList<OwnMimeType>& types) {
    QByteArray text;
    QXmlStreamWriter xml(&text);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("mime-info"));
    xml.writeDefaultNamespace(
        QStringLiteral("http://www.freedesktop.org/standards/shared-mime-info"));
    for (const OwnMimeType& type : types) {
        xml.writeStartElement(QStringLiteral("mime-type"));
        xml.writeAttribute(QStringLiteral("type"), OwnMimeTypeOf(type.extension));
        xml.writeEmptyElement(QStringLiteral("sub-class-of"));
        xml.writeAttribute(QStringLiteral("type"), QStringLiteral("text/plain"));
        xml.writeTextElement(QStringLiteral("comment"), type.comment);
        xml.writeEmptyElement(QStringLiteral("glob"));
        xml.writeAttribute(QStringLiteral("pattern"), u'*' + type.extension.toLower());
        xml.writeAttribute(QStringLiteral("weight"), kOwnGlobWeight.toString());
        xml.writeEndElement();
    }
    xml.writeEndDocument();
    return text;
}

} // namespace

QString UserApplicationsFolder() {
    return DataHome() + QStringLiteral("/applications");
}

QString UserMimeAppsList() {
    return BaseFolder("XDG_CONFIG_HOME", u".config") + QStringLiteral("/mimeapps.list");
}

QString UserMimeFolder() {
    return DataHome() + QStringLiteral("/mime");
}

QHash<QString, QString> DesktopMimeTypesOf(const QStringList& extensions) {
    QHash<QString, QString> types;
    QHash<QString, int> weights;
    for (const QString& folder : DataFolders()) {
        QFile globs(folder + QStringLiteral("/mime/globs2"));
        if (!globs.open(QIODevice::ReadOnly | QIODevice::Text))
            continue;
        while (!globs.atEnd()) {
            // weight:type:pattern[:flags]
            const QStringList fields = QString::fromUtf8(globs.readLine()).trimmed().split(u':');
            if (fields.size() < 3 || fields[0].startsWith(u'#') || !fields[2].startsWith(u'*'))
                continue;
            const QString extension = fields[2].mid(1).toLower();
            if (!extensions.contains(extension, Qt::CaseInsensitive))
                continue;
            const int weight = fields[0].toInt();
            // On a tie the folder that comes first wins.
            if (weight > weights.value(extension, -1)) {
                types.insert(extension, fields[1]);
                weights.insert(extension, weight);
            }
        }
    }
    return types;
}

QString OwnMimeTypeOf(QStringView extension) {
    return kOwnTypePrefix.toString() + extension.mid(1).toString().toLower();
}

bool IsOwnMimeType(QStringView mimeType) {
    return mimeType.startsWith(kOwnTypePrefix);
}

bool InstallOwnMimeTypes(const QList<OwnMimeType>& types) {
    const QString packagePath =
        UserMimeFolder() + QStringLiteral("/packages/") + kPackageName.toString();
    const QByteArray text = PackageText(types);
    QFile installed(packagePath);
    if (installed.open(QIODevice::ReadOnly) && installed.readAll() == text)
        return true;
    installed.close();
    if (!QDir().mkpath(UserMimeFolder() + QStringLiteral("/packages")))
        return false;
    QSaveFile package(packagePath);
    if (!package.open(QIODevice::WriteOnly) || package.write(text) != text.size() ||
        !package.commit())
        return false;
    RunUpdateTool(QStringLiteral("update-mime-database"), UserMimeFolder());
    return true;
}

void RefreshApplicationsCache() {
    RunUpdateTool(QStringLiteral("update-desktop-database"), UserApplicationsFolder());
}

} // namespace korvel
