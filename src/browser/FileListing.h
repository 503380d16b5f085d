#pragma once

#include "browser/FileEntry.h"
#include "browser/Shortcut.h"
#include "fileops/FileOpStatus.h"

#include <QDate>
#include <QString>
#include <QStringList>
#include <array>
#include <cstdint>
#include <optional>
#include <vector>

// What the file list shows, without a widget: the rows of one folder, their order, icons and the
// Size and Time texts. The list control draws it; tests and benchmarks drive it directly.
namespace korvel {

// `FileListOptions`: the options word the browse dialog hands to the list.
namespace list_option {
inline constexpr std::uint32_t SingleTapOpensFolder = 0x00000001;
inline constexpr std::uint32_t ShowFolders = 0x00000010;
inline constexpr std::uint32_t NoOkCancelInMenu = 0x00000800;
inline constexpr std::uint32_t NoHoldAnimation = 0x00008000;
inline constexpr std::uint32_t PlainIcons = 0x02000000;
inline constexpr std::uint32_t HideExtensions = 0x04000000;
inline constexpr std::uint32_t IgnoreTapAfterMenu = 0x08000000;
} // namespace list_option

// `FileIconIndex`: an even number is a plain icon, the next odd number the same icon with the
// shortcut mark.
namespace file_icon {
inline constexpr int Text = 0;
inline constexpr int Folder = 2;
inline constexpr int FolderShortcut = 3;
inline constexpr int Image = 4;
inline constexpr int Audio = 6;
inline constexpr int Html = 8;
inline constexpr int Program = 10;
inline constexpr int Generic = 12;
inline constexpr int ShortcutMark = 1;
inline constexpr int Count = 14;
} // namespace file_icon

// `SortKey`: the low 16 bits the column (0 name, 1 size, 2 time, 3 type), the high 16 bits the
// direction (0 ascending, 1 descending).
using SortKey = std::uint32_t;
namespace sort_column {
inline constexpr int Name = 0;
inline constexpr int Size = 1;
inline constexpr int Time = 2;
inline constexpr int Type = 3;
} // namespace sort_column
constexpr SortKey MakeSortKey(int column, bool descending) {
    return (descending ? 0x10000u : 0u) | std::uint32_t(column & 0xFFFF);
}
constexpr int SortColumnOf(SortKey key) {
    return int(key & 0xFFFF);
}
constexpr bool IsDescending(SortKey key) {
    return (key >> 16) != 0;
}

// The list's comparison, with its deliberate asymmetries: ".." and folders come first in both
// directions, a larger size high word sorts first even in ascending order, and two files without
// an extension are equal under the type column whatever their names. Either entry may be
// missing.
int CompareEntries(const FileEntry* first, const FileEntry* second, SortKey key);

// The Size column: empty for a folder, "%d " up to 1024 bytes, then "%dK" one above the truncated
// kibibytes, then "%0.2fM"; only the low 32 bits of the size count.
QString SizeText(const FileEntry& entry);
// The Time column in local time: "hh:mm" for a file written on the day `today`, else "yy/mm/dd".
QString TimeText(const FileEntry& entry, QDate today);

// The four extension lists that pick a file's icon, tried in this order; ".exe" always gives the
// program icon after them.
enum class IconGroup { Text, Image, Html, Audio };

class IconExtensions {
public:
    // Adds an extension trimmed of blanks and leading dots, unless it is empty or already there.
    void add(IconGroup group, QStringView extension);
    // The plain icon of an extension (without dot).
    int iconOf(QStringView extension) const;

private:
    std::array<QStringList, 4> lists_;
};

// One row: the entry and how it is shown.
struct FileRow {
    FileEntry entry;
    QString displayName;
    int icon = file_icon::Generic;
    // A .lnk file or a symbolic link, while shortcuts are followed.
    bool shortcut = false;
    // Where the shortcut leads, when it leads somewhere.
    std::optional<ShortcutTarget> target;
    // A shortcut to a folder listed with the folders (while they are shown): it sorts as one.
    bool amongFolders = false;

    bool isShortcutToFolder() const { return target && target->isFolder; }
    bool sortsAsFolder() const { return entry.isFolder() || amongFolders; }
};

class FileListing {
public:
    // Succeeds only for an existing folder, which then becomes the current one (ending in "/").
    // Does not list it.
    bool setFolder(const QString& path);
    const QString& folder() const { return folder_; }
    bool isRoot() const { return folder_ == u"/"; }

    std::uint32_t options() const { return options_; }
    void setOptions(std::uint32_t options) { options_ = options; }
    bool resolvesShortcuts() const { return resolveShortcuts_; }
    void setResolveShortcuts(bool resolve) { resolveShortcuts_ = resolve; }
    // Extensions with their dot; empty lists every file.
    void setExtensionFilter(const QStringList& extensions) { filter_ = extensions; }
    IconExtensions& iconExtensions() { return icons_; }

    // Lists the current folder: ".." and the folders first when folders are shown (shortcuts to
    // folders among them while shortcuts are followed), then the files that pass the extension
    // filter; sorted by the current key.
    FileOpStatus refresh();
    // The same with the files that match a wildcard pattern instead of the extension filter.
    // Failed when there is no pattern.
    FileOpStatus refreshPattern(const QString& pattern);

    // Accepted when the column is at most 4 and the direction 0 or 1.
    bool setSortKey(SortKey key);
    SortKey sortKey() const { return sortKey_; }
    void sort(SortKey key);

    const std::vector<FileRow>& rows() const { return rows_; }
    // The row at index, or nothing outside the rows.
    const FileRow* row(qsizetype index) const;
    void removeRow(qsizetype index);
    // The index of the row of that name, -1 when there is none; an exact match is preferred
    // over one in another letter case.
    qsizetype indexOf(QStringView name) const;

private:
    FileOpStatus list(const QString* pattern);
    bool passesFilter(const QString& name) const;
    FileRow makeFileRow(FileEntry entry) const;

    QString folder_ = QStringLiteral("/");
    std::uint32_t options_ = list_option::ShowFolders;
    bool resolveShortcuts_ = true;
    QStringList filter_;
    IconExtensions icons_;
    SortKey sortKey_ = 0;
    std::vector<FileRow> rows_;
};

} // namespace korvel
