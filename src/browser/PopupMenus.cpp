#include "browser/PopupMenus.h"

#include "messages/StringTable.h"

#include <QAction>
#include <QMenu>
#include <algorithm>

namespace korvel {
namespace {

namespace cmd = browser_command;

MenuItem Item(int command, const QString& text) {
    MenuItem item;
    item.command = command;
    item.text = text;
    return item;
}
MenuItem Separator() {
    return MenuItem();
}
MenuItem Submenu(const QString& text, Menu children) {
    MenuItem item;
    item.text = text;
    item.children = std::move(children);
    return item;
}

// Positions in the "File" menu that its rules name.
constexpr std::size_t kEditPosition = 2;
constexpr std::size_t kSortPosition = 8;
constexpr std::size_t kStylePosition = 9;

Menu FileMenuTemplate() {
    return {
        Item(cmd::ParentFolder, QStringLiteral("親フォルダへ移動")),
        Separator(),
        Submenu(QStringLiteral("編集"), {Item(cmd::Cut, QStringLiteral("切り取り")),
                                         Item(cmd::Copy, QStringLiteral("コピー")),
                                         Item(cmd::Paste, QStringLiteral("貼り付け")), Separator(),
                                         Item(cmd::Delete, QStringLiteral("削除")), Separator(),
                                         Item(cmd::SelectAll, QStringLiteral("すべて選択"))}),
        Item(cmd::MultiSelect, QStringLiteral("複数選択開始")),
        Item(cmd::SelectLnk, QStringLiteral(".lnk ファイルを選択")),
        Item(cmd::Properties, QStringLiteral("プロパティ...")),
        Separator(),
        Item(cmd::ShowFolders, QStringLiteral("フォルダを表示")),
        Submenu(QStringLiteral("ソート"),
                {Item(cmd::SortByName, QStringLiteral("名前")),
                 Item(cmd::SortByName + 1, QStringLiteral("サイズ")),
                 Item(cmd::SortByName + 2, QStringLiteral("更新時間")),
                 Item(cmd::SortByType, QStringLiteral("ファイルの種類"))}),
        Submenu(QStringLiteral("リストのスタイル"),
                {Item(cmd::StyleIcons, QStringLiteral("アイコン")),
                 Item(cmd::StyleList, QStringLiteral("リスト")),
                 Item(cmd::StyleDetails, QStringLiteral("詳細"))}),
        Item(cmd::Refresh, QStringLiteral("最新の情報に更新")),
        Separator(),
        Item(cmd::Ok, QStringLiteral("OK")),
        Item(cmd::Cancel, QStringLiteral("キャンセル")),
    };
}

MenuItem* FindMutable(Menu& menu, int command) {
    for (MenuItem& item : menu) {
        if (item.command == command)
            return &item;
        if (MenuItem* found = FindMutable(item.children, command))
            return found;
    }
    return nullptr;
}

void Remove(Menu& menu, int command) {
    for (auto it = menu.begin(); it != menu.end(); ++it) {
        if (it->command == command) {
            menu.erase(it);
            return;
        }
        Remove(it->children, command);
    }
}

void Gray(Menu& menu, int command) {
    if (MenuItem* item = FindMutable(menu, command))
        item->enabled = false;
}

void Check(Menu& menu, int command) {
    if (MenuItem* item = FindMutable(menu, command))
        item->checked = true;
}

void PopulateMenu(QMenu& target, const Menu& menu) {
    for (const MenuItem& item : menu) {
        if (!item.children.empty()) {
            PopulateMenu(*target.addMenu(item.text), item.children);
        } else if (item.isSeparator()) {
            target.addSeparator();
        } else {
            QAction* action = target.addAction(item.text);
            action->setData(item.command);
            action->setEnabled(item.enabled);
            action->setCheckable(item.checked);
            action->setChecked(item.checked);
        }
    }
}

} // namespace

const MenuItem* FindCommand(const Menu& menu, int command) {
    return FindMutable(const_cast<Menu&>(menu), command);
}

Menu FilePopupMenu(const FilePopupState& state) {
    Menu menu = FileMenuTemplate();

    Check(menu[kSortPosition].children, cmd::SortByName + SortColumnOf(state.sortKey));
    static constexpr int styleCommands[] = {0, cmd::StyleDetails, cmd::StyleIcons, cmd::StyleList};
    if (state.listStyle >= 1 && state.listStyle <= 3)
        Check(menu[kStylePosition].children, styleCommands[state.listStyle]);

    const bool pasteGrayed = state.clipboardEmpty || state.clipboardCutFromHere;
    MenuItem selectAll = Item(cmd::SelectAll, LoadString(30312));
    if (!state.fileOperations || state.selectedCount == 0) {
        MenuItem single = state.fileOperations ? Item(cmd::Paste, LoadString(30313))
                                               : Item(cmd::Delete, LoadString(30311));
        single.enabled = state.fileOperations ? !pasteGrayed : !state.onlyParentSelected;
        Menu replaced;
        replaced.reserve(menu.size() + 1);
        for (std::size_t i = 0; i < menu.size(); ++i) {
            if (i != kEditPosition) {
                replaced.push_back(std::move(menu[i]));
                continue;
            }
            replaced.push_back(single);
            if (!state.singleSelectionOnly)
                replaced.push_back(selectAll);
        }
        menu = std::move(replaced);
    } else {
        Menu& edit = menu[kEditPosition].children;
        if (pasteGrayed)
            Gray(edit, cmd::Paste);
        if (state.onlyParentSelected) {
            for (int command : {cmd::Cut, cmd::Copy, cmd::Delete})
                Gray(edit, command);
        }
        if (state.singleSelectionOnly)
            edit.resize(edit.size() - 2); // "すべて選択" and the separator before it
    }

    if (state.singleSelectionOnly) {
        Remove(menu, cmd::MultiSelect);
    } else if (state.multiSelectMode) {
        MenuItem* multi = FindMutable(menu, cmd::MultiSelect);
        multi->text = LoadString(30314);
        multi->checked = true;
    }

    if (!(state.offerSelectLnk && state.resolveShortcuts && !state.multiSelectMode &&
          state.selectedCount == 1 && state.onlyShortcutSelected))
        Remove(menu, cmd::SelectLnk);
    if (state.selectedCount != 1 || state.multiSelectMode)
        Gray(menu, cmd::Properties);
    if ((state.options & list_option::ShowFolders) != 0)
        Check(menu, cmd::ShowFolders);
    if (state.atRoot)
        Remove(menu, cmd::ParentFolder);
    if (state.multiSelectMode) {
        for (int command : {cmd::ShowFolders, cmd::ParentFolder, cmd::Refresh})
            Gray(menu, command);
    }
    if ((state.options & list_option::NoOkCancelInMenu) != 0)
        menu.resize(menu.size() - 3); // the separator, "OK" and "キャンセル" end the menu
    return menu;
}

Menu FolderPopupMenu(bool rootSelected) {
    Menu menu{
        Item(cmd::NewFolder, QStringLiteral("新規フォルダ")),
        Item(cmd::FolderDelete, QStringLiteral("削除")),
        Item(cmd::FolderRename, QStringLiteral("名前の変更")),
        Item(cmd::FolderProperties, QStringLiteral("プロパティ...")),
        Item(cmd::FolderRefresh, QStringLiteral("最新の情報に更新")),
        Separator(),
        Item(cmd::Ok, QStringLiteral("OK")),
        Item(cmd::Cancel, QStringLiteral("キャンセル")),
    };
    if (rootSelected) {
        Gray(menu, cmd::FolderDelete);
        Gray(menu, cmd::FolderRename);
    }
    return menu;
}

Menu TextBoxPopupMenu(bool hasSelection, bool clipboardHasText) {
    Menu menu{
        Item(cmd::TextCut, QStringLiteral("切り取り")),
        Item(cmd::TextCopy, QStringLiteral("コピー")),
        Item(cmd::TextPaste, QStringLiteral("貼り付け")),
        Separator(),
        Item(cmd::Ok, QStringLiteral("OK")),
        Item(cmd::Cancel, QStringLiteral("キャンセル")),
    };
    if (!hasSelection) {
        Gray(menu, cmd::TextCut);
        Gray(menu, cmd::TextCopy);
    }
    if (!clipboardHasText)
        Gray(menu, cmd::TextPaste);
    return menu;
}

int ExecPopupMenu(const Menu& menu, QPoint globalPosition, QWidget* parent) {
    QMenu popup(parent);
    PopulateMenu(popup, menu);
    const QAction* chosen = popup.exec(globalPosition);
    return chosen != nullptr ? chosen->data().toInt() : 0;
}

} // namespace korvel
