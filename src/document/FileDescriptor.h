#pragma once

#include <cerrno>
#include <unistd.h>
#include <utility>

namespace korvel {

// An open file descriptor, closed when it goes; -1 holds nothing (standard input, say, which
// is not ours to close). Closing keeps errno, so a failure can be reported after clean-up.
class FileDescriptor {
public:
    explicit FileDescriptor(int fd) : fd_(fd) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() {
        if (fd_ >= 0) {
            const int saved = errno;
            ::close(fd_);
            errno = saved;
        }
    }
    int get() const { return fd_; }
    bool valid() const { return fd_ >= 0; }
    // Closing reports the last write error of some file systems (NFS), so it is checked.
    bool close() { return ::close(std::exchange(fd_, -1)) == 0; }

private:
    int fd_;
};

} // namespace korvel
