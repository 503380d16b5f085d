#include "korvelconv/FileBytes.h"

#include "codec/OutputBlock.h"
#include "document/FileDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace korvel::conv {
namespace {

// Big enough that reading a pipe costs few system calls; the block doubles from there.
constexpr std::size_t kFirstReadBlock = std::size_t{1} << 16;

std::string InputName(const std::string& path) {
    return path == "-" ? "standard input" : path;
}

std::string SystemError(const std::string& path) {
    return InputName(path) + ": " + std::strerror(errno);
}

// A folder is never read; anything but a regular file only as standard input.
bool IsReadable(const std::string& path, const struct stat& info, std::string& error) {
    if (S_ISDIR(info.st_mode)) {
        error = InputName(path) + ": is a folder, not a text file";
        return false;
    }
    if (!S_ISREG(info.st_mode) && path != "-") {
        error = InputName(path) + ": is not a regular file (give a pipe or a device as standard "
                                  "input, -)";
        return false;
    }
    return true;
}

} // namespace

std::optional<FileBytes> FileBytes::Read(const std::string& path, std::string& error) {
    const bool standardInput = path == "-";
    struct stat info {};
    // A named input is looked at before it is opened: opening a pipe waits for a writer, and
    // opening a device may do something of its own.
    if (!standardInput && (::stat(path.c_str(), &info) != 0 || !IsReadable(path, info, error))) {
        if (error.empty()) {
            error = SystemError(path);
        }
        return std::nullopt;
    }
    // Non-blocking, in case a pipe took the name's place since.
    const int fd = standardInput
                       ? STDIN_FILENO
                       : ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) {
        error = SystemError(path);
        return std::nullopt;
    }
    const FileDescriptor closer(standardInput ? -1 : fd);
    if (::fstat(fd, &info) != 0) {
        error = SystemError(path);
        return std::nullopt;
    }
    if (!IsReadable(path, info, error)) {
        return std::nullopt;
    }
    const bool regular = S_ISREG(info.st_mode);
    // One byte past the limit tells an input of exactly the limit from a larger one.
    const std::size_t limit = regular ? SIZE_MAX : kStandardInputLimit + 1;

    FileBytes file;
    // One byte more than the size, so that a file that did not change ends with one read.
    std::size_t capacity = regular ? static_cast<std::size_t>(info.st_size) + 1 : kFirstReadBlock;
    std::size_t length = 0;
    file.readBuffer_.reset(static_cast<std::uint8_t*>(std::malloc(capacity)));
    if (!file.readBuffer_) {
        error = InputName(path) + ": " + std::strerror(ENOMEM);
        return std::nullopt;
    }
    detail::AdviseHugePages(file.readBuffer_.get(), capacity);
    for (;;) {
        if (length == capacity) {
            if (capacity >= limit) {
                break;
            }
            const std::size_t grownCapacity = std::min(capacity * 2, limit);
            void* grown = std::realloc(file.readBuffer_.get(), grownCapacity);
            if (grown == nullptr) {
                error = InputName(path) + ": " + std::strerror(ENOMEM);
                return std::nullopt;
            }
            static_cast<void>(file.readBuffer_.release());
            file.readBuffer_.reset(static_cast<std::uint8_t*>(grown));
            capacity = grownCapacity;
        }
        const ssize_t count = ::read(fd, file.readBuffer_.get() + length, capacity - length);
        if (count < 0) {
            if (errno == EINTR) {
                continue;
            }
            error = SystemError(path);
            return std::nullopt;
        }
        if (count == 0) {
            break;
        }
        length += static_cast<std::size_t>(count);
    }
    if (length > kStandardInputLimit && !regular) {
        error = InputName(path) + ": more than 1 GiB; give a file by name instead";
        return std::nullopt;
    }
    file.length_ = length;
    return file;
}

FileBytes::FileBytes(FileBytes&& other) noexcept
    : length_(std::exchange(other.length_, 0)), readBuffer_(std::move(other.readBuffer_)) {}

} // namespace korvel::conv
