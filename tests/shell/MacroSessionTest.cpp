// Macros in the real window, offscreen: what the recorder makes of keys and commands, what the
// player's keys and handed-back commands do to the text, and the load, save and stop dialogs.
#include "shell/MacroSession.h"

#include "editor/CEditer.h"
#include "editor/EditControl.h"
#include "editor/EditorText.h"
#include "macro/KeyInjection.h"
#include "messages/testing/ScriptedMessageService.h"
#include "settings/SettingsStore.h"
#include "shell/CMainFrame.h"
#include "shell/CommandIds.h"
#include "shell/CommandTable.h"
#include "shell/FindBar.h"
#include "shell/ReplaceBar.h"
#include "shell/SearchBars.h"
#include "support/WindowTest.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QTest>
#include <QToolButton>
#include <QToolTip>
#include <gtest/gtest.h>
#include <memory>

namespace korvel {
namespace {

using Answer = MessageAnswer;

class MacroSessionTest : public testing::WindowTest<CMainFrame> {
protected:
    void SetUp() override {
        testing::WindowTest<CMainFrame>::SetUp();
        control()->setFocus();
        macros().setBrowseDialog([this](BrowseRequest& request, QWidget*) {
            request.folder = dir_.path() + u'/';
            request.names = {chosenName_};
            return !chosenName_.isEmpty();
        });
    }

    MacroSession& macros() const { return window_->macros(); }
    EditControl* control() const { return window_->view()->activeControl(); }
    QString text() const { return QString::fromStdU16String(EditorText(*control()->document())); }
    QString selection() const { return window_->view()->selectedText(); }
    void run(int id) { window_->commands().run(id); }

    // Loads lines as a macro and plays it on text, with the caret where "|" stands.
    void play(const QByteArray& lines, const QString& startText) {
        window_->view()->newDocument(false);
        QTextDocument& document = *control()->document();
        SetEditorText(document, Utf16View(QString(startText).remove(u'|')));
        QTextCursor cursor = control()->textCursor();
        cursor.setPosition(static_cast<int>(DocumentPosition(document, startText.indexOf(u'|'))));
        control()->setTextCursor(cursor);
        ASSERT_TRUE(macros().load(writeFile(QStringLiteral("play.mcr"), lines)));
        ASSERT_FALSE(macros().commands().empty());
        run(command::MacroPlay);
    }

    // Answers the load report dialog, once it shows, with OK; the text it held.
    static std::shared_ptr<QString> expectReport() {
        auto report = std::make_shared<QString>();
        testing::WhenDialogShows<QDialog>([report](QDialog& dialog) {
            *report = dialog.findChild<QPlainTextEdit*>()->toPlainText();
            dialog.accept();
        });
        return report;
    }

    QString chosenName_;
};

// Keys typed and commands chosen while recording play back, from the saved file, to the same
// text on a fresh document; the keys typed into a bar's box are the bar's, not the text's.
TEST_F(MacroSessionTest, RecordedEditingSavedLoadedAndPlayedGivesTheSameText) {
    ScriptedMessageService messages;
    run(command::MacroRecord);
    EXPECT_EQ(window_->commands().action(command::MacroRecord)->text(),
              QStringLiteral("記録終了(&R)\tShift+Ctrl+R"));
    QTest::keyClicks(control(), QStringLiteral("ab\"c\\ d"));
    QTest::keyClick(control(), Qt::Key_Return);
    QTest::keyClicks(control(), QStringLiteral("ab"));
    QTest::keyClick(control(), Qt::Key_Left, Qt::ShiftModifier);
    QTest::keyClick(control(), Qt::Key_Backspace);
    run(command::EditSelectAll);
    run(command::EditCopy);
    QTest::keyClick(control(), Qt::Key_End, Qt::ControlModifier);
    run(command::EditPaste);
    // Ctrl+Enter types nothing, and must record nothing that would play as Ctrl+N.
    QTest::keyClick(control(), Qt::Key_Return, Qt::ControlModifier);
    QTest::keyClick(control(), Qt::Key_Home, Qt::ControlModifier);
    run(command::Find);
    QTest::keyClicks(window_->searchBars().findBar()->textEdit(), QStringLiteral("d"));
    QTest::keyClick(window_->searchBars().findBar()->textEdit(), Qt::Key_Return);
    QTest::keyClicks(control(), QStringLiteral("D"));
    run(command::Replace);
    QTest::keyClicks(window_->searchBars().replaceBar()->findEdit(), QStringLiteral("b"));
    QTest::keyClicks(window_->searchBars().replaceBar()->replacementEdit(), QStringLiteral("B"));
    messages.script({Answer::Ok});
    window_->searchBars().replaceBar()->replaceAllButton()->click();
    run(command::MacroRecord);
    const QString recorded = text();
    ASSERT_EQ(recorded, QStringLiteral("aB\"c\\ D\r\naaB\"c\\ d\r\na"));

    chosenName_ = QStringLiteral("edit.mcr");
    ASSERT_TRUE(macros().save());
    window_->view()->newDocument(false);
    ASSERT_TRUE(macros().load(dir_.filePath(chosenName_)));
    messages.script({Answer::Ok});
    run(command::MacroPlay);
    EXPECT_EQ(text(), recorded);
    EXPECT_EQ(messages.shownIds(), (QList<int>{33026, 33026}));
    // The folder of the file chosen is where the next window's dialogs start.
    makeWindow();
    EXPECT_EQ(store_->read(setting::MRU_FOLDER), dir_.path() + u'/');
}

// The player's keys reach the text as real keys do, shortcuts included; LOCK holds a modifier
// over several keys; typed text goes in at once, and with a modifier key by key.
TEST_F(MacroSessionTest, PlayedKeysAndCommandsActOnTheText) {
    ScriptedMessageService messages;
    // clang-format off
    const struct { const char* macro; const char* before; const char* after; const char* selected; } rows[] = {
        {"LOCK SHIFT\nTYPE RIGHT\nTYPE RIGHT\nUNLOCK SHIFT", "a|bcd", "abcd", "bc"},
        {"TYPE \"x\\ny\\t\\\"\"", "|", "x\r\ny\t\"", ""},
        {"TYPE SHIFT \"ab1\"", "|", "AB1", ""},
        {"TYPE CTRL \"A\"", "ab|c", "abc", "abc"},
        {"TYPE BS\nTYPE DEL\nTYPE HOME", "ab|cd", "ad", ""},
        {"SELECT LEFT", "one\r\ntw|o", "one\r\ntwo", "tw"},
        {"SELECT RIGHT", "one\r\ntw|o", "one\r\ntwo", "o"},
        {"SELECT\nUNSELECT TAIL\nTYPE \"!\"", "o|ne\r\ntwo", "one!\r\ntwo", ""},
        {"SELECT ALL\nUNSELECT\nTYPE \"!\"", "one\r\ntw|o", "!one\r\ntwo", ""},
        {"GOTO END\nGOTO -1\nTYPE \"<\"\nGOTO 3\nTYPE \">\"", "|1\r\n2\r\n3", "1\r\n<2\r\n>3", ""},
        {"GOTO +5\nTYPE \"*\"\nGOTO HOME\nTYPE \"^\"", "|1\r\n2", "^1\r\n*2", ""},
        {"FIND /I \"B\"\nCUT\nGOTO END\nPASTE", "|abc", "acb", ""},
        {"FIND /U \"a\"\nCOPY\nGOTO END\nPASTE", "a a|", "a aa", ""},
        {"REPLACE /A \"a\\n\" \"-\"", "|a\r\nba\r\nc", "-b-c", ""},
    };
    // clang-format on
    messages.script({Answer::Ok}); // the count of the replace all
    for (const auto& row : rows) {
        SCOPED_TRACE(row.macro);
        play(row.macro, QString::fromUtf8(row.before));
        EXPECT_EQ(text(), QString::fromUtf8(row.after));
        EXPECT_EQ(selection(), QString::fromUtf8(row.selected));
        EXPECT_EQ(QGuiApplication::keyboardModifiers(), Qt::NoModifier);
    }
}

// Files through the macro: OPEN /F of a missing file names a new text that SAVE /A then writes;
// SAVE to a path writes there in the document's code set; NEWFILE /F drops changes unasked.
TEST_F(MacroSessionTest, FileCommandsOpenCreateAndSaveWithoutAsking) {
    ScriptedMessageService messages;
    const QString created = dir_.filePath(QStringLiteral("new.txt"));
    const QString copy = dir_.filePath(QStringLiteral("copy.txt"));
    play(QStringLiteral(
             "OPEN /F \"%1\"\nTYPE \"日本\"\nSAVE /A\nSAVE \"%2\"\nTYPE \"x\"\nNEWFILE /F")
             .arg(created, copy)
             .toUtf8(),
         QStringLiteral("unsaved|"));
    EXPECT_TRUE(messages.shown().isEmpty());
    EXPECT_EQ(text(), QString());
    for (const QString& path : {created, copy})
        EXPECT_EQ(readFile(path), QByteArray("\x93\xfa\x96\x7b"));
}

// While a macro sleeps the window works: closing is refused (40008), and the play command asks
// whether to stop (30003): No plays on, Yes stops before the next command. LOCKed keys are let
// go at the end.
TEST_F(MacroSessionTest, StopRequestIsConfirmedAndClosingWaitsForTheMacro) {
    ScriptedMessageService messages{Answer::Ok, Answer::No, Answer::Yes};
    QTimer::singleShot(50, [this] {
        EXPECT_FALSE(window_->close());
        run(command::MacroPlay);
    });
    QTimer::singleShot(400, [this] { run(command::MacroPlay); });
    play("LOCK SHIFT\nSLEEP 200\nTYPE \"a\"\nSLEEP 300\nTYPE \"b\"", QStringLiteral("|"));
    EXPECT_EQ(messages.shownIds(), (QList<int>{40008, 30003, 30003}));
    EXPECT_EQ(text(), QStringLiteral("A"));
    EXPECT_EQ(QGuiApplication::keyboardModifiers(), Qt::NoModifier);
    EXPECT_FALSE(macros().isPlaying());
}

// A Shift still held when playing is asked for holds the macro back, with a reminder every two
// seconds.
TEST_F(MacroSessionTest, PlayingWaitsForTheModifiersToBeReleased) {
    ScriptedMessageService messages{Answer::Ok};
    SendKey(Qt::Key_Shift, true, Qt::ShiftModifier);
    QTimer::singleShot(2300, [] { SendKey(Qt::Key_Shift, false, Qt::NoModifier); });
    play("TYPE \"a\"", QStringLiteral("|"));
    EXPECT_EQ(messages.shownIds(), QList<int>{35021});
    EXPECT_EQ(text(), QStringLiteral("a"));
}

// An error empties the macro and ends the report with the notice; warnings alone load, then the
// explanation shows and the tooltip goes to the play command. A start-up macro that cannot be
// read is told twice.
TEST_F(MacroSessionTest, LoadReportsProblemsExplainsAndHandsOnTheTooltip) {
    ScriptedMessageService messages{Answer::Ok, Answer::Ok, Answer::Ok};
    std::shared_ptr<QString> report = expectReport();
    EXPECT_TRUE(macros().load(writeFile(QStringLiteral("bad.mcr"), "COPY\nSETFOCUS\n")));
    EXPECT_TRUE(macros().commands().empty());
    EXPECT_TRUE(report->endsWith(QStringLiteral("中止しました。")));
    EXPECT_FALSE(window_->commands().isEnabled(command::MacroPlay));

    report = expectReport();
    EXPECT_TRUE(macros().load(
        writeFile(QStringLiteral("warn.mcr"), "TOOLTIP \"Tip\"\nEXPLAIN \"a\\nb\"\nCOPY x\n")));
    EXPECT_TRUE(report->startsWith(QStringLiteral("    Worning (3)")));
    EXPECT_EQ(macros().commands().size(), 1u);
    QAction* play = window_->commands().action(command::MacroPlay);
    auto* tools = qobject_cast<QMenu*>(play->associatedObjects().value(0));
    ASSERT_NE(tools, nullptr);
    emit tools->hovered(play);
    EXPECT_EQ(QToolTip::text(), QStringLiteral("Tip\""));
    ASSERT_EQ(messages.shown().size(), 1);
    EXPECT_EQ(messages.shown()[0].caption, QStringLiteral("マクロの説明"));
    EXPECT_EQ(messages.shown()[0].text, QStringLiteral("a\nb\""));

    store_->write(setting::LOAD_DAFAULT_MACRO, 1);
    store_->write(setting::DEFAULT_MACRO_FILE_NAME, dir_.filePath(QStringLiteral("gone.mcr")));
    macros().loadAtStartup();
    EXPECT_EQ(messages.shownIds(), (QList<int>{0, 33008, 33037}));
}

} // namespace
} // namespace korvel
