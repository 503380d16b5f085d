#pragma once

#include "browser/BrowseRequest.h"

#include <QDialog>
#include <QTimer>

class QComboBox;
class QLabel;
class QLineEdit;
class QSplitter;

namespace korvel {

class FileClipboard;
class FileListCtrl;
struct FileOpMessage;
class FolderTree;
class HoldGesture;

// The program's own Open and Save As dialog: a folder tree, the file list, a name box, a
// file-type box and an optional option row. It checks the chosen name before it closes and
// writes the result into the request.
class FileBrowserDialog : public QDialog {
    Q_OBJECT
public:
    // The layouts: both panes, the tree enlarged, the list enlarged.
    enum LayoutMode { Normal = 0, TreeEnlarged = 1, ListEnlarged = 2 };

    FileBrowserDialog(BrowseRequest& request, FileClipboard& clipboard, QWidget* parent = nullptr);
    ~FileBrowserDialog() override;

    // What the OK button does: checks, and closes with the result when the checks pass.
    void ok();

    LayoutMode layoutMode() const { return layoutMode_; }
    void setLayoutMode(LayoutMode mode);

    FolderTree* folderTree() const { return tree_; }
    FileListCtrl* fileList() const { return list_; }
    QLineEdit* nameBox() const { return nameBox_; }
    QComboBox* typeBox() const { return typeBox_; }
    QComboBox* optionBox() const { return optionBox_; }
    QComboBox* lineEndingBox() const { return lineEndingBox_; }

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void applyLayout();
    void setUpTypes();
    void setUpOptions();
    void onFolderChanged(const QString& folder);
    void onTypeChanged();
    void onRowTapped(int row);
    void onRowDoubleTapped(int row);
    void onDialogCommand(int command);
    void openListRow(int row);
    void enlargeByTap(LayoutMode mode);
    void enlargeByDoubleTap(LayoutMode mode);
    void showNamePopup(QPoint position);

    // The steps of OK.
    bool checkTypedName(const QString& folder, const QString& name);
    bool appendTypeExtension(const QString& folder, const QString& name);
    bool validateSelection();
    bool validateTypedPath(const QString& path);
    bool runSaveChecks(const QString& path);
    void finish(const QString& folder, const QStringList& names);
    void acceptSelectedShortcut();

    QString fullPath(const QString& folder, const QString& name) const;
    QString followShortcut(const QString& path) const;
    QString selectedPattern() const;
    void refuseName(FileOpMessage message, const QStringList& arguments = {});
    void focusName();
    bool hasNameBox() const;
    bool hasFileList() const;

    BrowseRequest& request_;
    FolderTree* tree_ = nullptr;
    FileListCtrl* list_ = nullptr;
    QSplitter* splitter_ = nullptr;
    QLabel* prompt_ = nullptr;
    QLabel* folderLine_ = nullptr;
    QLineEdit* nameBox_ = nullptr;
    QComboBox* typeBox_ = nullptr;
    QLabel* optionLabel_ = nullptr;
    QComboBox* optionBox_ = nullptr;
    QLabel* lineEndingLabel_ = nullptr;
    QComboBox* lineEndingBox_ = nullptr;
    HoldGesture* nameHold_ = nullptr;
    QStringList typePatterns_;
    LayoutMode layoutMode_ = Normal;
    LayoutMode pendingMode_ = Normal;
    QTimer layoutTimer_;
};

// The file clipboard of the program, shared by every browse dialog.
FileClipboard& ProgramFileClipboard();

// Runs the dialog modally as the editor's commands do: the user's display and tap settings go
// into the request first, and its list style and show-folders choice are kept after OK.
bool RunBrowseDialog(BrowseRequest& request, QWidget* parent);

} // namespace korvel
