// The editor view's wiring: files in and out through the dialogs (the code sets and line
// endings themselves are the document's), the questions on the way, word wrap, fonts, settings
// and the text-size watch.
#include "editor/CEditer.h"

#include "document/EncodingNames.h"
#include "editor/EditControl.h"
#include "editor/EditorText.h"
#include "editor/ViewFonts.h"
#include "messages/testing/ScriptedMessageService.h"
#include "support/WindowTest.h"

#include <QFile>
#include <QTextBlock>
#include <QTextDocument>
#include <algorithm>
#include <gtest/gtest.h>
#include <iterator>

namespace korvel {
namespace {

using Answer = MessageAnswer;

QByteArray ReadBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

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
    EXPECT_EQ(ReadBytes(path), QByteArray("\xB4\xC1\xBB\xFA\rx\rnew"));
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

    const QByteArray saved = ReadBytes(dir_.filePath("copy.txt"));
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

} // namespace
} // namespace korvel
