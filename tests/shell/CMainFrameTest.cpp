// The main window as a user meets it: the menu, the keys, the tap-and-hold menus, the title,
// the recently-used files, the settings sheet and the about box, the find and replace bars, and
// the questions on closing.
#include "shell/CMainFrame.h"

#include "browser/BrowseRequest.h"
#include "editor/CEditer.h"
#include "editor/EditControl.h"
#include "editor/EditorText.h"
#include "messages/StringTable.h"
#include "messages/testing/ScriptedMessageService.h"
#include "settings/CPPageEdit.h"
#include "settings/CPPageTap.h"
#include "settings/SettingsSheet.h"
#include "shell/AboutBox.h"
#include "shell/BarParts.h"
#include "shell/CommandIds.h"
#include "shell/CommandTable.h"
#include "shell/FindBar.h"
#include "shell/HelpPage.h"
#include "shell/RecentFileList.h"
#include "shell/ReplaceBar.h"
#include "shell/SearchBars.h"
#include "support/WindowTest.h"
#include "widgets/HoldGesture.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QElapsedTimer>
#include <QFile>
#include <QHash>
#include <QLineEdit>
#include <QMenu>
#include <QMouseEvent>
#include <QPointingDevice>
#include <QRadioButton>
#include <QRegularExpression>
#include <QSet>
#include <QSignalSpy>
#include <QTest>
#include <QTextDocument>
#include <QToolButton>
#include <gtest/gtest.h>

namespace korvel {
namespace {

using Answer = MessageAnswer;
using testing::WhenDialogShows;

class CMainFrameTest : public testing::WindowTest<CMainFrame> {
protected:
    void type(const QString& text) { QTest::keyClicks(window_->view()->activeControl(), text); }
    std::u16string text() const { return EditorText(*window_->view()->document()); }

    // A coarse timer may fire up to 5% early; the two hold times are 600 and 1000 ms.
    static constexpr qint64 kBetweenTheTwo = 900;

    // How long the text's tap-and-hold gesture takes to be recognised.
    qint64 holdTime() {
        auto* hold = window_->view()->activeControl()->viewport()->findChild<HoldGesture*>();
        QSignalSpy recognised(hold, &HoldGesture::recognised);
        QElapsedTimer clock;
        clock.start();
        hold->watch(QPoint(20, 20));
        EXPECT_TRUE(recognised.wait(3000));
        if (auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget()))
            menu->close();
        return clock.elapsed();
    }
};

// The items of a menu and of its popups, separators and popup entries left out. A popup that
// opens, ends or doubles a separator is reported.
QList<QAction*> Items(const QMenu& menu) {
    QList<QAction*> items;
    const QList<QAction*> actions = menu.actions();
    for (qsizetype i = 0; i < actions.size(); ++i) {
        QAction* action = actions[i];
        if (action->isSeparator()) {
            EXPECT_TRUE(i > 0 && i + 1 < actions.size() && !actions[i - 1]->isSeparator())
                << menu.title().toStdString() << " separator at " << i;
        } else if (action->menu() != nullptr) {
            items << Items(*action->menu());
        } else {
            items << action;
        }
    }
    return items;
}

// The key written after an item's tab, if any.
QKeySequence ShownKey(const QAction& item) {
    const qsizetype tab = item.text().indexOf(QLatin1Char('\t'));
    return tab < 0 ? QKeySequence() : QKeySequence(item.text().mid(tab + 1));
}

// The main menu's items are the commands' own actions, each once, and a key written beside one
// is a key that runs it. Every command can be reached from the menu or the keyboard.
TEST_F(CMainFrameTest, MainMenuItemsAreTheCommandsWithKeysThatWork) {
    const CommandTable& commands = window_->commands();
    QSet<int> shown;
    for (QAction* item : Items(*window_->mainMenu())) {
        const int id = item->data().toInt();
        SCOPED_TRACE(item->text().toStdString());
        EXPECT_EQ(commands.action(id), item);
        EXPECT_FALSE(shown.contains(id));
        shown << id;
        if (const QKeySequence key = ShownKey(*item); !key.isEmpty()) {
            EXPECT_TRUE(item->shortcuts().contains(key));
        }
    }
    // The recent files after the first join the menu when the list holds them.
    for (QAction* action : commands.findChildren<QAction*>()) {
        const int id = action->data().toInt();
        if (id > command::RecentFile1 && id < command::RecentFile1 + RecentFileList::kSize)
            continue;
        EXPECT_TRUE(shown.contains(id) || !action->shortcuts().isEmpty())
            << id << " can be reached neither from the menu nor by a key";
    }
    // Each key runs one command; Ctrl+Shift+R belongs to the first of its two entries.
    QList<QKeySequence> keys;
    for (QAction* action : commands.findChildren<QAction*>()) {
        for (const QKeySequence& key : action->shortcuts())
            EXPECT_FALSE(keys.contains(key)) << key.toString().toStdString();
        keys << action->shortcuts();
    }
    EXPECT_TRUE(commands.action(command::MacroRecord)
                    ->shortcuts()
                    .contains(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_R)));
    EXPECT_TRUE(commands.isChecked(command::FontSlot1 + 1));
    EXPECT_FALSE(commands.isChecked(command::FontSlot1));
    EXPECT_TRUE(commands.isChecked(command::WordWrap));
}

// The tap-and-hold menu: its own set of items with and without a selection, each enabled as
// its command is and running it, and the recording item renamed while a macro is recorded.
TEST_F(CMainFrameTest, ContextMenuFollowsTheSelectionAndTheRecorder) {
    const auto byId = [](const QMenu& menu) {
        QHash<int, QAction*> items;
        for (QAction* item : Items(menu))
            items[item->data().toInt()] = item;
        return items;
    };
    type(QStringLiteral("abc"));
    QMenu* without = window_->showContextMenu(QPoint(5, 5));
    const auto idle = byId(*without);
    EXPECT_FALSE(idle.contains(command::EditCopy));

    window_->view()->selectAll();
    window_->commands().run(command::MacroRecord);
    QMenu* with = window_->showContextMenu(QPoint(5, 5));
    const auto selected = byId(*with);
    EXPECT_NE(with->title(), without->title());
    EXPECT_NE(selected.value(command::MacroRecord)->text(),
              idle.value(command::MacroRecord)->text());
    for (QAction* item : selected)
        EXPECT_EQ(item->isEnabled(), window_->commands().isEnabled(item->data().toInt()))
            << item->text().toStdString();
    selected.value(command::EditCut)->trigger();
    without->close();
    with->close();
    EXPECT_EQ(text(), u"");
}

QMenu* VisiblePopup() {
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (auto* popup = qobject_cast<QMenu*>(widget); popup && popup->isVisible())
            return popup;
    return nullptr;
}

TEST_F(CMainFrameTest, RightClickMenuKeyAndHoldOpenTheContextMenu) {
    QWidget* viewport = window_->view()->activeControl()->viewport();
    for (QContextMenuEvent::Reason reason :
         {QContextMenuEvent::Mouse, QContextMenuEvent::Keyboard}) {
        QContextMenuEvent request(reason, QPoint(10, 10), viewport->mapToGlobal(QPoint(10, 10)));
        QApplication::sendEvent(viewport, &request);
        QMenu* menu = VisiblePopup();
        ASSERT_NE(menu, nullptr) << reason;
        EXPECT_EQ(menu->title(), QStringLiteral("非選択時"));
        menu->close();
    }

    // A finger held still for the "長め" time.
    const QPointingDevice finger(
        QStringLiteral("finger"), 1001, QInputDevice::DeviceType::TouchScreen,
        QPointingDevice::PointerType::Finger, QInputDevice::Capability::Position, 1, 0);
    const QPoint at(20, 20);
    QMouseEvent press(QEvent::MouseButtonPress, at, viewport->mapToGlobal(at), Qt::LeftButton,
                      Qt::LeftButton, {}, &finger);
    QApplication::sendEvent(viewport, &press);
    EXPECT_EQ(VisiblePopup(), nullptr);
    ASSERT_TRUE(QTest::qWaitFor([] { return VisiblePopup() != nullptr; }, 3000));
    VisiblePopup()->close();
}

TEST_F(CMainFrameTest, KeysRunTheirCommands) {
    type(QStringLiteral("hello"));
    QTest::keyClick(window_.get(), Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(window_->view()->wordWrap());
    QTest::keyClick(window_->view()->activeControl(), Qt::Key_4, Qt::ControlModifier);
    EXPECT_EQ(window_->view()->fontSlot(), 3);
    QTest::keyClick(window_->view()->activeControl(), Qt::Key_A, Qt::ControlModifier);
    EXPECT_TRUE(window_->view()->hasSelection());
    // The text keeps the focus across the wrap toggle.
    EXPECT_TRUE(window_->view()->activeControl()->hasFocus());
    // Ctrl+M: the main menu, from the left edge.
    QTest::keyClick(window_->view()->activeControl(), Qt::Key_M, Qt::ControlModifier);
    ASSERT_EQ(VisiblePopup(), window_->mainMenu());
    EXPECT_EQ(window_->mainMenu()->pos().x(), window_->mapToGlobal(QPoint(0, 0)).x());
    window_->mainMenu()->close();

    ScriptedMessageService messages{Answer::No};
    QTest::keyClick(window_->view()->activeControl(), Qt::Key_N, Qt::ControlModifier);
    EXPECT_EQ(messages.shownIds(), QList<int>{30006});
    EXPECT_EQ(text(), u"");
}

// The edit keys reach the text through their commands, where recording and the bars will
// hook them; a control that handled them itself would bypass both.
TEST_F(CMainFrameTest, EditKeysGoThroughTheirCommands) {
    const struct {
        QKeyCombination key;
        int command;
    } rows[] = {
        {Qt::CTRL | Qt::Key_A, command::EditSelectAll},
        {Qt::CTRL | Qt::Key_C, command::EditCopy},
        {Qt::CTRL | Qt::Key_Insert, command::EditCopy},
        {Qt::CTRL | Qt::Key_X, command::EditCut},
        {Qt::SHIFT | Qt::Key_Delete, command::EditCut},
        {Qt::CTRL | Qt::Key_V, command::EditPaste},
        {Qt::SHIFT | Qt::Key_Insert, command::EditPaste},
        {Qt::CTRL | Qt::Key_Z, command::EditUndo},
        {Qt::ALT | Qt::Key_Backspace, command::EditUndo},
    };
    EditControl* control = window_->view()->activeControl();
    for (const auto& row : rows) {
        SCOPED_TRACE(QKeySequence(row.key).toString().toStdString());
        type(QStringLiteral("text"));
        // The enabled states follow the selection without a menu having shown.
        QTest::keyClick(control, Qt::Key_Home, Qt::ShiftModifier);
        int runs = 0;
        const QMetaObject::Connection counting = QObject::connect(
            window_->commands().action(row.command), &QAction::triggered, [&runs] { ++runs; });
        QTest::keyClick(control, row.key.key(), row.key.keyboardModifiers());
        QObject::disconnect(counting);
        EXPECT_EQ(runs, 1);
    }

    // The text has no redo: what was undone stays undone.
    ScriptedMessageService messages{Answer::No};
    window_->view()->newDocument();
    type(QStringLiteral("abc"));
    QTest::keyClick(control, Qt::Key_Z, Qt::ControlModifier);
    const std::u16string undone = text();
    for (const QKeyCombination redo : {Qt::CTRL | Qt::Key_Y, Qt::CTRL | Qt::SHIFT | Qt::Key_Z})
        QTest::keyClick(control, redo.key(), redo.keyboardModifiers());
    EXPECT_EQ(text(), undone);
}

// Receives what the program hands to the desktop instead of a browser.
class UrlCatcher : public QObject {
    Q_OBJECT
public:
    QList<QUrl> urls;
public slots:
    void open(const QUrl& url) { urls.append(url); }
};

TEST_F(CMainFrameTest, HelpKeyOpensThePageOrSaysWhereItIs) {
    UrlCatcher catcher;
    QDesktopServices::setUrlHandler(QStringLiteral("file"), &catcher, "open");
    QTest::keyClick(window_->view()->activeControl(), Qt::Key_F1);
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
    ASSERT_EQ(catcher.urls, QList<QUrl>{HelpPageUrl()});
    EXPECT_EQ(catcher.urls.front().fragment(), u"MAIN_CONTENTS");

    // No program on the PATH can show a page.
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", QFile::encodeName(dir_.path()));
    ScriptedMessageService messages{Answer::Ok};
    QTest::keyClick(window_->view()->activeControl(), Qt::Key_F1);
    qputenv("PATH", path);
    ASSERT_EQ(messages.shown().size(), 1);
    EXPECT_TRUE(messages.shown().front().text.endsWith(HelpPageUrl().toLocalFile()));
}

TEST_F(CMainFrameTest, TitleNamesTheFileAndMarksUnsavedChangesOnce) {
    EXPECT_EQ(window_->windowTitle(), LoadString(35032));
    const QString path = writeFile(QStringLiteral("メモ.txt"), "memo");
    ScriptedMessageService messages;
    ASSERT_TRUE(window_->openPath(path));
    EXPECT_EQ(window_->windowTitle(), QStringLiteral("メモ.txt"));
    type(QStringLiteral("!?"));
    EXPECT_EQ(window_->windowTitle(), QStringLiteral("メモ.txt *"));
    window_->view()->undo();
    EXPECT_EQ(window_->windowTitle(), QStringLiteral("メモ.txt"));
}

TEST_F(CMainFrameTest, RecentFilesKeepTheNewestFourAndDropGoneOnes) {
    ScriptedMessageService messages;
    QStringList paths;
    for (int index = 0; index < 5; ++index) {
        paths << writeFile(QStringLiteral("f%1.txt").arg(index), "x");
        ASSERT_TRUE(window_->openPath(paths.last()));
    }
    ASSERT_TRUE(window_->openPath(paths.at(2)));
    EXPECT_EQ(window_->recentFiles().paths(),
              (QStringList{paths.at(2), paths.at(4), paths.at(3), paths.at(1)}));
    EXPECT_EQ(RecentFileList(*store_).paths(), window_->recentFiles().paths());

    emit window_->mainMenu()->aboutToShow();
    const QList<QAction*> items = Items(*window_->mainMenu());
    ASSERT_GE(items.size(), 4);
    EXPECT_EQ(items[items.size() - 4]->text(), "&1 " + paths.at(2));
    EXPECT_EQ(items.last(), window_->commands().action(command::RecentFile1 + 3));

    QFile::remove(paths.at(4));
    messages.script({Answer::Ok});
    window_->commands().run(command::RecentFile1 + 1);
    EXPECT_EQ(messages.shownIds(), QList<int>{33003});
    EXPECT_FALSE(window_->recentFiles().paths().contains(paths.at(4)));

    window_->commands().run(command::RecentFile1 + 2);
    EXPECT_EQ(window_->view()->path(), paths.at(1));

    // A file opened through the dialog joins the list; one saved under a new name does not.
    window_->view()->setBrowseDialog([this](BrowseRequest& request, QWidget*) {
        request.folder = dir_.path() + QLatin1Char('/');
        request.names = {QStringLiteral("f0.txt")};
        return true;
    });
    window_->commands().run(command::FileOpen);
    ASSERT_EQ(window_->recentFiles().paths().value(0), paths.at(0));
    const QStringList before = window_->recentFiles().paths();
    ASSERT_TRUE(window_->view()->saveAs());
    EXPECT_EQ(window_->recentFiles().paths(), before);
}

// ---- Settings and the about box ----

// The tab width and the hold time of a confirmed sheet are the view's at once; a cancelled
// sheet changes nothing.
TEST_F(CMainFrameTest, ConfirmedSettingsReachTheViewAtOnce) {
    EditControl* control = window_->view()->activeControl();
    const qreal tabStop = control->tabStopDistance();
    ASSERT_GE(holdTime(), kBetweenTheTwo); // "長め"
    for (const bool confirm : {false, true}) {
        WhenDialogShows<SettingsSheet>([confirm](SettingsSheet& sheet) {
            sheet.editPage()->tabField()->setText(QStringLiteral("2"));
            sheet.tapPage()->delayButton(0)->setChecked(true); // "普通"
            confirm ? sheet.accept() : sheet.reject();
        });
        ASSERT_TRUE(window_->commands().run(command::Settings));
        EXPECT_EQ(control->tabStopDistance(), confirm ? tabStop / 4 : tabStop);
    }
    EXPECT_LT(holdTime(), kBetweenTheTwo);
}

// The about box names the build's version and the Qt it runs on.
TEST_F(CMainFrameTest, AboutBoxNamesTheVersionAndTheQtItRunsOn) {
    QString shown;
    WhenDialogShows<AboutBox>([&shown](AboutBox& box) {
        shown = box.text();
        box.accept();
    });
    ASSERT_TRUE(window_->commands().run(command::About));
    EXPECT_TRUE(
        shown.contains(QRegularExpression(QStringLiteral("\\nバージョン \\d+\\.\\d+\\.\\d+\\n"))))
        << shown.toStdString();
    EXPECT_TRUE(shown.endsWith(QStringLiteral("\nQt ") + QString::fromLatin1(qVersion())));
}

// ---- The find and replace bars: the keys, the buttons, what goes into the boxes, where the
// focus goes, and what the macro recorder is handed ----

class SearchBarsTest : public CMainFrameTest {
protected:
    void SetUp() override {
        CMainFrameTest::SetUp();
        view()->setRecorder([this](const RecordedCommand& command) { recorded_.append(command); });
        SetEditorText(*view()->document(), u"ab\r\ncd ab AB");
        select(0, 4); // "ab\r\nc"
    }

    CEditer* view() const { return window_->view(); }
    SearchBars& bars() const { return window_->searchBars(); }
    FindBar* findBar() const { return bars().findBar(); }
    ReplaceBar* replaceBar() const { return bars().replaceBar(); }
    void key(int keyCode, Qt::KeyboardModifiers modifiers = Qt::ControlModifier) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key(keyCode), modifiers);
    }
    void select(int start, int end) {
        QTextCursor cursor(view()->document());
        cursor.setPosition(start);
        cursor.setPosition(end, QTextCursor::KeepAnchor);
        view()->activeControl()->setTextCursor(cursor);
    }
    QString selected() const { return view()->selectedText(); }

    QList<RecordedCommand> recorded_;
};

// Ctrl+F opens the find bar with the selection's first line, all selected, and searches on.
TEST_F(SearchBarsTest, FindKeyOpensTheBarWithTheSelectionAndSearches) {
    ScriptedMessageService messages;
    key(Qt::Key_F);
    ASSERT_TRUE(findBar()->isVisible());
    EXPECT_EQ(findBar()->textEdit()->text(), QStringLiteral("ab"));
    EXPECT_EQ(selected(), QStringLiteral("ab")); // the next "ab", after the selection
    ASSERT_EQ(recorded_.size(), 1);
    EXPECT_EQ(recorded_[0].action, RecordedAction::Find);
    EXPECT_EQ(recorded_[0].text, QStringLiteral("ab"));
    // The replace bar takes the find bar's place, the selection in its first box.
    window_->commands().run(command::Replace);
    EXPECT_FALSE(findBar()->isVisible());
    EXPECT_TRUE(replaceBar()->isVisible());
    EXPECT_EQ(replaceBar()->findEdit()->text(), QStringLiteral("ab"));
    EXPECT_TRUE(replaceBar()->findEdit()->hasFocus());
    EXPECT_EQ(replaceBar()->findEdit()->selectedText(), QStringLiteral("ab"));
    // Ctrl+Q hides it and the text has the focus again.
    key(Qt::Key_Q);
    EXPECT_FALSE(replaceBar()->isVisible());
    EXPECT_TRUE(view()->activeControl()->hasFocus());
    // In an open find bar, Ctrl+B fills an empty box from the selection and searches back; "×"
    // gives the focus back to the text.
    window_->commands().run(command::Find);
    findBar()->textEdit()->clear();
    select(6, 8); // the second "ab"
    key(Qt::Key_B);
    EXPECT_EQ(findBar()->textEdit()->text(), QStringLiteral("ab"));
    EXPECT_EQ(view()->activeControl()->textCursor().selectionStart(), 0);
    findBar()->closeButton()->click();
    EXPECT_FALSE(findBar()->isVisible());
    EXPECT_TRUE(view()->activeControl()->hasFocus());
}

// Enter in the box searches on and keeps the typing in the box, so a second Enter finds the
// next match instead of replacing this one with a line break.
TEST_F(SearchBarsTest, EnterInTheBoxSearchesOnAndKeepsTheBox) {
    ScriptedMessageService messages;
    window_->commands().run(command::Find);
    QLineEdit* box = findBar()->textEdit();
    box->setText(QStringLiteral("ab"));
    select(0, 0);
    QTest::keyClick(box, Qt::Key_Return);
    QTest::keyClick(box, Qt::Key_Return);
    EXPECT_TRUE(box->hasFocus());
    EXPECT_EQ(EditorText(*view()->document()), u"ab\r\ncd ab AB");
    EXPECT_EQ(view()->activeControl()->textCursor().selectionStart(), 6);
}

// Each button with an empty box says so and puts the focus in the box.
TEST_F(SearchBarsTest, EmptyBoxesAreRefused) {
    const struct {
        int opener;
        QToolButton* button;
        QLineEdit* box;
        int message;
    } rows[] = {
        {command::Find, findBar()->towardsEndButton(), findBar()->textEdit(), 40018},
        {command::Find, findBar()->towardsStartButton(), findBar()->textEdit(), 40018},
        {command::Replace, replaceBar()->nextButton(), replaceBar()->findEdit(), 40012},
        {command::Replace, replaceBar()->replaceButton(), replaceBar()->findEdit(), 40012},
        {command::Replace, replaceBar()->replaceAllButton(), replaceBar()->findEdit(), 40012},
    };
    select(0, 0);
    for (const auto& row : rows) {
        window_->commands().run(row.opener);
        view()->activeControl()->setFocus();
        ScriptedMessageService messages{MessageAnswer::Ok};
        row.button->click();
        EXPECT_EQ(messages.shownIds(), QList<int>{row.message});
        EXPECT_TRUE(row.box->hasFocus());
    }
    EXPECT_TRUE(recorded_.isEmpty());
}

// The replace bar: Ctrl+R replaces the selection when it matches and goes on; "全" replaces
// all; each is recorded with both texts and the case option of its own bar.
TEST_F(SearchBarsTest, ReplaceKeysAndButtonsAreRecorded) {
    window_->commands().run(command::Replace);
    replaceBar()->findEdit()->setText(QStringLiteral("ab"));
    replaceBar()->replacementEdit()->setText(QStringLiteral("X"));
    key(Qt::Key_I, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_TRUE(replaceBar()->caseOption().ignoresCase());
    EXPECT_FALSE(findBar()->caseOption().ignoresCase());
    select(0, 2);
    ScriptedMessageService messages{MessageAnswer::Ok};
    key(Qt::Key_R);
    EXPECT_EQ(EditorText(*view()->document()), u"X\r\ncd ab AB");
    EXPECT_EQ(selected(), QStringLiteral("ab"));
    replaceBar()->replaceAllButton()->click();
    EXPECT_EQ(EditorText(*view()->document()), u"X\r\ncd X X");
    EXPECT_EQ(messages.shownIds(), QList<int>{33026});
    ASSERT_EQ(recorded_.size(), 2);
    EXPECT_EQ(recorded_[0].action, RecordedAction::Replace);
    EXPECT_EQ(recorded_[1].action, RecordedAction::ReplaceAll);
    EXPECT_EQ(recorded_[1].replacement, QStringLiteral("X"));
    EXPECT_EQ(recorded_[1].flag, 1);
}

// In a bar's box, copy and paste serve the box; F6 goes between the text and the boxes;
// Escape closes the bar.
TEST_F(SearchBarsTest, TheBoxesHaveTheirOwnClipboardAndFocus) {
    window_->commands().run(command::Find);
    QLineEdit* box = findBar()->textEdit();
    box->setText(QStringLiteral("copied"));
    box->selectAll();
    window_->commands().run(command::EditCopy);
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("copied"));
    key(Qt::Key_F6, Qt::NoModifier);
    EXPECT_TRUE(view()->activeControl()->hasFocus());
    key(Qt::Key_F6, Qt::NoModifier);
    EXPECT_TRUE(box->hasFocus());
    key(Qt::Key_Escape, Qt::NoModifier);
    EXPECT_FALSE(findBar()->isVisible());
}

// ---- Closing ----

TEST_F(CMainFrameTest, ClosingAChangedTextAsksAndHonoursTheAnswer) {
    const QString path = writeFile(QStringLiteral("keep.txt"), "old");
    {
        ScriptedMessageService messages;
        ASSERT_TRUE(window_->openPath(path));
    }
    type(QStringLiteral("new "));
    {
        // The Exit command closes through the same question.
        ScriptedMessageService messages{Answer::Cancel};
        window_->commands().run(command::AppExit);
        EXPECT_TRUE(window_->isVisible());
    }
    {
        // Yes with a save that fails keeps the window open.
        QFile::setPermissions(path, QFile::ReadOwner);
        ScriptedMessageService messages{Answer::Yes, Answer::No};
        EXPECT_FALSE(window_->close());
        EXPECT_EQ(messages.shownIds(), (QList<int>{30006, 33002}));
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
    }
    {
        ScriptedMessageService messages{Answer::Yes};
        EXPECT_TRUE(window_->close());
        EXPECT_EQ(readFile(path), QByteArray("new old"));
    }
}

} // namespace
} // namespace korvel

#include "CMainFrameTest.moc"
