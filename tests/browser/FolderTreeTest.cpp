#include "browser/FolderTree.h"

#include "browser/PopupMenus.h"
#include "messages/testing/ScriptedMessageService.h"
#include "support/ScratchFolder.h"

#include <QApplication>
#include <QLineEdit>
#include <QSignalSpy>
#include <QStyleHints>
#include <QTest>
#include <functional>
#include <gtest/gtest.h>

namespace korvel {
namespace {

namespace cmd = browser_command;
using testing::ScratchFolder;

QStringList ChildTexts(const QTreeWidgetItem* item) {
    QStringList texts;
    for (int i = 0; i < item->childCount(); ++i)
        texts.append(item->child(i)->text(0));
    return texts;
}

class FolderTreeTest : public ::testing::Test {
protected:
    void SetUp() override {
        folder_.makeFolder("Docs/Sub");
        folder_.makeFolder("alpha");
        folder_.makeFolder("Empty");
        folder_.makeFolder(".hidden/inner");
        folder_.write("file.txt");
        folder_.link("linked", folder_.path("alpha"));
        tree_.resize(300, 400);
        tree_.show();
    }

    QTreeWidgetItem* open(const QString& relative) {
        EXPECT_EQ(tree_.openPath(folder_.path(relative)), FileOpStatus::Done);
        return tree_.currentItem();
    }

    ScratchFolder folder_;
    FolderTree tree_;
};

// The root and every new item show an expand button (an empty placeholder) until they are
// filled, with or without subfolders; a fill lists the real, visible folders in order.
TEST_F(FolderTreeTest, FillsOnExpansionWithRealVisibleFoldersInOrder) {
    EXPECT_EQ(tree_.pathOf(tree_.rootItem()), QStringLiteral("/"));
    EXPECT_EQ(ChildTexts(tree_.rootItem()), QStringList{QString()});
    QTreeWidgetItem* top = open(QString());
    ASSERT_EQ(ChildTexts(top), QStringList{QString()});
    top->setExpanded(true);
    EXPECT_EQ(ChildTexts(top), (QStringList{"alpha", "Docs", "Empty"}));
    QTreeWidgetItem* empty = top->child(2);
    EXPECT_EQ(empty->childCount(), 1);
    empty->setExpanded(true);
    EXPECT_EQ(empty->childCount(), 0);
}

// A typed path opens down to its deepest existing folder, letter case folded, hidden folders
// included, expanding the way there and telling the dialog.
TEST_F(FolderTreeTest, OpenPathWalksDownToTheDeepestExistingFolder) {
    const std::pair<QString, QString> rows[] = {
        {folder_.path("docs/SUB"), folder_.path("Docs/Sub/")},
        {folder_.path("Docs/missing"), folder_.path("Docs/")},
        {folder_.path(".hidden/inner"), folder_.path(".hidden/inner/")},
        {QStringLiteral("/"), QStringLiteral("/")},
    };
    for (const auto& [typed, opened] : rows) {
        QSignalSpy changed(&tree_, &FolderTree::currentFolderChanged);
        EXPECT_EQ(tree_.openPath(typed), FileOpStatus::Done);
        EXPECT_EQ(tree_.currentFolder(), opened);
        EXPECT_EQ(tree_.pathOf(tree_.currentItem()), opened);
        ASSERT_FALSE(changed.isEmpty());
        EXPECT_EQ(changed.back().front().toString(), opened);
        for (QTreeWidgetItem* item = tree_.currentItem()->parent(); item != nullptr;
             item = item->parent())
            EXPECT_TRUE(item->isExpanded()) << typed.toStdString();
    }
    EXPECT_EQ(tree_.openPath(QStringLiteral("relative/path")), FileOpStatus::BadArgument);
    EXPECT_EQ(tree_.currentFolder(), QStringLiteral("/"));
}

TEST_F(FolderTreeTest, RecordOnlyChangesTheFolderButNotTheDisplay) {
    QTreeWidgetItem* item = open(QStringLiteral("alpha"));
    EXPECT_EQ(tree_.openPath(folder_.path("Docs"), true), FileOpStatus::Done);
    EXPECT_EQ(tree_.currentFolder(), folder_.path("Docs/"));
    EXPECT_EQ(tree_.currentItem(), item);
    EXPECT_EQ(tree_.openPath(folder_.path("gone"), true), FileOpStatus::NotFound);
    EXPECT_EQ(tree_.openPath(folder_.path("file.txt"), true), FileOpStatus::NotFound);
}

TEST_F(FolderTreeTest, NewFoldersAreShownUnderTheParent) {
    QTreeWidgetItem* parent = open(QStringLiteral("Empty"));
    tree_.runCommand(cmd::NewFolder);
    tree_.setCurrentItem(parent);
    tree_.runCommand(cmd::NewFolder);
    EXPECT_TRUE(parent->isExpanded());
    EXPECT_EQ(ChildTexts(parent), folder_.names("Empty"));
    EXPECT_EQ(parent->childCount(), 2);
}

TEST_F(FolderTreeTest, DeleteRemovesTheItemOrShowsWhatIsLeft) {
    // Two subfolders with a read-only file each: the first one asked about goes, Cancel on the
    // second ends the delete, whichever order the disk lists them in.
    for (const QString& name : {QStringLiteral("A"), QStringLiteral("B")}) {
        folder_.makeFolder("Docs/Sub/" + name);
        folder_.write(QStringLiteral("Docs/Sub/%1/locked.txt").arg(name));
        folder_.setReadOnly(QStringLiteral("Docs/Sub/%1/locked.txt").arg(name), true);
    }
    QTreeWidgetItem* docs = open(QStringLiteral("Docs"));
    QTreeWidgetItem* sub = open(QStringLiteral("Docs/Sub"));
    sub->setExpanded(true);
    {
        ScriptedMessageService messages{MessageAnswer::Yes, MessageAnswer::Yes,
                                        MessageAnswer::Cancel};
        tree_.runCommand(cmd::FolderDelete);
    }
    const QStringList left =
        QDir(folder_.path("Docs/Sub")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    EXPECT_EQ(left.size(), 1);
    EXPECT_EQ(ChildTexts(sub), left);

    ScriptedMessageService messages{MessageAnswer::Yes, MessageAnswer::Yes};
    QSignalSpy changed(&tree_, &FolderTree::contentsChanged);
    tree_.runCommand(cmd::FolderDelete);
    EXPECT_FALSE(folder_.exists("Docs/Sub"));
    EXPECT_EQ(docs->childCount(), 0);
    EXPECT_EQ(tree_.currentItem(), docs);
    EXPECT_EQ(changed.size(), 1);

    // A folder removed behind the tree's back cannot be deleted, and its item goes as well.
    QTreeWidgetItem* top = open(QStringLiteral("Empty"))->parent();
    ASSERT_TRUE(QDir(folder_.folder()).rmdir(QStringLiteral("Empty")));
    messages.script({MessageAnswer::Yes, MessageAnswer::Ok});
    tree_.runCommand(cmd::FolderDelete);
    EXPECT_EQ(ChildTexts(top), (QStringList{"alpha", "Docs"}));
}

TEST_F(FolderTreeTest, DeleteOnTheRootDoesNothing) {
    ScriptedMessageService messages;
    tree_.openPath(QStringLiteral("/"));
    tree_.runCommand(cmd::FolderDelete);
    EXPECT_TRUE(messages.shown().isEmpty());
}

TEST_F(FolderTreeTest, RenameShowsTheNewNameAndMakesItCurrent) {
    QTreeWidgetItem* alpha = open(QStringLiteral("alpha"));
    QSignalSpy changed(&tree_, &FolderTree::currentFolderChanged);
    tree_.finishRename(alpha, QStringLiteral("  zeta "));
    EXPECT_EQ(alpha->text(0), QStringLiteral("zeta"));
    EXPECT_TRUE(folder_.exists("zeta"));
    EXPECT_EQ(tree_.currentFolder(), folder_.path("zeta/"));
    ASSERT_FALSE(changed.isEmpty());
    // The item moves to where a fill would put it, letter case folded.
    EXPECT_EQ(ChildTexts(alpha->parent()), (QStringList{"Docs", "Empty", "zeta"}));
}

TEST_F(FolderTreeTest, RefusedRenameKeepsTheFolderAndTheEditor) {
    QTreeWidgetItem* alpha = open(QStringLiteral("alpha"));
    ScriptedMessageService messages{MessageAnswer::Ok};
    tree_.finishRename(alpha, QStringLiteral("file.txt"));
    EXPECT_EQ(messages.shown().size(), 1);
    EXPECT_EQ(alpha->text(0), QStringLiteral("alpha"));
    EXPECT_TRUE(tree_.isEditing());
    tree_.endEdit();
}

TEST_F(FolderTreeTest, TheLabelEditorEndsWithEnterOrEscape) {
    QTreeWidgetItem* alpha = open(QStringLiteral("alpha"));
    tree_.startRename();
    ASSERT_TRUE(tree_.isEditing());
    auto* editor = tree_.findChild<QLineEdit*>();
    ASSERT_NE(editor, nullptr);
    editor->setText(QStringLiteral("other"));
    QTest::keyClick(editor, Qt::Key_Escape);
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(tree_.isEditing());
    EXPECT_EQ(alpha->text(0), QStringLiteral("alpha"));

    tree_.startRename();
    editor = tree_.findChild<QLineEdit*>();
    ASSERT_NE(editor, nullptr);
    editor->setText(QStringLiteral("beta"));
    QTest::keyClick(editor, Qt::Key_Return);
    QApplication::processEvents();
    EXPECT_EQ(alpha->text(0), QStringLiteral("beta"));
    EXPECT_TRUE(folder_.exists("beta"));
}

TEST_F(FolderTreeTest, RefillFindsFoldersMadeElsewhere) {
    QTreeWidgetItem* docs = open(QStringLiteral("Docs"));
    docs->setExpanded(true);
    folder_.makeFolder("Docs/Later");
    tree_.runCommand(cmd::FolderRefresh);
    EXPECT_EQ(ChildTexts(docs), (QStringList{"Later", "Sub"}));
}

TEST_F(FolderTreeTest, EveryWayOfRenamingOpensTheEditorOnFoldersButNotOnTheRoot) {
    // A second tap counts once the double tap's time is over; a short one keeps this test quick.
    QStyleHints* hints = QGuiApplication::styleHints();
    const int doubleTap = hints->mouseDoubleClickInterval();
    hints->setMouseDoubleClickInterval(100);
    // The wait ends as soon as the editor opens; a fixed wait can end before a busy machine
    // runs the rename timer.
    const auto tap = [this](QPoint position) {
        QTest::mouseClick(tree_.viewport(), Qt::LeftButton, {}, position);
        QTest::qWaitFor([this] { return tree_.isEditing(); },
                        QApplication::doubleClickInterval() + 400);
    };
    const auto labelOf = [this] {
        return tree_.visualItemRect(tree_.currentItem()).topLeft() + QPoint(30, 5);
    };
    const std::pair<const char*, std::function<void()>> ways[] = {
        {"F2", [this] { QTest::keyClick(&tree_, Qt::Key_F2); }},
        {"menu", [this] { tree_.runCommand(cmd::FolderRename); }},
        {"second tap", [&] { tap(labelOf()); }},
    };
    for (const auto& [way, start] : ways) {
        open(QStringLiteral("alpha"));
        start();
        EXPECT_TRUE(tree_.isEditing()) << way;
        tree_.endEdit();
        QApplication::processEvents();
        tree_.openPath(QStringLiteral("/"));
        start();
        EXPECT_FALSE(tree_.isEditing()) << way;
    }
    // A tap beside the label is a tap on empty space.
    QTreeWidgetItem* alpha = open(QStringLiteral("alpha"));
    const QPoint beside(tree_.viewport()->width() - 5, tree_.visualItemRect(alpha).center().y());
    ASSERT_TRUE(tree_.isEmptySpace(beside));
    ASSERT_EQ(tree_.itemAt(beside), alpha);
    tap(beside);
    EXPECT_FALSE(tree_.isEditing());
    hints->setMouseDoubleClickInterval(doubleTap);
}

} // namespace
} // namespace korvel
