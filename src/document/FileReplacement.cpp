#include "document/FileReplacement.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <random>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace korvel {
namespace {

// Linux moves at most about 2 GiB per write(); asking for 1 GiB keeps every call whole.
constexpr std::size_t kLargestWrite = std::size_t{1} << 30;
// The kernel's own limit on links followed in one path.
constexpr int kMostLinksFollowed = 40;
// Short and fixed, so that a name at the file system's length limit can still be saved.
constexpr char kTemporaryPrefix[] = ".korvel-";
constexpr int kTemporaryNameTries = 100;

// The temporary file that exists right now, for the signal handler: it may read only what is
// fully written, so the flag is raised after the name and lowered before it changes.
std::array<char, 4096> g_pendingTemporary{};
std::atomic<bool> g_temporaryPending{false};
static_assert(std::atomic<bool>::is_always_lock_free);

class Descriptor {
public:
    explicit Descriptor(int fd) : fd_(fd) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
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

ReplaceOutcome SystemFailure(int error) {
    return {ReplaceFailure::System, error};
}

std::string FolderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string("./") : path.substr(0, slash + 1);
}

// The name that is to hold the bytes: links followed one by one, so that a dangling link leads
// to the name it points at. A loop fails with ELOOP.
std::optional<std::string> FinalName(std::string path, int& error) {
    for (int followed = 0; followed <= kMostLinksFollowed; ++followed) {
        struct stat info {};
        if (::lstat(path.c_str(), &info) != 0) {
            if (errno == ENOENT) {
                return path; // a new file; a missing folder is reported when it is created
            }
            error = errno;
            return std::nullopt;
        }
        if (!S_ISLNK(info.st_mode)) {
            return path;
        }
        std::vector<char> target(static_cast<std::size_t>(std::max<off_t>(info.st_size, 255)) + 1);
        const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
        if (length < 0 || static_cast<std::size_t>(length) >= target.size()) {
            error = length < 0 ? errno : ENAMETOOLONG;
            return std::nullopt;
        }
        std::string next(target.data(), static_cast<std::size_t>(length));
        path = next.starts_with('/') ? next : FolderOf(path) + next;
    }
    error = ELOOP;
    return std::nullopt;
}

std::size_t TotalSize(ByteParts parts) {
    std::size_t total = 0;
    for (const std::span<const std::uint8_t> part : parts) {
        total += part.size();
    }
    return total;
}

void MarkTemporaryPending(const std::string& name) {
    if (name.size() >= g_pendingTemporary.size()) {
        return; // too long to keep for the handler; the file is still removed on every error
    }
    std::memcpy(g_pendingTemporary.data(), name.c_str(), name.size() + 1);
    g_temporaryPending.store(true);
}

void ClearTemporaryPending() {
    g_temporaryPending.store(false);
}

// A new file with a free name beside target. A file that replaces an existing one starts
// private and gets its mode at the end; a new one gets the umask's mode from the kernel.
Descriptor CreateTemporary(const std::string& target, bool replacing, std::string& name) {
    static constexpr char kLetters[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    std::random_device random;
    std::uniform_int_distribution<std::size_t> pick(0, sizeof kLetters - 2);
    for (int attempt = 0; attempt < kTemporaryNameTries; ++attempt) {
        name = FolderOf(target) + kTemporaryPrefix;
        for (int i = 0; i < 6; ++i) {
            name += kLetters[pick(random)];
        }
        const int fd =
            ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, replacing ? 0600 : 0666);
        if (fd >= 0) {
            MarkTemporaryPending(name);
            return Descriptor(fd);
        }
        if (errno != EEXIST) {
            return Descriptor(-1);
        }
    }
    errno = EEXIST;
    return Descriptor(-1);
}

enum class TemporaryResult { Replaced, Failed, OwnerNotGiven };

// existing: the file being replaced, or null for a new one.
TemporaryResult ReplaceThroughTemporary(const std::string& target, const struct stat* existing,
                                        ByteParts parts, int& error) {
    std::string name;
    Descriptor file = CreateTemporary(target, existing != nullptr, name);
    if (!file.valid()) {
        error = errno;
        return TemporaryResult::Failed;
    }
    const auto discard = [&](TemporaryResult result) {
        error = errno;
        file.close();
        ::unlink(name.c_str());
        ClearTemporaryPending();
        return result;
    };

    if (existing != nullptr) {
        struct stat made {};
        if (::fstat(file.get(), &made) != 0) {
            return discard(TemporaryResult::Failed);
        }
        if ((made.st_uid != existing->st_uid || made.st_gid != existing->st_gid) &&
            ::fchown(file.get(), existing->st_uid, existing->st_gid) != 0) {
            return discard(TemporaryResult::OwnerNotGiven);
        }
        // After the owner: a change of owner clears the set-id bits.
        if (::fchmod(file.get(), existing->st_mode & 07777) != 0) {
            return discard(TemporaryResult::Failed);
        }
    }
    if (!WriteAllBytes(file.get(), parts) || ::fsync(file.get()) != 0 || !file.close() ||
        ::rename(name.c_str(), target.c_str()) != 0) {
        return discard(TemporaryResult::Failed);
    }
    ClearTemporaryPending();

    // The rename itself is made durable by syncing the folder; the file is complete either way.
    const Descriptor folder(::open(FolderOf(target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.valid()) {
        ::fsync(folder.get());
    }
    return TemporaryResult::Replaced;
}

bool ReadAll(int fd, std::vector<std::uint8_t>& bytes, std::size_t sizeHint) {
    bytes.resize(sizeHint + 1);
    std::size_t length = 0;
    for (;;) {
        if (length == bytes.size()) {
            bytes.resize(bytes.size() * 2);
        }
        const ssize_t count = ::read(fd, bytes.data() + length, bytes.size() - length);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return false;
        }
        if (count == 0) {
            bytes.resize(length);
            return true;
        }
        length += static_cast<std::size_t>(count);
    }
}

bool RewriteFrom(int fd, ByteParts parts) {
    return ::lseek(fd, 0, SEEK_SET) == 0 && WriteAllBytes(fd, parts) &&
           ::ftruncate(fd, static_cast<off_t>(TotalSize(parts))) == 0 && ::fsync(fd) == 0;
}

// For a file whose owner, group or other hard links a new file could not keep. The old bytes
// are held in memory and the room for the new ones is reserved before any old byte is
// overwritten, so a full disk or a size limit stops the save while the file is still whole.
ReplaceOutcome RewriteInPlace(const std::string& target, ByteParts parts) {
    const Descriptor file(::open(target.c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC));
    struct stat info {};
    if (!file.valid() || ::fstat(file.get(), &info) != 0) {
        return SystemFailure(errno);
    }
    if (!S_ISREG(info.st_mode)) {
        return {ReplaceFailure::NotRegularFile, 0};
    }
    std::vector<std::uint8_t> old;
    if (!ReadAll(file.get(), old, static_cast<std::size_t>(info.st_size))) {
        return SystemFailure(errno);
    }
    const std::size_t newSize = TotalSize(parts);
    if (newSize > old.size()) {
        const int error = ::posix_fallocate(file.get(), static_cast<off_t>(old.size()),
                                            static_cast<off_t>(newSize - old.size()));
        if (error != 0) {
            ::ftruncate(file.get(), static_cast<off_t>(old.size()));
            return SystemFailure(error);
        }
    }
    if (RewriteFrom(file.get(), parts)) {
        return {};
    }
    const int error = errno;
    // The old bytes fit in the blocks they came from, so putting them back needs no new room.
    const std::span<const std::uint8_t> oldParts[] = {old};
    RewriteFrom(file.get(), oldParts);
    return SystemFailure(error);
}

void RemovePendingTemporaryAndEnd(int signal) {
    if (g_temporaryPending.load()) {
        ::unlink(g_pendingTemporary.data());
    }
    struct sigaction standard {};
    standard.sa_handler = SIG_DFL;
    ::sigaction(signal, &standard, nullptr);
    ::raise(signal); // delivered once the handler returns, with the default action
}

// Returning from the handler makes the write that went past the limit fail with EFBIG. A
// handler, unlike SIG_IGN, is not passed on to the programs this process starts.
void NoteFileSizeLimit(int) {}

} // namespace

bool WriteAllBytes(int fd, ByteParts parts) {
    for (std::span<const std::uint8_t> part : parts) {
        while (!part.empty()) {
            const ssize_t count = ::write(fd, part.data(), std::min(part.size(), kLargestWrite));
            if (count < 0 && errno == EINTR) {
                continue;
            }
            if (count <= 0) {
                if (count == 0) {
                    errno = EIO;
                }
                return false;
            }
            part = part.subspan(static_cast<std::size_t>(count));
        }
    }
    return true;
}

ReplaceOutcome ReplaceFileContents(const std::string& path, ByteParts parts) {
    struct stat existing {};
    const bool exists = ::stat(path.c_str(), &existing) == 0;
    if (!exists && errno != ENOENT) {
        return SystemFailure(errno); // a link loop, a folder that cannot be searched, ...
    }
    if (exists && S_ISDIR(existing.st_mode)) {
        return {ReplaceFailure::Folder, 0};
    }
    if (exists && !S_ISREG(existing.st_mode)) {
        return {ReplaceFailure::NotRegularFile, 0};
    }
    int error = 0;
    const std::optional<std::string> target = FinalName(path, error);
    if (!target) {
        return SystemFailure(error);
    }
    // A new file in place of one with other hard links would part it from them.
    if (exists && existing.st_nlink > 1) {
        return RewriteInPlace(*target, parts);
    }
    switch (ReplaceThroughTemporary(*target, exists ? &existing : nullptr, parts, error)) {
    case TemporaryResult::Replaced:
        return {};
    case TemporaryResult::OwnerNotGiven:
        return RewriteInPlace(*target, parts);
    case TemporaryResult::Failed:
        break;
    }
    return SystemFailure(error);
}

void ProtectFileReplacementFromSignals() {
    struct sigaction limit {};
    limit.sa_handler = NoteFileSizeLimit;
    ::sigaction(SIGXFSZ, &limit, nullptr);

    struct sigaction cleanUp {};
    cleanUp.sa_handler = RemovePendingTemporaryAndEnd;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        // A signal the caller chose to ignore (nohup, a background job) stays ignored.
        struct sigaction current {};
        if (::sigaction(signal, nullptr, &current) == 0 && current.sa_handler == SIG_DFL) {
            ::sigaction(signal, &cleanUp, nullptr);
        }
    }
}

} // namespace korvel
