#include "document/FileReplacement.h"

#include "document/FileDescriptor.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <new>
#include <optional>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace korvel {
namespace {

// Linux moves at most about 2 GiB per write(); asking for 1 GiB keeps every call whole.
constexpr std::size_t kLargestWrite = std::size_t{1} << 30;
constexpr std::size_t kCopyBlock = std::size_t{1} << 16;
// The kernel's own limit on links followed in one path.
constexpr int kMostLinksFollowed = 40;
// Short and fixed, so that a name at the file system's length limit can still be saved.
constexpr char kTemporaryPrefix[] = ".korvel-";
constexpr int kTemporaryNameTries = 100;

// The temporary file that exists right now, for the signal handler: it may read only what is
// fully written, so the flag is raised after the name and lowered before it changes.
std::array<char, 4096> g_pendingTemporary{};
std::atomic<bool> g_temporaryPending{false};
// While a file is rewritten in place, a signal that would end the process waits until the
// file is whole again, new or old.
std::atomic<bool> g_deferringSignals{false};
std::atomic<int> g_deferredSignal{0};
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

class SignalsDeferred {
public:
    SignalsDeferred() { g_deferringSignals.store(true); }
    SignalsDeferred(const SignalsDeferred&) = delete;
    SignalsDeferred& operator=(const SignalsDeferred&) = delete;
    ~SignalsDeferred() {
        g_deferringSignals.store(false);
        if (const int signal = g_deferredSignal.exchange(0); signal != 0) {
            ::raise(signal);
        }
    }
};

ReplaceOutcome SystemFailure(int error) {
    return {ReplaceFailure::System, error, {}};
}

std::string FolderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string("./") : path.substr(0, slash + 1);
}

std::optional<std::string> ReadLink(const std::string& path, int& error) {
    // Links of /proc report a size that is not their length, so the buffer grows until the
    // whole target fits.
    for (std::size_t size = 256;; size *= 2) {
        std::vector<char> target(size);
        const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
        if (length < 0) {
            error = errno;
            return std::nullopt;
        }
        if (static_cast<std::size_t>(length) < size) {
            return std::string(target.data(), static_cast<std::size_t>(length));
        }
    }
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
        const std::optional<std::string> next = ReadLink(path, error);
        if (!next) {
            return std::nullopt;
        }
        path = next->starts_with('/') ? *next : FolderOf(path) + *next;
    }
    error = ELOOP;
    return std::nullopt;
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

// Six letters that differ from call to call; a name that is taken is simply tried again.
std::string RandomLetters() {
    static constexpr char kLetters[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    static unsigned long long state = 0;
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    state = state * 6364136223846793005ULL + static_cast<unsigned long long>(now.tv_nsec) +
            static_cast<unsigned long long>(::getpid()) + 1442695040888963407ULL;
    std::string letters;
    for (unsigned long long bits = state >> 16; letters.size() < 6; bits /= sizeof kLetters - 1) {
        letters += kLetters[bits % (sizeof kLetters - 1)];
    }
    return letters;
}

// A new file with a free name beside target. One that is to replace an existing file starts
// private and gets its mode at the end; a new one gets the umask's mode from the kernel.
// pending: the name is made known to the signal handler before the file exists, so that no
// signal falls between the two; a name that turns out to be taken is withdrawn at once.
FileDescriptor CreateTemporary(const std::string& target, bool replacing, bool pending,
                               std::string& name) {
    for (int attempt = 0; attempt < kTemporaryNameTries; ++attempt) {
        name = FolderOf(target) + kTemporaryPrefix + RandomLetters();
        if (pending) {
            MarkTemporaryPending(name);
        }
        const int fd =
            ::open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, replacing ? 0600 : 0666);
        if (fd >= 0) {
            return FileDescriptor(fd);
        }
        const int error = errno;
        ClearTemporaryPending();
        if (error != EEXIST) {
            errno = error;
            return FileDescriptor(-1);
        }
    }
    errno = EEXIST;
    return FileDescriptor(-1);
}

// Extended attributes hold ACLs and the labels of security modules. Those the new file already
// has with the same value (a label given by its folder) are left alone; false when one could
// not be given.
bool CopyExtendedAttributes(const std::string& from, int to) noexcept try {
    ssize_t size = ::llistxattr(from.c_str(), nullptr, 0);
    if (size <= 0) {
        return size == 0 || errno == ENOTSUP;
    }
    std::vector<char> names(static_cast<std::size_t>(size));
    size = ::llistxattr(from.c_str(), names.data(), names.size());
    if (size < 0) {
        return false;
    }
    for (std::size_t at = 0; at < static_cast<std::size_t>(size);) {
        const char* name = names.data() + at;
        at += std::strlen(name) + 1;
        const ssize_t length = ::lgetxattr(from.c_str(), name, nullptr, 0);
        if (length < 0) {
            return false;
        }
        std::vector<char> value(static_cast<std::size_t>(length));
        std::vector<char> present(value.size());
        if (::lgetxattr(from.c_str(), name, value.data(), value.size()) != length) {
            return false;
        }
        if (::fgetxattr(to, name, present.data(), present.size()) == length && present == value) {
            continue;
        }
        if (::fsetxattr(to, name, value.data(), value.size(), 0) != 0) {
            return false;
        }
    }
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

enum class TemporaryResult { Replaced, Failed, KeepsTheOldFile };

// existing: the file being replaced, or null for a new one. KeepsTheOldFile: the new file
// could not be given the old one's owner, group or extended attributes.
TemporaryResult ReplaceThroughTemporary(const std::string& target, const struct stat* existing,
                                        ByteParts parts, int& error) {
    std::string name;
    FileDescriptor file = CreateTemporary(target, existing != nullptr, true, name);
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
            return discard(TemporaryResult::KeepsTheOldFile);
        }
        // After the owner: a change of owner clears the set-id bits.
        if (::fchmod(file.get(), existing->st_mode & 07777) != 0) {
            return discard(TemporaryResult::Failed);
        }
        if (!CopyExtendedAttributes(target, file.get())) {
            return discard(TemporaryResult::KeepsTheOldFile);
        }
    }
    if (!WriteAllBytes(file.get(), parts) || ::fsync(file.get()) != 0 || !file.close() ||
        ::rename(name.c_str(), target.c_str()) != 0) {
        return discard(TemporaryResult::Failed);
    }
    ClearTemporaryPending();

    // The rename itself is made durable by syncing the folder; the file is complete either way.
    const FileDescriptor folder(
        ::open(FolderOf(target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.valid()) {
        ::fsync(folder.get());
    }
    return TemporaryResult::Replaced;
}

// Copies every byte of from to the start of to, cuts to after them and syncs.
bool CopyWhole(int from, int to) {
    if (::lseek(from, 0, SEEK_SET) != 0 || ::lseek(to, 0, SEEK_SET) != 0) {
        return false;
    }
    std::array<std::uint8_t, kCopyBlock> block;
    off_t copied = 0;
    for (;;) {
        const ssize_t count = ::read(from, block.data(), block.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return false;
        }
        if (count == 0) {
            return ::ftruncate(to, copied) == 0 && ::fsync(to) == 0;
        }
        const std::span<const std::uint8_t> parts[] = {
            {block.data(), static_cast<std::size_t>(count)}};
        if (!WriteAllBytes(to, parts)) {
            return false;
        }
        copied += count;
    }
}

bool RewriteFrom(int fd, ByteParts parts, off_t size) {
    return ::lseek(fd, 0, SEEK_SET) == 0 && WriteAllBytes(fd, parts) &&
           ::ftruncate(fd, size) == 0 && ::fsync(fd) == 0;
}

// For a file whose owner, group, attributes or other hard links a new file could not keep. A
// copy of the old bytes is synced beside it first, so a failure, a crash or a copy-on-write
// file system that runs out of room part way never costs the old text; the copy goes once
// the file is whole again.
ReplaceOutcome RewriteInPlace(const std::string& target, ByteParts parts) {
    const SignalsDeferred deferred;
    const FileDescriptor file(::open(target.c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC));
    struct stat info {};
    if (!file.valid() || ::fstat(file.get(), &info) != 0) {
        return SystemFailure(errno);
    }
    if (!S_ISREG(info.st_mode)) {
        return {ReplaceFailure::NotRegularFile, 0, {}};
    }
    std::string copyName;
    // Signals wait here, so the copy needs no handler's care.
    const FileDescriptor copy = CreateTemporary(target, true, false, copyName);
    if (!copy.valid()) {
        return SystemFailure(errno);
    }
    if (!CopyWhole(file.get(), copy.get())) {
        const int error = errno;
        ::unlink(copyName.c_str());
        return SystemFailure(error);
    }

    std::size_t total = 0;
    for (const std::span<const std::uint8_t> part : parts) {
        total += part.size();
    }
    const auto newSize = static_cast<off_t>(total);
    // Room for the new bytes is taken before any old byte is overwritten, so a full disk or a
    // size limit usually stops the save while the file is untouched.
    if (newSize > info.st_size) {
        if (const int error = ::posix_fallocate(file.get(), info.st_size, newSize - info.st_size);
            error != 0) {
            ::ftruncate(file.get(), info.st_size);
            ::unlink(copyName.c_str());
            return SystemFailure(error);
        }
    }
    if (RewriteFrom(file.get(), parts, newSize)) {
        ::unlink(copyName.c_str());
        return {};
    }
    const int error = errno;
    if (CopyWhole(copy.get(), file.get())) {
        ::unlink(copyName.c_str());
        return SystemFailure(error);
    }
    return {ReplaceFailure::System, error, copyName};
}

void RemovePendingTemporaryAndEnd(int signal) {
    if (g_deferringSignals.load()) {
        g_deferredSignal.store(signal);
        return;
    }
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

ReplaceOutcome Replace(const std::string& path, ByteParts parts) {
    struct stat existing {};
    const bool exists = ::stat(path.c_str(), &existing) == 0;
    if (!exists && errno != ENOENT) {
        return SystemFailure(errno); // a link loop, a folder that cannot be searched, ...
    }
    if (exists && S_ISDIR(existing.st_mode)) {
        return {ReplaceFailure::Folder, 0, {}};
    }
    if (exists && !S_ISREG(existing.st_mode)) {
        return {ReplaceFailure::NotRegularFile, 0, {}};
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
    case TemporaryResult::KeepsTheOldFile:
        return RewriteInPlace(*target, parts);
    case TemporaryResult::Failed:
        break;
    }
    return SystemFailure(error);
}

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

ReplaceOutcome ReplaceFileContents(const std::string& path, ByteParts parts) noexcept {
    try {
        return Replace(path, parts);
    } catch (const std::bad_alloc&) {
        return SystemFailure(ENOMEM);
    }
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
