#include "settings/SettingsStore.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

namespace korvel {
namespace {

// A value read back from the file is a string; one this process wrote is still the int or
// string it was given. Anything else (a list, from an unquoted comma) is not a value we wrote.
std::optional<int> IntFrom(const QVariant& stored) {
    bool ok = false;
    int value = 0;
    if (stored.typeId() == QMetaType::Int)
        value = stored.toInt(&ok);
    // QVariant's own conversion would wrap an out-of-range number around; QString's refuses it.
    else if (stored.typeId() == QMetaType::QString)
        value = stored.toString().toInt(&ok);
    return ok ? std::optional<int>(value) : std::nullopt;
}

std::optional<QString> StringFrom(const QVariant& stored) {
    if (stored.typeId() == QMetaType::Int || stored.typeId() == QMetaType::QString)
        return stored.toString();
    return std::nullopt;
}

} // namespace

SettingsStore::SettingsStore() = default;

SettingsStore::SettingsStore(QString filePath) : filePath_(std::move(filePath)) {}

int SettingsStore::readInt(QAnyStringView name, int defaultValue) const {
    return IntFrom(openGroup(kSettingsGroup)->value(name)).value_or(defaultValue);
}

QString SettingsStore::readString(QAnyStringView name, const QString& defaultValue) const {
    return StringFrom(openGroup(kSettingsGroup)->value(name)).value_or(defaultValue);
}

void SettingsStore::writeInt(QAnyStringView name, int value) {
    openGroup(kSettingsGroup)->setValue(name, value);
}

void SettingsStore::writeString(QAnyStringView name, const QString& value) {
    openGroup(kSettingsGroup)->setValue(name, value);
}

int SettingsStore::read(const IntSetting& setting) const {
    const int value = readInt(QLatin1StringView(setting.name), setting.defaultValue);
    return value >= setting.minimum && value <= setting.maximum ? value : setting.defaultValue;
}

QString SettingsStore::read(const StringSetting& setting) const {
    // The default is only worked out when it is needed: the documents folder means a look at
    // the disk.
    const QVariant stored = openGroup(kSettingsGroup)->value(QLatin1StringView(setting.name));
    std::optional<QString> value = StringFrom(stored);
    return value ? *std::move(value) : DefaultValue(setting);
}

void SettingsStore::write(const IntSetting& setting, int value) {
    writeInt(QLatin1StringView(setting.name), value);
}

void SettingsStore::write(const StringSetting& setting, const QString& value) {
    writeString(QLatin1StringView(setting.name), value);
}

std::unique_ptr<QSettings> SettingsStore::openGroup(QAnyStringView group) const {
    auto settings = filePath_.isEmpty()
                        ? std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope,
                                                      QStringLiteral("Harrow Apps"),
                                                      QStringLiteral("Korvelエディタ"))
                        : std::make_unique<QSettings>(filePath_, QSettings::IniFormat);
    settings->beginGroup(group);
    return settings;
}

QString DefaultValue(const StringSetting& setting) {
    switch (setting.defaultKind) {
    case StringDefault::DocumentsFolder:
        return DocumentsFolder();
    case StringDefault::Text:
        break;
    }
    return QString::fromUtf16(setting.defaultText);
}

QString DocumentsFolder() {
    // Qt names ~/Documents even when it does not exist; an Open dialog cannot start there.
    QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    if (folder.isEmpty() || !QFileInfo(folder).isDir())
        folder = QDir::homePath();
    folder = QDir::cleanPath(folder);
    if (!folder.endsWith(u'/'))
        folder += u'/';
    return folder;
}

} // namespace korvel
