#include "browser/PopupMenus.h"

#include <gtest/gtest.h>
#include <set>
#include <tuple>

namespace korvel {
namespace {

namespace cmd = browser_command;

const MenuItem* Find(const Menu& menu, int command) {
    const MenuItem* item = FindCommand(menu, command);
    EXPECT_NE(item, nullptr) << command;
    static const MenuItem none;
    return item != nullptr ? item : &none;
}

// Every level of a menu: no separator at the end, no command twice, and every item that is not a
// separator has a label. (A menu shows no separator at the top or two together.)
void ExpectWellFormed(const Menu& menu, std::set<int>& seen) {
    ASSERT_FALSE(menu.empty());
    EXPECT_FALSE(menu.back().isSeparator());
    for (std::size_t i = 0; i < menu.size(); ++i) {
        const MenuItem& item = menu[i];
        if (item.isSeparator())
            continue;
        EXPECT_FALSE(item.text.isEmpty()) << item.command;
        if (item.command != 0) {
            EXPECT_TRUE(seen.insert(item.command).second) << item.command << " twice";
        }
        if (!item.children.empty())
            ExpectWellFormed(item.children, seen);
    }
}

// Every consistent state the "File" menu can open in: one row at most when only single selection
// is allowed, multi-select mode only where it is allowed, the "only ..." flags for one row.
std::vector<FilePopupState> EveryState() {
    std::vector<FilePopupState> states;
    for (unsigned bits = 0; bits < (1u << 10); ++bits) {
        for (int selected = 0; selected <= 2; ++selected) {
            FilePopupState state;
            state.fileOperations = bits & 1;
            state.singleSelectionOnly = bits & 2;
            state.multiSelectMode = (bits & 4) && !state.singleSelectionOnly;
            state.selectedCount = state.singleSelectionOnly ? std::min(selected, 1) : selected;
            state.onlyParentSelected = (bits & 8) && state.selectedCount == 1;
            state.onlyShortcutSelected =
                (bits & 16) && state.selectedCount == 1 && !state.onlyParentSelected;
            state.offerSelectLnk = bits & 32;
            state.resolveShortcuts = bits & 64;
            state.clipboardEmpty = bits & 128;
            state.clipboardCutFromHere = (bits & 256) && !state.clipboardEmpty;
            state.atRoot = bits & 512;
            state.options = (selected == 2 ? list_option::ShowFolders : 0) |
                            (bits % 3 == 0 ? list_option::NoOkCancelInMenu : 0);
            state.sortKey = MakeSortKey(int(bits % 4), bits & 1);
            state.listStyle = 1 + int(bits % 3);
            states.push_back(state);
        }
    }
    return states;
}

TEST(FilePopupMenu, EveryStateKeepsTheMenusRules) {
    const int sortCommands[] = {cmd::SortByName, cmd::SortByName + 1, cmd::SortByName + 2,
                                cmd::SortByType};
    const int styleCommands[] = {cmd::StyleDetails, cmd::StyleIcons, cmd::StyleList};
    for (const FilePopupState& s : EveryState()) {
        const Menu menu = FilePopupMenu(s);
        SCOPED_TRACE(::testing::Message()
                     << s.fileOperations << s.singleSelectionOnly << s.multiSelectMode
                     << s.selectedCount << s.onlyParentSelected << s.onlyShortcutSelected
                     << s.clipboardEmpty << s.clipboardCutFromHere << s.atRoot);
        std::set<int> seen;
        ExpectWellFormed(menu, seen);
        // Each command: whether it is there, and whether it may be chosen.
        const bool editable = s.fileOperations && s.selectedCount > 0;
        const bool okCancel = !(s.options & list_option::NoOkCancelInMenu);
        const bool single = s.singleSelectionOnly;
        const std::tuple<int, bool, bool> rules[] = {
            {cmd::ParentFolder, !s.atRoot, !s.multiSelectMode},
            {cmd::Cut, editable, !s.onlyParentSelected},
            {cmd::Copy, editable, !s.onlyParentSelected},
            {cmd::Paste, s.fileOperations, !s.clipboardEmpty && !s.clipboardCutFromHere},
            {cmd::Delete, !s.fileOperations || s.selectedCount > 0, !s.onlyParentSelected},
            {cmd::SelectAll, !single, true},
            {cmd::MultiSelect, !single, true},
            {cmd::SelectLnk,
             s.offerSelectLnk && s.resolveShortcuts && !s.multiSelectMode && s.selectedCount == 1 &&
                 s.onlyShortcutSelected,
             true},
            {cmd::Properties, true, s.selectedCount == 1 && !s.multiSelectMode},
            {cmd::ShowFolders, true, !s.multiSelectMode},
            {cmd::Refresh, true, !s.multiSelectMode},
            {cmd::Ok, okCancel, true},
            {cmd::Cancel, okCancel, true},
        };
        for (const auto& [command, present, enabled] : rules) {
            const MenuItem* item = FindCommand(menu, command);
            ASSERT_EQ(item != nullptr, present) << command;
            if (item != nullptr) {
                EXPECT_EQ(item->enabled, enabled) << command;
            }
        }
        // Exactly the current sort column and list style are checked, and the folders item
        // when they are shown.
        for (int column = 0; column < 4; ++column)
            EXPECT_EQ(Find(menu, sortCommands[column])->checked, column == SortColumnOf(s.sortKey));
        for (int style = 1; style <= 3; ++style)
            EXPECT_EQ(Find(menu, styleCommands[style - 1])->checked, style == s.listStyle);
        EXPECT_EQ(Find(menu, cmd::ShowFolders)->checked,
                  (s.options & list_option::ShowFolders) != 0);
        if (const MenuItem* multi = FindCommand(menu, cmd::MultiSelect)) {
            EXPECT_EQ(multi->checked, s.multiSelectMode);
            FilePopupState other = s;
            other.multiSelectMode = !s.multiSelectMode;
            EXPECT_NE(multi->text, Find(FilePopupMenu(other), cmd::MultiSelect)->text);
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
            EXPECT_EQ(Find(folder, command)->enabled, command == cmd::NewFolder || !flag);
        const Menu text = TextBoxPopupMenu(flag, !flag);
        EXPECT_EQ(Find(text, cmd::TextCut)->enabled && Find(text, cmd::TextCopy)->enabled, flag);
        EXPECT_EQ(Find(text, cmd::TextPaste)->enabled, !flag);
    }
}

} // namespace
} // namespace korvel
