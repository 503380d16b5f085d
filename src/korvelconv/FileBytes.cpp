#include "korvelconv/FileBytes.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
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

class FileDescriptor {
public:
    // Standard input is passed as -1: it is not ours to close.
    explicit FileDescriptor(int fd) : fd_(fd) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() {
        if (fd_ >= 0) {
            ::close(fd_);
        }
    }

private:
    int fd_;
};

} // namespace

std::optional<FileBytes> FileBytes::Read(const std::string& path, std::string& error) {
    const int fd = path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        error = SystemError(path);
        return std::nullopt;
    }
    const FileDescriptor closer(path == "-" ? -1 : fd);

    struct stat info {};
    if (::fstat(fd, &info) != 0) {
        error = SystemError(path);
        return std::nullopt;
    }
    if (S_ISDIR(info.st_mode)) {
        error = InputName(path) + ": is a folder, not a text file";
        return std::nullopt;
    }

    FileBytes file;
    const bool regular = S_ISREG(info.st_mode);
    if (regular && info.st_size > 0) {
        const auto size = static_cast<std::size_t>(info.st_size);
        // Detection and conversion sweep the whole file several times, so fault it in at once.
        void* mapping = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, fd, 0);
        if (mapping != MAP_FAILED) {
            file.data_ = static_cast<const std::uint8_t*>(mapping);
            file.length_ = size;
            file.mapped_ = true;
            return file;
        }
        // Some file systems cannot map; reading still works there.
    }

    std::size_t capacity =
        regular ? static_cast<std::size_t>(info.st_size) + kFirstReadBlock : kFirstReadBlock;
    std::size_t length = 0;
    file.readBuffer_.reset(static_cast<std::uint8_t*>(std::malloc(capacity)));
    if (!file.readBuffer_) {
        error = InputName(path) + ": " + std::strerror(ENOMEM);
        return std::nullopt;
    }
    for (;;) {
        if (length == capacity) {
            void* grown = std::realloc(file.readBuffer_.get(), capacity * 2);
            if (grown == nullptr) {
                error = InputName(path) + ": " + std::strerror(ENOMEM);
                return std::nullopt;
            }
            static_cast<void>(file.readBuffer_.release());
            file.readBuffer_.reset(static_cast<std::uint8_t*>(grown));
            capacity *= 2;
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
    file.data_ = file.readBuffer_.get();
    file.length_ = length;
    return file;
}

FileBytes::FileBytes(FileBytes&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)), length_(std::exchange(other.length_, 0)),
      mapped_(std::exchange(other.mapped_, false)), readBuffer_(std::move(other.readBuffer_)) {}

FileBytes::~FileBytes() {
    if (mapped_) {
        ::munmap(const_cast<std::uint8_t*>(data_), length_);
    }
}

} // namespace korvel::conv
