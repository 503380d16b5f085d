#pragma once

#include "browser/FileListing.h"

#include <QAbstractTableModel>
#include <QDate>

namespace korvel {

class FileClipboard;

// The rows of a FileListing as the list's views see them: name with icon, Size and Time. The
// texts are made when a row is drawn, so listing a large folder costs no formatting.
class FileListModel : public QAbstractTableModel {
    Q_OBJECT
public:
    FileListModel(FileListing& listing, QObject* parent = nullptr);

    // Rows of entries remembered by a Copy or Cut from this folder are drawn dimmed.
    void setClipboard(const FileClipboard* clipboard) { clipboard_ = clipboard; }

    // The listing's rows changed as a whole.
    void reload();
    // Drops one row, as a delete does, keeping the others where they are on screen.
    void removeRow(int row);
    // Time texts compare with today's date as of this call.
    void updateTexts();
    // The dimming of remembered rows may have changed.
    void updateMarks();

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    bool isRemembered(const FileRow& row) const;

    FileListing& listing_;
    const FileClipboard* clipboard_ = nullptr;
    QDate today_;
};

} // namespace korvel
