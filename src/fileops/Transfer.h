#pragma once

#include "fileops/FileOpPrompt.h"
#include "fileops/FileOpStatus.h"
#include "fileops/FileSystem.h"

#include <QString>

namespace korvel {

enum class TransferMode { Copy, Move };

// The steps of a paste: copying or moving one file or one folder tree to a target path, with the
// conflict rules and the questions of the run's prompt. Paths carry no trailing "/".
class Transfer {
public:
    Transfer(TransferMode mode, const FileOpPrompt& prompt) : mode_(mode), prompt_(prompt) {}

    // Whether something of the incoming kind may go to target: Done when target is free, a plain
    // folder to merge into, or cleared for overwriting.
    FileOpStatus checkConflict(const QString& target, files::EntryKind incoming) const;
    // Copies or moves one file (or link), after the conflict check.
    FileOpStatus transferFile(const QString& source, const QString& target) const;
    // Copies or moves a folder with everything in it into target, merging with a folder there.
    // Skipped when some entries stayed behind.
    FileOpStatus transferTree(const QString& source, const QString& target) const;

private:
    FileOpStatus copyTree(const QString& source, const QString& target) const;
    FileOpStatus moveTree(const QString& source, const QString& target) const;
    FileOpStatus moveFolder(const QString& source, const QString& target) const;
    FileOpStatus prepareTargetFolder(const QString& target) const;
    FileOpStatus transferEntries(const QString& source, const QString& target) const;

    TransferMode mode_;
    const FileOpPrompt& prompt_;
};

} // namespace korvel
