#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QStringView>

namespace korvel {

// Where the desktop keeps what it knows of applications and file types, each honouring its XDG
// variable: $XDG_DATA_HOME/applications for the desktop entries, $XDG_CONFIG_HOME/mimeapps.list
// for the default applications, $XDG_DATA_HOME/mime for the user's MIME types.
QString UserApplicationsFolder();
QString UserMimeAppsList();
QString UserMimeFolder();

// The MIME types that the shared-mime-info databases give files named "*<extension>", for each
// of extensions that has one (keyed in lower case): the glob of highest weight, the user's
// database (with our own package) included, as the desktop reads them. The databases are read
// once for all the extensions.
QHash<QString, QString> DesktopMimeTypesOf(const QStringList& extensions);

// The type of our own for an extension the system has no fitting type for ("text/x-korvel-mcr").
QString OwnMimeTypeOf(QStringView extension);
bool IsOwnMimeType(QStringView mimeType);

struct OwnMimeType {
    QString extension;
    QString comment;
};

// Makes our shared-mime-info package declare exactly these types, each a kind of plain text, and
// rebuilds the user's MIME database when the package changed. False when it cannot be written.
bool InstallOwnMimeTypes(const QList<OwnMimeType>& types);

// Rebuilds the desktop's cache of which entries open which types after desktop entries changed.
void RefreshApplicationsCache();

} // namespace korvel
