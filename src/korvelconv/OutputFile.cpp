#include "korvelconv/OutputFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace korvel::conv {
namespace {

// Linux moves at most about 2 GiB per write(); asking for 1 GiB keeps every call whole.
constexpr std::size_t kLargestWrite = std::size_t{1} << 30;

bool WriteAll(int fd, ByteParts parts) {
    for (std::span<const std::uint8_t> part : parts) {
        while (!part.empty()) {
            const ssize_t count = ::write(fd, part.data(), std::min(part.size(), kLargestWrite));
            if (count < 0) {
                if (errno == EINTR) {
                    continue;
                }
                return false;
            }
            part = part.subspan(static_cast<std::size_t>(count));
        }
    }
    return true;
}

std::string SystemError(const std::string& name) {
    return name + ": " + std::strerror(errno);
}

// Writing through a symbolic link keeps the link and replaces what it points to.
std::string ResolveLink(const std::string& path) {
    char* resolved = ::realpath(path.c_str(), nullptr);
    if (resolved == nullptr) {
        return path;
    }
    std::string target = resolved;
    std::free(resolved);
    return target;
}

mode_t NewFileMode(const struct stat* existing) {
    if (existing != nullptr) {
        return existing->st_mode & 07777;
    }
    // umask can only be read by setting it; korvelconv has one thread, so nothing sees the gap.
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

} // namespace

bool WriteStandardOutput(ByteParts parts, std::string& error) {
    if (!WriteAll(STDOUT_FILENO, parts)) {
        error = SystemError("standard output");
        return false;
    }
    return true;
}

bool ReplaceFileContents(const std::string& path, ByteParts parts, std::string& error) {
    struct stat existing {};
    const bool exists = ::stat(path.c_str(), &existing) == 0;
    if (exists && S_ISDIR(existing.st_mode)) {
        error = path + ": is a folder";
        return false;
    }

    const std::string target = exists ? ResolveLink(path) : path;
    // The editor overwrites a read-only file only when the user agrees; a batch run cannot ask.
    if (exists && ::access(target.c_str(), W_OK) != 0) {
        error = SystemError(path);
        return false;
    }
    const std::size_t slash = target.rfind('/');
    const std::size_t nameStart = slash == std::string::npos ? 0 : slash + 1;
    std::string temporary =
        target.substr(0, nameStart) + "." + target.substr(nameStart) + ".korvelconv-XXXXXX";

    const int fd = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (fd < 0) {
        error = SystemError(path);
        return false;
    }
    const bool written = ::fchmod(fd, NewFileMode(exists ? &existing : nullptr)) == 0 &&
                         WriteAll(fd, parts) && ::fsync(fd) == 0;
    const int savedErrno = errno;
    const bool closed = ::close(fd) == 0;
    if (written && closed && ::rename(temporary.c_str(), target.c_str()) == 0) {
        return true;
    }
    if (!written) {
        errno = savedErrno;
    }
    error = SystemError(path);
    ::unlink(temporary.c_str());
    return false;
}

} // namespace korvel::conv
