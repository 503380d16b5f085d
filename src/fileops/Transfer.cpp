#include "fileops/Transfer.h"

namespace korvel {

using files::EntryKind;
using Status = FileOpStatus;
namespace msg = fileops_message;

namespace {

Status CheckTreeArguments(const QString& source, const QString& target) {
    if (source.isEmpty() || target.isEmpty()) {
        return Status::BadArgument;
    }
    switch (files::KindOf(source)) {
    case EntryKind::Missing:
        return Status::NotFound;
    case EntryKind::File:
        return Status::NotAFolder;
    case EntryKind::Folder:
        break;
    }
    return Status::Done;
}

} // namespace

Status Transfer::checkConflict(const QString& target, EntryKind incoming) const {
    if (target.isEmpty()) {
        return Status::BadArgument;
    }
    const EntryKind existing = files::KindOf(target);
    if (existing == EntryKind::Missing) {
        return Status::Done;
    }
    if (incoming == EntryKind::File && existing == EntryKind::Folder) {
        return prompt_.report(msg::kFolderBlocksFile, {target}, Status::FolderInTheWay);
    }
    if (incoming == EntryKind::Folder && existing == EntryKind::File) {
        return prompt_.report(msg::kFileBlocksFolder, {target}, Status::NotAFolder);
    }
    if (files::IsReadOnly(target)) {
        if (!prompt_.interactive()) {
            return Status::ReadOnly;
        }
        const Status answer =
            prompt_.confirm(existing == EntryKind::Folder ? msg::kReadOnlyFolderOverwrite
                                                          : msg::kReadOnlyFileOverwrite,
                            {target});
        if (answer != Status::Done || files::ClearReadOnly(target) == Status::Done) {
            return answer;
        }
        return prompt_.report(msg::kAttributeErrorSkip, {target}, Status::Failed);
    }
    if (existing == EntryKind::Folder) {
        return Status::Done;
    }
    if (!prompt_.interactive()) {
        return Status::TargetExists;
    }
    return prompt_.confirm(msg::kFileOverwrite, {target});
}

Status Transfer::transferFile(const QString& source, const QString& target) const {
    if (const Status conflict = checkConflict(target, EntryKind::File); conflict != Status::Done) {
        return conflict;
    }
    if (mode_ == TransferMode::Move && files::IsReadOnly(source)) {
        if (!prompt_.interactive()) {
            return Status::ReadOnly;
        }
        if (const Status answer = prompt_.confirm(msg::kReadOnlyFileMove, {source});
            answer != Status::Done) {
            return answer;
        }
    }
    // A move replaces an existing target in one step, so the old file is never gone before the
    // new one is in place.
    const Status done = mode_ == TransferMode::Copy ? files::CopyFile(source, target)
                                                    : files::MoveFile(source, target);
    if (done == Status::Done) {
        return done;
    }
    return prompt_.report(msg::kProcessingError, {source}, Status::Failed);
}

Status Transfer::transferTree(const QString& source, const QString& target) const {
    return mode_ == TransferMode::Copy ? copyTree(source, target) : moveTree(source, target);
}

Status Transfer::copyTree(const QString& source, const QString& target) const {
    if (const Status checked = CheckTreeArguments(source, target); checked != Status::Done) {
        return checked;
    }
    const std::optional<files::Attributes> attributes = files::AttributesOf(source);
    if (const Status prepared = prepareTargetFolder(target); prepared != Status::Done) {
        return prepared;
    }
    const Status filled = transferEntries(source, target);
    if (filled == Status::Cancelled) {
        return filled;
    }
    // Given last, so that a read-only source makes a read-only copy only once it is full.
    Status status = Status::Done;
    if (!attributes || files::SetAttributes(target, *attributes) != Status::Done) {
        status = prompt_.report(msg::kAttributeErrorSkip, {target}, Status::Failed);
    }
    return status == Status::Cancelled || filled == Status::Done ? status : filled;
}

Status Transfer::moveTree(const QString& source, const QString& target) const {
    if (const Status checked = CheckTreeArguments(source, target); checked != Status::Done) {
        return checked;
    }
    const std::optional<files::Attributes> attributes = files::AttributesOf(source);
    if (!attributes) {
        return Status::NotFound;
    }
    if (files::IsReadOnly(source)) {
        if (!prompt_.interactive()) {
            return Status::ReadOnly;
        }
        if (const Status answer = prompt_.confirm(msg::kReadOnlyFolderMove, {source});
            answer != Status::Done) {
            return answer;
        }
        // Entries can only leave a folder the owner may write to.
        if (files::ClearReadOnly(source) != Status::Done) {
            return prompt_.report(msg::kReadOnlyFolderMoveRefused, {source}, Status::ReadOnly);
        }
    }
    const Status moved = moveFolder(source, target);
    // Whichever folder holds the entries now keeps the source's attributes, read-only included.
    const QString holder = files::Exists(source) ? source : target;
    if (files::SetAttributes(holder, *attributes) == Status::Done || moved != Status::Done) {
        return moved;
    }
    return prompt_.report(msg::kAttributeErrorSkip, {holder}, Status::Failed);
}

Status Transfer::moveFolder(const QString& source, const QString& target) const {
    if (!files::Exists(target)) {
        switch (files::RenameEntry(source, target)) {
        case files::RenameResult::Done:
            return Status::Done;
        case files::RenameResult::Failed:
            return prompt_.report(msg::kFolderMoveError, {source}, Status::Failed);
        case files::RenameResult::OtherFileSystem:
            break;
        }
    }
    if (const Status prepared = prepareTargetFolder(target); prepared != Status::Done) {
        return prepared;
    }
    if (const Status emptied = transferEntries(source, target); emptied != Status::Done) {
        return emptied;
    }
    if (files::RemoveFolder(source) == Status::Done) {
        return Status::Done;
    }
    return prompt_.report(msg::kFolderMoveError, {source}, Status::Failed);
}

Status Transfer::prepareTargetFolder(const QString& target) const {
    switch (files::KindOf(target)) {
    case EntryKind::Missing:
        if (files::MakeFolder(target) == Status::Done) {
            return Status::Done;
        }
        return prompt_.report(msg::kFolderCreateError, {target}, Status::Failed);
    case EntryKind::File:
        return prompt_.report(msg::kFileBlocksFolder, {target}, Status::NotAFolder);
    case EntryKind::Folder:
        break;
    }
    return files::IsReadOnly(target) ? files::ClearReadOnly(target) : Status::Done;
}

Status Transfer::transferEntries(const QString& source, const QString& target) const {
    const std::optional<QStringList> names = files::ListFolder(source);
    if (!names) {
        return prompt_.report(msg::kProcessingError, {source}, Status::Skipped);
    }
    bool skipped = false;
    for (const QString& name : *names) {
        const QString from = source + u'/' + name;
        const QString to = target + u'/' + name;
        const Status status =
            files::IsFolder(from) ? transferTree(from, to) : transferFile(from, to);
        if (status == Status::Cancelled) {
            return status;
        }
        skipped = skipped || status != Status::Done;
    }
    return skipped ? Status::Skipped : Status::Done;
}

} // namespace korvel
