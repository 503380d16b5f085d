// The view's find, replace, jump, file information and outside-change check, on the real
// controls: what the user sees selected, where the text stands, what the next save writes.
#include "editor/CEditer.h"
#include "editor/EditControl.h"
#include "editor/EditorText.h"
#include "editor/FileInfoDialog.h"
#include "editor/JumpDialog.h"
#include "messages/testing/ScriptedMessageService.h"
#include "support/WindowTest.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QScrollBar>
#include <QSlider>
#include <QTest>
#include <QTextBlock>
#include <QTextDocument>
#include <ctime>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace korvel {
namespace {

using Answer = MessageAnswer;

using testing::WhenDialogShows;

class ViewSearchTest : public testing::WindowTest<CEditer> {
protected:
    QString writeFile(const QByteArray& bytes) const {
        return WindowTest::writeFile(QStringLiteral("text.txt"), bytes);
    }
    void setText(const QString& text) {
        SetEditorText(*window_->document(), text.toStdU16String());
        control()->moveCursor(QTextCursor::Start);
    }
    // Lines "line 1" to "line n".
    void setLines(int count) {
        QStringList lines;
        for (int i = 1; i <= count; ++i)
            lines << QStringLiteral("line %1").arg(i);
        setText(lines.join(QStringLiteral("\r\n")));
    }

    EditControl* control() const { return window_->activeControl(); }
    int topLine() const { return control()->cursorForPosition(QPoint(0, 0)).blockNumber(); }
};

// The engine counts a line break as two characters, the control as one: a match after breaks,
// and one that spans a break, select exactly their own characters.
TEST_F(ViewSearchTest, FindSelectsTheMatchAcrossLineBreaks) {
    ScriptedMessageService messages;
    setText(QStringLiteral("ab\r\ncd\r\nab\r\ncd"));
    EXPECT_TRUE(window_->find(QStringLiteral("b\r\nc"), false, false, FindMode::Plain));
    EXPECT_EQ(window_->selectedText(), QStringLiteral("b\r\nc"));
    EXPECT_TRUE(window_->find(QStringLiteral("b\r\nc"), false, false, FindMode::Plain));
    EXPECT_EQ(control()->textCursor().selectionStart(), 7);
    EXPECT_TRUE(window_->find(QStringLiteral("ab"), true, false, FindMode::Plain));
    EXPECT_EQ(control()->textCursor().selectionStart(), 6);
}

// A match that had to be scrolled to stands 5 lines below the top; one already on screen does
// not move the text.
TEST_F(ViewSearchTest, AMatchScrolledToStandsFiveLinesDown) {
    ScriptedMessageService messages;
    setLines(300);
    EXPECT_TRUE(window_->find(QStringLiteral("line 3\r\n"), false, false, FindMode::Plain));
    EXPECT_EQ(topLine(), 0);
    EXPECT_TRUE(window_->find(QStringLiteral("line 200"), false, false, FindMode::Plain));
    EXPECT_EQ(control()->textCursor().blockNumber() - topLine(), 5);
}

// Replace all changes the text in one undo step, and the same text comes back on undo.
TEST_F(ViewSearchTest, ReplaceAllIsOneUndoStep) {
    const QString before = QStringLiteral("a\r\nb a\r\na");
    setText(before);
    ScriptedMessageService messages{Answer::Ok};
    EXPECT_TRUE(window_->replaceAll(QStringLiteral("a\r\n"), QStringLiteral("x"), false));
    EXPECT_EQ(EditorText(*window_->document()), u"xb xa");
    EXPECT_TRUE(window_->isModified());
    window_->undo();
    EXPECT_EQ(QString::fromStdU16String(EditorText(*window_->document())), before);
    EXPECT_FALSE(window_->document()->isUndoAvailable());
}

// Jump: the caret at the start of the line, the line 3 rows below the top; lines are the
// file's lines however long they are and however they wrap.
TEST_F(ViewSearchTest, JumpPutsTheLineThreeRowsDown) {
    QStringList lines;
    for (int i = 1; i <= 300; ++i)
        lines << QStringLiteral("line %1 ").arg(i).repeated(i % 3 == 0 ? 20 : 1);
    setText(lines.join(QStringLiteral("\r\n")));
    QTextCursor selection(window_->document()->findBlockByNumber(2));
    selection.movePosition(QTextCursor::End, QTextCursor::KeepAnchor);
    control()->setTextCursor(selection);
    EXPECT_EQ(window_->caretLine(), 2); // the selection's start
    EXPECT_EQ(window_->lineCount(), 300);
    WhenDialogShows<JumpDialog>([](JumpDialog& dialog) {
        dialog.lineEdit()->setText(QStringLiteral("150"));
        dialog.accept();
    });
    window_->jump();
    const QTextCursor caret = control()->textCursor();
    EXPECT_EQ(caret.blockNumber(), 149);
    EXPECT_EQ(caret.positionInBlock(), 0);
    EXPECT_FALSE(caret.hasSelection());
    // Three rows above it on screen, whichever lines they belong to.
    const int rowHeight = control()->cursorRect().height();
    EXPECT_EQ(control()->cursorRect().top() / rowHeight, 3);
}

TEST(JumpDialog, TicksFollowTheLineCountAndOnlyALineIsTaken) {
    const std::pair<int, int> ticks[] = {{1, 1},         {9, 1},        {10, 10},     {99, 10},
                                         {100, 100},     {999, 100},    {1000, 1000}, {9999, 1000},
                                         {10000, 10000}, {99999, 10000}};
    for (const auto& [lines, tick] : ticks)
        EXPECT_EQ(JumpDialog::TickInterval(lines), tick) << lines;

    JumpDialog dialog(5, 40);
    dialog.show();
    dialog.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    QLineEdit* edit = dialog.lineEdit();
    dialog.slider()->setValue(12);
    EXPECT_EQ(edit->text(), QStringLiteral("12"));
    edit->setFocus();
    for (const char* bad : {"0", "41", "abc", ""}) {
        ScriptedMessageService messages{Answer::Ok, Answer::Ok};
        edit->setText(QString::fromLatin1(bad));
        dialog.accept(); // OK refuses and the dialog stays
        EXPECT_EQ(dialog.result(), QDialog::Rejected);
        dialog.slider()->setFocus(); // leaving the box complains too
        QApplication::processEvents();
        EXPECT_EQ(messages.shownIds(), (QList<int>{33006, 33006})) << bad;
        EXPECT_EQ(messages.shown().front().text,
                  QStringLiteral("ジャンプ先には 1 ～ 40 の間の数字を指定してください。"));
        EXPECT_TRUE(edit->hasFocus());
        EXPECT_EQ(edit->selectedText(), edit->text());
    }
    edit->setText(QStringLiteral("40"));
    dialog.slider()->setFocus();
    EXPECT_EQ(dialog.slider()->value(), 40);
    dialog.accept();
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_EQ(dialog.line(), 40);
}

TEST_F(ViewSearchTest, FileInformationChangesWhatTheNextSaveWrites) {
    const QString path = writeFile(QByteArray("abc\r\n"));
    ASSERT_TRUE(window_->openPath(path));
    // No change: no message, not modified.
    WhenDialogShows<FileInfoDialog>([&](FileInfoDialog& dialog) {
        EXPECT_EQ(dialog.pathText(), path);
        EXPECT_EQ(dialog.sizeText(), QStringLiteral("5 バイト"));
        dialog.accept();
    });
    window_->showFileInformation();
    EXPECT_FALSE(window_->isModified());
    // A new line ending and code set: told once, modified, written by the next save.
    ScriptedMessageService messages{Answer::Ok};
    WhenDialogShows<FileInfoDialog>([](FileInfoDialog& dialog) {
        dialog.encodingList()->setCurrentIndex(4);   // UTF-8, with its mark
        dialog.lineEndingList()->setCurrentIndex(2); // LF
        dialog.accept();
    });
    window_->showFileInformation();
    EXPECT_EQ(messages.shownIds(), QList<int>{30043});
    EXPECT_TRUE(window_->isModified());
    EXPECT_EQ(EditorText(*window_->document()), u"abc\r\n");
    ASSERT_TRUE(window_->save());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), QByteArray("\xEF\xBB\xBF"
                                         "abc\n"));
}

// The list's positions and the code sets they stand for, both ways; sizes grouped by
// thousands.
TEST_F(ViewSearchTest, FileInformationListsAndSizes) {
    const TextEncoding encodings[] = {TextEncoding::ShiftJis, TextEncoding::Jis,
                                      TextEncoding::Euc,      TextEncoding::Unicode,
                                      TextEncoding::Utf8,     TextEncoding::Utf8N};
    for (int position = 0; position < 6; ++position) {
        FileInfoDialog dialog(QString(), std::nullopt, QDateTime(), encodings[position],
                              LineEnding::Cr);
        EXPECT_EQ(dialog.encodingList()->currentIndex(), position);
        EXPECT_EQ(dialog.encoding(), encodings[position]);
        EXPECT_EQ(dialog.lineEnding(), LineEnding::Cr);
        EXPECT_EQ(dialog.pathText(), QStringLiteral("(新規テキスト)"));
        EXPECT_TRUE(dialog.sizeText().isEmpty());
    }
    EXPECT_EQ(FileInfoDialog::FormatSize(999), QStringLiteral("999 バイト"));
    EXPECT_EQ(FileInfoDialog::FormatSize(1000), QStringLiteral("1,000 バイト"));
    EXPECT_EQ(FileInfoDialog::FormatSize(1234567), QStringLiteral("1,234,567 バイト"));
}

TEST_F(ViewSearchTest, AnOutsideChangeIsOfferedOnceAndReloads) {
    const QString path = writeFile(QByteArray("old\r\n"));
    ASSERT_TRUE(window_->openPath(path));
    window_->checkExternalChange(); // unchanged: nothing asked
    const auto touch = [&](const QByteArray& bytes, int second) {
        writeFile(bytes);
        // Later than the load, to the nanosecond, whatever the clock's resolution.
        const struct timespec times[2] = {{0, UTIME_OMIT}, {::time(nullptr) + 100, second}};
        ASSERT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0), 0);
    };
    touch("new", 1);
    {
        ScriptedMessageService messages{Answer::No};
        window_->checkExternalChange();
        window_->checkExternalChange(); // the same change is not offered again
        EXPECT_EQ(messages.shownIds(), QList<int>{33038});
    }
    EXPECT_EQ(EditorText(*window_->document()), u"old\r\n");
    touch("newer\nlf", 2);
    QTest::keyClicks(control(), QStringLiteral("x")); // unsaved changes give way unasked
    ScriptedMessageService messages{Answer::Yes};
    window_->checkExternalChange();
    EXPECT_EQ(EditorText(*window_->document()), u"newer\r\nlf");
    EXPECT_EQ(window_->lineEnding(), LineEnding::Lf); // what the next save writes
    EXPECT_FALSE(window_->isModified());
    // A file that went away is never offered.
    ASSERT_TRUE(QFile::remove(path));
    window_->checkExternalChange();
}

} // namespace
} // namespace korvel
