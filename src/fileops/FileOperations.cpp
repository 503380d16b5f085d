#include "fileops/FileOperations.h"

#include "fileops/FileOpPrompt.h"
#include "fileops/FileSystem.h"
#include "messages/MessageFormat.h"
#include "messages/StringTable.h"

namespace korvel {

using files::EntryKind;
using Status = FileOpStatus;
namespace msg = fileops_message;

namespace {

constexpr int kLastNewFolderNumber = 4095;
// "%s新規フォルダ(%d)" with the parent folder, and "新規フォルダ(%d)" for the tree's label.
constexpr int kNewFolderPath = 30008;
constexpr int kNewFolderLabel = 30009;

// One deletion of a tree. Its error reports always show; questionsAllowed only decides whether
// read-only entries are asked about.
class TreeDeleter {
public:
    TreeDeleter(bool questionsAllowed, QWidget* parent)
        : questions_(questionsAllowed), prompt_(true, parent) {}

    Status remove(const QString& path) const {
        const EntryKind kind = files::KindOf(path);
        if (kind == EntryKind::Missing) {
            return questions_ ? Status::NotFound
                              : prompt_.report(msg::kEntryNotFound, {path}, Status::NotFound,
                                               MessageIcon::Stop);
        }
        if (files::IsReadOnly(path)) {
            if (const Status unlocked = unlock(path); unlocked != Status::Done) {
                return unlocked;
            }
        }
        if (kind == EntryKind::Folder) {
            return removeFolder(path);
        }
        if (files::DeleteFile(path) == Status::Done) {
            return Status::Done;
        }
        return prompt_.report(msg::kFileDeleteError, {path}, Status::Failed);
    }

private:
    Status unlock(const QString& path) const {
        if (!questions_) {
            return Status::ReadOnly;
        }
        const Status answer = prompt_.confirm(msg::kReadOnlyForceDelete, {path});
        if (answer != Status::Done || files::ClearReadOnly(path) == Status::Done) {
            return answer;
        }
        return prompt_.report(msg::kAttributeErrorSkip, {path}, Status::Failed, MessageIcon::Stop);
    }

    Status removeFolder(const QString& folder) const {
        const std::optional<QStringList> names = files::ListFolder(folder);
        if (!names) {
            return prompt_.report(msg::kFolderDeleteError, {folder}, Status::Failed);
        }
        bool skipped = false;
        for (const QString& name : *names) {
            const Status status = removeEntry(folder + u'/' + name);
            if (status == Status::Cancelled || status == Status::ReadOnly ||
                (status == Status::Failed && !questions_)) {
                return status;
            }
            skipped = skipped || status != Status::Done;
        }
        if (skipped) {
            return Status::Skipped;
        }
        if (files::RemoveFolder(folder) == Status::Done) {
            return Status::Done;
        }
        return prompt_.report(msg::kFolderDeleteError, {folder}, Status::Failed);
    }

    // An entry inside a folder being deleted. A ReadOnly or (without questions) Failed result
    // ends the folder; anything else but Done and Cancelled leaves the entry skipped.
    Status removeEntry(const QString& path) const {
        if (files::IsFolder(path)) {
            // A subfolder that stays only marks this folder as skipped.
            const Status status = remove(path);
            return status == Status::Done || status == Status::Cancelled ? status : Status::Skipped;
        }
        if (files::IsReadOnly(path)) {
            if (const Status unlocked = unlock(path); unlocked != Status::Done) {
                return unlocked;
            }
        }
        if (files::DeleteFile(path) == Status::Done) {
            return Status::Done;
        }
        if (!questions_) {
            return Status::Failed;
        }
        return prompt_.report(msg::kProcessingError, {path}, Status::Skipped);
    }

    bool questions_;
    FileOpPrompt prompt_;
};

// The rows' question and error boxes of the list's delete command.
Status DeleteRow(const QString& path, const FileOpPrompt& prompt, QWidget* parent) {
    if (!files::Exists(path)) {
        return prompt.report(msg::kVanishedEntry, {path}, Status::Skipped);
    }
    if (files::IsReadOnly(path)) {
        if (const Status answer = prompt.confirm(msg::kReadOnlyEntryDelete, {path});
            answer != Status::Done) {
            return answer;
        }
        if (files::ClearReadOnly(path) != Status::Done) {
            return prompt.report(msg::kAttributeChangeError, {}, Status::Skipped);
        }
    }
    if (files::IsFolder(path)) {
        return DeleteTree(path, true, parent);
    }
    if (files::DeleteFile(path) == Status::Done) {
        return Status::Done;
    }
    return prompt.report(msg::kFileDeleteError, {path}, Status::Skipped);
}

bool HasForbiddenCharacter(const QString& name) {
    static const QString forbidden = QStringLiteral("\\/:*?\"<>|");
    for (const QChar character : name) {
        if (forbidden.contains(character)) {
            return true;
        }
    }
    return false;
}

} // namespace

Status DeleteTree(const QString& path, bool questionsAllowed, QWidget* parent) {
    // Trailing "/" removed, "/" itself is empty: the root is never deleted.
    const QString entry = files::WithoutTrailingSlash(path);
    if (!entry.startsWith(u'/')) {
        return Status::BadArgument;
    }
    return TreeDeleter(questionsAllowed, parent).remove(entry);
}

Status DeleteFolder(const QString& folder, QWidget* parent) {
    const QString path = files::WithoutTrailingSlash(folder);
    if (!path.startsWith(u'/')) {
        return Status::BadArgument;
    }
    const FileOpPrompt prompt(true, parent);
    if (!prompt.agrees(msg::kDeleteFolder, {path})) {
        return Status::Skipped;
    }
    const Status status = DeleteTree(path, true, parent);
    if (status == Status::Skipped) {
        prompt.tell(msg::kSomeSkipped);
    } else if (status != Status::Done && status != Status::Cancelled) {
        prompt.tell(msg::kFolderDeleteFailed);
    }
    return status;
}

DeleteOutcome DeleteEntries(const QString& folder, const QStringList& names, QWidget* parent) {
    const QString base = files::AsFolderPath(folder);
    if (!base.startsWith(u'/')) {
        return {Status::BadArgument, {}};
    }
    const FileOpPrompt prompt(true, parent);
    if (!prompt.agrees(msg::kDeleteSelection, {})) {
        return {Status::Skipped, {}};
    }
    DeleteOutcome outcome;
    bool skipped = false;
    for (auto name = names.crbegin(); name != names.crend(); ++name) {
        if (!files::IsPlainName(*name)) {
            continue;
        }
        const Status status = DeleteRow(base + *name, prompt, parent);
        if (status == Status::Cancelled) {
            outcome.status = status;
            return outcome;
        }
        if (status == Status::Done) {
            outcome.deleted.append(*name);
        }
        skipped = skipped || status != Status::Done;
    }
    if (skipped) {
        prompt.tell(msg::kSomeSkipped);
        outcome.status = Status::Skipped;
    }
    return outcome;
}

NewFolderOutcome CreateNewFolder(const QString& parentFolder, QWidget* parent) {
    const QString base = files::AsFolderPath(parentFolder);
    if (!base.startsWith(u'/')) {
        return {Status::BadArgument, {}};
    }
    const FileOpPrompt prompt(true, parent);
    for (int number = 1; number <= kLastNewFolderNumber; ++number) {
        const QString path =
            FormatMessage(LoadString(kNewFolderPath), {base, QString::number(number)});
        if (files::Exists(path)) {
            continue;
        }
        if (files::MakeFolder(path) == Status::Done) {
            return {Status::Done,
                    FormatMessage(LoadString(kNewFolderLabel), {QString::number(number)})};
        }
        prompt.tell(msg::kNewFolderFailed, {}, MessageIcon::Stop);
        return {Status::Failed, {}};
    }
    prompt.tell(msg::kNoMoreFolders);
    return {Status::NameLimit, {}};
}

RenameOutcome RenameFolder(const QString& folder, const QString& editedName, QWidget* parent) {
    const FileOpPrompt prompt(true, parent);
    const QString original = files::AsFolderPath(folder);
    const QString name = editedName.trimmed();
    if (name.isEmpty()) {
        return {Status::BadArgument, original, true};
    }
    const QString path = files::WithoutTrailingSlash(folder);
    if (!path.startsWith(u'/')) {
        prompt.tell(msg::kRenameFailed, {}, MessageIcon::Stop);
        return {Status::BadArgument, original, false};
    }
    const qsizetype slash = path.lastIndexOf(u'/');
    if (name.compare(path.mid(slash + 1), Qt::CaseInsensitive) == 0) {
        return {Status::Done, original, false};
    }
    if (HasForbiddenCharacter(name)) {
        prompt.tell(msg::kRenameBadCharacters, {}, MessageIcon::Stop);
        return {Status::BadArgument, original, true};
    }
    const QString target = path.left(slash + 1) + name;
    switch (files::KindOf(target)) {
    case EntryKind::Folder:
        prompt.tell(msg::kRenameFolderExists, {}, MessageIcon::Stop);
        return {Status::FolderInTheWay, original, true};
    case EntryKind::File:
        prompt.tell(msg::kRenameFileExists, {}, MessageIcon::Stop);
        return {Status::NotAFolder, original, true};
    case EntryKind::Missing:
        break;
    }
    if (files::RenameEntry(path, target) != files::RenameResult::Done) {
        prompt.tell(msg::kRenameFailed, {}, MessageIcon::Stop);
        return {Status::Failed, original, false};
    }
    return {Status::Done, files::AsFolderPath(target), false};
}

} // namespace korvel
