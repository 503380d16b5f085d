#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>
#include <optional>

namespace korvel {

// A freedesktop.org key file (a desktop entry, mimeapps.list) changed in place: every line that
// is not changed stays as it was, so the user's comments, other groups and keys of other
// programs survive our edits byte for byte.
class XdgKeyFile {
public:
    // A missing file reads as an empty one; false only when the file is there but unreadable.
    bool read(const QString& path);
    // Writes the whole file through a temporary one, creating its folder; false on failure.
    bool write(const QString& path) const;

    // The value with the key file escapes (\s \n \t \r \\) undone; nothing when the key is
    // missing from the group.
    std::optional<QString> value(QStringView group, QStringView key) const;
    // Replaces the key's line, or adds it at the end of the group, adding the group when needed.
    void setValue(QStringView group, QStringView key, const QString& value);
    void removeKey(QStringView group, QStringView key);

private:
    // The line index of the key in the group, or -1.
    qsizetype findKey(QStringView group, QStringView key) const;
    // The index just behind the group's last key line, or -1 when there is no such group.
    qsizetype groupEnd(QStringView group) const;

    QStringList lines_;
};

} // namespace korvel
