#include "shell/RecentFileList.h"

#include "settings/SettingNames.h"
#include "settings/SettingsStore.h"

#include <QSettings>

namespace korvel {

namespace {

// Long paths keep their start and their file name, which is what tells entries apart.
constexpr qsizetype kLongestMenuPath = 60;

QString ValueName(int index) {
    return QStringLiteral("File%1").arg(index + 1);
}

} // namespace

RecentFileList::RecentFileList(SettingsStore& store) : store_(store) {
    const auto group = store_.openGroup(kRecentFileListGroup);
    for (int index = 0; index < kSize; ++index) {
        const QString path = group->value(ValueName(index)).toString();
        if (!path.isEmpty() && !paths_.contains(path))
            paths_.append(path);
    }
}

void RecentFileList::add(const QString& path) {
    if (path.isEmpty())
        return;
    paths_.removeAll(path);
    paths_.prepend(path);
    while (paths_.size() > kSize)
        paths_.removeLast();
    write();
}

void RecentFileList::remove(const QString& path) {
    if (paths_.removeAll(path) > 0)
        write();
}

QString RecentFileList::menuText(int index) const {
    QString path = paths_.value(index);
    if (path.size() > kLongestMenuPath) {
        const qsizetype keep = (kLongestMenuPath - 3) / 2;
        path = path.left(keep) + QStringLiteral("...") + path.right(keep);
    }
    path.replace(QLatin1Char('&'), QStringLiteral("&&"));
    return QStringLiteral("&%1 %2").arg(index + 1).arg(path);
}

void RecentFileList::write() {
    const auto group = store_.openGroup(kRecentFileListGroup);
    for (int index = 0; index < kSize; ++index) {
        if (index < paths_.size())
            group->setValue(ValueName(index), paths_.at(index));
        else
            group->remove(ValueName(index));
    }
    group->sync();
}

} // namespace korvel
