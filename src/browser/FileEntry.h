#pragma once

#include "document/FileTime.h"

#include <QString>
#include <cstdint>
#include <optional>
#include <vector>

namespace korvel {

// Attribute bits of a FileEntry. The numbers are the ones the sort and the menus were built on.
inline constexpr std::uint32_t kAttributeReadOnly = 0x01; // the owner may not write
inline constexpr std::uint32_t kAttributeFolder = 0x10;
inline constexpr std::uint32_t kAttributeLink = 0x400; // a symbolic link: a shortcut here

// One row of the file list: what a folder listing says of one entry, links not followed.
struct FileEntry {
    std::uint32_t attributes = 0;
    FileTime lastWrite = 0;
    std::uint32_t sizeHigh = 0;
    std::uint32_t sizeLow = 0;
    QString name;

    bool isFolder() const { return (attributes & kAttributeFolder) != 0; }
    bool isParent() const { return isFolder() && name == u".."; }
    std::uint64_t size() const { return (std::uint64_t(sizeHigh) << 32) | sizeLow; }
};

// The synthetic first row of a folder other than the root.
FileEntry ParentEntry();

// Every entry of a folder except "." and "..", and except hidden ones (names beginning with
// "."). An empty list when the folder cannot be read.
std::vector<FileEntry> ReadFolder(const QString& folder);

// The entry of one path, the link itself for a symbolic link.
std::optional<FileEntry> ReadEntry(const QString& path);

} // namespace korvel
