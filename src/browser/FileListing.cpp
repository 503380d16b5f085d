#include "browser/FileListing.h"

#include "browser/Wildcard.h"

#include <QFileInfo>
#include <algorithm>
#include <ctime>

namespace korvel {
namespace {

int Sign(std::int64_t value) {
    return value < 0 ? -1 : (value > 0 ? 1 : 0);
}

int CompareNames(const FileEntry& first, const FileEntry& second, int s) {
    return Sign(QString::compare(first.name, second.name, Qt::CaseInsensitive)) * s;
}

// The extension from the last "." on, dot included; empty without a dot.
QStringView ExtensionWithDot(QStringView name) {
    const qsizetype dot = name.lastIndexOf(u'.');
    return dot >= 0 ? name.sliced(dot) : QStringView();
}

int CompareTypes(const FileEntry& first, const FileEntry& second, int s) {
    const QStringView a = ExtensionWithDot(first.name);
    const QStringView b = ExtensionWithDot(second.name);
    if (!a.isEmpty() && b.isEmpty())
        return s;
    if (a.isEmpty() && !b.isEmpty())
        return -s;
    if (a.isEmpty())
        return 0;
    const int byExtension = Sign(a.compare(b, Qt::CaseInsensitive));
    return byExtension != 0 ? byExtension * s : CompareNames(first, second, s);
}

int CompareSizes(const FileEntry& first, const FileEntry& second, int s) {
    if (first.sizeHigh > second.sizeHigh)
        return -s;
    if (first.sizeHigh < second.sizeHigh)
        return s;
    if (first.sizeLow != second.sizeLow)
        return Sign(std::int32_t(first.sizeLow - second.sizeLow)) * s;
    return CompareNames(first, second, s);
}

int CompareTimes(const FileEntry& first, const FileEntry& second, int s) {
    const int byTime = Sign(first.lastWrite - second.lastWrite);
    return byTime != 0 ? byTime * s : CompareNames(first, second, s);
}

// The comparison with the folder rule decided by the caller: a row listed among the folders
// sorts as one of them, whatever its entry says.
int CompareRanked(const FileEntry& first, bool firstIsFolder, const FileEntry& second,
                  bool secondIsFolder, SortKey key) {
    const int s = IsDescending(key) ? -1 : 1;
    if (firstIsFolder != secondIsFolder)
        return firstIsFolder ? -1 : 1;
    if (first.isParent())
        return -1;
    if (second.isParent())
        return 1;
    switch (SortColumnOf(key)) {
    case sort_column::Size:
        return CompareSizes(first, second, s);
    case sort_column::Time:
        return CompareTimes(first, second, s);
    case sort_column::Type:
        return firstIsFolder ? CompareNames(first, second, s) : CompareTypes(first, second, s);
    default:
        return CompareNames(first, second, s);
    }
}

FileRow FolderRow(const FileEntry& entry) {
    FileRow row;
    row.entry = entry;
    row.displayName = entry.name;
    row.icon = file_icon::Folder;
    return row;
}

} // namespace

int CompareEntries(const FileEntry* first, const FileEntry* second, SortKey key) {
    if (first == nullptr || second == nullptr) {
        if (first == second)
            return 0;
        const int s = IsDescending(key) ? -1 : 1;
        return first == nullptr ? -s : s;
    }
    return CompareRanked(*first, first->isFolder(), *second, second->isFolder(), key);
}

QString SizeText(const FileEntry& entry) {
    if (entry.isFolder())
        return {};
    const std::uint32_t size = entry.sizeLow;
    if (size <= 1024)
        return QString::number(size) + u' ';
    if (size <= 1024 * 1024)
        return QString::number((size >> 10) + 1) + u'K';
    // Single precision on purpose: the figures must round as they always have.
    const float megabytes = float(size) * (1.0f / 1048576.0f);
    return QString::asprintf("%0.2fM", double(megabytes));
}

QString TimeText(const FileEntry& entry, QDate today) {
    const std::time_t seconds = std::time_t(entry.lastWrite / 1'000'000'000 -
                                            (entry.lastWrite % 1'000'000'000 < 0 ? 1 : 0));
    std::tm local{};
    if (localtime_r(&seconds, &local) == nullptr)
        return {};
    const int year = local.tm_year + 1900;
    const int month = local.tm_mon + 1;
    if (year == today.year() && month == today.month() && local.tm_mday == today.day())
        return QString::asprintf("%02d:%02d", local.tm_hour, local.tm_min);
    return QString::asprintf("%02d/%02d/%02d", year % 100, month, local.tm_mday);
}

void IconExtensions::add(IconGroup group, QStringView extension) {
    extension = extension.trimmed();
    while (extension.startsWith(u'.'))
        extension = extension.sliced(1);
    QStringList& list = lists_[std::size_t(group)];
    if (extension.isEmpty() || list.contains(extension, Qt::CaseInsensitive))
        return;
    list.append(extension.toString());
}

int IconExtensions::iconOf(QStringView extension) const {
    static constexpr int icons[] = {file_icon::Text, file_icon::Image, file_icon::Html,
                                    file_icon::Audio};
    for (std::size_t group = 0; group < lists_.size(); ++group) {
        if (lists_[group].contains(extension, Qt::CaseInsensitive))
            return icons[group];
    }
    if (extension.compare(u"exe", Qt::CaseInsensitive) == 0)
        return file_icon::Program;
    return file_icon::Generic;
}

bool FileListing::setFolder(const QString& path) {
    const QFileInfo info(path);
    if (path.isEmpty() || !info.isDir())
        return false;
    QString folder = path;
    while (folder.endsWith(u'/'))
        folder.chop(1);
    folder_ = folder + u'/';
    return true;
}

FileOpStatus FileListing::refresh() {
    return list(nullptr);
}

FileOpStatus FileListing::refreshPattern(const QString& pattern) {
    if (pattern.trimmed().isEmpty())
        return FileOpStatus::Failed;
    return list(&pattern);
}

bool FileListing::setSortKey(SortKey key) {
    if (SortColumnOf(key) > 4 || (key >> 16) > 1)
        return false;
    sortKey_ = key;
    return true;
}

void FileListing::sort(SortKey key) {
    setSortKey(key);
    // A merge sort: the comparison is not a strict order everywhere (".." against itself), and
    // rows that compare equal keep the order the folder gave them.
    std::stable_sort(rows_.begin(), rows_.end(), [this](const FileRow& a, const FileRow& b) {
        return CompareRanked(a.entry, a.sortsAsFolder(), b.entry, b.sortsAsFolder(), sortKey_) < 0;
    });
}

const FileRow* FileListing::row(qsizetype index) const {
    if (index < 0 || index >= qsizetype(rows_.size()))
        return nullptr;
    return &rows_[std::size_t(index)];
}

void FileListing::removeRow(qsizetype index) {
    if (index >= 0 && index < qsizetype(rows_.size()))
        rows_.erase(rows_.begin() + index);
}

qsizetype FileListing::indexOf(QStringView name) const {
    qsizetype folded = -1;
    for (qsizetype i = 0; i < qsizetype(rows_.size()); ++i) {
        const QString& rowName = rows_[std::size_t(i)].entry.name;
        if (rowName == name)
            return i;
        if (folded < 0 && rowName.compare(name, Qt::CaseInsensitive) == 0)
            folded = i;
    }
    return folded;
}

FileOpStatus FileListing::list(const QString* pattern) {
    rows_.clear();
    std::vector<FileEntry> entries = ReadFolder(folder_);
    rows_.reserve(entries.size() + 1);
    const bool showFolders = (options_ & list_option::ShowFolders) != 0;
    if (showFolders) {
        if (!isRoot())
            rows_.push_back(FolderRow(ParentEntry()));
        for (const FileEntry& entry : entries) {
            if (entry.isFolder())
                rows_.push_back(FolderRow(entry));
        }
    }
    for (FileEntry& entry : entries) {
        if (entry.isFolder())
            continue;
        FileRow row = makeFileRow(std::move(entry));
        row.amongFolders = showFolders && row.isShortcutToFolder();
        if (!row.amongFolders) {
            const bool passes = pattern != nullptr ? MatchesWildcard(row.entry.name, *pattern)
                                                   : passesFilter(row.entry.name);
            if (!passes)
                continue;
        }
        rows_.push_back(std::move(row));
    }
    sort(sortKey_);
    return FileOpStatus::Done;
}

bool FileListing::passesFilter(const QString& name) const {
    if (filter_.isEmpty())
        return true;
    const QStringView extension = ExtensionWithDot(name);
    return !extension.isEmpty() && filter_.contains(extension, Qt::CaseInsensitive);
}

FileRow FileListing::makeFileRow(FileEntry entry) const {
    FileRow row;
    row.entry = std::move(entry);
    const QString& name = row.entry.name;
    row.displayName = name;
    const bool link = (row.entry.attributes & kAttributeLink) != 0;
    row.shortcut = resolveShortcuts_ && (link || HasShortcutExtension(name));
    QStringView typeSource = name;
    if (row.shortcut) {
        row.target = ResolveShortcut(folder_ + name, kListShortcutReadLimit);
        if (!row.target)
            return row;
        if (HasShortcutExtension(name))
            row.displayName.chop(4);
        if (row.target->isFolder) {
            row.icon = file_icon::FolderShortcut;
            return row;
        }
        typeSource = row.target->path;
    } else if ((options_ & list_option::HideExtensions) != 0 && name.contains(u'.')) {
        row.displayName.truncate(name.lastIndexOf(u'.'));
    }
    const qsizetype dot = typeSource.lastIndexOf(u'.');
    if (dot < 0 || typeSource.sliced(dot).contains(u'/'))
        return row; // no extension: the generic icon, without the mark even for a shortcut
    const int mark = row.shortcut ? file_icon::ShortcutMark : 0;
    if ((options_ & list_option::PlainIcons) != 0)
        row.icon = file_icon::Generic + mark;
    else
        row.icon = icons_.iconOf(typeSource.sliced(dot + 1)) + mark;
    return row;
}

} // namespace korvel
