#pragma once

#include "fileops/FileOpStatus.h"

#include <QString>
#include <QStringList>

class QWidget;

namespace korvel {

// Deletes a file, or a folder with everything in it. With questions allowed, read-only entries
// are asked about (Yes clears the bit and deletes) and a missing path answers NotFound silently,
// because the callers check existence themselves; without, a read-only entry ends the folder
// and a missing path is reported. Skipped when something stayed; the folder then stays too.
FileOpStatus DeleteTree(const QString& path, bool questionsAllowed, QWidget* parent);

// The folder tree's delete command: asks "下記フォルダを削除します。よろしいですか？", deletes the
// tree with questions allowed, and reports a partial or failed deletion. The root is never
// deleted. Done means the tree's item goes.
FileOpStatus DeleteFolder(const QString& folder, QWidget* parent);

struct DeleteOutcome {
    FileOpStatus status = FileOpStatus::Done;
    // The names that are gone, for the list to drop their rows.
    QStringList deleted;
};
// Deletes the selected rows of the file list: names of entries in folder, in row order. Asks
// once for the whole selection; the list calls this whenever it has rows, even with nothing
// selected, and the question still comes. The rows are walked from the last to the first;
// a skip is reported once at the end, a Cancel ends the walk without a summary.
DeleteOutcome DeleteEntries(const QString& folder, const QStringList& names, QWidget* parent);

struct NewFolderOutcome {
    FileOpStatus status = FileOpStatus::Done;
    // "新規フォルダ(n)": the folder's name, also its label in the tree.
    QString name;
};
// Creates "新規フォルダ(n)" in parentFolder with the first n from 1 to 4095 that is free.
NewFolderOutcome CreateNewFolder(const QString& parentFolder, QWidget* parent);

struct RenameOutcome {
    FileOpStatus status = FileOpStatus::Done;
    // The folder's path afterwards, ending in one "/".
    QString folder;
    // The name was refused: the tree opens the label editor again.
    bool editAgain = false;
};
// Renames folder to the edited label text, trimmed of blanks. A name that differs from the old
// one only in letter case renames nothing on disk: the folder keeps its path.
RenameOutcome RenameFolder(const QString& folder, const QString& editedName, QWidget* parent);

} // namespace korvel
