#pragma once

#include <cstdint>

namespace korvel {

// Result of every file operation and of the file list's refresh. Three families: 0x2000xxxx the
// caller's arguments, 0x2001xxxx failures on disk, 0x2002xxxx the user's answers. The numbers are
// shared with the browser, so they are fixed.
enum class FileOpStatus : std::uint32_t {
    Done = 0,
    // No path, a relative path, or a folder pasted into its own subfolder.
    BadArgument = 0x20000002,
    // The target file exists and no question may be asked.
    TargetExists = 0x20000011,
    // Creating a folder, changing attributes, or another step on disk failed.
    Failed = 0x20010002,
    // The target or source is read-only and no question may be asked.
    ReadOnly = 0x20010003,
    // A folder of the target name exists where a file is to go.
    FolderInTheWay = 0x20010004,
    // The path is not a folder, or a file of the target name exists where a folder is to go.
    NotAFolder = 0x20010005,
    // Every numbered name up to 4095 is taken.
    NameLimit = 0x2001000a,
    NotFound = 0x2001000b,
    // The user chose Cancel: the whole run stops.
    Cancelled = 0x20020003,
    // The user chose No, or some entries were skipped.
    Skipped = 0x20020005,
};

} // namespace korvel
