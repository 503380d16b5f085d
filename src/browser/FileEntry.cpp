#include "browser/FileEntry.h"

#include <QFile>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace korvel {
namespace {

FileEntry EntryFromStat(const struct stat& status, QString name) {
    FileEntry entry;
    if (S_ISDIR(status.st_mode))
        entry.attributes |= kAttributeFolder;
    if (S_ISLNK(status.st_mode))
        entry.attributes |= kAttributeLink;
    else if ((status.st_mode & S_IWUSR) == 0)
        entry.attributes |= kAttributeReadOnly;
    entry.lastWrite = FileTime(status.st_mtim.tv_sec) * 1'000'000'000 + status.st_mtim.tv_nsec;
    const auto size = std::uint64_t(status.st_size);
    entry.sizeHigh = std::uint32_t(size >> 32);
    entry.sizeLow = std::uint32_t(size);
    entry.name = std::move(name);
    return entry;
}

} // namespace

FileEntry ParentEntry() {
    FileEntry entry;
    entry.attributes = kAttributeFolder;
    entry.name = QStringLiteral("..");
    return entry;
}

// readdir and fstatat on the open folder: a folder of ten thousand files is listed without
// building a path string per entry.
std::vector<FileEntry> ReadFolder(const QString& folder) {
    std::vector<FileEntry> entries;
    DIR* dir = opendir(QFile::encodeName(folder).constData());
    if (dir == nullptr)
        return entries;
    const int dirFd = dirfd(dir);
    while (const dirent* item = readdir(dir)) {
        if (item->d_name[0] == '.')
            continue;
        struct stat status;
        if (fstatat(dirFd, item->d_name, &status, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        entries.push_back(EntryFromStat(status, QFile::decodeName(item->d_name)));
    }
    closedir(dir);
    return entries;
}

std::optional<FileEntry> ReadEntry(const QString& path) {
    struct stat status;
    const QByteArray encoded = QFile::encodeName(path);
    if (lstat(encoded.constData(), &status) != 0)
        return std::nullopt;
    const qsizetype slash = path.lastIndexOf(u'/');
    return EntryFromStat(status, slash >= 0 ? path.sliced(slash + 1) : path);
}

} // namespace korvel
