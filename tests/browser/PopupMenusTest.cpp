#include "browser/PopupMenus.h"

#include <gtest/gtest.h>

namespace korvel {
namespace {

namespace cmd = browser_command;

bool Has(const Menu& menu, int command) {
    return FindCommand(menu, command) != nullptr;
}
bool Enabled(const Menu& menu, int command) {
    const MenuItem* item = FindCommand(menu, command);
    return item != nullptr && item->enabled;
}
bool Checked(const Menu& menu, int command) {
    const MenuItem* item = FindCommand(menu, command);
    return item != nullptr && item->checked;
}
const MenuItem* Submenu(const Menu& menu, const QString& text) {
    for (const MenuItem& item : menu) {
        if (!item.children.empty() && item.text == text)
            return &item;
    }
    return nullptr;
}

// One row selected, file operations on, single selection: the browse dialog's usual state.
FilePopupState OneFileSelected() {
    FilePopupState state;
    state.selectedCount = 1;
    state.options = list_option::ShowFolders;
    return state;
}

TEST(FilePopupMenu, WithASelectionKeepsTheEditSubmenu) {
    FilePopupState state = OneFileSelected();
    state.clipboardEmpty = false;
    const Menu menu = FilePopupMenu(state);

    const MenuItem* edit = Submenu(menu, QStringLiteral("編集"));
    ASSERT_NE(edit, nullptr);
    for (int command : {cmd::Cut, cmd::Copy, cmd::Paste, cmd::Delete})
        EXPECT_TRUE(Enabled(edit->children, command)) << command;
    // Single selection: no "すべて選択" and no separator left at the end of the submenu.
    EXPECT_FALSE(Has(menu, cmd::SelectAll));
    EXPECT_FALSE(edit->children.back().isSeparator());
    EXPECT_FALSE(Has(menu, cmd::MultiSelect));
    EXPECT_TRUE(Enabled(menu, cmd::Properties));
    EXPECT_TRUE(Checked(menu, cmd::ShowFolders));
    EXPECT_TRUE(Has(menu, cmd::Ok));
    EXPECT_TRUE(Has(menu, cmd::Cancel));
}

TEST(FilePopupMenu, GraysPasteForAnEmptyClipboardOrACutFromHere) {
    FilePopupState state = OneFileSelected();
    EXPECT_FALSE(Enabled(FilePopupMenu(state), cmd::Paste));

    state.clipboardEmpty = false;
    state.clipboardCutFromHere = true;
    EXPECT_FALSE(Enabled(FilePopupMenu(state), cmd::Paste));

    state.clipboardCutFromHere = false;
    EXPECT_TRUE(Enabled(FilePopupMenu(state), cmd::Paste));
}

TEST(FilePopupMenu, GraysTheEditCommandsForTheParentRowAlone) {
    FilePopupState state = OneFileSelected();
    state.onlyParentSelected = true;
    state.clipboardEmpty = false;
    const Menu menu = FilePopupMenu(state);
    for (int command : {cmd::Cut, cmd::Copy, cmd::Delete})
        EXPECT_FALSE(Enabled(menu, command)) << command;
    EXPECT_TRUE(Enabled(menu, cmd::Paste));
}

TEST(FilePopupMenu, WithoutASelectionOffersOnlyPaste) {
    FilePopupState state;
    state.clipboardEmpty = false;
    state.singleSelectionOnly = false;
    const Menu menu = FilePopupMenu(state);

    EXPECT_EQ(Submenu(menu, QStringLiteral("編集")), nullptr);
    ASSERT_GT(menu.size(), 3u);
    EXPECT_EQ(menu[2].command, cmd::Paste);
    EXPECT_EQ(menu[2].text, QStringLiteral("貼り付け"));
    EXPECT_TRUE(menu[2].enabled);
    EXPECT_EQ(menu[3].command, cmd::SelectAll);
    EXPECT_FALSE(Has(menu, cmd::Cut));
    EXPECT_FALSE(Enabled(menu, cmd::Properties));

    state.clipboardEmpty = true;
    state.singleSelectionOnly = true;
    const Menu single = FilePopupMenu(state);
    EXPECT_FALSE(Enabled(single, cmd::Paste));
    EXPECT_FALSE(Has(single, cmd::SelectAll));
}

TEST(FilePopupMenu, WithoutFileOperationsOffersOnlyDelete) {
    FilePopupState state = OneFileSelected();
    state.fileOperations = false;
    state.singleSelectionOnly = false;
    Menu menu = FilePopupMenu(state);
    EXPECT_EQ(menu[2].command, cmd::Delete);
    EXPECT_EQ(menu[2].text, QStringLiteral("削除"));
    EXPECT_TRUE(menu[2].enabled);
    EXPECT_EQ(menu[3].command, cmd::SelectAll);
    EXPECT_FALSE(Has(menu, cmd::Paste));

    state.onlyParentSelected = true;
    EXPECT_FALSE(Enabled(FilePopupMenu(state), cmd::Delete));
}

TEST(FilePopupMenu, MultiSelectModeRelabelsItsItemAndGraysNavigation) {
    FilePopupState state = OneFileSelected();
    state.singleSelectionOnly = false;
    state.multiSelectMode = true;
    const Menu menu = FilePopupMenu(state);

    const MenuItem* multi = FindCommand(menu, cmd::MultiSelect);
    ASSERT_NE(multi, nullptr);
    EXPECT_EQ(multi->text, QStringLiteral("選択終了"));
    EXPECT_TRUE(multi->checked);
    for (int command : {cmd::ShowFolders, cmd::ParentFolder, cmd::Refresh, cmd::Properties})
        EXPECT_FALSE(Enabled(menu, command)) << command;
    EXPECT_TRUE(Has(menu, cmd::SelectAll));

    state.multiSelectMode = false;
    EXPECT_EQ(FindCommand(FilePopupMenu(state), cmd::MultiSelect)->text,
              QStringLiteral("複数選択開始"));
}

TEST(FilePopupMenu, OffersTheLnkFileOnlyForOneShortcutOutsideMultiSelect) {
    FilePopupState state = OneFileSelected();
    state.onlyShortcutSelected = true;
    EXPECT_TRUE(Has(FilePopupMenu(state), cmd::SelectLnk));

    for (auto change : {+[](FilePopupState& s) { s.offerSelectLnk = false; },
                        +[](FilePopupState& s) { s.resolveShortcuts = false; },
                        +[](FilePopupState& s) { s.onlyShortcutSelected = false; },
                        +[](FilePopupState& s) { s.selectedCount = 2; },
                        +[](FilePopupState& s) {
                            s.singleSelectionOnly = false;
                            s.multiSelectMode = true;
                        }}) {
        FilePopupState changed = state;
        change(changed);
        EXPECT_FALSE(Has(FilePopupMenu(changed), cmd::SelectLnk));
    }
}

TEST(FilePopupMenu, ChecksSortAndStyleAndDropsParentAtRoot) {
    FilePopupState state = OneFileSelected();
    state.sortKey = MakeSortKey(sort_column::Time, true);
    state.listStyle = list_style::List;
    state.atRoot = true;
    state.options = 0;
    const Menu menu = FilePopupMenu(state);

    EXPECT_TRUE(Checked(menu, cmd::SortByName + sort_column::Time));
    EXPECT_FALSE(Checked(menu, cmd::SortByName));
    EXPECT_TRUE(Checked(menu, cmd::StyleList));
    EXPECT_FALSE(Checked(menu, cmd::StyleDetails));
    EXPECT_FALSE(Checked(menu, cmd::ShowFolders));
    EXPECT_FALSE(Has(menu, cmd::ParentFolder));
    ASSERT_NE(Submenu(menu, QStringLiteral("ソート")), nullptr);
    ASSERT_NE(Submenu(menu, QStringLiteral("リストのスタイル")), nullptr);
}

TEST(FilePopupMenu, OptionDropsOkCancelAndTheirSeparator) {
    FilePopupState state = OneFileSelected();
    state.options |= list_option::NoOkCancelInMenu;
    const Menu menu = FilePopupMenu(state);
    EXPECT_FALSE(Has(menu, cmd::Ok));
    EXPECT_FALSE(Has(menu, cmd::Cancel));
    EXPECT_EQ(menu.back().command, cmd::Refresh);
}

TEST(FolderPopupMenu, GraysDeleteAndRenameOnTheRootOnly) {
    for (int command : {cmd::FolderDelete, cmd::FolderRename}) {
        EXPECT_FALSE(Enabled(FolderPopupMenu(true), command)) << command;
        EXPECT_TRUE(Enabled(FolderPopupMenu(false), command)) << command;
    }
    for (int command :
         {cmd::NewFolder, cmd::FolderProperties, cmd::FolderRefresh, cmd::Ok, cmd::Cancel})
        EXPECT_TRUE(Enabled(FolderPopupMenu(true), command)) << command;
}

TEST(TextBoxPopupMenu, FollowsTheSelectionAndTheClipboard) {
    const Menu empty = TextBoxPopupMenu(false, false);
    EXPECT_FALSE(Enabled(empty, cmd::TextCut));
    EXPECT_FALSE(Enabled(empty, cmd::TextCopy));
    EXPECT_FALSE(Enabled(empty, cmd::TextPaste));
    const Menu full = TextBoxPopupMenu(true, true);
    for (int command : {cmd::TextCut, cmd::TextCopy, cmd::TextPaste, cmd::Ok, cmd::Cancel})
        EXPECT_TRUE(Enabled(full, command)) << command;
}

} // namespace
} // namespace korvel
