#pragma once

#include "settings/SettingNames.h"

#include <QAnyStringView>
#include <QString>
#include <memory>

class QSettings;

namespace korvel {

// The per-user store of every setting: an INI file, "Harrow Apps/Korvelエディタ.ini" under
// $XDG_CONFIG_HOME. Settings are read where they are needed and written by their owners. Each
// operation opens the file afresh, so a read sees what another instance wrote, and a write is
// on disk when the call returns.
class SettingsStore {
public:
    // The user's store.
    SettingsStore();
    // A store kept in the given INI file instead.
    explicit SettingsStore(QString filePath);

    // The four operations on the SETTINGS group. A value that is missing, or that does not read
    // as its type, yields the default; a read never writes the default back.
    int readInt(QAnyStringView name, int defaultValue) const;
    QString readString(QAnyStringView name, const QString& defaultValue) const;
    void writeInt(QAnyStringView name, int value);
    void writeString(QAnyStringView name, const QString& value);

    // The same with a setting of SettingNames.h and its own default; an integer outside the
    // setting's range also reads as the default.
    int read(const IntSetting& setting) const;
    QString read(const StringSetting& setting) const;
    void write(const IntSetting& setting, int value);
    void write(const StringSetting& setting, const QString& value);

    // The same file opened on another group (kRecentFileListGroup, kOpenDocsGroup). Changes are
    // written when the object is destroyed or synced.
    std::unique_ptr<QSettings> openGroup(QAnyStringView group) const;

private:
    QString filePath_; // empty: the user's store
};

// The default of a string setting.
QString DefaultValue(const StringSetting& setting);

// The user's documents folder, or the home folder when there is none, ending in exactly one "/".
QString DocumentsFolder();

} // namespace korvel
