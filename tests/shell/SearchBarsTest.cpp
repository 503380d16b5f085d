// The find and replace bars in the main window: the keys, the buttons, what goes into the
// boxes, where the focus goes, and what the macro recorder is handed.
#include "shell/SearchBars.h"

#include "editor/CEditer.h"
#include "editor/EditControl.h"
#include "editor/EditorText.h"
#include "messages/testing/ScriptedMessageService.h"
#include "shell/BarParts.h"
#include "shell/CMainFrame.h"
#include "shell/CommandIds.h"
#include "shell/CommandTable.h"
#include "shell/FindBar.h"
#include "shell/ReplaceBar.h"
#include "support/WindowTest.h"

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QTest>
#include <QTextDocument>
#include <QToolButton>
#include <gtest/gtest.h>

namespace korvel {
namespace {

class SearchBarsTest : public testing::WindowTest<CMainFrame> {
protected:
    void SetUp() override {
        WindowTest::SetUp();
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

} // namespace
} // namespace korvel
