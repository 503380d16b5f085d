#include "fileops/FileClipboard.h"

#include "fileops/FileOpPrompt.h"
#include "fileops/FileSystem.h"
#include "fileops/Transfer.h"

#include <optional>

namespace korvel {

using files::EntryKind;
using Status = FileOpStatus;
namespace msg = fileops_message;

namespace {

// Counters stop below this, as the names would otherwise grow without end.
constexpr int kNameCounterLimit = 4096;

// The first free name for a copy of item beside it: "コピー ～ a.txt", then "コピー(2) ～ a.txt",
// "コピー(3) ～ a.txt", ...; none once the counter reaches the limit.
std::optional<QString> CopyName(const QString& folder, const QString& item) {
    QString name = QStringLiteral("コピー ～ %1").arg(item);
    for (int counter = 2; files::Exists(folder + name); ++counter) {
        if (counter == kNameCounterLimit) {
            return std::nullopt;
        }
        name = QStringLiteral("コピー(%1) ～ %2").arg(counter).arg(item);
    }
    return name;
}

} // namespace

void FileClipboard::copy(const QString& folder, const QStringList& names) {
    remember(false, folder, names);
}

void FileClipboard::cut(const QString& folder, const QStringList& names) {
    remember(true, folder, names);
}

void FileClipboard::remember(bool cut, const QString& folder, const QStringList& names) {
    cut_ = cut;
    sourceFolder_ = files::AsFolderPath(folder);
    items_.clear();
    for (const QString& name : names) {
        if (files::IsPlainName(name)) {
            items_.append(name);
        }
    }
}

Status FileClipboard::paste(const QString& destination, bool interactive, QWidget* parent) {
    pasted_.clear();
    if (!destination.startsWith(u'/') || !sourceFolder_.startsWith(u'/')) {
        return Status::BadArgument;
    }
    if (!files::Exists(destination)) {
        return Status::NotFound;
    }
    if (!files::LeadsToFolder(destination)) {
        return Status::NotAFolder;
    }
    const QString folder = files::AsFolderPath(destination);
    const FileOpPrompt prompt(interactive, parent);
    // The same folder however it is spelt (through a link, or in another letter case on a
    // case-insensitive volume), so that the originals are never pasted onto themselves.
    const bool sameFolder = files::IsSameFolder(folder, sourceFolder_);
    if (!sameFolder && liesInRememberedFolder(folder)) {
        prompt.tell(msg::kSubfolderRefused);
        return Status::BadArgument;
    }
    if (sameFolder && cut_) {
        return Status::Done;
    }
    const Transfer transfer(cut_ ? TransferMode::Move : TransferMode::Copy, prompt);
    bool skipped = false;
    for (const QString& item : std::as_const(items_)) {
        const Status status = pasteItem(transfer, prompt, item, folder, sameFolder);
        if (status == Status::Cancelled || (status != Status::Done && !interactive)) {
            return status;
        }
        skipped = skipped || status != Status::Done;
    }
    if (!skipped) {
        return Status::Done;
    }
    prompt.tell(msg::kSomeSkipped);
    return Status::Skipped;
}

Status FileClipboard::pasteItem(const Transfer& transfer, const FileOpPrompt& prompt,
                                const QString& item, const QString& folder, bool sameFolder) {
    const QString source = sourceFolder_ + item;
    const EntryKind kind = files::KindOf(source);
    if (kind == EntryKind::Missing) {
        return prompt.report(msg::kSourceVanished, {source}, Status::NotFound,
                             MessageIcon::Question);
    }
    const std::optional<QString> name = sameFolder ? CopyName(folder, item) : item;
    if (!name) {
        return prompt.report(msg::kCopyNameLimit, {source}, Status::NameLimit);
    }
    const QString target = folder + *name;
    if (kind == EntryKind::File) {
        const Status status = transfer.transferFile(source, target);
        if (status == Status::Done) {
            pasted_.append(*name);
        }
        return status;
    }
    if (const Status conflict = transfer.checkConflict(target, EntryKind::Folder);
        conflict != Status::Done) {
        return conflict;
    }
    const Status status = transfer.transferTree(source, target);
    // A folder that a failure left partly filled is still the user's to look at.
    if (status == Status::Done || files::IsFolder(target)) {
        pasted_.append(*name);
    }
    return status;
}

bool FileClipboard::liesInRememberedFolder(const QString& folder) const {
    for (const QString& item : items_) {
        const QString source = sourceFolder_ + item;
        if (files::IsFolder(source) && files::IsWithin(folder, source)) {
            return true;
        }
    }
    return false;
}

} // namespace korvel
