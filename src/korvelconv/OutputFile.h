#pragma once

#include "document/FileReplacement.h"

#include <string>

namespace korvel::conv {

// On failure these return false and set error to one line that names the output.
bool WriteStandardOutput(ByteParts parts, std::string& error);

// Replaces the regular file at path, or makes a new one, with the editor's no-loss rules: a
// failure leaves an existing file exactly as it was and creates none. Pipes, devices and
// read-only files are refused, since a batch run cannot ask whether they are meant.
bool WriteOutputFile(const std::string& path, ByteParts parts, std::string& error);

} // namespace korvel::conv
