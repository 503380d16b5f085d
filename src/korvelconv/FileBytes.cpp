#include "korvelconv/FileBytes.h"

#include "codec/OutputBlock.h"
#include "document/FileDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
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

struct FreeBlock {
    void operator()(std::uint8_t* block) const { std::free(block); }
};

// The state of the one BusErrorGuard alive, set before its handler is installed.
std::uintptr_t guardedBegin = 0;
std::uintptr_t guardedEnd = 0; // page-aligned, as the mapping's end
std::uintptr_t pageMask = 0;
volatile std::sig_atomic_t lostPages = 0;
struct sigaction previousBusAction {};

// A file cut short under its mapping loses the pages past its new end. A fault on one of them
// maps zero pages from there to the mapping's end, and the load that faulted reads a zero when
// the handler returns; the pass goes on to its end, and its result is thrown away. (mmap is no
// async-signal-safe function by the letter, but on Linux it is the bare system call.)
void ReplaceLostPages(int, siginfo_t* info, void*) {
    const int interruptedErrno = errno;
    const auto address = reinterpret_cast<std::uintptr_t>(info->si_addr);
    if (address >= guardedBegin && address < guardedEnd) {
        const std::uintptr_t page = address & pageMask;
        void* zeros = ::mmap(reinterpret_cast<void*>(page), guardedEnd - page, PROT_READ,
                             MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0);
        errno = interruptedErrno;
        if (zeros != MAP_FAILED) {
            lostPages = 1;
            return;
        }
    }
    // A fault of the program's own: the previous action takes it when the load faults again.
    ::sigaction(SIGBUS, &previousBusAction, nullptr);
}

} // namespace

std::optional<FileBytes> FileBytes::Read(const std::string& path, std::string& error) {
    return Open(path, false, error);
}

std::optional<FileBytes> FileBytes::Map(const std::string& path, std::string& error) {
    return Open(path, true, error);
}

std::optional<FileBytes> FileBytes::Open(const std::string& path, bool mayMap, std::string& error) {
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
    FileBytes file;
    if (mayMap && regular && !standardInput && info.st_size > 0) {
        // The pages already in the page cache are mapped at once, instead of one fault per 16.
        void* mapping = ::mmap(nullptr, static_cast<std::size_t>(info.st_size), PROT_READ,
                               MAP_PRIVATE | MAP_POPULATE, fd, 0);
        if (mapping != MAP_FAILED) {
            file.data_ = static_cast<const std::uint8_t*>(mapping);
            file.length_ = static_cast<std::size_t>(info.st_size);
            file.mapped_ = true;
            return file;
        }
        // A file system that cannot map the file can still read it.
    }
    // One byte past the limit tells an input of exactly the limit from a larger one.
    const std::size_t limit = regular ? SIZE_MAX : kStandardInputLimit + 1;

    // One byte more than the size, so that a file that did not change ends with one read.
    std::size_t capacity = regular ? static_cast<std::size_t>(info.st_size) + 1 : kFirstReadBlock;
    std::size_t length = 0;
    std::unique_ptr<std::uint8_t, FreeBlock> buffer(
        static_cast<std::uint8_t*>(std::malloc(capacity)));
    if (!buffer) {
        error = InputName(path) + ": " + std::strerror(ENOMEM);
        return std::nullopt;
    }
    detail::AdviseHugePages(buffer.get(), capacity);
    for (;;) {
        if (length == capacity) {
            if (capacity >= limit) {
                break;
            }
            const std::size_t grownCapacity = std::min(capacity * 2, limit);
            void* grown = std::realloc(buffer.get(), grownCapacity);
            if (grown == nullptr) {
                error = InputName(path) + ": " + std::strerror(ENOMEM);
                return std::nullopt;
            }
            static_cast<void>(buffer.release());
            buffer.reset(static_cast<std::uint8_t*>(grown));
            capacity = grownCapacity;
        }
        const ssize_t count = ::read(fd, buffer.get() + length, capacity - length);
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
    file.data_ = buffer.release();
    file.length_ = length;
    return file;
}

FileBytes::FileBytes(FileBytes&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)), length_(std::exchange(other.length_, 0)),
      mapped_(std::exchange(other.mapped_, false)) {}

FileBytes& FileBytes::operator=(FileBytes&& other) noexcept {
    if (this != &other) {
        FileBytes old(std::move(*this));
        data_ = std::exchange(other.data_, nullptr);
        length_ = std::exchange(other.length_, 0);
        mapped_ = std::exchange(other.mapped_, false);
    }
    return *this;
}

FileBytes::~FileBytes() {
    if (mapped_) {
        // The whole range goes, zero pages that stand in for lost ones included.
        ::munmap(const_cast<std::uint8_t*>(data_), length_);
    } else {
        std::free(const_cast<std::uint8_t*>(data_));
    }
}

FileBytes::BusErrorGuard::BusErrorGuard(const std::uint8_t* data, std::size_t length) {
    const auto pageSize = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    pageMask = ~(pageSize - 1);
    guardedBegin = reinterpret_cast<std::uintptr_t>(data);
    guardedEnd = (guardedBegin + length + pageSize - 1) & pageMask;
    lostPages = 0;
    struct sigaction action {};
    action.sa_sigaction = ReplaceLostPages;
    action.sa_flags = SA_SIGINFO;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGBUS, &action, &previousBusAction);
}

FileBytes::BusErrorGuard::~BusErrorGuard() {
    ::sigaction(SIGBUS, &previousBusAction, nullptr);
    guardedBegin = guardedEnd = 0;
}

bool FileBytes::BusErrorGuard::Intact() const {
    return lostPages == 0;
}

} // namespace korvel::conv
