// The editor view's wiring: files in and out through the dialogs (the code sets and line
// endings themselves are the document's), the questions on the way, word wrap, fonts, settings
// and the text-size watch; and its find, replace, jump, file information and outside-change
// check on the real controls: what the user sees selected, where the text stands, what the next
// save writes.
#include "editor/CEditer.h"

#include "document/EncodingNames.h"
#include "editor/EditControl.h"
#include "editor/EditorText.h"
#include "editor/FileInfoDialog.h"
#include "editor/JumpDialog.h"
#include "editor/ViewFonts.h"
#include "messages/testing/ScriptedMessageService.h"
#include "support/WindowTest.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QSlider>
#include <QTest>
#include <QTextBlock>
#include <QTextDocument>
#include <algorithm>
#include <ctime>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <iterator>
#include <sys/stat.h>

namespace korvel {
namespace {

using Answer = MessageAnswer;
using testing::WhenDialogShows;

// The position of a code set in a dialog's list.
template <std::size_t N> int PositionOf(const TextEncoding (&list)[N], TextEncoding encoding) {
    return static_cast<int>(std::find(std::begin(list), std::end(list), encoding) - list);
}

// The dialog's "|"-separated list must name the code sets in the order the view maps its
// positions to them, or a choice reads or writes a code set the user did not pick.
template <std::size_t N>
void ExpectListNames(const QString& list, const TextEncoding (&encodings)[N]) {
    const QStringList items = list.split(QLatin1Char('|'), Qt::SkipEmptyParts);
    ASSERT_EQ(items.size(), static_cast<qsizetype>(N)) << list.toStdString();
    for (std::size_t i = 0; i < N; ++i)
        EXPECT_EQ(items[i].toStdString(), EncodingDisplayName(encodings[i])) << "position " << i;
}

class CEditerTest : public testing::WindowTest<CEditer> {
protected:
    void setText(const std::u16string& text) { SetEditorText(*window_->document(), text); }
    std::u16string text() const { return EditorText(*window_->document()); }

    // The Open and Save dialogs answer from the test: choose this name and these list items.
    void chooseInDialog(const QString& name, int optionIndex, int lineEndingIndex = 0) {
        window_->setBrowseDialog([=, this](BrowseRequest& request, QWidget*) {
            lastRequest_ = request;
            request.folder = dir_.path() + QLatin1Char('/');
            request.names = {name};
            request.optionIndex = optionIndex;
            request.lineEndingIndex = lineEndingIndex;
            return true;
        });
    }

    BrowseRequest lastRequest_;
};

// ---- Files in and out ----

TEST_F(CEditerTest, SaveWritesBackInTheCodeSetAndLineEndingTheFileWasOpenedWith) {
    ScriptedMessageService messages;
    const QString path = writeFile(QStringLiteral("euc.txt"), "\xB4\xC1\xBB\xFA\rx\r");
    ASSERT_TRUE(window_->openPath(path));
    EXPECT_EQ(window_->encoding(), TextEncoding::Euc);
    EXPECT_EQ(window_->lineEnding(), LineEnding::Cr);
    EXPECT_FALSE(window_->isModified());
    QTextCursor cursor(window_->document());
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(QStringLiteral("new"));
    ASSERT_TRUE(window_->save());
    EXPECT_EQ(readFile(path), QByteArray("\xB4\xC1\xBB\xFA\rx\rnew"));
    EXPECT_FALSE(window_->isModified());
}

// The Save dialog starts at the document's own code set, line ending and name; the file and the
// view get the ones chosen, and a JIS file the stored half-width katakana choice.
TEST_F(CEditerTest, SaveAsOffersTheDocumentsOwnChoicesAndWritesTheChosenOnes) {
    ScriptedMessageService messages;
    store_->write(setting::JIS_KATAKANA_MODE, 1);
    ASSERT_TRUE(
        window_->openPath(writeFile(QStringLiteral("euc.txt"), "\xB4\xC1\xBB\xFA\x8E\xB1\n")));
    chooseInDialog(QStringLiteral("copy.txt"), PositionOf(kSaveEncodingList, TextEncoding::Jis),
                   static_cast<int>(LineEnding::Cr));
    ASSERT_TRUE(window_->saveAs());

    ExpectListNames(lastRequest_.optionList, kSaveEncodingList);
    EXPECT_EQ(lastRequest_.optionIndex, PositionOf(kSaveEncodingList, TextEncoding::Euc));
    const QStringList lineEndings = lastRequest_.lineEndingList.split(u'|', Qt::SkipEmptyParts);
    for (const LineEnding lineEnding : {LineEnding::CrLf, LineEnding::Cr, LineEnding::Lf})
        EXPECT_EQ(lineEndings.value(static_cast<int>(lineEnding)).toStdString(),
                  LineEndingDisplayName(lineEnding));
    EXPECT_EQ(lastRequest_.lineEndingIndex, static_cast<int>(LineEnding::Lf));
    EXPECT_EQ(lastRequest_.name, QStringLiteral("euc.txt"));

    const QByteArray saved = readFile(dir_.filePath("copy.txt"));
    EXPECT_TRUE(saved.contains("\x1B(I1")) << saved.toStdString();
    EXPECT_TRUE(saved.endsWith("\x1B(B\r")) << saved.toStdString();
    EXPECT_EQ(window_->path(), dir_.filePath("copy.txt"));
    EXPECT_EQ(window_->encoding(), TextEncoding::Jis);
    EXPECT_EQ(window_->lineEnding(), LineEnding::Cr);
    EXPECT_FALSE(window_->isModified());
}

TEST_F(CEditerTest, OpenDialogPassesTheChosenCodeSetAndRemembersItsFolder) {
    ScriptedMessageService messages;
    // UTF-8 with its mark, opened as "UTF-8N": the mark stays in the text.
    writeFile(QStringLiteral("marked.txt"), "\xEF\xBB\xBFok");
    QStringList used;
    QObject::connect(window_.get(), &CEditer::fileUsed,
                     [&used](const QString& path) { used << path; });
    chooseInDialog(QStringLiteral("marked.txt"),
                   PositionOf(kLoadEncodingList, TextEncoding::Utf8N));
    ASSERT_TRUE(window_->openWithDialog());
    ExpectListNames(lastRequest_.optionList, kLoadEncodingList);
    EXPECT_EQ(lastRequest_.optionIndex, PositionOf(kLoadEncodingList, TextEncoding::AutoDetect));
    EXPECT_EQ(window_->encoding(), TextEncoding::Utf8N);
    EXPECT_EQ(text(), u"\uFEFFok");
    EXPECT_EQ(used, QStringList{dir_.filePath("marked.txt")});
    EXPECT_EQ(window_->lastFolder(), dir_.path() + QLatin1Char('/'));
}

TEST_F(CEditerTest, RefusalsLeaveTheDocumentAsItWas) {
    setText(u"keep");
    window_->document()->setModified(true);
    ScriptedMessageService messages{Answer::Ok, Answer::Ok, Answer::Ok};
    EXPECT_FALSE(window_->openPath(dir_.filePath("missing.txt")));
    EXPECT_FALSE(window_->openPath(dir_.path()));
    EXPECT_FALSE(window_->saveDocument(dir_.path(), TextEncoding::ShiftJis, LineEnding::CrLf));
    EXPECT_EQ(messages.shownIds(), (QList<int>{33003, 33004, 33001}));
    EXPECT_EQ(text(), u"keep");
    EXPECT_TRUE(window_->path().isEmpty());
    EXPECT_TRUE(window_->isModified());
}

TEST_F(CEditerTest, UnsavedChangesAreAskedAboutBeforeTheyGo) {
    const QString path = writeFile(QStringLiteral("other.txt"), "other");
    window_->activeControl()->insertPlainText(QStringLiteral("draft"));
    {
        ScriptedMessageService messages{Answer::Cancel, Answer::Cancel};
        EXPECT_FALSE(window_->openPath(path));
        EXPECT_FALSE(window_->newDocument());
        EXPECT_EQ(text(), u"draft");
    }
    {
        // Yes on an untitled text goes through "Save As"; cancelling that keeps everything.
        ScriptedMessageService messages{Answer::Yes};
        window_->setBrowseDialog([](BrowseRequest&, QWidget*) { return false; });
        EXPECT_FALSE(window_->newDocument());
        EXPECT_EQ(text(), u"draft");
    }
    ScriptedMessageService messages{Answer::No};
    EXPECT_TRUE(window_->newDocument());
    EXPECT_EQ(text(), u"");
    EXPECT_FALSE(window_->isModified());
}

// ---- Word wrap ----

TEST_F(CEditerTest, WordWrapMovesTheTextWithSelectionTopLineAndModifiedState) {
    std::u16string lines;
    for (int line = 0; line < 200; ++line)
        lines += u"line " + QString::number(line).toStdU16String() + u"\r\n";
    setText(lines);
    EditControl* before = window_->activeControl();
    QTextCursor selection(window_->document());
    selection.setPosition(window_->document()->findBlockByNumber(120).position() + 1);
    selection.setPosition(window_->document()->findBlockByNumber(121).position() + 3,
                          QTextCursor::KeepAnchor);
    before->setTextCursor(selection);
    before->ensureCursorVisible();
    window_->document()->setModified(true);
    const int topBefore = before->cursorForPosition(QPoint(0, 0)).blockNumber();

    window_->toggleWordWrap();
    EditControl* after = window_->activeControl();
    EXPECT_NE(after->lineWrapMode(), before->lineWrapMode());
    EXPECT_TRUE(after->isVisible());
    EXPECT_FALSE(before->isVisible());
    EXPECT_TRUE(before->document()->isEmpty());
    EXPECT_EQ(after->textCursor().anchor(), selection.anchor());
    EXPECT_EQ(after->textCursor().position(), selection.position());
    EXPECT_EQ(after->cursorForPosition(QPoint(0, 0)).blockNumber(), topBefore);
    EXPECT_TRUE(window_->isModified());
    EXPECT_EQ(text(), lines);
}

// Counted in logical lines, a caret nine lines down looks on screen after wrapping lines of
// 300 characters, though it stands many rows below the window. The caret row keeps its
// distance from the top, both ways.
TEST_F(CEditerTest, WordWrapKeepsTheCaretRowWhereItWasOnScreen) {
    std::u16string lines;
    for (int line = 0; line < 40; ++line)
        lines += std::u16string(300, u'a' + line % 26) + u"\r\n";
    setText(lines);
    window_->toggleWordWrap();
    EditControl* unwrapped = window_->activeControl();
    QTextCursor caret(window_->document());
    caret.setPosition(window_->document()->findBlockByNumber(9).position() + 5);
    unwrapped->setTextCursor(caret);
    const int rowHeight = unwrapped->cursorRect().height();
    const int rowBefore = unwrapped->cursorRect().top() / rowHeight;
    ASSERT_GE(rowBefore, 9);

    for (const bool wrapping : {true, false}) {
        SCOPED_TRACE(wrapping ? "to wrapping" : "back");
        window_->toggleWordWrap();
        const QRect at = window_->activeControl()->cursorRect();
        EXPECT_GE(at.top(), 0);
        EXPECT_EQ(at.top() / rowHeight, rowBefore);
        EXPECT_EQ(window_->activeControl()->textCursor().position(), caret.position());
    }
}

// ---- Settings ----

TEST_F(CEditerTest, StartsFromTheSettingsAndWritesItsOwnBack) {
    window_.reset();
    store_->write(setting::EDIT_AUTO_ARRANGE, 0);
    store_->write(setting::FONT_SIZE, 3);
    store_->write(setting::FILTER_INDEX, 4);
    store_->write(setting::COLOR_BACKGROUND, 0x00FF0000); // blue, as 0x00BBGGRR
    makeWindow();
    EXPECT_FALSE(window_->wordWrap());
    EXPECT_EQ(window_->activeControl(), window_->nonWrappingControl());
    EXPECT_EQ(window_->fontSlot(), 3);
    EXPECT_EQ(window_->filterIndex(), 4);
    EXPECT_EQ(window_->activeControl()->palette().color(QPalette::Base), QColor(0, 0, 255));

    window_->toggleWordWrap();
    window_->setFontSlot(0);
    window_->setFontSlot(7); // no such slot: ignored
    window_.reset();
    EXPECT_EQ(store_->read(setting::EDIT_AUTO_ARRANGE), 1);
    EXPECT_EQ(store_->read(setting::FONT_SIZE), 0);
    EXPECT_EQ(store_->read(setting::FILTER_INDEX), 4);
}

// What the text is drawn with, measured on the laid-out line "\tX": the line's height and where
// X stands. A control keeps the font and tab stop of the document it had before, and Qt skips
// a font equal to the one a control already has, so the start-up slot once went unused.
TEST_F(CEditerTest, TextIsDrawnInTheSlotFontWithTheStoredTabWidth) {
    EXPECT_EQ(PixelHeightOf(7, 96), 9); // 9.33 truncated
    EXPECT_EQ(PixelHeightOf(-12, 96), 16);
    window_.reset();
    store_->write(setting::FONT_SIZE, 3);
    store_->write(setting::FONT4_SIZE, 24);
    store_->write(setting::FONT4_BOLD, 1);
    store_->write(setting::FONT4_ITALIC, 1);
    store_->write(setting::TAB_SIZE, 4);
    makeWindow();
    setText(u"\tX");
    const auto expectDrawnWith = [this](int slot) {
        const QFont font = window_->slotFont(slot);
        EditControl* control = window_->activeControl();
        QTextCursor cursor(window_->document());
        const QRect atStart = control->cursorRect(cursor);
        cursor.setPosition(1);
        EXPECT_NEAR(atStart.height(), QFontMetrics(font).height(), 1);
        EXPECT_NEAR(control->cursorRect(cursor).left() - atStart.left(),
                    QFontMetricsF(font).averageCharWidth() * 4, 1.0);
    };
    const QFont fourth = window_->slotFont(3);
    EXPECT_EQ(fourth.pixelSize(), PixelHeightOf(24, window_->logicalDpiY()));
    EXPECT_TRUE(fourth.bold() && fourth.italic());
    expectDrawnWith(3);
    window_->toggleWordWrap();
    expectDrawnWith(3);
    window_->setFontSlot(1);
    expectDrawnWith(1);
}

// ---- The text-size watch ----

TEST_F(CEditerTest, SizeWatchWarnsNearAndAtTheLimitCountingBreaksAsTwo) {
    const struct {
        qsizetype length; // as the program counts it
        QList<int> shown;
    } rows[] = {
        {65280, {}}, {65281, {40010}}, {65534, {40010}}, {65535, {40009}}, {70000, {40009}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.length);
        // One line break among the characters: it counts for two.
        std::u16string body(static_cast<size_t>(row.length - 2), u'あ');
        body.insert(10, u"\r\n");
        setText(body);
        ScriptedMessageService messages;
        for (int shown = 0; shown < row.shown.size(); ++shown)
            messages.script({Answer::Ok});
        window_->checkTextSize();
        EXPECT_EQ(messages.shownIds(), row.shown);
    }
}

// ---- Find, replace, jump, file information and the outside-change check ----

class ViewSearchTest : public CEditerTest {
protected:
    QString writeFile(const QByteArray& bytes) const {
        return CEditerTest::writeFile(QStringLiteral("text.txt"), bytes);
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
    EXPECT_EQ(readFile(path), QByteArray("\xEF\xBB\xBF"
                                         "abc\n"));
}

// Each code set is listed under its own name and read back as itself; a new text has no path or
// size; sizes are grouped by thousands.
TEST_F(ViewSearchTest, FileInformationListsAndSizes) {
    using enum TextEncoding;
    for (const TextEncoding encoding : {ShiftJis, Jis, Euc, Unicode, Utf8, Utf8N}) {
        FileInfoDialog dialog(QString(), std::nullopt, QDateTime(), encoding, LineEnding::Cr);
        EXPECT_EQ(dialog.encodingList()->currentText().trimmed().toStdString(),
                  EncodingDisplayName(encoding));
        EXPECT_EQ(std::pair(dialog.encoding(), dialog.lineEnding()),
                  std::pair(encoding, LineEnding::Cr));
        EXPECT_TRUE(dialog.pathText() == QStringLiteral("(新規テキスト)") &&
                    dialog.sizeText().isEmpty());
    }
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
