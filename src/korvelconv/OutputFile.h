#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace korvel::conv {

// Output bytes in pieces (a mark, then the body), written in order without joining them.
using ByteParts = std::span<const std::span<const std::uint8_t>>;

// On failure these return false and set error to one line that names the output.
bool WriteStandardOutput(ByteParts parts, std::string& error);

// Replaces the file at path with the parts. They go to a temporary file in the same folder
// first, which is flushed to disk and then renamed over path: a failure leaves an existing file
// as it was and creates none. An existing file keeps its permission bits.
bool ReplaceFileContents(const std::string& path, ByteParts parts, std::string& error);

} // namespace korvel::conv
