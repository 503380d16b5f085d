#pragma once

#include "browser/FileListing.h"

#include <QPoint>
#include <QString>
#include <cstdint>
#include <vector>

class QWidget;

// The browser's three popup menus ("File", "Folder", "TextBox") as plain data: which items are
// there, grayed and checked is decided here, without a widget, and a QMenu is only made from the
// result when the menu is shown.
namespace korvel {

namespace browser_command {
inline constexpr int Ok = 1;
inline constexpr int Cancel = 2;
inline constexpr int FolderRename = 32790;
inline constexpr int FolderDelete = 32791;
inline constexpr int NewFolder = 32792;
inline constexpr int ShowFolders = 32795;
inline constexpr int SortByName = 32796; // 32796 + sort column
inline constexpr int SortByType = 32799;
inline constexpr int StyleIcons = 32800;
inline constexpr int StyleList = 32801;
inline constexpr int StyleDetails = 32802;
inline constexpr int Cut = 32803;
inline constexpr int Copy = 32804;
inline constexpr int Delete = 32805;
inline constexpr int Paste = 32806;
inline constexpr int Properties = 32807;
inline constexpr int Refresh = 32809;
inline constexpr int SelectLnk = 32810;
inline constexpr int MultiSelect = 32811;
inline constexpr int SelectAll = 32812;
inline constexpr int ParentFolder = 32813;
inline constexpr int TextCut = 32814;
inline constexpr int TextCopy = 32815;
inline constexpr int TextPaste = 32816;
inline constexpr int FolderProperties = 32893;
inline constexpr int FolderRefresh = 32894;
} // namespace browser_command

// One menu item: a command, a submenu (children, no command) or a separator (neither).
struct MenuItem {
    int command = 0;
    QString text;
    bool enabled = true;
    bool checked = false;
    std::vector<MenuItem> children;

    bool isSeparator() const { return command == 0 && children.empty(); }
};
using Menu = std::vector<MenuItem>;

// The item of a command anywhere in the menu, or nothing when the menu lacks it.
const MenuItem* FindCommand(const Menu& menu, int command);

// `FileListCtrl` list styles.
namespace list_style {
inline constexpr int Details = 1;
inline constexpr int Icons = 2;
inline constexpr int List = 3;
} // namespace list_style

// What the "File" menu depends on when it opens.
struct FilePopupState {
    bool fileOperations = true;
    bool singleSelectionOnly = true;
    bool multiSelectMode = false;
    int selectedCount = 0;
    // The only selected row is "..".
    bool onlyParentSelected = false;
    // The only selected row is a shortcut.
    bool onlyShortcutSelected = false;
    bool offerSelectLnk = true;
    bool resolveShortcuts = true;
    bool clipboardEmpty = true;
    // The clipboard holds a cut taken from the list's current folder.
    bool clipboardCutFromHere = false;
    std::uint32_t options = 0;
    bool atRoot = false;
    SortKey sortKey = 0;
    int listStyle = list_style::Details;
};

Menu FilePopupMenu(const FilePopupState& state);
// The folder tree's menu; the root item can be neither deleted nor renamed, so its "削除" and
// "名前の変更" are grayed.
Menu FolderPopupMenu(bool rootSelected);
// The name box's menu, acting on the box's text and the system clipboard.
Menu TextBoxPopupMenu(bool hasSelection, bool clipboardHasText);

// Shows the menu at a screen position and answers the chosen command, 0 when none was chosen.
int ExecPopupMenu(const Menu& menu, QPoint globalPosition, QWidget* parent);

} // namespace korvel
