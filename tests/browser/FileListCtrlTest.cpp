#include "browser/FileListCtrl.h"

#include "fileops/FileClipboard.h"
#include "fileops/FileSystem.h"
#include "messages/testing/ScriptedMessageService.h"
#include "support/ScratchFolder.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QHeaderView>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QTreeView>
#include <gtest/gtest.h>

namespace korvel {
namespace {

namespace cmd = browser_command;
using testing::ScratchFolder;

// Closes the first popup menu that opens, as a user tapping beside it would, and keeps the texts
// of its items.
class MenuWatcher {
public:
    MenuWatcher() {
        QObject::connect(&timer_, &QTimer::timeout, [this] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            if (menu == nullptr)
                return;
            for (const QAction* action : menu->actions())
                texts_.append(action->text());
            menu->close();
            timer_.stop();
        });
        timer_.start(0);
    }
    const QStringList& texts() const { return texts_; }

private:
    QTimer timer_;
    QStringList texts_;
};

// The labels a QMenu made from a menu shows at its top level.
QStringList TopLevelTexts(const Menu& menu) {
    QStringList texts;
    for (const MenuItem& item : menu)
        texts.append(item.text);
    return texts;
}

class FileListCtrlTest : public ::testing::Test {
protected:
    void SetUp() override {
        folder_.makeFolder("sub");
        folder_.writeSized("a.txt", 300);
        folder_.writeSized("b.txt", 100);
        folder_.writeSized("c.txt", 200);
    }

    // A list as the browse dialog makes it, showing the test folder.
    void create(std::uint32_t options = list_option::ShowFolders, bool multiple = false,
                bool ownNavigation = false) {
        FileListSwitches switches;
        switches.singleSelectionOnly = !multiple;
        switches.ownFolderNavigation = ownNavigation;
        list_.create(list_style::Details, options, switches);
        list_.setClipboard(&clipboard_);
        list_.resize(400, 600);
        list_.show();
        ASSERT_TRUE(list_.setFolder(folder_.folder()));
        list_.refresh();
    }

    QStringList names() const {
        QStringList result;
        for (int row = 0; row < list_.rowCount(); ++row)
            result.append(list_.entryOf(row)->name);
        return result;
    }
    QStringList selectedNames() const {
        QStringList result;
        for (int row : list_.selectedRows())
            result.append(list_.entryOf(row)->name);
        return result;
    }
    int rowOf(const QString& name) const { return int(names().indexOf(name)); }
    QPoint centreOf(int row) const {
        QAbstractItemView* view = list_.view();
        return view->visualRect(view->model()->index(row, 0)).center();
    }
    void tap(int row) {
        QTest::mouseClick(list_.view()->viewport(), Qt::LeftButton, {}, centreOf(row));
    }
    void tapHeader(int column) {
        QHeaderView* header = static_cast<QTreeView*>(list_.view())->header();
        const QPoint point(header->sectionViewportPosition(column) +
                               header->sectionSize(column) / 2,
                           header->height() / 2);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, point);
    }
    void select(const QStringList& selection) { list_.selectNames(selection); }

    ScratchFolder folder_;
    FileClipboard clipboard_;
    FileListCtrl list_;
};

TEST_F(FileListCtrlTest, SelectAllLeavesTheParentRowOut) {
    create(list_option::ShowFolders, true);
    list_.runCommand(cmd::SelectAll);
    EXPECT_EQ(selectedNames(), (QStringList{"sub", "a.txt", "b.txt", "c.txt"}));
}

TEST_F(FileListCtrlTest, HeaderTapsFlipOneRememberedDirection) {
    create(0);
    tapHeader(sort_column::Size);
    const bool firstDescending = IsDescending(list_.sortKey());
    tapHeader(sort_column::Size);
    EXPECT_EQ(IsDescending(list_.sortKey()), !firstDescending);
    tapHeader(sort_column::Name);
    EXPECT_EQ(list_.sortKey(), MakeSortKey(sort_column::Name, false));
    EXPECT_EQ(names(), (QStringList{"a.txt", "b.txt", "c.txt"}));
    tapHeader(sort_column::Name);
    EXPECT_EQ(names(), (QStringList{"c.txt", "b.txt", "a.txt"}));

    // The menu sorts ascending without touching the remembered direction, so the next header
    // tap on that column flips the remembered one and leaves the order ascending.
    list_.runCommand(cmd::SortByName);
    EXPECT_EQ(names(), (QStringList{"a.txt", "b.txt", "c.txt"}));
    tapHeader(sort_column::Name);
    EXPECT_EQ(list_.sortKey(), MakeSortKey(sort_column::Name, false));

    // The direction is the program's, not the list's: a new list continues from it.
    FileListCtrl other;
    other.create(list_style::Details, 0, {});
    other.show();
    ASSERT_TRUE(other.setFolder(folder_.folder()));
    other.refresh();
    QHeaderView* header = static_cast<QTreeView*>(other.view())->header();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                      QPoint(header->sectionSize(0) / 2, header->height() / 2));
    EXPECT_EQ(other.sortKey(), MakeSortKey(sort_column::Name, true));
}

TEST_F(FileListCtrlTest, SortingKeepsTheSelection) {
    create(0, true);
    select({QStringLiteral("b.txt"), QStringLiteral("c.txt")});
    list_.runCommand(cmd::SortByName + sort_column::Size);
    EXPECT_EQ(names(), (QStringList{"b.txt", "c.txt", "a.txt"}));
    EXPECT_EQ(selectedNames(), (QStringList{"b.txt", "c.txt"}));
}

TEST_F(FileListCtrlTest, MultiSelectModeTogglesTappedRowsUntilARefresh) {
    create(list_option::ShowFolders, true);
    list_.runCommand(cmd::MultiSelect);
    ASSERT_TRUE(list_.multiSelectMode());
    tap(rowOf("a.txt"));
    tap(rowOf("c.txt"));
    EXPECT_EQ(selectedNames(), (QStringList{"a.txt", "c.txt"}));
    tap(rowOf("a.txt"));
    EXPECT_EQ(selectedNames(), QStringList{"c.txt"});
    // A folder row is selected like any other, not opened.
    tap(rowOf("sub"));
    EXPECT_EQ(list_.folder(), folder_.folder());

    list_.runCommand(cmd::Refresh);
    EXPECT_FALSE(list_.multiSelectMode());
}

// With the option one tap opens a folder, without it a double tap; ".." leads back.
TEST_F(FileListCtrlTest, OwnNavigationOpensFoldersByTheTapTheOptionAsks) {
    folder_.write("sub/inner.txt");
    for (const bool singleTap : {true, false}) {
        create(list_option::ShowFolders | (singleTap ? list_option::SingleTapOpensFolder : 0),
               false, true);
        QSignalSpy changed(&list_, &FileListCtrl::folderChanged);
        tap(rowOf("sub"));
        if (!singleTap) {
            EXPECT_EQ(list_.folder(), folder_.folder());
            QTest::mouseDClick(list_.view()->viewport(), Qt::LeftButton, {},
                               centreOf(rowOf("sub")));
        }
        EXPECT_EQ(list_.folder(), folder_.path("sub/")) << singleTap;
        EXPECT_EQ(names(), (QStringList{"..", "inner.txt"}));
        EXPECT_EQ(changed.size(), 1);
        list_.runCommand(cmd::ParentFolder);
        EXPECT_EQ(list_.folder(), folder_.folder());
    }
}

TEST_F(FileListCtrlTest, TellsItsOwnerAboutTapsOnceTheyAreReleased) {
    create();
    QSignalSpy tapped(&list_, &FileListCtrl::rowTapped);
    tap(rowOf("b.txt"));
    EXPECT_TRUE(tapped.isEmpty());
    QApplication::processEvents();
    ASSERT_EQ(tapped.size(), 1);
    EXPECT_EQ(tapped.front().front().toInt(), rowOf("b.txt"));
    EXPECT_EQ(selectedNames(), QStringList{"b.txt"});

    QTest::mouseClick(list_.view()->viewport(), Qt::LeftButton, {},
                      QPoint(10, list_.view()->viewport()->height() - 5));
    QApplication::processEvents();
    ASSERT_EQ(tapped.size(), 2);
    EXPECT_EQ(tapped.back().front().toInt(), -1);
}

TEST_F(FileListCtrlTest, HoldingARowOpensTheFileMenuAndTheReleaseIsNoTap) {
    create();
    list_.setHoldDelay(0);
    QSignalSpy tapped(&list_, &FileListCtrl::rowTapped);
    MenuWatcher watcher;
    QWidget* viewport = list_.view()->viewport();
    QTest::mousePress(viewport, Qt::LeftButton, {}, centreOf(rowOf("b.txt")));
    QApplication::processEvents();
    EXPECT_EQ(watcher.texts(), TopLevelTexts(FilePopupMenu(list_.popupState())));
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, centreOf(rowOf("b.txt")));
    QApplication::processEvents();
    EXPECT_TRUE(tapped.isEmpty());
    EXPECT_EQ(selectedNames(), QStringList{"b.txt"});
}

// Inside the selection a right click keeps it; outside, the clicked row alone is selected.
TEST_F(FileListCtrlTest, ARightClickOutsideTheSelectionMenusForThatRowAlone) {
    create(list_option::ShowFolders, true);
    for (const auto& [row, after] : {std::pair{"b.txt", QStringList{"a.txt", "b.txt"}},
                                     std::pair{"c.txt", QStringList{"c.txt"}}}) {
        select({QStringLiteral("a.txt"), QStringLiteral("b.txt")});
        MenuWatcher watcher;
        QTest::mousePress(list_.view()->viewport(), Qt::RightButton, {}, centreOf(rowOf(row)));
        EXPECT_EQ(watcher.texts(), TopLevelTexts(FilePopupMenu(list_.popupState())));
        EXPECT_EQ(selectedNames(), after);
    }
}

TEST_F(FileListCtrlTest, EnterIsHandedToTheDialog) {
    create();
    QSignalSpy entered(&list_, &FileListCtrl::enterPressed);
    list_.view()->setFocus();
    QTest::keyClick(list_.view(), Qt::Key_Return);
    QApplication::processEvents();
    EXPECT_EQ(entered.size(), 1);
}

TEST_F(FileListCtrlTest, ParentFolderCommandAndTheRoot) {
    create();
    list_.runCommand(cmd::ParentFolder);
    EXPECT_EQ(list_.folder(), files::ParentFolderOf(folder_.folder()));
    EXPECT_FALSE(list_.popupState().atRoot);
    ASSERT_TRUE(list_.setFolder(QStringLiteral("/")));
    EXPECT_TRUE(list_.popupState().atRoot);
}

TEST_F(FileListCtrlTest, ShowFoldersCommandTogglesAndRefreshes) {
    create();
    ASSERT_TRUE(names().contains("sub"));
    list_.runCommand(cmd::ShowFolders);
    EXPECT_FALSE(names().contains("sub"));
    EXPECT_EQ(list_.options() & list_option::ShowFolders, 0u);
    list_.runCommand(cmd::ShowFolders);
    EXPECT_TRUE(names().contains("sub"));
}

TEST_F(FileListCtrlTest, StyleCommandsSwitchViewsThatKeepEveryNameInItsOwnCell) {
    const QString longName = QStringLiteral("a name long enough to run under its neighbours.txt");
    folder_.write(longName);
    create();
    QAbstractItemView* details = list_.view();
    const int icon = QApplication::style()->pixelMetric(QStyle::PM_SmallIconSize);
    for (const auto& [command, style] : {std::pair{cmd::StyleIcons, list_style::Icons},
                                         std::pair{cmd::StyleList, list_style::List}}) {
        list_.runCommand(command);
        QApplication::processEvents();
        EXPECT_EQ(list_.listStyle(), style);
        QAbstractItemView* view = list_.view();
        EXPECT_NE(view, details);
        EXPECT_EQ(view->iconSize(), QSize(icon, icon)) << style;
        QList<QRect> cells;
        for (int row = 0; row < list_.rowCount(); ++row)
            cells.append(view->visualRect(view->model()->index(row, 0)));
        for (qsizetype i = 0; i < cells.size(); ++i) {
            for (qsizetype j = i + 1; j < cells.size(); ++j)
                EXPECT_FALSE(cells[i].intersects(cells[j])) << style << ": " << i << ", " << j;
        }
        EXPECT_GE(cells.front().height(), icon);
    }
    // Room beside it: the list style shows the longest name whole.
    const QRect longest =
        list_.view()->visualRect(list_.view()->model()->index(names().indexOf(longName), 0));
    EXPECT_GT(longest.width(), list_.view()->fontMetrics().horizontalAdvance(longName) + icon);

    list_.runCommand(cmd::StyleDetails);
    EXPECT_EQ(list_.view(), details);
    EXPECT_EQ(list_.popupState().listStyle, list_style::Details);
}

TEST_F(FileListCtrlTest, PopupStateFollowsTheSelection) {
    folder_.write("short.lnk", "1#" + folder_.path("a.txt").toUtf8() + "\r\n");
    create();
    EXPECT_EQ(list_.popupState().selectedCount, 0);
    select({QStringLiteral("..")});
    EXPECT_TRUE(list_.popupState().onlyParentSelected);
    select({QStringLiteral("short.lnk")});
    EXPECT_FALSE(list_.popupState().onlyParentSelected);
    EXPECT_TRUE(list_.popupState().onlyShortcutSelected);
    EXPECT_EQ(list_.popupState().selectedCount, 1);
}

// The edit commands hand the selection to the clipboard and the delete, then show the folder as
// it is with the pasted rows selected; a cut grays pasting back into its own folder.
TEST_F(FileListCtrlTest, EditCommandsActOnTheSelectionAndShowTheResult) {
    create(list_option::ShowFolders, true);
    select({QStringLiteral("a.txt")});
    list_.runCommand(cmd::Copy);
    EXPECT_FALSE(list_.popupState().clipboardEmpty);
    EXPECT_FALSE(list_.popupState().clipboardCutFromHere);
    list_.runCommand(cmd::Paste);
    ASSERT_EQ(clipboard_.pastedNames().size(), 1);
    EXPECT_TRUE(names().contains(clipboard_.pastedNames().front()));
    EXPECT_EQ(selectedNames(), clipboard_.pastedNames());

    select({QStringLiteral("b.txt")});
    list_.runCommand(cmd::Cut);
    EXPECT_TRUE(list_.popupState().clipboardCutFromHere);
    ASSERT_TRUE(list_.setFolder(folder_.path("sub")));
    list_.refresh();
    EXPECT_FALSE(list_.popupState().clipboardCutFromHere);
    list_.runCommand(cmd::Paste);
    EXPECT_TRUE(folder_.exists("sub/b.txt"));
    EXPECT_EQ(selectedNames(), QStringList{"b.txt"});

    ASSERT_TRUE(list_.setFolder(folder_.folder()));
    list_.refresh();
    for (const MessageAnswer answer : {MessageAnswer::No, MessageAnswer::Yes}) {
        ScriptedMessageService messages{answer};
        select({QStringLiteral("a.txt"), QStringLiteral("c.txt")});
        list_.runCommand(cmd::Delete);
        EXPECT_EQ(names().contains("c.txt"), answer == MessageAnswer::No);
        EXPECT_EQ(folder_.exists("c.txt"), answer == MessageAnswer::No);
    }
}

TEST_F(FileListCtrlTest, DialogCommandsArePassedOn) {
    create();
    QSignalSpy passed(&list_, &FileListCtrl::dialogCommand);
    for (int command : {cmd::Ok, cmd::Cancel, cmd::SelectLnk})
        list_.runCommand(command);
    ASSERT_EQ(passed.size(), 3);
    EXPECT_EQ(passed[2].front().toInt(), cmd::SelectLnk);
}

TEST_F(FileListCtrlTest, ListingDisabledShowsNothing) {
    FileListSwitches switches;
    switches.listingEnabled = false;
    list_.create(list_style::Details, list_option::ShowFolders, switches);
    ASSERT_TRUE(list_.setFolder(folder_.folder()));
    EXPECT_EQ(list_.refresh(), FileOpStatus::Done);
    EXPECT_EQ(list_.rowCount(), 0);
}

} // namespace
} // namespace korvel
