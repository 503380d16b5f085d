#include "browser/FolderTree.h"

#include "browser/FileEntry.h"
#include "browser/FileIcons.h"
#include "widgets/HoldGesture.h"
#include "browser/PopupMenus.h"
#include "browser/PropertiesDialog.h"
#include "fileops/FileOperations.h"
#include "fileops/FileSystem.h"
#include "messages/StringTable.h"

#include <QContextMenuEvent>
#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPointer>
#include <QStyledItemDelegate>
#include <algorithm>

namespace korvel {
namespace {

namespace cmd = browser_command;

constexpr int kRootLabel = 30307;

bool NameLess(const QString& a, const QString& b) {
    const int folded = QString::compare(a, b, Qt::CaseInsensitive);
    return folded != 0 ? folded < 0 : a < b;
}

const QIcon& FolderItemIcon() {
    static const QIcon icon = [] {
        QIcon both;
        for (int size : {16, 22, 24, 32}) {
            both.addPixmap(FolderIcon().pixmap(size), QIcon::Normal);
            both.addPixmap(OpenFolderIcon().pixmap(size), QIcon::Selected);
        }
        return both;
    }();
    return icon;
}

// A child with empty text: the item shows an expand button until it is filled.
QTreeWidgetItem* Placeholder() {
    return new QTreeWidgetItem();
}

// Ordered as a fill orders the children, so that sorting them again after a rename keeps it.
class FolderItem : public QTreeWidgetItem {
public:
    explicit FolderItem(const QString& name) : QTreeWidgetItem({name}) {}

    bool operator<(const QTreeWidgetItem& other) const override {
        return NameLess(text(0), other.text(0));
    }
};

QTreeWidgetItem* NewFolderItem(const QString& name) {
    auto* item = new FolderItem(name);
    item->setIcon(0, FolderItemIcon());
    item->setFlags(item->flags() | Qt::ItemIsEditable);
    item->addChild(Placeholder());
    return item;
}

} // namespace

// The label editor of the tree. Enter and Escape end an edit here, before the dialog could take
// them for OK or Cancel, and a committed label goes to the rename instead of into the item.
class RenameDelegate : public QStyledItemDelegate {
public:
    explicit RenameDelegate(FolderTree* tree) : QStyledItemDelegate(tree), tree_(tree) {}

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override {
        QWidget* editor = QStyledItemDelegate::createEditor(parent, option, index);
        editor_ = editor;
        return editor;
    }

    void setModelData(QWidget* editor, QAbstractItemModel*,
                      const QModelIndex& index) const override {
        const auto* line = qobject_cast<QLineEdit*>(editor);
        if (line == nullptr)
            return;
        // Renamed once the editor is gone, since the rename may open it again; by then a refresh
        // may have removed the item.
        QMetaObject::invokeMethod(
            tree_,
            [tree = tree_, item = QPersistentModelIndex(index), text = line->text()] {
                if (item.isValid())
                    tree->finishRename(tree->itemFromIndex(item), text);
            },
            Qt::QueuedConnection);
    }

    bool isEditing() const { return !editor_.isNull(); }

    void finish(bool commit) {
        QWidget* editor = editor_;
        if (editor == nullptr)
            return;
        editor_ = nullptr;
        if (commit)
            emit commitData(editor);
        emit closeEditor(editor, QAbstractItemDelegate::NoHint);
    }

protected:
    bool eventFilter(QObject* object, QEvent* event) override {
        if (event->type() == QEvent::KeyPress && object == editor_) {
            const int key = static_cast<QKeyEvent*>(event)->key();
            if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Escape) {
                finish(key != Qt::Key_Escape);
                return true;
            }
        }
        return QStyledItemDelegate::eventFilter(object, event);
    }

private:
    FolderTree* tree_;
    mutable QPointer<QWidget> editor_;
};

FolderTree::FolderTree(QWidget* parent)
    : QTreeWidget(parent), hold_(new HoldGesture(viewport())), delegate_(new RenameDelegate(this)) {
    setHeaderHidden(true);
    setColumnCount(1);
    setUniformRowHeights(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    // A slow second tap on the selected folder renames it, as F2 does: a pen has no keys.
    setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::SelectedClicked);
    setItemDelegate(delegate_);
    header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    header()->setStretchLastSection(false);

    root_ = new QTreeWidgetItem(this, {LoadString(kRootLabel)});
    root_->setIcon(0, DeviceIcon());
    root_->addChild(Placeholder());

    connect(this, &QTreeWidget::itemExpanded, this, &FolderTree::fill);
    connect(this, &QTreeWidget::currentItemChanged, this,
            [this](QTreeWidgetItem* current) { onCurrentItemChanged(current); });
    connect(hold_, &HoldGesture::recognised, this, &FolderTree::showPopup);
    viewport()->installEventFilter(this);
}

FolderTree::~FolderTree() = default;

FileOpStatus FolderTree::openPath(const QString& path, bool recordOnly) {
    if (recordOnly) {
        if (!QFileInfo(path).isDir())
            return FileOpStatus::NotFound;
        currentFolder_ = files::AsFolderPath(path);
        return FileOpStatus::Done;
    }
    if (!path.startsWith(u'/'))
        return FileOpStatus::BadArgument;
    QTreeWidgetItem* item = root_;
    for (const QString& component : QDir::cleanPath(path).split(u'/', Qt::SkipEmptyParts)) {
        fill(item);
        item->setExpanded(true);
        QTreeWidgetItem* child = childNamed(item, component);
        if (child == nullptr)
            break;
        item = child;
    }
    if (item == root_)
        root_->setExpanded(true);
    setCurrentItem(item);
    scrollToItem(item);
    return FileOpStatus::Done;
}

void FolderTree::fill(QTreeWidgetItem* item) {
    if (item == nullptr || isFilled(item))
        return;
    qDeleteAll(item->takeChildren());
    QStringList names;
    for (const FileEntry& entry : ReadFolder(pathOf(item))) {
        if (entry.isFolder())
            names.append(entry.name);
    }
    std::sort(names.begin(), names.end(), NameLess);
    QList<QTreeWidgetItem*> children;
    children.reserve(names.size());
    for (const QString& name : names)
        children.append(NewFolderItem(name));
    item->addChildren(children);
}

void FolderTree::refill(QTreeWidgetItem* item) {
    if (item == nullptr)
        return;
    const bool expanded = item->isExpanded();
    const QString current = currentFolder_;
    qDeleteAll(item->takeChildren());
    item->addChild(Placeholder());
    if (expanded) {
        fill(item);
        item->setExpanded(true);
    }
    // The current item may have been one of the children: it is found again, or its nearest
    // ancestor that still exists.
    if (currentFolder_ != current)
        openPath(current);
}

QString FolderTree::pathOf(const QTreeWidgetItem* item) const {
    QStringList names;
    for (; item != nullptr && item != root_; item = item->parent())
        names.prepend(item->text(0));
    return names.isEmpty() ? QStringLiteral("/") : u'/' + names.join(u'/') + u'/';
}

void FolderTree::setHoldDelay(int milliseconds) {
    hold_->setDelay(milliseconds);
}

void FolderTree::runCommand(int command) {
    switch (command) {
    case cmd::NewFolder:
        createFolder();
        break;
    case cmd::FolderDelete:
        deleteFolder();
        break;
    case cmd::FolderRename:
        startRename();
        break;
    case cmd::FolderProperties:
        showProperties();
        break;
    case cmd::FolderRefresh:
        refill(currentItem());
        emit contentsChanged();
        break;
    case cmd::Ok:
    case cmd::Cancel:
        emit dialogCommand(command);
        break;
    default:
        break;
    }
}

bool FolderTree::isEditing() const {
    return delegate_->isEditing();
}

void FolderTree::startRename() {
    QTreeWidgetItem* item = currentItem();
    if (item != nullptr && item != root_)
        editItem(item);
}

void FolderTree::endEdit() {
    delegate_->finish(true);
}

void FolderTree::finishRename(QTreeWidgetItem* item, const QString& editedName) {
    if (item == nullptr || item == root_)
        return;
    const RenameOutcome outcome = RenameFolder(pathOf(item), editedName, this);
    if (outcome.editAgain) {
        setCurrentItem(item);
        editItem(item);
        return;
    }
    if (outcome.status != FileOpStatus::Done)
        return;
    // The label shows the name as the disk has it: a change of letter case alone renames
    // nothing, and the item's path must stay the folder's.
    item->setText(0, QDir(outcome.folder).dirName());
    if (QTreeWidgetItem* parent = item->parent())
        parent->sortChildren(0, Qt::AscendingOrder);
    setCurrentItem(item);
    currentFolder_ = pathOf(item);
    emit currentFolderChanged(currentFolder_);
}

bool FolderTree::edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) {
    // A tap beside the label is a tap on empty space, which resizes the panes; it renames
    // nothing.
    if (trigger == SelectedClicked && event != nullptr &&
        event->type() == QEvent::MouseButtonRelease &&
        isEmptySpace(static_cast<QMouseEvent*>(event)->position().toPoint()))
        return false;
    return QTreeWidget::edit(index, trigger, event);
}

bool FolderTree::isEmptySpace(QPoint position) const {
    const QTreeWidgetItem* item = itemAt(position);
    if (item == nullptr)
        return true;
    const QRect rect = visualItemRect(item);
    if (position.x() < rect.left())
        return true;
    const int iconWidth = iconSize().isValid() ? iconSize().width() : 16;
    const int labelRight = rect.left() + iconWidth +
                           fontMetrics().horizontalAdvance(item->text(0)) +
                           3 * style()->pixelMetric(QStyle::PM_FocusFrameHMargin) + 8;
    return position.x() > labelRight;
}

void FolderTree::contextMenuEvent(QContextMenuEvent* event) {
    // A right click was taken as the gesture when it went down; the Menu key opens the menu
    // over the current item.
    if (event->reason() == QContextMenuEvent::Keyboard) {
        const QRect rect = visualItemRect(currentItem());
        showPopup(rect.isValid() ? rect.center() : QPoint(0, 0));
    }
    event->accept();
}

bool FolderTree::eventFilter(QObject* watched, QEvent* event) {
    if (watched != viewport())
        return QTreeWidget::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::MouseButtonPress: {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        const QPoint position = mouse->position().toPoint();
        if (mouse->button() == Qt::RightButton) {
            showPopup(position);
            return true;
        }
        if (mouse->button() == Qt::LeftButton) {
            hold_->watch(position);
            tapPending_ = true;
            tapPosition_ = position;
        }
        return false;
    }
    case QEvent::MouseButtonRelease:
        if (tapPending_ && !hold_->isHeld() && isEmptySpace(tapPosition_))
            QMetaObject::invokeMethod(this, &FolderTree::emptySpaceTapped, Qt::QueuedConnection);
        tapPending_ = false;
        return false;
    case QEvent::MouseButtonDblClick: {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() == Qt::LeftButton && isEmptySpace(mouse->position().toPoint()))
            QMetaObject::invokeMethod(this, &FolderTree::emptySpaceDoubleTapped,
                                      Qt::QueuedConnection);
        return false;
    }
    default:
        return QTreeWidget::eventFilter(watched, event);
    }
}

QTreeWidgetItem* FolderTree::addFolderItem(QTreeWidgetItem* parent, const QString& name) {
    QTreeWidgetItem* child = NewFolderItem(name);
    int position = 0;
    while (position < parent->childCount() && NameLess(parent->child(position)->text(0), name))
        ++position;
    parent->insertChild(position, child);
    return child;
}

// A child of that name, the exact spelling before another letter case. A folder the tree does
// not show (a hidden one, or one made since the parent was filled) is added when it exists, so
// that a typed path always opens.
QTreeWidgetItem* FolderTree::childNamed(QTreeWidgetItem* parent, const QString& name) {
    QTreeWidgetItem* folded = nullptr;
    for (int i = 0; i < parent->childCount(); ++i) {
        QTreeWidgetItem* child = parent->child(i);
        if (child->text(0) == name)
            return child;
        if (folded == nullptr && child->text(0).compare(name, Qt::CaseInsensitive) == 0)
            folded = child;
    }
    if (folded != nullptr)
        return folded;
    if (QFileInfo(pathOf(parent) + name).isDir())
        return addFolderItem(parent, name);
    return nullptr;
}

bool FolderTree::isFilled(const QTreeWidgetItem* item) const {
    return item->childCount() > 0 && !item->child(0)->text(0).isEmpty();
}

void FolderTree::showPopup(QPoint position) {
    if (QTreeWidgetItem* item = itemAt(position))
        setCurrentItem(item);
    const int command = ExecPopupMenu(FolderPopupMenu(currentItem() == root_),
                                      viewport()->mapToGlobal(position), this);
    if (command != 0)
        runCommand(command);
}

void FolderTree::createFolder() {
    QTreeWidgetItem* parent = currentItem() != nullptr ? currentItem() : root_;
    const NewFolderOutcome outcome = CreateNewFolder(pathOf(parent), this);
    if (outcome.status != FileOpStatus::Done)
        return;
    // A filled parent gets the one new item; an unfilled one lists it when it is filled.
    if (isFilled(parent))
        childNamed(parent, outcome.name);
    else
        fill(parent);
    parent->setExpanded(true);
    emit contentsChanged();
}

void FolderTree::deleteFolder() {
    QTreeWidgetItem* item = currentItem();
    if (item == nullptr || item == root_)
        return;
    const QString path = pathOf(item);
    // A delete that was refused, cancelled or failed may still have taken part of the folder,
    // or all of it: the tree shows what is left.
    if (DeleteFolder(path, this) == FileOpStatus::Done ||
        !files::Exists(files::WithoutTrailingSlash(path))) {
        setCurrentItem(item->parent());
        delete item;
    } else {
        refill(item);
    }
    emit contentsChanged();
}

void FolderTree::showProperties() {
    const QTreeWidgetItem* item = currentItem();
    if (item == nullptr)
        return;
    const QString path = pathOf(item);
    PropertiesDialog dialog(item == root_ ? path : files::WithoutTrailingSlash(path), this);
    dialog.exec();
}

void FolderTree::onCurrentItemChanged(QTreeWidgetItem* current) {
    if (current == nullptr)
        return;
    currentFolder_ = pathOf(current);
    emit currentFolderChanged(currentFolder_);
}

} // namespace korvel
