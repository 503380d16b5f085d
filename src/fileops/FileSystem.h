#pragma once

#include "fileops/FileOpStatus.h"

#include <QString>
#include <QStringList>
#include <cstdint>
#include <optional>

// The only place where the file operations touch the disk. Every verb handles its own errors and
// answers with one status; nothing throws. Symbolic links are shortcuts, so no verb follows one:
// a link is an entry of its own, copied, moved and deleted as such.
namespace korvel::files {

enum class EntryKind { Missing, File, Folder };

EntryKind KindOf(const QString& path);
inline bool Exists(const QString& path) {
    return KindOf(path) != EntryKind::Missing;
}
inline bool IsFolder(const QString& path) {
    return KindOf(path) == EntryKind::Folder;
}
// Whether the path leads to a folder, through links too: where the user can be, not what a
// walk may enter.
bool LeadsToFolder(const QString& path);
// Read-only means the owner may not write. A link is never read-only.
bool IsReadOnly(const QString& path);

// A name of an entry in a folder: not empty, not "." or "..", no "/".
bool IsPlainName(const QString& name);
// The path with exactly one trailing "/"; "" and "/" give "/".
QString AsFolderPath(const QString& path);
// The path without trailing "/"; "/" gives "".
QString WithoutTrailingSlash(const QString& path);
// The folder that holds path, ending in one "/"; the root is its own parent.
QString ParentFolderOf(const QString& path);

// Whether both paths lead to the same folder on disk, however they are spelt (case on a
// case-insensitive volume, links, "..").
bool IsSameFolder(const QString& first, const QString& second);
// Whether path is folder itself or lies somewhere below it.
bool IsWithin(const QString& path, const QString& folder);

// The names in a folder, hidden ones included, without "." and "..".
std::optional<QStringList> ListFolder(const QString& folder);

// What a copy of an entry carries over besides its contents.
struct Attributes {
    std::uint32_t mode = 0;
};
std::optional<Attributes> AttributesOf(const QString& path);
FileOpStatus SetAttributes(const QString& path, Attributes attributes);
FileOpStatus ClearReadOnly(const QString& path);

FileOpStatus MakeFolder(const QString& path);
// Copies a file or link over whatever file is at target, keeping the source's permissions and
// time. The data goes to a temporary name beside the target first: a failed copy leaves target
// as it was.
FileOpStatus CopyFile(const QString& source, const QString& target);
// Moves a file or link over whatever file is at target: a rename on one file system, else a
// complete copy followed by deleting the source.
FileOpStatus MoveFile(const QString& source, const QString& target);

enum class RenameResult { Done, OtherFileSystem, Failed };
// Renames an entry to a target that must not exist; a folder goes with everything in it.
RenameResult RenameEntry(const QString& source, const QString& target);

FileOpStatus DeleteFile(const QString& path);
// Removes an empty folder.
FileOpStatus RemoveFolder(const QString& path);

} // namespace korvel::files
