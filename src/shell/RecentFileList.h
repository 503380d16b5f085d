#pragma once

#include <QString>
#include <QStringList>

namespace korvel {

class SettingsStore;

// The recently-used files, newest first, kept as File1..File4 in the "Recent File List" group
// of the settings store. Every change is written at once, so another instance and the next start
// see it.
class RecentFileList {
public:
    static constexpr int kSize = 4;

    explicit RecentFileList(SettingsStore& store);

    const QStringList& paths() const { return paths_; }
    // Puts path first; an entry for the same path moves up instead of repeating.
    void add(const QString& path);
    void remove(const QString& path);

    // The menu text of entry index: "&1 /path/name.txt", shortened in the middle when long.
    QString menuText(int index) const;

private:
    void write();

    SettingsStore& store_;
    QStringList paths_;
};

} // namespace korvel
