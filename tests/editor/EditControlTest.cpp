#include "editor/EditControl.h"

#include "editor/EditorText.h"

#include <QApplication>
#include <QClipboard>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>
#include <QTextCursor>
#include <QTextDocument>
#include <QUrl>
#include <functional>
#include <gtest/gtest.h>
#include <string>

namespace korvel {
namespace {

QByteArray Utf16Bytes(std::u16string_view text) {
    return QByteArray(reinterpret_cast<const char*>(text.data()),
                      static_cast<qsizetype>(text.size() * sizeof(char16_t)));
}

void SendKey(QWidget* widget, int key, Qt::KeyboardModifiers modifiers, const QString& text) {
    QKeyEvent press(QEvent::KeyPress, key, modifiers, text);
    QApplication::sendEvent(widget, &press);
    QKeyEvent release(QEvent::KeyRelease, key, modifiers, text);
    QApplication::sendEvent(widget, &release);
}

void Commit(QWidget* widget, const QString& text) {
    QInputMethodEvent preedit(text, {});
    QApplication::sendEvent(widget, &preedit);
    QInputMethodEvent commit;
    commit.setCommitString(text);
    QApplication::sendEvent(widget, &commit);
}

void PutOnClipboard(QMimeData* data) {
    QGuiApplication::clipboard()->setMimeData(data);
}

QMimeData* ForeignText(const QString& text) {
    auto* data = new QMimeData;
    data->setText(text);
    return data;
}

// gtest names allow no "-".
template <typename Case> std::string CaseName(const ::testing::TestParamInfo<Case>& info) {
    std::string name = info.param.name;
    for (char& c : name)
        c = c == '-' ? '_' : c;
    return name;
}

class EditControlTest : public ::testing::Test {
protected:
    EditControlTest() {
        edit_->setDocument(document_);
        window_.resize(400, 300);
        edit_->resize(400, 250);
        other_->move(0, 260);
    }

    void setText(std::u16string_view text, int selectionStart, int selectionEnd) {
        SetEditorText(*document_, text);
        QTextCursor cursor(document_);
        cursor.setPosition(selectionStart);
        cursor.setPosition(selectionEnd, QTextCursor::KeepAnchor);
        edit_->setTextCursor(cursor);
    }

    std::u16string text() const { return EditorText(*document_); }

    QWidget window_;
    QTextDocument* document_ = CreateEditorDocument(&window_);
    EditControl* edit_ = new EditControl(&window_);
    QLineEdit* other_ = new QLineEdit(&window_);
};

// Even where Tab would move the focus, it goes into the text.
TEST_F(EditControlTest, TabInsertsATabInPlaceOfTheSelectionAndKeepsTheFocus) {
    window_.show();
    edit_->setTabChangesFocus(true);
    edit_->setFocus();
    ASSERT_TRUE(QTest::qWaitFor([&] { return edit_->hasFocus(); }));
    setText(u"abc\r\ndef", 1, 5);

    QTest::keyClick(edit_, Qt::Key_Tab);

    EXPECT_EQ(text(), u"a\tef");
    EXPECT_TRUE(edit_->hasFocus());
    EXPECT_EQ(edit_->textCursor().position(), 2);
    edit_->undo();
    EXPECT_EQ(text(), u"abc\r\ndef");
}

TEST_F(EditControlTest, ShiftEnterStartsALineOfTheFile) {
    setText(u"ab", 1, 1);
    QTest::keyClick(edit_, Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_EQ(text(), u"a\r\nb");
    EXPECT_EQ(document_->blockCount(), 2);
}

TEST_F(EditControlTest, TypedCharactersThatQtWouldChangeBecomeMarks) {
    setText(u"ab", 1, 1);
    SendKey(edit_, 0, Qt::NoModifier, QString(QChar(0xFFFC)));
    Commit(edit_, QStringLiteral("x\u2029y"));
    EXPECT_EQ(text(), u"a\uFFFCx\u2029yb");
    EXPECT_EQ(edit_->textCursor().position(), 5);
}

// The input limit, with the text, the selection, the limit and one input each.
struct LimitCase {
    const char* name;
    std::u16string text;
    int selectionStart;
    int selectionEnd;
    qsizetype limit;
    std::function<void(EditControl*)> input;
    std::u16string expected;
    bool refused;
};

std::ostream& operator<<(std::ostream& out, const LimitCase& limitCase) {
    return out << limitCase.name;
}

void TypeX(EditControl* edit) {
    QTest::keyClick(edit, Qt::Key_X);
}
void TypeEnter(EditControl* edit) {
    QTest::keyClick(edit, Qt::Key_Return);
}
void TypeTab(EditControl* edit) {
    QTest::keyClick(edit, Qt::Key_Tab);
}
void CommitJapanese(EditControl* edit) {
    Commit(edit, QStringLiteral("日本語"));
}
std::function<void(EditControl*)> Paste(const QString& foreignText) {
    return [foreignText](EditControl* edit) {
        PutOnClipboard(ForeignText(foreignText));
        edit->paste();
    };
}
std::function<void(EditControl*)> PasteExact(std::u16string text) {
    return [text](EditControl* edit) {
        auto* data = new QMimeData;
        data->setData(EditControl::kTextMimeType, Utf16Bytes(text));
        PutOnClipboard(data);
        edit->paste();
    };
}

const LimitCase kLimits[] = {
    {"type-last-character", u"abcd", 4, 4, 5, TypeX, u"abcdx", false},
    {"type-over-selection-when-full", u"abcde", 1, 3, 5, TypeX, u"axde", false},
    {"line-break-counts-two", u"abcd", 4, 4, 5, TypeEnter, u"abcd", true},
    {"line-break-fits", u"abc", 3, 3, 5, TypeEnter, u"abc\r\n", false},
    {"selected-break-makes-room", u"ab\r\nc", 2, 3, 5, TypeX, u"abxc", false},
    {"tab-past-limit", u"abcde", 0, 0, 5, TypeTab, u"abcde", true},
    {"marks-count-one", u"a\nb\rc", 5, 5, 6, TypeX, u"a\nb\rcx", false},
    {"input-method-fits", u"ab", 2, 2, 5, CommitJapanese, u"ab日本語", false},
    {"input-method-refused-whole", u"abc", 3, 3, 5, CommitJapanese, u"abc", true},
    {"loaded-text-past-limit-refuses-typing", u"abcdefgh", 8, 8, 5, TypeX, u"abcdefgh", true},
    {"loaded-text-past-limit-allows-deleting", u"abcdefgh", 0, 0, 5,
     [](EditControl* edit) { QTest::keyClick(edit, Qt::Key_Delete); }, u"bcdefgh", false},
    {"paste-replaces-selection", u"abcde", 1, 4, 5, Paste(QStringLiteral("vwxyz")), u"avwxe", true},
    {"paste-keeps-surrogate-pair-whole", u"ab", 2, 2, 4, Paste(QStringLiteral("x\U0001F600")),
     u"abx", true},
    {"paste-keeps-line-break-whole", u"ab", 2, 2, 4, Paste(QStringLiteral("x\ny")), u"abx", true},
    {"paste-cuts-after-mark", u"", 0, 0, 3, PasteExact(u"a\nb\rc"), u"a\nb", true},
};

class EditControlLimit : public EditControlTest, public ::testing::WithParamInterface<LimitCase> {};

TEST_P(EditControlLimit, HoldsInputToTheLimit) {
    const LimitCase& limit = GetParam();
    edit_->setTextLimit(limit.limit);
    setText(limit.text, limit.selectionStart, limit.selectionEnd);
    QSignalSpy reached(edit_, &EditControl::textLimitReached);

    limit.input(edit_);

    EXPECT_EQ(text(), limit.expected);
    EXPECT_EQ(reached.count(), limit.refused ? 1 : 0);
}

INSTANTIATE_TEST_SUITE_P(Inputs, EditControlLimit, ::testing::ValuesIn(kLimits),
                         CaseName<LimitCase>);

TEST_F(EditControlTest, DefaultLimitIs65536Characters) {
    EXPECT_EQ(edit_->textLimit(), 65536);
    std::u16string full;
    while (full.size() + 65 <= 65534)
        full += std::u16string(63, u'x') + u"\r\n";
    full.resize(65534, u'x');
    SetEditorText(*document_, full);
    edit_->moveCursor(QTextCursor::End);
    TypeX(edit_);
    TypeX(edit_);
    EXPECT_EQ(EditorTextLength(*document_), 65536);
    TypeX(edit_);
    EXPECT_EQ(EditorTextLength(*document_), 65536);
}

TEST_F(EditControlTest, CopyPlacesPlainTextAndTheExactText) {
    const std::u16string exact = u"b\r\nc\nd\re\u2029f\uFFFC\u240A";
    setText(u"a" + exact + u"g", 1, 12);
    ASSERT_EQ(EditorText(edit_->textCursor()), exact);

    edit_->copy();

    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(data->text(), QStringLiteral("b\nc\nd\re\u2029f\uFFFC\u240A"));
    EXPECT_EQ(data->data(EditControl::kTextMimeType), Utf16Bytes(exact));
}

TEST_F(EditControlTest, CutThenPasteElsewhereBringsTheMarksBack) {
    const std::u16string marked = u"x\ny\rz\u2028\uFDD0";
    setText(u"[" + marked + u"]\r\nend", 1, 8);

    edit_->cut();
    EXPECT_EQ(text(), u"[]\r\nend");
    QTextCursor atEnd(document_);
    atEnd.movePosition(QTextCursor::End);
    edit_->setTextCursor(atEnd);
    edit_->paste();

    EXPECT_EQ(text(), u"[]\r\nend" + marked);
    edit_->undo();
    EXPECT_EQ(text(), u"[]\r\nend");
}

TEST_F(EditControlTest, ForeignTextBreaksLinesAtCrLfCrAndLf) {
    setText(u"<>", 1, 1);
    PutOnClipboard(ForeignText(QStringLiteral("a\r\nb\rc\nd\n\re\u2029f")));

    edit_->paste();

    EXPECT_EQ(text(), u"<a\r\nb\r\nc\r\nd\r\n\r\ne\u2029f>");
    EXPECT_EQ(document_->blockCount(), 6);
}

TEST_F(EditControlTest, PasteNeedsText) {
    struct {
        const char* name;
        std::function<QMimeData*()> make;
        bool canPaste;
    } cases[] = {
        {"plain text", [] { return ForeignText(QStringLiteral("x")); }, true},
        {"exact text only",
         [] {
             auto* data = new QMimeData;
             data->setData(EditControl::kTextMimeType, Utf16Bytes(u"x"));
             return data;
         },
         true},
        {"files only",
         [] {
             auto* data = new QMimeData;
             data->setUrls({QUrl::fromLocalFile(QStringLiteral("/tmp/a.txt"))});
             return data;
         },
         false},
    };
    for (const auto& c : cases) {
        PutOnClipboard(c.make());
        EXPECT_EQ(edit_->canPaste(), c.canPaste) << c.name;
    }
    QGuiApplication::clipboard()->clear();
    EXPECT_FALSE(edit_->canPaste());

    setText(u"ab", 1, 1);
    auto* files = new QMimeData;
    files->setUrls({QUrl::fromLocalFile(QStringLiteral("/tmp/a.txt"))});
    PutOnClipboard(files);
    edit_->paste();
    EXPECT_EQ(text(), u"ab");
}

TEST_F(EditControlTest, DropInsertsAtTheDropPointWithinTheLimit) {
    window_.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
    edit_->setTextLimit(5);
    setText(u"ab", 0, 0);
    QMimeData data;
    data.setText(QStringLiteral("wxyz"));
    QTextCursor end(document_);
    end.movePosition(QTextCursor::End);
    const QPointF point = QRectF(edit_->cursorRect(end)).center();
    QSignalSpy reached(edit_, &EditControl::textLimitReached);

    QDragEnterEvent enter(point.toPoint(), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(edit_->viewport(), &enter);
    QDropEvent drop(point, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(edit_->viewport(), &drop);

    EXPECT_TRUE(drop.isAccepted());
    EXPECT_EQ(text(), u"abwxy");
    EXPECT_EQ(reached.count(), 1);
}

// The view moves one document between its two controls; each control works on whatever
// document it shows at the moment.
TEST_F(EditControlTest, FollowsTheDocumentItIsGiven) {
    EditControl second(&window_);
    QTextDocument* spare = CreateEditorDocument(&window_);
    edit_->setTextLimit(6);
    second.setTextLimit(6);
    setText(u"a\nb", 3, 3);

    edit_->setDocument(spare);
    second.setDocument(document_);
    QTextCursor cursor(document_);
    cursor.movePosition(QTextCursor::End);
    second.setTextCursor(cursor);
    PutOnClipboard(ForeignText(QStringLiteral("12345")));
    second.paste();
    edit_->paste();

    EXPECT_EQ(text(), u"a\nb123");
    EXPECT_EQ(EditorText(*spare), u"12345");
    EXPECT_EQ(document_->parent(), &window_);
    EXPECT_EQ(spare->parent(), &window_);
}

} // namespace
} // namespace korvel
