#pragma once

#include "browser/FileListModel.h"
#include "browser/FileListing.h"
#include "browser/PopupMenus.h"

#include <QElapsedTimer>
#include <QWidget>

class QAbstractItemView;
class QListView;
class QStackedLayout;
class QTreeView;

namespace korvel {

class CellDelegate;
class FileClipboard;
class HoldGesture;

// The switches a `FileListCtrl` is created with.
struct FileListSwitches {
    bool listingEnabled = true;
    bool singleSelectionOnly = true;
    // The list opens a tapped folder itself; otherwise it tells its owner.
    bool ownFolderNavigation = true;
    bool fileOperations = true;
    bool popupMenu = true;
    bool resolveShortcuts = true;
    bool offerSelectLnk = true;
};

// The file list of the browser: one folder's files (and folders) in three styles, sorted by the
// header or the menu, with a tap-and-hold menu that reaches the file operations.
class FileListCtrl : public QWidget {
    Q_OBJECT
public:
    explicit FileListCtrl(QWidget* parent = nullptr);
    ~FileListCtrl() override;

    void create(int style, std::uint32_t options, const FileListSwitches& switches);
    // The file clipboard of the program, for the Cut, Copy and Paste commands (not owned).
    void setClipboard(FileClipboard* clipboard);
    // The hold time of the tap-and-hold gesture, in milliseconds.
    void setHoldDelay(int milliseconds);

    // An existing folder becomes the current one; MultiSelectMode ends. Does not refresh.
    bool setFolder(const QString& path);
    const QString& folder() const { return listing_.folder(); }
    FileOpStatus refresh();
    FileOpStatus refreshPattern(const QString& pattern);
    void setExtensionFilter(const QStringList& extensions);
    IconExtensions& iconExtensions() { return listing_.iconExtensions(); }

    std::uint32_t options() const { return listing_.options(); }
    bool setSortKey(SortKey key) { return listing_.setSortKey(key); }
    SortKey sortKey() const { return listing_.sortKey(); }
    void sort(SortKey key);
    int listStyle() const { return style_; }
    void setListStyle(int style);
    bool multiSelectMode() const { return multiSelectMode_; }

    int rowCount() const { return int(listing_.rows().size()); }
    bool isFolder(int row) const;
    const FileEntry* entryOf(int row) const;
    const FileRow* rowAt(int row) const { return listing_.row(row); }
    // Selected rows in list order.
    QList<int> selectedRows() const;
    // Selects exactly the rows of these names.
    void selectNames(const QStringList& names);

    // What the "File" menu would be built from if it opened now.
    FilePopupState popupState() const;
    // Runs a command of the "File" menu; the ones that belong to the dialog are passed on.
    void runCommand(int command);

    // The view of the current style.
    QAbstractItemView* view() const;

signals:
    // The list moved to another folder by itself (a folder row, "..", 32813).
    void folderChanged(const QString& folder);
    // Entries were created or deleted in the current folder.
    void contentsChanged();
    // A command of the menu that the dialog handles: 1, 2, 32810.
    void dialogCommand(int command);
    void enterPressed();
    // A tap the list left to its owner; row -1 is empty space.
    void rowTapped(int row);
    void rowDoubleTapped(int row);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool handlePress(QAbstractItemView* view, QMouseEvent* event);
    bool handleRelease(QAbstractItemView* view, QMouseEvent* event);
    bool handleDoubleClick(QAbstractItemView* view, QMouseEvent* event);
    bool handleKey(QKeyEvent* event);
    void showPopup(QAbstractItemView* view, QPoint position);
    void openRow(int row);
    void moveTo(const QString& folder);
    void sortFromHeader(int column);
    void showSortIndicator();
    void layoutColumns();
    void layoutCells();
    QStringList selectedNames() const;
    QModelIndex indexAt(QAbstractItemView* view, QPoint position) const;
    HoldGesture* holdOf(QAbstractItemView* view) const;

    void copyOrCut(bool cut);
    void paste();
    void deleteSelection();
    void showProperties();
    void selectAll();

    FileListing listing_;
    FileListModel model_;
    FileListSwitches switches_;
    FileClipboard* clipboard_ = nullptr;
    QStackedLayout* stack_ = nullptr;
    QTreeView* details_ = nullptr;
    QListView* icons_ = nullptr;
    CellDelegate* cells_ = nullptr;
    HoldGesture* detailsHold_ = nullptr;
    HoldGesture* iconsHold_ = nullptr;
    int style_ = list_style::Details;
    bool multiSelectMode_ = false;
    QElapsedTimer sinceMenuClosed_;
    // Counts reloads, so that the second tap of a double tap that landed in a folder the first
    // tap opened is not taken for a tap in the new folder.
    quint64 generation_ = 0;
    quint64 pressGeneration_ = 0;
    // A press the view took, which becomes a tap when it is released without the gesture.
    bool tapPending_ = false;
    int tappedRow_ = -1;
};

} // namespace korvel
