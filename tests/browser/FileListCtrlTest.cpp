#include "browser/FileListCtrl.h"

#include "browser/PropertiesDialog.h"
#include "fileops/FileClipboard.h"
#include "fileops/FileSystem.h"
#include "support/ScratchFolder.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QTreeView>
#include <optional>

namespace korvel {
namespace {

namespace cmd = browser_command;
using testing::ScratchFolder;
using Answer = MessageAnswer;

// Runs open, closing the first popup menu it shows as a tap beside it would; the menu's
// top-level item count, -1 without a menu.
int ItemsOfTheMenuOpenedBy(const std::function<void()>& open) {
    int items = -1;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        if (auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget())) {
            items = int(menu->actions().size());
            menu->close();
            timer.stop();
        }
    });
    timer.start(0);
    open();
    QApplication::processEvents();
    return items;
}

class FileListCtrlTest : public ::testing::Test {
protected:
    // A list as the browse dialog makes it, of a new folder with "sub" and three files.
    void create(std::uint32_t options = list_option::ShowFolders, bool multiple = true,
                bool ownNavigation = false) {
        folder_.emplace();
        folder_->makeFolder("sub");
        for (const auto& [name, size] : {std::pair{"a.txt", 300}, {"b.txt", 100}, {"c.txt", 200}})
            folder_->writeSized(name, size);
        list_.emplace();
        list_->create(list_style::Details, options,
                      {.singleSelectionOnly = !multiple, .ownFolderNavigation = ownNavigation});
        list_->setClipboard(&clipboard_);
        list_->resize(400, 600);
        list_->show();
        ASSERT_TRUE(list_->setFolder(folder_->folder()));
        list_->refresh();
    }
    // The rows in order, the selected ones marked "*".
    QString state() const {
        QStringList names;
        for (int row = 0; row < list_->rowCount(); ++row)
            names.append(list_->entryOf(row)->name +
                         (list_->selectedRows().contains(row) ? "*" : ""));
        return names.join(u' ');
    }
    int rowOf(const QString& name) const {
        int row = 0;
        while (row < list_->rowCount() && list_->entryOf(row)->name != name)
            ++row;
        return row;
    }
    QPoint centreOf(const QString& name) const {
        return list_->view()->visualRect(list_->view()->model()->index(rowOf(name), 0)).center();
    }
    void tap(const QString& name) {
        QTest::mouseClick(list_->view()->viewport(), Qt::LeftButton, {}, centreOf(name));
    }
    static void tapHeader(FileListCtrl& list, int column) {
        QHeaderView* header = static_cast<QTreeView*>(list.view())->header();
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                          QPoint(header->sectionViewportPosition(column) + 5, 5));
    }

    FileClipboard clipboard_;
    std::optional<ScratchFolder> folder_;
    std::optional<FileListCtrl> list_;
};

TEST_F(FileListCtrlTest, CommandsActOnTheSelectionAndShowTheResult) {
    // clang-format off
    const std::tuple<const char*, QStringList, QList<int>, QList<Answer>, const char*> rows[] = {
        {"select all takes '..'", {}, {cmd::SelectAll}, {}, ".. sub* a.txt* b.txt* c.txt*"},
        {"a sort loses the selection", {"b.txt", "c.txt"}, {cmd::SortByName + 1}, {}, ".. sub b.txt* c.txt* a.txt"},
        {"the folders stay", {}, {cmd::ShowFolders}, {}, "a.txt b.txt c.txt"},
        {"a delete answered No deletes", {"a.txt", "c.txt"}, {cmd::Delete}, {Answer::No}, ".. sub a.txt* b.txt c.txt*"},
        {"deleted rows stay", {"a.txt", "c.txt"}, {cmd::Delete}, {Answer::Yes}, ".. sub b.txt"},
        {"a pasted copy is not selected", {"a.txt"}, {cmd::Copy, cmd::Paste}, {}, ".. sub a.txt b.txt c.txt コピー ～ a.txt*"},
    };
    // clang-format on
    for (const auto& [fault, picked, commands, answers, after] : rows) {
        SCOPED_TRACE(fault);
        create();
        list_->selectNames(picked);
        ScriptedMessageService messages;
        for (const Answer answer : answers)
            messages.script({answer});
        const QStringList before = folder_->names();
        QSignalSpy changed(&*list_, &FileListCtrl::contentsChanged); // the tree refills on it
        for (const int command : commands)
            list_->runCommand(command);
        EXPECT_EQ(state(), QString::fromUtf8(after));
        EXPECT_EQ(changed.isEmpty(), folder_->names() == before);
    }
}

TEST_F(FileListCtrlTest, HeaderTapsFlipOneDirectionForTheWholeProgram) {
    create(0);
    for (const int column : {sort_column::Size, sort_column::Size, sort_column::Name})
        tapHeader(*list_, column);
    EXPECT_EQ(state(), "a.txt b.txt c.txt");
    tapHeader(*list_, sort_column::Name);
    EXPECT_EQ(state(), "c.txt b.txt a.txt");
    // The menu sorts ascending without touching the remembered direction, so the next tap on
    // that column flips it back to ascending.
    list_->runCommand(cmd::SortByName);
    EXPECT_EQ(state(), "a.txt b.txt c.txt");
    tapHeader(*list_, sort_column::Name);
    EXPECT_EQ(list_->sortKey(), MakeSortKey(sort_column::Name, false));
    // A new list continues from the direction the last tap left.
    FileListCtrl other;
    other.create(list_style::Details, 0, {});
    other.show();
    ASSERT_TRUE(other.setFolder(folder_->folder()));
    other.refresh();
    tapHeader(other, sort_column::Name);
    EXPECT_EQ(other.sortKey(), MakeSortKey(sort_column::Name, true));
}

TEST_F(FileListCtrlTest, MultiSelectModeTogglesTappedRowsUntilARefresh) {
    create();
    list_->runCommand(cmd::MultiSelect);
    for (const char* name : {"a.txt", "c.txt", "a.txt", "sub"})
        tap(name);
    EXPECT_EQ(state(), ".. sub* a.txt b.txt c.txt*");
    list_->runCommand(cmd::Refresh);
    EXPECT_FALSE(list_->multiSelectMode());
}

// With the option one tap opens a folder, without it a double tap; ".." and the command lead
// back, and the root has no way up.
TEST_F(FileListCtrlTest, OwnNavigationOpensFoldersByTheTapTheOptionAsks) {
    for (const bool singleTap : {true, false}) {
        create(list_option::ShowFolders | (singleTap ? list_option::SingleTapOpensFolder : 0),
               false, true);
        QSignalSpy changed(&*list_, &FileListCtrl::folderChanged);
        tap("sub");
        EXPECT_EQ(list_->folder(), folder_->folder(singleTap ? "sub" : ""));
        if (!singleTap)
            QTest::mouseDClick(list_->view()->viewport(), Qt::LeftButton, {}, centreOf("sub"));
        EXPECT_EQ(state(), "..");
        EXPECT_EQ(changed.size(), 1);
        list_->runCommand(cmd::ParentFolder);
        EXPECT_EQ(list_->folder(), folder_->folder());
    }
    EXPECT_FALSE(list_->popupState().atRoot);
    list_->runCommand(cmd::ParentFolder);
    EXPECT_EQ(list_->folder(), files::ParentFolderOf(folder_->folder()));
    ASSERT_TRUE(list_->setFolder(QStringLiteral("/")));
    EXPECT_TRUE(list_->popupState().atRoot);
}

// The owner hears of a tap on a row or on empty space once it is released; a press held until
// the menu came is no tap.
TEST_F(FileListCtrlTest, TellsItsOwnerAboutTapsButNotAboutHolds) {
    create(list_option::ShowFolders, false);
    QSignalSpy tapped(&*list_, &FileListCtrl::rowTapped);
    tap("b.txt");
    EXPECT_TRUE(tapped.isEmpty());
    QApplication::processEvents();
    QTest::mouseClick(list_->view()->viewport(), Qt::LeftButton, {},
                      QPoint(10, list_->view()->viewport()->height() - 5));
    QApplication::processEvents();
    ASSERT_EQ(tapped.size(), 2);
    EXPECT_EQ(tapped[0].front().toInt(), rowOf("b.txt"));
    EXPECT_EQ(tapped[1].front().toInt(), -1);

    list_->setHoldDelay(0);
    QWidget* viewport = list_->view()->viewport();
    EXPECT_EQ(ItemsOfTheMenuOpenedBy(
                  [&] { QTest::mousePress(viewport, Qt::LeftButton, {}, centreOf("c.txt")); }),
              int(FilePopupMenu(list_->popupState()).size()));
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, centreOf("c.txt"));
    QApplication::processEvents();
    EXPECT_EQ(tapped.size(), 2);
    EXPECT_EQ(state(), ".. sub a.txt b.txt c.txt*");
}

// Inside the selection a right click keeps it; outside, the clicked row alone is selected.
TEST_F(FileListCtrlTest, ARightClickOutsideTheSelectionMenusForThatRowAlone) {
    create();
    for (const auto& [row, after] : {std::pair{"b.txt", ".. sub a.txt* b.txt* c.txt"},
                                     std::pair{"c.txt", ".. sub a.txt b.txt c.txt*"}}) {
        list_->selectNames({"a.txt", "b.txt"});
        EXPECT_GT(ItemsOfTheMenuOpenedBy([&] {
                      QTest::mousePress(list_->view()->viewport(), Qt::RightButton, {},
                                        centreOf(row));
                  }),
                  0);
        EXPECT_EQ(state(), after);
    }
}

// The icon and list styles lay the rows out in cells of their own, at least an icon high; the
// list style's are wide enough for the longest name.
TEST_F(FileListCtrlTest, StyleCommandsSwitchViewsThatKeepEveryNameInItsOwnCell) {
    create();
    const QString longName = QStringLiteral("a name long enough to run under its neighbours.txt");
    folder_->write(longName);
    list_->refresh();
    QAbstractItemView* details = list_->view();
    const int icon = QApplication::style()->pixelMetric(QStyle::PM_SmallIconSize);
    for (const int style : {list_style::Icons, list_style::List}) {
        list_->runCommand(style == list_style::Icons ? cmd::StyleIcons : cmd::StyleList);
        QApplication::processEvents();
        EXPECT_EQ(list_->popupState().listStyle, style);
        QList<QRect> cells;
        for (int row = 0; row < list_->rowCount(); ++row) {
            cells.append(list_->view()->visualRect(list_->view()->model()->index(row, 0)));
            EXPECT_GE(cells.back().height(), icon);
            for (qsizetype i = 0; i + 1 < cells.size(); ++i)
                EXPECT_FALSE(cells[i].intersects(cells.back()))
                    << style << ": " << i << ", " << row;
        }
    }
    EXPECT_GT(list_->view()->visualRect(list_->view()->model()->index(rowOf(longName), 0)).width(),
              list_->view()->fontMetrics().horizontalAdvance(longName) + icon);
    list_->runCommand(cmd::StyleDetails);
    EXPECT_EQ(list_->view(), details);
}

// The menu's state follows the selection and the clipboard: a cut grays pasting back into its own
// folder only, and pasted elsewhere the rows come selected.
TEST_F(FileListCtrlTest, PopupStateFollowsTheSelectionAndTheClipboard) {
    create();
    folder_->write("short.lnk", folder_->lnkTo("a.txt"));
    list_->refresh();
    // clang-format off
    const std::tuple<QStringList, int, bool, bool> rows[] = {
        {{}, 0, false, false}, {{".."}, 1, true, false}, {{"short.lnk"}, 1, false, true}, {{"..", "short.lnk"}, 2, false, false}};
    // clang-format on
    for (const auto& [picked, count, parent, shortcut] : rows) {
        list_->selectNames(picked);
        const FilePopupState popup = list_->popupState();
        EXPECT_EQ(
            std::tuple(popup.selectedCount, popup.onlyParentSelected, popup.onlyShortcutSelected),
            std::tuple(count, parent, shortcut));
    }
    const bool empty = list_->popupState().clipboardEmpty;
    list_->selectNames({"b.txt"});
    list_->runCommand(cmd::Cut);
    const bool cutHere = list_->popupState().clipboardCutFromHere;
    ASSERT_TRUE(list_->setFolder(folder_->path("sub")));
    list_->refresh();
    EXPECT_EQ(std::tuple(empty, cutHere, list_->popupState().clipboardCutFromHere),
              std::tuple(true, true, false));
    list_->runCommand(cmd::Paste);
    EXPECT_EQ(state(), ".. b.txt*");
}

// The dialog shows path, size and time, and sets the read-only state both ways; a failed change
// is reported and keeps it open, and a link's permissions, which are its target's, are left alone.
TEST(PropertiesDialog, ShowsTheEntryAndChangesItsReadOnlyState) {
    ScratchFolder folder;
    folder.writeSized("a.txt", 12345);
    folder.setModified("a.txt", QDateTime(QDate(2023, 4, 5), QTime(6, 7, 8)));
    folder.link("link", folder.path("a.txt"));
    const QString path = folder.path("a.txt");
    for (const bool readOnly : {true, false}) {
        PropertiesDialog dialog(path);
        QStringList texts;
        for (const QLabel* label : dialog.findChildren<QLabel*>())
            texts.append(label->text());
        EXPECT_TRUE(texts.contains(path) && texts.contains(QStringLiteral("12,345 バイト")) &&
                    texts.contains(QStringLiteral("2023/04/05 06:07:08")))
            << texts.join(u'|').toStdString();
        EXPECT_EQ(dialog.isReadOnlyChecked(), !readOnly);
        dialog.setReadOnlyChecked(readOnly);
        dialog.accept();
        EXPECT_EQ(dialog.result(), QDialog::Accepted);
        EXPECT_EQ(folder.isReadOnly("a.txt"), readOnly);
        EXPECT_TRUE(dialog.apply()); // nothing left to change
    }
    EXPECT_FALSE(PropertiesDialog(folder.path("link")).findChild<QCheckBox*>()->isEnabled());

    PropertiesDialog dialog(path);
    QFile::remove(path);
    dialog.setReadOnlyChecked(true);
    ScriptedMessageService messages{MessageAnswer::Ok};
    dialog.accept();
    EXPECT_EQ(messages.shownIds(), QList<int>{30507});
    EXPECT_NE(dialog.result(), QDialog::Accepted);
}

} // namespace
} // namespace korvel
