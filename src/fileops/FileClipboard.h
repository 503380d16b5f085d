#pragma once

#include "fileops/FileOpStatus.h"

#include <QString>
#include <QStringList>

class QWidget;

namespace korvel {

class FileOpPrompt;
class Transfer;

// The file manager's own clipboard (not the system clipboard): the files and folders taken by
// Copy or Cut from one folder, pasted into another by Paste.
class FileClipboard {
public:
    // Remembers the named entries of folder in place of whatever was held; "..", "." and
    // anything that is not a plain name are left out.
    void copy(const QString& folder, const QStringList& names);
    void cut(const QString& folder, const QStringList& names);

    bool isEmpty() const { return items_.isEmpty(); }
    bool isCut() const { return cut_; }
    // The folder the items were taken from, ending in one "/".
    const QString& sourceFolder() const { return sourceFolder_; }
    const QStringList& items() const { return items_; }

    // Copies or moves every item into destination, one at a time, in order. An interactive run
    // asks about conflicts and read-only entries and reports failures, each with the choice to
    // skip or to stop; otherwise the first conflict or failure ends the run with its status.
    // Pasting into the source folder makes copies named "コピー ～ name"; a cut does nothing.
    // Skipped when some items were skipped, Cancelled when the user stopped the run.
    FileOpStatus paste(const QString& destination, bool interactive, QWidget* parent);
    // The names created in the destination by the last paste, in order, for the list to select;
    // a stopped paste leaves the names created so far.
    const QStringList& pastedNames() const { return pasted_; }

private:
    void remember(bool cut, const QString& folder, const QStringList& names);
    bool liesInRememberedFolder(const QString& folder) const;
    FileOpStatus pasteItem(const Transfer& transfer, const FileOpPrompt& prompt,
                           const QString& item, const QString& folder, bool sameFolder);

    bool cut_ = false;
    QString sourceFolder_;
    QStringList items_;
    QStringList pasted_;
};

} // namespace korvel
