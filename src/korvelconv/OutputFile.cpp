#include "korvelconv/OutputFile.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace korvel::conv {
namespace {

std::string SystemError(const std::string& name, int error) {
    return name + ": " + std::strerror(error);
}

} // namespace

bool WriteStandardOutput(ByteParts parts, std::string& error) {
    if (!WriteAllBytes(STDOUT_FILENO, parts)) {
        error = SystemError("standard output", errno);
        return false;
    }
    return true;
}

bool WriteOutputFile(const std::string& path, ByteParts parts, std::string& error) {
    // The editor overwrites a read-only file only when the user agrees; a batch run cannot ask.
    // Read-only is the owner's missing write permission, which binds root too.
    struct stat existing {};
    if (::stat(path.c_str(), &existing) == 0 && S_ISREG(existing.st_mode)) {
        if ((existing.st_mode & S_IWUSR) == 0) {
            error = path + ": is read-only";
            return false;
        }
        if (::access(path.c_str(), W_OK) != 0) {
            error = SystemError(path, errno);
            return false;
        }
    }
    const ReplaceOutcome outcome = ReplaceFileContents(path, parts);
    switch (outcome.failure) {
    case ReplaceFailure::None:
        return true;
    case ReplaceFailure::Folder:
        error = path + ": is a folder";
        return false;
    case ReplaceFailure::NotRegularFile:
        error = path + ": is not a regular file (leave out -o to write to standard output)";
        return false;
    case ReplaceFailure::System:
        break;
    }
    error = SystemError(path, outcome.systemError);
    if (!outcome.keptCopy.empty()) {
        error += "; its old content is kept in " + outcome.keptCopy;
    }
    return false;
}

} // namespace korvel::conv
