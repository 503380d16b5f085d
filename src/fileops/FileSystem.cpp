#include "fileops/FileSystem.h"

#include <QFile>
#include <QRandomGenerator>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace korvel::files {
namespace {

QByteArray Native(const QString& path) {
    return QFile::encodeName(path);
}

std::optional<struct stat> LinkStatus(const QString& path) {
    struct stat status {};
    if (::lstat(Native(path).constData(), &status) != 0) {
        return std::nullopt;
    }
    return status;
}

// What the path leads to, links followed: the identity of a folder however it is spelt.
std::optional<struct stat> TargetStatus(const QByteArray& path) {
    struct stat status {};
    if (::stat(path.constData(), &status) != 0) {
        return std::nullopt;
    }
    return status;
}

bool IsSameEntry(const struct stat& first, const struct stat& second) {
    return first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

class FileDescriptor {
public:
    explicit FileDescriptor(int fd) : fd_(fd) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() {
        if (fd_ >= 0) {
            ::close(fd_);
        }
    }
    int get() const { return fd_; }
    bool valid() const { return fd_ >= 0; }
    // Closing is where a full disk may finally show, so the written file checks the result.
    bool close() {
        const int fd = fd_;
        fd_ = -1;
        return ::close(fd) == 0;
    }

private:
    int fd_;
};

struct DirectoryCloser {
    void operator()(DIR* directory) const { ::closedir(directory); }
};

// A hidden name beside target: the list leaves it out, and a crash mid-copy leaves nothing that
// could be taken for the user's file.
QByteArray TemporaryNameBeside(const QString& target) {
    const QString folder = target.left(target.lastIndexOf(u'/') + 1);
    const quint64 tag = QRandomGenerator::global()->generate64();
    return Native(folder + QStringLiteral(".korvel-%1.tmp").arg(tag, 0, 36));
}

// Runs create(name) with fresh temporary names until one is free; returns the name it made.
template <typename Create>
std::optional<QByteArray> CreateBeside(const QString& target, Create create) {
    for (int attempt = 0; attempt < 16; ++attempt) {
        QByteArray name = TemporaryNameBeside(target);
        if (create(name)) {
            return name;
        }
        if (errno != EEXIST) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

bool WriteAll(int fd, const char* data, ssize_t size) {
    while (size > 0) {
        const ssize_t written = ::write(fd, data, static_cast<size_t>(size));
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        data += written;
        size -= written;
    }
    return true;
}

bool CopyContents(int in, int out) {
    std::array<char, 1 << 16> buffer;
    for (;;) {
        const ssize_t got = ::read(in, buffer.data(), buffer.size());
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            return false;
        }
        if (got == 0) {
            return true;
        }
        if (!WriteAll(out, buffer.data(), got)) {
            return false;
        }
    }
}

// Fills a new temporary file with the source's bytes, permissions and times. Returns its name.
std::optional<QByteArray> CopyRegularFile(const QString& source, const QString& target) {
    // Non-blocking so that a pipe that took the file's place cannot hang the copy.
    FileDescriptor in(
        ::open(Native(source).constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!in.valid() || ::fstat(in.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    int outFd = -1;
    std::optional<QByteArray> temporary = CreateBeside(target, [&](const QByteArray& name) {
        outFd = ::open(name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        return outFd >= 0;
    });
    if (!temporary) {
        return std::nullopt;
    }
    FileDescriptor out(outFd);
    const std::array<timespec, 2> times{status.st_atim, status.st_mtim};
    const bool written = CopyContents(in.get(), out.get()) &&
                         ::fchmod(out.get(), status.st_mode & 07777) == 0 &&
                         ::futimens(out.get(), times.data()) == 0 && ::fsync(out.get()) == 0;
    if (!out.close() || !written) {
        ::unlink(temporary->constData());
        return std::nullopt;
    }
    return temporary;
}

std::optional<QByteArray> CopyLink(const QString& source, const QString& target) {
    std::array<char, 4096> linkText{};
    const ssize_t length = ::readlink(Native(source).constData(), linkText.data(), linkText.size());
    if (length < 0 || static_cast<size_t>(length) >= linkText.size()) {
        return std::nullopt;
    }
    linkText[static_cast<size_t>(length)] = '\0';
    return CreateBeside(target, [&](const QByteArray& name) {
        return ::symlink(linkText.data(), name.constData()) == 0;
    });
}

} // namespace

EntryKind KindOf(const QString& path) {
    const std::optional<struct stat> status = LinkStatus(path);
    if (!status) {
        return EntryKind::Missing;
    }
    return S_ISDIR(status->st_mode) ? EntryKind::Folder : EntryKind::File;
}

bool LeadsToFolder(const QString& path) {
    const std::optional<struct stat> status = TargetStatus(Native(path));
    return status && S_ISDIR(status->st_mode);
}

bool IsReadOnly(const QString& path) {
    const std::optional<struct stat> status = LinkStatus(path);
    return status && !S_ISLNK(status->st_mode) && (status->st_mode & S_IWUSR) == 0;
}

bool IsPlainName(const QString& name) {
    return !name.isEmpty() && name != u"." && name != u".." && !name.contains(u'/');
}

QString AsFolderPath(const QString& path) {
    if (path.isEmpty()) {
        return path;
    }
    return WithoutTrailingSlash(path) + u'/';
}

QString WithoutTrailingSlash(const QString& path) {
    qsizetype end = path.size();
    while (end > 0 && path[end - 1] == u'/') {
        --end;
    }
    return path.left(end);
}

QString ParentFolderOf(const QString& path) {
    const QString entry = WithoutTrailingSlash(path);
    const qsizetype slash = entry.lastIndexOf(u'/');
    return slash > 0 ? entry.left(slash + 1) : QStringLiteral("/");
}

bool IsSameFolder(const QString& first, const QString& second) {
    const std::optional<struct stat> one = TargetStatus(Native(first));
    const std::optional<struct stat> other = TargetStatus(Native(second));
    return one && other && S_ISDIR(one->st_mode) && IsSameEntry(*one, *other);
}

bool IsWithin(const QString& path, const QString& folder) {
    const std::optional<struct stat> outer = TargetStatus(Native(folder));
    const std::unique_ptr<char, decltype(&std::free)> resolved(
        ::realpath(Native(path).constData(), nullptr), &std::free);
    if (!outer || !resolved) {
        return false;
    }
    QByteArray step(resolved.get());
    for (;;) {
        const std::optional<struct stat> status = TargetStatus(step);
        if (status && IsSameEntry(*status, *outer)) {
            return true;
        }
        if (step == "/") {
            return false;
        }
        const qsizetype slash = step.lastIndexOf('/');
        step.truncate(slash == 0 ? 1 : slash);
    }
}

std::optional<QStringList> ListFolder(const QString& folder) {
    const std::unique_ptr<DIR, DirectoryCloser> directory(::opendir(Native(folder).constData()));
    if (!directory) {
        return std::nullopt;
    }
    QStringList names;
    errno = 0;
    while (const dirent* entry = ::readdir(directory.get())) {
        const QByteArray name(entry->d_name);
        if (name != "." && name != "..") {
            names.append(QFile::decodeName(name));
        }
    }
    if (errno != 0) {
        return std::nullopt;
    }
    return names;
}

std::optional<Attributes> AttributesOf(const QString& path) {
    const std::optional<struct stat> status = LinkStatus(path);
    if (!status) {
        return std::nullopt;
    }
    return Attributes{static_cast<std::uint32_t>(status->st_mode & 07777)};
}

FileOpStatus SetAttributes(const QString& path, Attributes attributes) {
    return ::chmod(Native(path).constData(), attributes.mode) == 0 ? FileOpStatus::Done
                                                                   : FileOpStatus::Failed;
}

FileOpStatus ClearReadOnly(const QString& path) {
    const std::optional<struct stat> status = LinkStatus(path);
    if (!status) {
        return FileOpStatus::NotFound;
    }
    if (S_ISLNK(status->st_mode)) {
        return FileOpStatus::Done;
    }
    return SetAttributes(path, Attributes{(status->st_mode & 07777) | S_IWUSR});
}

FileOpStatus MakeFolder(const QString& path) {
    return ::mkdir(Native(path).constData(), 0777) == 0 ? FileOpStatus::Done : FileOpStatus::Failed;
}

FileOpStatus CopyFile(const QString& source, const QString& target) {
    const std::optional<struct stat> status = LinkStatus(source);
    if (!status) {
        return FileOpStatus::NotFound;
    }
    const std::optional<QByteArray> temporary =
        S_ISLNK(status->st_mode) ? CopyLink(source, target) : CopyRegularFile(source, target);
    if (!temporary) {
        return FileOpStatus::Failed;
    }
    if (::rename(temporary->constData(), Native(target).constData()) != 0) {
        ::unlink(temporary->constData());
        return FileOpStatus::Failed;
    }
    return FileOpStatus::Done;
}

FileOpStatus MoveFile(const QString& source, const QString& target) {
    if (::rename(Native(source).constData(), Native(target).constData()) == 0) {
        return FileOpStatus::Done;
    }
    if (errno != EXDEV) {
        return FileOpStatus::Failed;
    }
    const FileOpStatus copied = CopyFile(source, target);
    return copied == FileOpStatus::Done ? DeleteFile(source) : copied;
}

RenameResult RenameEntry(const QString& source, const QString& target) {
    const QByteArray from = Native(source);
    const QByteArray to = Native(target);
    int result =
        ::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE);
    // Some file systems cannot promise not to replace; then the check is ours, just before.
    if (result != 0 && errno == EINVAL && !Exists(target)) {
        result = ::rename(from.constData(), to.constData());
    }
    if (result == 0) {
        return RenameResult::Done;
    }
    return errno == EXDEV ? RenameResult::OtherFileSystem : RenameResult::Failed;
}

FileOpStatus DeleteFile(const QString& path) {
    return ::unlink(Native(path).constData()) == 0 ? FileOpStatus::Done : FileOpStatus::Failed;
}

FileOpStatus RemoveFolder(const QString& path) {
    return ::rmdir(Native(path).constData()) == 0 ? FileOpStatus::Done : FileOpStatus::Failed;
}

} // namespace korvel::files
