#include "document/FileTime.h"

#include <QFile>
#include <sys/stat.h>
#include <unistd.h>

namespace korvel {

std::optional<FileTime> ReadFileTime(const QString& path) {
    struct stat status {};
    const QByteArray name = QFile::encodeName(path);
    if (path.isEmpty() || ::stat(name.constData(), &status) != 0 || !S_ISREG(status.st_mode) ||
        ::access(name.constData(), R_OK) != 0)
        return std::nullopt;
    return FileTime(status.st_mtim.tv_sec) * 1'000'000'000 + status.st_mtim.tv_nsec;
}

} // namespace korvel
