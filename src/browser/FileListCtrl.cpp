#include "browser/FileListCtrl.h"

#include "widgets/HoldGesture.h"
#include "browser/PropertiesDialog.h"
#include "fileops/FileClipboard.h"
#include "fileops/FileOperations.h"
#include "fileops/FileSystem.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QListView>
#include <QMouseEvent>
#include <QStackedLayout>
#include <QStyledItemDelegate>
#include <QTreeView>
#include <algorithm>

namespace korvel {
namespace {

namespace cmd = browser_command;

// The header's sort direction is one value for the whole program, not one per list: a list
// opened later starts from the direction the last header tap left.
std::uint32_t rememberedHeaderDirection = 0;

// A tap that comes this soon after a menu closed is the menu's own dismissal.
constexpr qint64 kTapAfterMenuMs = 50;

// The column widths were chosen for a 96-dpi screen.
int Scaled(const QWidget* widget, int pixels) {
    return qRound(pixels * qMax(1.0, widget->logicalDpiX() / 96.0));
}

bool IsEnterKey(const QKeyEvent* event) {
    return event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
}

// How much of a name the icon style's cells show, in average characters; a longer name ends in
// "...", as in a file manager's small icons.
constexpr int kIconCellCharacters = 16;

} // namespace

// Draws the rows of the icon and list styles in cells of one size: a name too long for its cell
// is cut short with "..." inside it, and the selection covers the cell, never a neighbour.
class CellDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize cellSize() const { return cell_; }
    void setCellSize(QSize size) { cell_ = size; }
    QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const override { return cell_; }

private:
    QSize cell_;
};

FileListCtrl::FileListCtrl(QWidget* parent)
    : QWidget(parent), model_(listing_), stack_(new QStackedLayout(this)),
      details_(new QTreeView(this)), icons_(new QListView(this)), cells_(new CellDelegate(this)) {
    stack_->setContentsMargins(0, 0, 0, 0);

    details_->setModel(&model_);
    details_->setRootIsDecorated(false);
    details_->setItemsExpandable(false);
    details_->setUniformRowHeights(true);
    details_->setAllColumnsShowFocus(true);
    details_->setSelectionBehavior(QAbstractItemView::SelectRows);
    details_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    details_->setTextElideMode(Qt::ElideRight);
    QHeaderView* header = details_->header();
    header->setSectionsClickable(true);
    header->setSortIndicatorShown(true);
    header->setStretchLastSection(false);
    connect(header, &QHeaderView::sectionClicked, this, &FileListCtrl::sortFromHeader);

    icons_->setModel(&model_);
    QItemSelectionModel* previous = icons_->selectionModel();
    icons_->setSelectionModel(details_->selectionModel());
    delete previous;
    icons_->setViewMode(QListView::ListMode);
    icons_->setWrapping(true);
    icons_->setResizeMode(QListView::Adjust);
    icons_->setUniformItemSizes(true);
    icons_->setLayoutMode(QListView::Batched);
    icons_->setBatchSize(500);
    icons_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    icons_->setTextElideMode(Qt::ElideRight);
    icons_->setItemDelegate(cells_);
    // Small icons in every style; a style may make its list views' icons larger.
    const int iconSize = style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this);
    details_->setIconSize(QSize(iconSize, iconSize));
    icons_->setIconSize(QSize(iconSize, iconSize));

    stack_->addWidget(details_);
    stack_->addWidget(icons_);

    detailsHold_ = new HoldGesture(details_->viewport());
    iconsHold_ = new HoldGesture(icons_->viewport());
    connect(detailsHold_, &HoldGesture::recognised, this,
            [this](QPoint position) { showPopup(details_, position); });
    connect(iconsHold_, &HoldGesture::recognised, this,
            [this](QPoint position) { showPopup(icons_, position); });
    // Installed after the gestures, so this filter sees a release before a gesture takes it.
    for (QAbstractItemView* view :
         {static_cast<QAbstractItemView*>(details_), static_cast<QAbstractItemView*>(icons_)}) {
        view->installEventFilter(this);
        view->viewport()->installEventFilter(this);
    }
}

FileListCtrl::~FileListCtrl() = default;

void FileListCtrl::create(int style, std::uint32_t options, const FileListSwitches& switches) {
    switches_ = switches;
    listing_.setOptions(options);
    listing_.setResolveShortcuts(switches.resolveShortcuts);
    const auto mode = switches.singleSelectionOnly ? QAbstractItemView::SingleSelection
                                                   : QAbstractItemView::ExtendedSelection;
    details_->setSelectionMode(mode);
    icons_->setSelectionMode(mode);
    setListStyle(style >= list_style::Details && style <= list_style::List ? style
                                                                           : list_style::Details);
    showSortIndicator();
}

void FileListCtrl::setClipboard(FileClipboard* clipboard) {
    clipboard_ = clipboard;
    model_.setClipboard(clipboard);
}

void FileListCtrl::setHoldDelay(int milliseconds) {
    detailsHold_->setDelay(milliseconds);
    iconsHold_->setDelay(milliseconds);
}

bool FileListCtrl::setFolder(const QString& path) {
    if (!listing_.setFolder(path))
        return false;
    multiSelectMode_ = false;
    return true;
}

FileOpStatus FileListCtrl::refresh() {
    multiSelectMode_ = false;
    if (!switches_.listingEnabled)
        return FileOpStatus::Done;
    const FileOpStatus status = listing_.refresh();
    ++generation_;
    model_.reload();
    layoutCells();
    return status;
}

FileOpStatus FileListCtrl::refreshPattern(const QString& pattern) {
    multiSelectMode_ = false;
    if (!switches_.listingEnabled)
        return FileOpStatus::Done;
    const FileOpStatus status = listing_.refreshPattern(pattern);
    ++generation_;
    model_.reload();
    layoutCells();
    return status;
}

void FileListCtrl::setExtensionFilter(const QStringList& extensions) {
    listing_.setExtensionFilter(extensions);
}

void FileListCtrl::sort(SortKey key) {
    const QStringList selected = selectedNames();
    listing_.sort(key);
    ++generation_;
    model_.reload();
    selectNames(selected);
    showSortIndicator();
}

void FileListCtrl::setListStyle(int style) {
    if (style < list_style::Details || style > list_style::List)
        return;
    const bool hadFocus = view()->hasFocus();
    style_ = style;
    if (style == list_style::Details) {
        stack_->setCurrentWidget(details_);
        model_.updateTexts();
        layoutColumns();
    } else {
        // Small icons flow in rows, the list style in columns.
        icons_->setFlow(style == list_style::Icons ? QListView::LeftToRight
                                                   : QListView::TopToBottom);
        layoutCells();
        stack_->setCurrentWidget(icons_);
    }
    if (hadFocus)
        view()->setFocus();
}

bool FileListCtrl::isFolder(int row) const {
    const FileRow* entry = listing_.row(row);
    return entry != nullptr && entry->entry.isFolder();
}

const FileEntry* FileListCtrl::entryOf(int row) const {
    const FileRow* entry = listing_.row(row);
    return entry != nullptr ? &entry->entry : nullptr;
}

QList<int> FileListCtrl::selectedRows() const {
    QList<int> rows;
    for (const QModelIndex& index : details_->selectionModel()->selectedRows())
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

void FileListCtrl::selectNames(const QStringList& names) {
    QItemSelection selection;
    int current = -1;
    for (const QString& name : names) {
        const qsizetype row = listing_.indexOf(name);
        if (row < 0)
            continue;
        selection.select(model_.index(int(row), 0), model_.index(int(row), 0));
        if (current < 0)
            current = int(row);
    }
    QItemSelectionModel* selectionModel = details_->selectionModel();
    selectionModel->select(selection,
                           QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    if (current >= 0) {
        selectionModel->setCurrentIndex(model_.index(current, 0), QItemSelectionModel::NoUpdate);
        view()->scrollTo(model_.index(current, 0));
    }
}

FilePopupState FileListCtrl::popupState() const {
    FilePopupState state;
    state.fileOperations = switches_.fileOperations;
    state.singleSelectionOnly = switches_.singleSelectionOnly;
    state.multiSelectMode = multiSelectMode_;
    const QList<int> rows = selectedRows();
    state.selectedCount = int(rows.size());
    if (rows.size() == 1) {
        const FileRow* row = listing_.row(rows.front());
        state.onlyParentSelected = row->entry.isParent();
        state.onlyShortcutSelected = row->shortcut;
    }
    state.offerSelectLnk = switches_.offerSelectLnk;
    state.resolveShortcuts = switches_.resolveShortcuts;
    state.clipboardEmpty = clipboard_ == nullptr || clipboard_->isEmpty();
    state.clipboardCutFromHere = !state.clipboardEmpty && clipboard_->isCut() &&
                                 files::IsSameFolder(clipboard_->sourceFolder(), folder());
    state.options = listing_.options();
    state.atRoot = listing_.isRoot();
    state.sortKey = listing_.sortKey();
    state.listStyle = style_;
    return state;
}

void FileListCtrl::runCommand(int command) {
    switch (command) {
    case cmd::ShowFolders:
        listing_.setOptions(listing_.options() ^ list_option::ShowFolders);
        refresh();
        break;
    case cmd::SortByName:
    case cmd::SortByName + 1:
    case cmd::SortByName + 2:
    case cmd::SortByType:
        sort(MakeSortKey(command - cmd::SortByName, false));
        break;
    case cmd::StyleIcons:
        setListStyle(list_style::Icons);
        break;
    case cmd::StyleList:
        setListStyle(list_style::List);
        break;
    case cmd::StyleDetails:
        setListStyle(list_style::Details);
        break;
    case cmd::Cut:
    case cmd::Copy:
        copyOrCut(command == cmd::Cut);
        break;
    case cmd::Paste:
        paste();
        break;
    case cmd::Delete:
        deleteSelection();
        break;
    case cmd::Properties:
        showProperties();
        break;
    case cmd::Refresh:
        refresh();
        break;
    case cmd::MultiSelect:
        multiSelectMode_ = !multiSelectMode_;
        break;
    case cmd::SelectAll:
        selectAll();
        break;
    case cmd::ParentFolder:
        moveTo(files::ParentFolderOf(folder()));
        break;
    case cmd::SelectLnk:
    case cmd::Ok:
    case cmd::Cancel:
        emit dialogCommand(command);
        break;
    default:
        break;
    }
}

QAbstractItemView* FileListCtrl::view() const {
    if (style_ == list_style::Details)
        return details_;
    return icons_;
}

bool FileListCtrl::eventFilter(QObject* watched, QEvent* event) {
    QAbstractItemView* view = nullptr;
    if (watched == details_ || watched == details_->viewport())
        view = details_;
    else if (watched == icons_ || watched == icons_->viewport())
        view = icons_;
    if (view == nullptr)
        return QWidget::eventFilter(watched, event);
    const bool onViewport = watched == view->viewport();

    switch (event->type()) {
    case QEvent::MouseButtonPress:
        return onViewport && handlePress(view, static_cast<QMouseEvent*>(event));
    case QEvent::MouseButtonRelease:
        return onViewport && handleRelease(view, static_cast<QMouseEvent*>(event));
    case QEvent::MouseButtonDblClick:
        return onViewport && handleDoubleClick(view, static_cast<QMouseEvent*>(event));
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
        return !onViewport && handleKey(static_cast<QKeyEvent*>(event));
    case QEvent::Resize:
        // The viewport learns its width only after this widget's own resize, once the layout
        // has sized the view; the columns follow it from here.
        if (onViewport && view == details_)
            layoutColumns();
        else if (onViewport)
            layoutCells();
        return false;
    case QEvent::ContextMenu: {
        // A right click was taken as the gesture when it went down; the Menu key opens the
        // menu over the current row.
        const auto* menuEvent = static_cast<QContextMenuEvent*>(event);
        if (menuEvent->reason() == QContextMenuEvent::Keyboard && switches_.popupMenu) {
            const QRect rect = view->visualRect(view->currentIndex());
            showPopup(view, rect.isValid() ? rect.center() : QPoint(0, 0));
        }
        return true;
    }
    default:
        return QWidget::eventFilter(watched, event);
    }
}

bool FileListCtrl::handlePress(QAbstractItemView* view, QMouseEvent* event) {
    const QPoint position = event->position().toPoint();
    if (event->button() == Qt::RightButton) {
        if (!switches_.popupMenu)
            return false;
        showPopup(view, position);
        return true;
    }
    if (event->button() != Qt::LeftButton)
        return false;
    tapPending_ = false;
    if (switches_.popupMenu && (listing_.options() & list_option::IgnoreTapAfterMenu) != 0 &&
        sinceMenuClosed_.isValid() && sinceMenuClosed_.elapsed() < kTapAfterMenuMs)
        return true;
    pressGeneration_ = generation_;
    const int row = indexAt(view, position).row();

    if (multiSelectMode_ && switches_.popupMenu) {
        if (row >= 0)
            details_->selectionModel()->select(model_.index(row, 0), QItemSelectionModel::Toggle |
                                                                         QItemSelectionModel::Rows);
        holdOf(view)->watch(position);
        return true;
    }
    const FileRow* tapped = listing_.row(row);
    const bool opensFolder =
        tapped != nullptr && (tapped->entry.isFolder() || tapped->isShortcutToFolder());
    if (opensFolder && switches_.ownFolderNavigation &&
        (listing_.options() & list_option::SingleTapOpensFolder) != 0) {
        openRow(row);
        return true;
    }
    if (switches_.popupMenu)
        holdOf(view)->watch(position);
    tappedRow_ = row;
    tapPending_ = true;
    return false;
}

bool FileListCtrl::handleRelease(QAbstractItemView* view, QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !tapPending_)
        return false;
    tapPending_ = false;
    // A press held until the menu came is no tap. The owner is told once the view is done with
    // the release, so that an owner that lists another folder does not pull the rows from under
    // it.
    if (!holdOf(view)->isHeld()) {
        QMetaObject::invokeMethod(
            this,
            [this, row = tappedRow_, generation = generation_] {
                if (generation == generation_)
                    emit rowTapped(row);
            },
            Qt::QueuedConnection);
    }
    return false;
}

bool FileListCtrl::handleDoubleClick(QAbstractItemView* view, QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return false;
    // The first tap opened another folder: this one is not a double tap on anything there.
    if (generation_ != pressGeneration_)
        return true;
    if (multiSelectMode_ && switches_.popupMenu)
        return handlePress(view, event);
    const int row = indexAt(view, event->position().toPoint()).row();
    const FileRow* tapped = listing_.row(row);
    const bool opensFolder =
        tapped != nullptr && (tapped->entry.isFolder() || tapped->isShortcutToFolder());
    if (opensFolder && switches_.ownFolderNavigation) {
        openRow(row);
        return true;
    }
    QMetaObject::invokeMethod(
        this,
        [this, row, generation = generation_] {
            if (generation == generation_)
                emit rowDoubleTapped(row);
        },
        Qt::QueuedConnection);
    return false;
}

bool FileListCtrl::handleKey(QKeyEvent* event) {
    if (!IsEnterKey(event))
        return false;
    // Enter stands for the dialog's OK; it is handed over after the key is done with.
    if (event->type() == QEvent::KeyPress && !event->isAutoRepeat())
        QMetaObject::invokeMethod(this, &FileListCtrl::enterPressed, Qt::QueuedConnection);
    return true;
}

void FileListCtrl::showPopup(QAbstractItemView* view, QPoint position) {
    const QModelIndex index = indexAt(view, position);
    if (index.isValid() && !multiSelectMode_) {
        // A row outside the selection replaces it, so that the menu never acts on rows the user
        // did not mean.
        QItemSelectionModel* selection = details_->selectionModel();
        if (!selection->isRowSelected(index.row()))
            selection->select(index,
                              QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        selection->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
    }
    const int command =
        ExecPopupMenu(FilePopupMenu(popupState()), view->viewport()->mapToGlobal(position), this);
    sinceMenuClosed_.start();
    if (command != 0)
        runCommand(command);
}

void FileListCtrl::openRow(int row) {
    const FileRow* tapped = listing_.row(row);
    if (tapped == nullptr)
        return;
    if (tapped->entry.isParent())
        moveTo(files::ParentFolderOf(folder()));
    else if (tapped->entry.isFolder())
        moveTo(folder() + tapped->entry.name);
    else if (tapped->isShortcutToFolder())
        moveTo(tapped->target->path);
}

void FileListCtrl::moveTo(const QString& path) {
    if (!setFolder(path))
        return;
    refresh();
    emit folderChanged(folder());
}

void FileListCtrl::sortFromHeader(int column) {
    if (column == SortColumnOf(listing_.sortKey()))
        rememberedHeaderDirection ^= 1;
    else
        rememberedHeaderDirection = 0;
    sort(MakeSortKey(column, rememberedHeaderDirection != 0));
}

void FileListCtrl::showSortIndicator() {
    const int column = SortColumnOf(listing_.sortKey());
    details_->header()->setSortIndicator(column < model_.columnCount() ? column : -1,
                                         IsDescending(listing_.sortKey()) ? Qt::DescendingOrder
                                                                          : Qt::AscendingOrder);
}

void FileListCtrl::layoutColumns() {
    if (style_ != list_style::Details)
        return;
    const int width = details_->viewport()->width();
    details_->setColumnWidth(0, width < Scaled(this, 220) ? width - Scaled(this, 20)
                                                          : width - Scaled(this, 140));
    details_->setColumnWidth(1, Scaled(this, 50));
    details_->setColumnWidth(2, Scaled(this, 70));
}

// Cells of one size keep a folder of thousands of files quick to lay out. The list style's
// columns are as wide as the widest name, so that no name is cut short beside free room; a name
// wider than the view is.
void FileListCtrl::layoutCells() {
    if (style_ == list_style::Details)
        return;
    const QFontMetrics metrics = icons_->fontMetrics();
    int text = metrics.averageCharWidth() * kIconCellCharacters;
    if (style_ == list_style::List) {
        text = 0;
        for (const FileRow& row : listing_.rows())
            text = qMax(text, metrics.horizontalAdvance(row.displayName));
    }
    // The delegate keeps a margin on either side of the icon and of the text: the focus frame's
    // and a pixel.
    const int margin = style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, icons_) + 1;
    const int icon = icons_->iconSize().width();
    const int width = qMin(icon + text + 4 * margin, qMax(icons_->viewport()->width(), icon));
    const QSize cell(width, qMax(metrics.height(), icon) + 2 * margin);
    if (cell == cells_->cellSize())
        return;
    cells_->setCellSize(cell);
    emit cells_->sizeHintChanged(model_.index(0, 0));
}

QStringList FileListCtrl::selectedNames() const {
    QStringList names;
    for (int row : selectedRows()) {
        const FileEntry& entry = listing_.row(row)->entry;
        if (!entry.isParent())
            names.append(entry.name);
    }
    return names;
}

QModelIndex FileListCtrl::indexAt(QAbstractItemView* view, QPoint position) const {
    const QModelIndex index = view->indexAt(position);
    return index.isValid() ? index.siblingAtColumn(0) : QModelIndex();
}

HoldGesture* FileListCtrl::holdOf(QAbstractItemView* view) const {
    return view == details_ ? detailsHold_ : iconsHold_;
}

void FileListCtrl::copyOrCut(bool cut) {
    if (clipboard_ == nullptr)
        return;
    if (cut)
        clipboard_->cut(folder(), selectedNames());
    else
        clipboard_->copy(folder(), selectedNames());
    multiSelectMode_ = false;
    model_.updateMarks();
}

void FileListCtrl::paste() {
    if (clipboard_ == nullptr)
        return;
    clipboard_->paste(folder(), true, this);
    refresh();
    selectNames(clipboard_->pastedNames());
    emit contentsChanged();
}

void FileListCtrl::deleteSelection() {
    multiSelectMode_ = false;
    if (rowCount() == 0)
        return;
    const DeleteOutcome outcome = DeleteEntries(folder(), selectedNames(), this);
    if (outcome.deleted.isEmpty())
        return;
    for (int row = rowCount() - 1; row >= 0; --row) {
        if (outcome.deleted.contains(listing_.row(row)->entry.name))
            model_.removeRow(row);
    }
    emit contentsChanged();
}

void FileListCtrl::showProperties() {
    const QList<int> rows = selectedRows();
    if (rows.size() != 1 || multiSelectMode_)
        return;
    const FileEntry& entry = listing_.row(rows.front())->entry;
    QString path = entry.isParent() ? files::ParentFolderOf(folder()) : folder() + entry.name;
    if (path.size() > 1 && path.endsWith(u'/'))
        path.chop(1);
    PropertiesDialog dialog(path, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const QStringList selected = selectedNames();
    refresh();
    selectNames(selected);
}

void FileListCtrl::selectAll() {
    const int count = rowCount();
    const int first = count > 0 && listing_.row(0)->entry.isParent() ? 1 : 0;
    if (first >= count)
        return;
    const QItemSelection all(model_.index(first, 0), model_.index(count - 1, 0));
    details_->selectionModel()->select(all, QItemSelectionModel::ClearAndSelect |
                                                QItemSelectionModel::Rows);
}

} // namespace korvel
