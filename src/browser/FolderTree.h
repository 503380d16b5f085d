#pragma once

#include "fileops/FileOpStatus.h"

#include <QTreeWidget>

namespace korvel {

class HoldGesture;
class RenameDelegate;

// The folder tree of the browser: one root item "マイ デバイス" for "/", filled lazily as items
// are expanded, with a tap-and-hold "Folder" menu (new folder, delete, rename, properties,
// refresh) and renaming by editing an item's label.
class FolderTree : public QTreeWidget {
    Q_OBJECT
public:
    explicit FolderTree(QWidget* parent = nullptr);
    ~FolderTree() override;

    // The current folder, ending in one "/".
    const QString& currentFolder() const { return currentFolder_; }
    // Opens a path: selects the deepest item of it that exists, filling the items on the way.
    // Record only: an existing folder becomes the current folder without touching the display.
    FileOpStatus openPath(const QString& path, bool recordOnly = false);
    // Fills an item with its subfolders, unless it was filled before.
    void fill(QTreeWidgetItem* item);
    // Empties and refills an item, keeping it expanded if it was.
    void refill(QTreeWidgetItem* item);
    QString pathOf(const QTreeWidgetItem* item) const;
    QTreeWidgetItem* rootItem() const { return root_; }

    void setHoldDelay(int milliseconds);
    // Runs a command of the "Folder" menu; OK and Cancel are passed on.
    void runCommand(int command);

    // Renaming by the label editor: F2, the menu, or a slow second tap on the selected folder.
    bool isEditing() const;
    void startRename();
    // Ends the edit as Enter would; the rename is carried out.
    void endEdit();
    // Renames the item's folder to the edited text, as an edit ended with Enter does.
    void finishRename(QTreeWidgetItem* item, const QString& editedName);

    // Nowhere near an item's icon or label: no item, its indent, or right of its label.
    bool isEmptySpace(QPoint position) const;

signals:
    void currentFolderChanged(const QString& folder);
    // Folders were created, deleted or refreshed under the current folder.
    void contentsChanged();
    void dialogCommand(int command);
    void emptySpaceTapped();
    void emptySpaceDoubleTapped();

protected:
    bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    QTreeWidgetItem* addFolderItem(QTreeWidgetItem* parent, const QString& name);
    QTreeWidgetItem* childNamed(QTreeWidgetItem* parent, const QString& name);
    bool isFilled(const QTreeWidgetItem* item) const;
    void showPopup(QPoint position);
    void createFolder();
    void deleteFolder();
    void showProperties();
    void onCurrentItemChanged(QTreeWidgetItem* current);

    QTreeWidgetItem* root_ = nullptr;
    QString currentFolder_ = QStringLiteral("/");
    HoldGesture* hold_ = nullptr;
    RenameDelegate* delegate_ = nullptr;
    bool tapPending_ = false;
    QPoint tapPosition_;
};

} // namespace korvel
