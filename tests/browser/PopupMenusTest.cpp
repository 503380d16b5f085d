#include "browser/PopupMenus.h"

#include <gtest/gtest.h>
#include <set>

namespace korvel {
namespace {

namespace cmd = browser_command;

// Every level of a menu: no separator at the end, every item labelled, no command twice.
void ExpectWellFormed(const Menu& menu, std::set<int>& seen) {
    ASSERT_FALSE(menu.empty());
    EXPECT_FALSE(menu.back().isSeparator());
    for (const MenuItem& item : menu) {
        EXPECT_TRUE(item.isSeparator() || !item.text.isEmpty()) << item.command;
        EXPECT_TRUE(item.command == 0 || seen.insert(item.command).second) << item.command;
        if (!item.children.empty())
            ExpectWellFormed(item.children, seen);
    }
}

// Whether a command is there, and whether it may be chosen (false when it is not there).
std::pair<bool, bool> Offered(const Menu& menu, int command) {
    const MenuItem* item = FindCommand(menu, command);
    return {item != nullptr, item != nullptr && item->enabled};
}

// Every consistent state the "File" menu can open in (one row at most and no multi-select mode
// while only single selection is allowed, the "only ..." flags for one row) keeps its rules.
TEST(FilePopupMenu, EveryStateKeepsTheMenusRules) {
    for (unsigned bits = 0; bits < (1u << 10) * 3; ++bits) {
        FilePopupState s;
        const int selected = int(bits >> 10);
        s.fileOperations = bits & 1;
        s.singleSelectionOnly = bits & 2;
        s.multiSelectMode = (bits & 4) && !s.singleSelectionOnly;
        s.selectedCount = s.singleSelectionOnly ? std::min(selected, 1) : selected;
        s.onlyParentSelected = (bits & 8) && s.selectedCount == 1;
        s.onlyShortcutSelected = (bits & 16) && s.selectedCount == 1 && !s.onlyParentSelected;
        s.offerSelectLnk = bits & 32;
        s.resolveShortcuts = bits & 64;
        s.clipboardEmpty = bits & 128;
        s.clipboardCutFromHere = (bits & 256) && !s.clipboardEmpty;
        s.atRoot = bits & 512;
        s.options = (selected == 2 ? list_option::ShowFolders : 0) |
                    (bits % 3 == 0 ? list_option::NoOkCancelInMenu : 0);
        s.sortKey = MakeSortKey(int(bits % 4), bits & 1);
        s.listStyle = 1 + int(bits % 3);
        SCOPED_TRACE(bits);
        const Menu menu = FilePopupMenu(s);
        std::set<int> seen;
        ExpectWellFormed(menu, seen);
        const bool edits = s.fileOperations && s.selectedCount > 0;
        const bool okCancel = !(s.options & list_option::NoOkCancelInMenu);
        const bool lnk = s.offerSelectLnk && s.resolveShortcuts && !s.multiSelectMode &&
                         s.selectedCount == 1 && s.onlyShortcutSelected;
        const bool moves = !s.multiSelectMode;
        const std::tuple<int, bool, bool> rules[] = {
            {cmd::ParentFolder, !s.atRoot, !s.atRoot && moves},
            {cmd::Cut, edits, edits && !s.onlyParentSelected},
            {cmd::Copy, edits, edits && !s.onlyParentSelected},
            {cmd::Paste, s.fileOperations,
             s.fileOperations && !s.clipboardEmpty && !s.clipboardCutFromHere},
            {cmd::Delete, !s.fileOperations || s.selectedCount > 0,
             (!s.fileOperations || s.selectedCount > 0) && !s.onlyParentSelected},
            {cmd::SelectAll, !s.singleSelectionOnly, !s.singleSelectionOnly},
            {cmd::MultiSelect, !s.singleSelectionOnly, !s.singleSelectionOnly},
            {cmd::SelectLnk, lnk, lnk},
            {cmd::Properties, true, s.selectedCount == 1 && moves},
            {cmd::ShowFolders, true, moves},
            {cmd::Refresh, true, moves},
            {cmd::Ok, okCancel, okCancel},
            {cmd::Cancel, okCancel, okCancel},
        };
        for (const auto& [command, present, enabled] : rules)
            EXPECT_EQ(Offered(menu, command), std::pair(present, enabled)) << command;
        // Exactly the current sort column and list style are checked, and the folders item when
        // they are shown; the multi-select item tells its mode.
        for (int command = cmd::SortByName; command <= cmd::StyleDetails; ++command)
            EXPECT_EQ(FindCommand(menu, command)->checked,
                      command == cmd::SortByName + SortColumnOf(s.sortKey) ||
                          command == cmd::StyleIcons + (s.listStyle + 1) % 3)
                << command;
        EXPECT_EQ(FindCommand(menu, cmd::ShowFolders)->checked,
                  (s.options & list_option::ShowFolders) != 0);
        if (const MenuItem* multi = FindCommand(menu, cmd::MultiSelect)) {
            EXPECT_EQ(multi->checked, s.multiSelectMode);
            s.multiSelectMode = !s.multiSelectMode;
            EXPECT_NE(multi->text, FindCommand(FilePopupMenu(s), cmd::MultiSelect)->text);
        }
    }
}

// The folder menu grays delete and rename on the root only; the name box's follows its selection
// and the clipboard.
TEST(SmallPopupMenus, GrayWhatCannotBeDone) {
    for (const bool flag : {false, true}) {
        for (const Menu& menu : {FolderPopupMenu(flag), TextBoxPopupMenu(flag, !flag)}) {
            std::set<int> seen;
            ExpectWellFormed(menu, seen);
        }
        const Menu folder = FolderPopupMenu(flag);
        for (const int command : {cmd::NewFolder, cmd::FolderDelete, cmd::FolderRename})
            EXPECT_EQ(Offered(folder, command).second, command == cmd::NewFolder || !flag);
        const Menu text = TextBoxPopupMenu(flag, !flag);
        EXPECT_EQ(Offered(text, cmd::TextCut).second && Offered(text, cmd::TextCopy).second, flag);
        EXPECT_EQ(Offered(text, cmd::TextPaste).second, !flag);
    }
}

} // namespace
} // namespace korvel
