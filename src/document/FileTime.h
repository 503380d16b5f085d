#pragma once

#include <QString>
#include <cstdint>
#include <optional>

namespace korvel {

// A modification time in nanoseconds since 1970-01-01 UTC.
using FileTime = std::int64_t;

// The modification time of the file at path; nothing when it is no regular file this user can
// read (a file that cannot be read could not be loaded again either).
std::optional<FileTime> ReadFileTime(const QString& path);

} // namespace korvel
