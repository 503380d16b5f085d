#include "browser/FileListModel.h"

#include "browser/FileIcons.h"
#include "fileops/FileClipboard.h"
#include "messages/StringTable.h"

namespace korvel {
namespace {

constexpr int kColumnCount = 3;
constexpr int kHeaderStrings[kColumnCount] = {30308, 30309, 30310};

} // namespace

FileListModel::FileListModel(FileListing& listing, QObject* parent)
    : QAbstractTableModel(parent), listing_(listing), today_(QDate::currentDate()) {}

void FileListModel::reload() {
    beginResetModel();
    today_ = QDate::currentDate();
    endResetModel();
}

void FileListModel::removeRow(int row) {
    beginRemoveRows({}, row, row);
    listing_.removeRow(row);
    endRemoveRows();
}

void FileListModel::updateTexts() {
    today_ = QDate::currentDate();
    if (rowCount() > 0)
        emit dataChanged(index(0, 1), index(rowCount() - 1, 2), {Qt::DisplayRole});
}

void FileListModel::updateMarks() {
    if (rowCount() > 0)
        emit dataChanged(index(0, 0), index(rowCount() - 1, 0), {Qt::DecorationRole});
}

int FileListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(listing_.rows().size());
}

int FileListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : kColumnCount;
}

QVariant FileListModel::data(const QModelIndex& index, int role) const {
    const FileRow* row = listing_.row(index.row());
    if (row == nullptr)
        return {};
    switch (role) {
    case Qt::ToolTipRole:
        return index.column() == 0 ? QVariant(row->displayName) : QVariant();
    case Qt::DisplayRole:
        if (index.column() == 0)
            return row->displayName;
        if (row->entry.isParent())
            return QString();
        return index.column() == 1 ? SizeText(row->entry) : TimeText(row->entry, today_);
    case Qt::DecorationRole:
        if (index.column() != 0)
            return {};
        if (isRemembered(*row))
            return QIcon(FileIcon(row->icon).pixmap(32, QIcon::Disabled));
        return FileIcon(row->icon);
    case Qt::TextAlignmentRole:
        if (index.column() == 1)
            return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
        return QVariant::fromValue(Qt::AlignLeft | Qt::AlignVCenter);
    default:
        return {};
    }
}

QVariant FileListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= kColumnCount)
        return {};
    if (role == Qt::DisplayRole)
        return LoadString(kHeaderStrings[section]);
    if (role == Qt::TextAlignmentRole && section == 1)
        return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
    return {};
}

bool FileListModel::isRemembered(const FileRow& row) const {
    return clipboard_ != nullptr && !clipboard_->isEmpty() &&
           clipboard_->sourceFolder() == listing_.folder() &&
           clipboard_->items().contains(row.entry.name);
}

} // namespace korvel
