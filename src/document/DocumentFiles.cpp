#include "document/DocumentFiles.h"

#include "document/DocumentBytes.h"
#include "document/FileReplacement.h"
#include "messages/MessageService.h"

#include <QFile>
#include <QFileInfo>
#include <cstdint>
#include <new>
#include <span>
#include <sys/stat.h>

namespace korvel {

namespace {

constexpr int kOpenFailed = 33000;
constexpr int kTargetIsFolder = 33001;
constexpr int kTargetIsReadOnly = 33002;
constexpr int kNoAccess = 33003;
constexpr int kOutOfMemory = 40000;
constexpr int kReadOnlyNotCleared = 40001;
constexpr int kConversionFailed = 40019;

void ShowStop(int id, QWidget* parent, const QString& path = {}, bool topmost = false) {
    ShowMessage({.id = id,
                 .arguments = path.isEmpty() ? QStringList() : QStringList{path},
                 .icon = MessageIcon::Stop,
                 .topmost = topmost,
                 .parent = parent});
}

int ConversionFailureId(CodecStatus status) {
    return status == CodecOutOfMemory ? kOutOfMemory : kConversionFailed;
}

// The path's mode bits, links followed.
std::optional<mode_t> ModeOf(const QString& path) {
    struct stat status;
    if (::stat(QFile::encodeName(path).constData(), &status) != 0) {
        return std::nullopt;
    }
    return status.st_mode;
}

// Read-only here is the owner's missing write permission; clearing it keeps every other bit.
bool AddOwnerWrite(const QString& path, mode_t mode) {
    return ::chmod(QFile::encodeName(path).constData(), (mode & 07777) | S_IWUSR) == 0;
}

ReplaceOutcome WriteWholeFile(const QString& path, const EncodedDocument& encoded) {
    const std::span<const std::uint8_t> parts[] = {encoded.mark, encoded.body};
    return ReplaceFileContents(QFile::encodeName(path).toStdString(), parts);
}

// After a failed rewrite in place that could not be undone, where the old text still is.
void ShowKeptCopy(const std::string& copy, QWidget* parent) {
    ShowMessage(
        {.text = QStringLiteral("元のファイルの内容は、下記ファイルに残してあります。\n\n%s"),
         .arguments = {QFile::decodeName(QByteArray::fromStdString(copy))},
         .icon = MessageIcon::Stop,
         .parent = parent});
}

} // namespace

PathKind ExaminePath(const QString& path) {
    const QFileInfo info(path);
    if (!info.exists()) {
        return PathKind::Missing;
    }
    return info.isDir() ? PathKind::Folder : PathKind::File;
}

std::optional<LoadedDocument> LoadDocumentFile(const QString& path, TextEncoding requested,
                                               QWidget* parent) {
    // Only a regular file has an end that its size tells: a pipe would hang the open, a device
    // the read. Linux has no share modes, so a file held open elsewhere reads like any other.
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        ShowStop(kOpenFailed, parent, path, true);
        return std::nullopt;
    }
    LoadedDocument loaded;
    try {
        // One read of the reported size; files of /proc report 0 and are read to their end.
        loaded.fileBytes = file.readAll();
    } catch (const std::bad_alloc&) {
        ShowStop(kOutOfMemory, parent);
        return std::nullopt;
    }
    if (file.error() != QFileDevice::NoError) {
        ShowStop(kNoAccess, parent, path, true);
        return std::nullopt;
    }
    file.close();

    const std::span<const std::uint8_t> bytes(
        reinterpret_cast<const std::uint8_t*>(loaded.fileBytes.constData()),
        static_cast<std::size_t>(loaded.fileBytes.size()));
    DecodedDocument decoded = DecodeDocumentBytes(bytes, requested);
    if (decoded.status != CodecOk) {
        ShowStop(ConversionFailureId(decoded.status), parent);
        return std::nullopt;
    }
    loaded.encoding = decoded.encoding;
    loaded.lineEnding = decoded.lineEnding;
    loaded.text = decoded.text;
    loaded.storage = std::move(decoded.storage);
    return loaded;
}

bool SaveDocumentFile(const QString& path, std::u16string_view text, TextEncoding encoding,
                      LineEnding lineEnding, int jisKatakanaMode, QWidget* parent) {
    std::optional<mode_t> mode = ModeOf(path);
    if (mode && S_ISDIR(*mode)) {
        ShowStop(kTargetIsFolder, parent, path);
        return false;
    }
    // Replacing a pipe or a device with a regular file would break whatever relies on it.
    if (mode && !S_ISREG(*mode)) {
        ShowStop(kNoAccess, parent, path);
        return false;
    }
    bool madeWritable = false;
    if (mode && (*mode & S_IWUSR) == 0) {
        const MessageAnswer answer = ShowMessage({.id = kTargetIsReadOnly,
                                                  .arguments = {path},
                                                  .buttons = MessageButtons::YesNo,
                                                  .icon = MessageIcon::Question,
                                                  .parent = parent});
        if (answer != MessageAnswer::Yes) {
            return false;
        }
        if (!AddOwnerWrite(path, *mode)) {
            ShowStop(kReadOnlyNotCleared, parent);
            return false;
        }
        madeWritable = true;
    }
    // A save that does not happen leaves a read-only file read-only.
    const auto fail = [&](int id, const QString& shownPath) {
        if (madeWritable) {
            ::chmod(QFile::encodeName(path).constData(), *mode & 07777);
        }
        ShowStop(id, parent, shownPath);
        return false;
    };

    const EncodedDocument encoded = EncodeDocumentText(text, encoding, lineEnding, jisKatakanaMode);
    if (encoded.status != CodecOk) {
        return fail(ConversionFailureId(encoded.status), {});
    }
    const ReplaceOutcome outcome = WriteWholeFile(path, encoded);
    if (!outcome.succeeded()) {
        fail(kNoAccess, path);
        if (!outcome.keptCopy.empty()) {
            ShowKeptCopy(outcome.keptCopy, parent);
        }
        return false;
    }
    return true;
}

} // namespace korvel
