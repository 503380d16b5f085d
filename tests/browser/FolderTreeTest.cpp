#include "browser/FolderTree.h"

#include "browser/PopupMenus.h"
#include "support/ScratchFolder.h"

#include <QApplication>
#include <QLineEdit>
#include <QSignalSpy>
#include <QStyleHints>
#include <QTest>
#include <functional>

namespace korvel {
namespace {

namespace cmd = browser_command;
using testing::ScratchFolder;
using Answer = MessageAnswer;

QStringList Children(const QTreeWidgetItem* item) {
    QStringList texts;
    for (int i = 0; i < item->childCount(); ++i)
        texts.append(item->child(i)->text(0));
    return texts;
}

class FolderTreeTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char* name : {"Docs/Sub", "alpha", "Empty", ".hidden/inner"})
            folder_.makeFolder(name);
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

// Every unfilled item shows an expand button (an empty placeholder); a fill lists the real,
// visible folders with letter case folded, and takes the button from a folder without any.
TEST_F(FolderTreeTest, FillsOnExpansionWithRealVisibleFoldersInOrder) {
    EXPECT_EQ(tree_.pathOf(tree_.rootItem()), QStringLiteral("/"));
    EXPECT_EQ(Children(tree_.rootItem()), QStringList{QString()});
    QTreeWidgetItem* top = open(QString());
    ASSERT_EQ(Children(top), QStringList{QString()});
    top->setExpanded(true);
    EXPECT_EQ(Children(top), (QStringList{"alpha", "Docs", "Empty"}));
    top->child(2)->setExpanded(true);
    EXPECT_EQ(top->child(2)->childCount(), 0);
}

// A typed path opens down to its deepest existing folder, letter case folded, hidden folders
// included, expanding the way there and telling the dialog; recording a folder moves nothing.
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
        EXPECT_EQ(tree_.pathOf(tree_.currentItem()), opened);
        ASSERT_FALSE(changed.isEmpty());
        EXPECT_EQ(changed.back().front().toString(), opened);
        for (QTreeWidgetItem* item = tree_.currentItem(); item->parent(); item = item->parent())
            EXPECT_TRUE(item->parent()->isExpanded()) << typed.toStdString();
    }
    EXPECT_EQ(tree_.openPath(QStringLiteral("relative/path")), FileOpStatus::BadArgument);
    EXPECT_EQ(tree_.openPath(folder_.path("Docs"), true), FileOpStatus::Done);
    EXPECT_EQ(tree_.currentFolder(), folder_.path("Docs/"));
    EXPECT_EQ(tree_.currentItem(), tree_.rootItem());
    EXPECT_EQ(tree_.openPath(folder_.path("file.txt"), true), FileOpStatus::NotFound);
}

TEST_F(FolderTreeTest, NewFoldersAndFoldersMadeElsewhereAreShownUnderTheParent) {
    QTreeWidgetItem* parent = open(QStringLiteral("Empty"));
    tree_.runCommand(cmd::NewFolder);
    tree_.setCurrentItem(parent);
    tree_.runCommand(cmd::NewFolder);
    EXPECT_TRUE(parent->isExpanded());
    EXPECT_EQ(Children(parent), folder_.names("Empty"));
    EXPECT_EQ(parent->childCount(), 2);
    QTreeWidgetItem* docs = open(QStringLiteral("Docs"));
    docs->setExpanded(true);
    folder_.makeFolder("Docs/Later");
    tree_.runCommand(cmd::FolderRefresh);
    EXPECT_EQ(Children(docs), (QStringList{"Later", "Sub"}));
}

// A delete that ends part way shows what is left; one that takes the folder, or finds it gone,
// takes its item. The root is never deleted.
TEST_F(FolderTreeTest, DeleteRemovesTheItemOrShowsWhatIsLeft) {
    for (const QString& name : {QStringLiteral("A"), QStringLiteral("B")}) {
        folder_.write("Docs/Sub/" + name + "/locked.txt");
        folder_.setReadOnly("Docs/Sub/" + name + "/locked.txt");
    }
    QTreeWidgetItem* docs = open(QStringLiteral("Docs"));
    QTreeWidgetItem* sub = open(QStringLiteral("Docs/Sub"));
    sub->setExpanded(true);
    {
        ScriptedMessageService messages{Answer::Yes, Answer::Yes, Answer::Cancel};
        tree_.runCommand(cmd::FolderDelete);
    }
    EXPECT_EQ(Children(sub), folder_.names("Docs/Sub"));
    EXPECT_EQ(sub->childCount(), 1);

    ScriptedMessageService messages{Answer::Yes, Answer::Yes};
    QSignalSpy changed(&tree_, &FolderTree::contentsChanged);
    tree_.runCommand(cmd::FolderDelete);
    EXPECT_FALSE(folder_.exists("Docs/Sub"));
    EXPECT_EQ(docs->childCount(), 0);
    EXPECT_EQ(tree_.currentItem(), docs);
    EXPECT_EQ(changed.size(), 1);

    QTreeWidgetItem* top = open(QStringLiteral("Empty"))->parent();
    ASSERT_TRUE(QDir(folder_.folder()).rmdir(QStringLiteral("Empty")));
    messages.script({Answer::Yes, Answer::Ok});
    tree_.runCommand(cmd::FolderDelete);
    EXPECT_EQ(Children(top), (QStringList{"alpha", "Docs"}));

    tree_.openPath(QStringLiteral("/"));
    tree_.runCommand(cmd::FolderDelete);
    EXPECT_EQ(messages.shown().size(), 4);
}

// A refused name keeps the old one with the editor open; Escape ends the edit unchanged; Enter
// renames, and the item shows the new name where a fill would put it, as the current folder.
TEST_F(FolderTreeTest, RenameShowsTheNewNameInOrderOrKeepsTheEditor) {
    QTreeWidgetItem* alpha = open(QStringLiteral("alpha"));
    {
        ScriptedMessageService messages{Answer::Ok};
        tree_.finishRename(alpha, QStringLiteral("file.txt"));
        EXPECT_TRUE(tree_.isEditing());
        tree_.endEdit();
        QApplication::processEvents();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    QSignalSpy changed(&tree_, &FolderTree::currentFolderChanged);
    for (const auto& [key, label] :
         {std::pair{Qt::Key_Escape, "alpha"}, {Qt::Key_Return, "zeta"}}) {
        tree_.startRename();
        auto* editor = tree_.findChild<QLineEdit*>();
        ASSERT_NE(editor, nullptr);
        editor->setText(QStringLiteral(" zeta "));
        QTest::keyClick(editor, key);
        QApplication::processEvents();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_FALSE(tree_.isEditing());
        EXPECT_EQ(alpha->text(0), QString::fromUtf8(label));
    }
    EXPECT_EQ(tree_.currentFolder(), folder_.path("zeta/"));
    EXPECT_FALSE(changed.isEmpty());
    EXPECT_EQ(Children(alpha->parent()), (QStringList{"Docs", "Empty", "zeta"}));
}

TEST_F(FolderTreeTest, EveryWayOfRenamingOpensTheEditorOnFoldersButNotOnTheRoot) {
    // A second tap counts once the double tap's time is over; a short one keeps this test quick,
    // and the wait ends as soon as the editor opens, which a fixed wait on a busy machine may not.
    QStyleHints* hints = QGuiApplication::styleHints();
    const int doubleTap = hints->mouseDoubleClickInterval();
    hints->setMouseDoubleClickInterval(100);
    const auto tap = [this](QPoint at) {
        QTest::mouseClick(tree_.viewport(), Qt::LeftButton, {}, at);
        static_cast<void>(QTest::qWaitFor([this] { return tree_.isEditing(); }, 500));
    };
    const std::function<void()> ways[] = {
        [this] { QTest::keyClick(&tree_, Qt::Key_F2); },
        [this] { tree_.runCommand(cmd::FolderRename); },
        [&] { tap(tree_.visualItemRect(tree_.currentItem()).topLeft() + QPoint(30, 5)); }};
    for (const auto& start : ways) {
        for (const QString& path : {folder_.path("alpha"), QStringLiteral("/")}) {
            tree_.openPath(path);
            start();
            EXPECT_EQ(tree_.isEditing(), path != u"/") << path.toStdString();
            tree_.endEdit();
            QApplication::processEvents();
        }
    }
    // A tap beside the label is a tap on empty space.
    const QPoint beside(tree_.viewport()->width() - 5,
                        tree_.visualItemRect(open(QStringLiteral("alpha"))).center().y());
    ASSERT_TRUE(tree_.isEmptySpace(beside));
    tap(beside);
    EXPECT_FALSE(tree_.isEditing());
    hints->setMouseDoubleClickInterval(doubleTap);
}

} // namespace
} // namespace korvel
