// The edit control as a user drives it: keys, the input limit, the clipboard, and long random
// runs of edits checked against a plain string and undone back to the start.
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
#include <random>
#include <string>

namespace korvel {
namespace {

QByteArray Utf16Bytes(std::u16string_view text) {
    return QByteArray(reinterpret_cast<const char*>(text.data()),
                      static_cast<qsizetype>(text.size() * sizeof(char16_t)));
}

void SendKey(QWidget* widget, const QString& text) {
    QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, text);
    QApplication::sendEvent(widget, &press);
    QKeyEvent release(QEvent::KeyRelease, 0, Qt::NoModifier, text);
    QApplication::sendEvent(widget, &release);
}

void Commit(QWidget* widget, const QString& text) {
    QInputMethodEvent preedit(text, {});
    QApplication::sendEvent(widget, &preedit);
    QInputMethodEvent commit;
    commit.setCommitString(text);
    QApplication::sendEvent(widget, &commit);
}

QMimeData* ForeignText(const QString& text) {
    auto* data = new QMimeData;
    data->setText(text);
    return data;
}

QMimeData* ExactText(std::u16string_view text, const QString& plain = {}) {
    QMimeData* data = plain.isEmpty() ? new QMimeData : ForeignText(plain);
    data->setData(EditControl::kTextMimeType, Utf16Bytes(text));
    return data;
}

QMimeData* FilesOnly() {
    auto* data = new QMimeData;
    data->setUrls({QUrl::fromLocalFile(QStringLiteral("/tmp/a.txt"))});
    return data;
}

QString Q(std::u16string_view text) {
    return QString::fromStdU16String(std::u16string(text));
}

class EditControlTest : public ::testing::Test {
protected:
    EditControlTest() {
        edit_->setDocument(document_);
        window_.resize(400, 300);
        edit_->resize(400, 250);
        other_->move(0, 260);
    }

    void select(int start, int end) {
        QTextCursor cursor(document_);
        cursor.setPosition(start);
        cursor.setPosition(end, QTextCursor::KeepAnchor);
        edit_->setTextCursor(cursor);
    }

    void setText(std::u16string_view text, int selectionStart, int selectionEnd) {
        SetEditorText(*document_, text);
        select(selectionStart, selectionEnd);
    }

    std::u16string text() const { return EditorText(*document_); }

    QWidget window_;
    QTextDocument* document_ = CreateEditorDocument(&window_);
    EditControl* edit_ = new EditControl(&window_);
    QLineEdit* other_ = new QLineEdit(&window_);
};

// Even where Tab would move the focus, it goes into the text, with any modifier (Shift+Tab
// arrives as Backtab), each as one undo step.
TEST_F(EditControlTest, TabWithAnyModifierInsertsATabAndKeepsTheFocus) {
    window_.show();
    edit_->setTabChangesFocus(true);
    edit_->setFocus();
    ASSERT_TRUE(QTest::qWaitFor([&] { return edit_->hasFocus(); }));
    setText(u"abc\r\ndef", 1, 5);

    QTest::keyClick(edit_, Qt::Key_Tab);
    QTest::keyClick(edit_, Qt::Key_Backtab, Qt::ShiftModifier);
    QTest::keyClick(edit_, Qt::Key_Tab, Qt::ControlModifier);

    EXPECT_EQ(text(), u"a\t\t\tef");
    EXPECT_TRUE(edit_->hasFocus());
    for (int step = 0; step < 3; ++step)
        edit_->undo();
    EXPECT_EQ(text(), u"abc\r\ndef");
}

// One input on a text with a selection and a limit: the text after it, and whether the input
// was refused or cut at the limit.
struct InputCase {
    const char* name;
    std::u16string text;
    int selectionStart;
    int selectionEnd;
    qsizetype limit;
    std::function<void(EditControl*)> input;
    std::u16string expected;
    bool refused;
};

std::function<void(EditControl*)> Key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    return [key, modifiers](EditControl* edit) { QTest::keyClick(edit, key, modifiers); };
}
std::function<void(EditControl*)> InputMethod(std::u16string text) {
    return [text](EditControl* edit) { Commit(edit, Q(text)); };
}
std::function<void(EditControl*)> Paste(std::function<QMimeData*()> make) {
    return [make](EditControl* edit) {
        QGuiApplication::clipboard()->setMimeData(make());
        edit->paste();
    };
}
std::function<void(EditControl*)> PasteForeign(const char16_t* text) {
    return Paste([text] { return ForeignText(QString::fromUtf16(text)); });
}

const InputCase kInputs[] = {
    {"type-last-character", u"abcd", 4, 4, 5, Key(Qt::Key_X), u"abcdx", false},
    {"type-over-selection-when-full", u"abcde", 1, 3, 5, Key(Qt::Key_X), u"axde", false},
    {"line-break-counts-two", u"abcd", 4, 4, 5, Key(Qt::Key_Return), u"abcd", true},
    // Qt would put U+2028 in the text: a break on screen that is no line of the file.
    {"shift-enter-starts-a-line", u"ab", 1, 1, 9, Key(Qt::Key_Return, Qt::ShiftModifier), u"a\r\nb",
     false},
    {"tab-past-limit", u"abcde", 0, 0, 5, Key(Qt::Key_Tab), u"abcde", true},
    {"typed-mark-leaves-the-caret-after-it", u"ab", 1, 1, 9,
     [](EditControl* edit) {
         SendKey(edit, QStringLiteral("\u2029"));
         QTest::keyClick(edit, Qt::Key_X);
     },
     u"a\u2029xb", false},
    {"input-method-fits", u"ab", 2, 2, 5, InputMethod(u"日本語"), u"ab日本語", false},
    {"input-method-refused-whole", u"abc", 3, 3, 5, InputMethod(u"日本語"), u"abc", true},
    {"loaded-text-past-limit-refuses-typing", u"abcdefgh", 8, 8, 5, Key(Qt::Key_X), u"abcdefgh",
     true},
    {"loaded-text-past-limit-allows-deleting", u"abcdefgh", 0, 0, 5, Key(Qt::Key_Delete),
     u"bcdefgh", false},
    {"paste-replaces-selection-cut-to-fit", u"abcde", 1, 4, 5, PasteForeign(u"vwxyz"), u"avwxe",
     true},
    {"paste-keeps-surrogate-pair-whole", u"ab", 2, 2, 4, PasteForeign(u"x\U0001F600"), u"abx",
     true},
    {"paste-keeps-line-break-whole", u"ab", 2, 2, 4, PasteForeign(u"x\ny"), u"abx", true},
    {"paste-cuts-after-mark", u"", 0, 0, 3, Paste([] { return ExactText(u"a\nb\rc"); }), u"a\nb",
     true},
    // Other programs break lines with CR LF, CR or LF alike.
    {"foreign-text-breaks-lines-at-crlf-cr-and-lf", u"<>", 1, 1, 99,
     PasteForeign(u"a\r\nb\rc\nd\n\re\u2029f"), u"<a\r\nb\r\nc\r\nd\r\n\r\ne\u2029f>", false},
    {"exact-text-wins-over-plain", u"", 0, 0, 9,
     Paste([] { return ExactText(u"a\nb", QStringLiteral("plain")); }), u"a\nb", false},
    {"files-are-no-text", u"ab", 1, 1, 9, Paste(FilesOnly), u"ab", false},
};

TEST_F(EditControlTest, HoldsInputToTheLimit) {
    for (const InputCase& input : kInputs) {
        SCOPED_TRACE(input.name);
        edit_->setTextLimit(input.limit);
        setText(input.text, input.selectionStart, input.selectionEnd);
        QSignalSpy reached(edit_, &EditControl::textLimitReached);
        input.input(edit_);
        EXPECT_EQ(text(), input.expected);
        EXPECT_EQ(reached.count(), input.refused ? 1 : 0);
    }
}

// Plain text for other programs (LF breaks, marks as their characters), the exact text for us.
TEST_F(EditControlTest, CopyPlacesPlainTextAndTheExactText) {
    const std::u16string exact = u"b\r\nc\nd\re\u2029f\uFFFC\u240A";
    setText(u"a" + exact + u"g", 1, 12);

    edit_->copy();

    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(data->text(), QStringLiteral("b\nc\nd\re\u2029f\uFFFC\u240A"));
    EXPECT_EQ(data->data(EditControl::kTextMimeType), Utf16Bytes(exact));
}

// QMimeData::hasText() counts a list of files as text.
TEST_F(EditControlTest, PasteIsOfferedForTextOnly) {
    for (QMimeData* data : {ForeignText(QStringLiteral("x")), ExactText(u"x")}) {
        QGuiApplication::clipboard()->setMimeData(data);
        EXPECT_TRUE(edit_->canPaste());
    }
    QGuiApplication::clipboard()->setMimeData(FilesOnly());
    EXPECT_FALSE(edit_->canPaste());
}

// ---- Random edits against a model ----

// The model holds each line break as the one character kBreak, so that its offsets are the
// positions of the document.
constexpr char16_t kBreak = u'\uE000';

std::u16string FileText(std::u16string_view model) {
    std::u16string text;
    for (const char16_t c : model)
        text += c == kBreak ? std::u16string(u"\r\n") : std::u16string(1, c);
    return text;
}

// breakAll: CR and LF alone break lines too, as in text from other programs.
std::u16string ModelText(std::u16string_view text, bool breakAll = false) {
    std::u16string model;
    for (size_t i = 0; i < text.size(); ++i) {
        const bool pair = text.substr(i, 2) == u"\r\n";
        const bool lone = breakAll && (text[i] == u'\r' || text[i] == u'\n');
        model += pair || lone ? kBreak : text[i];
        i += pair ? 1 : 0;
    }
    return model;
}

// Japanese text, surrogate pairs, line breaks and every character that is kept as a mark; the
// keys are what a key press can carry.
const std::u16string kPieces[] = {u"a",    u"漢字",   u"ｶﾅ",    u"\U0001F600", u"\U00020BB7",
                                  u"\r\n", u"\r",     u"\n",    u"\u2028",     u"\u2029",
                                  u"\t",   u"\uFFFC", u"\uFDD0"};
const std::u16string kKeys[] = {u"a", u"漢", u"ｶ", u"\t", u"\u2029", u"\uFFFC"};

class RandomEdits : public EditControlTest, public ::testing::WithParamInterface<unsigned> {
protected:
    int next(int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(random_); }
    // A position of the model that does not split a surrogate pair.
    int position(int at) const {
        const auto size = static_cast<int>(model_.size());
        at = std::clamp(at, 0, size);
        return at > 0 && at < size && QChar::isLowSurrogate(model_[at]) ? at - 1 : at;
    }
    std::u16string pieces() {
        std::u16string text;
        for (int count = 1 + next(4); count > 0; --count)
            text += kPieces[next(std::size(kPieces))];
        return text;
    }
    void replace(int start, int end, std::u16string_view with) {
        model_.replace(start, end - start, with);
    }

    // One random edit of a random selection, done to the control and to the model; its
    // description, or nothing when it would change nothing.
    std::string edit() {
        int start = position(next(999));
        int end = position(next(999));
        if (end < start)
            std::swap(start, end);
        select(start, end);
        const std::string at = " at " + std::to_string(start) + ".." + std::to_string(end);
        const std::u16string text = pieces();
        const std::string shown = ::testing::PrintToString(text);
        switch (next(8)) {
        case 0: {
            QTextCursor cursor = edit_->textCursor();
            InsertEditorText(cursor, text);
            replace(start, end, ModelText(text));
            return "insert " + shown + at;
        }
        case 1:
            // A composition takes the selection away as it starts, as an undo step of its own.
            if (start < end) {
                replace(start, end, {});
                history_.push_back(model_);
            }
            Commit(edit_, Q(text));
            replace(start, start, ModelText(text));
            return "input method " + shown + at;
        case 2: {
            const std::u16string key = kKeys[next(std::size(kKeys))];
            SendKey(edit_, Q(key));
            replace(start, end, key);
            return "key " + ::testing::PrintToString(key) + at;
        }
        case 3:
            select(start, end);
            QTest::keyClick(edit_, Qt::Key_Return);
            replace(start, end, std::u16string(1, kBreak));
            return "enter" + at;
        case 4:
            if (start == end)
                end = position(start + 2) > start + 1 ? start + 2 : position(start + 1);
            if (start == end)
                return {};
            select(start, end);
            QTest::keyClick(edit_, Qt::Key_Delete);
            replace(start, end, {});
            return "delete" + at;
        case 5:
            QGuiApplication::clipboard()->setMimeData(ForeignText(Q(text)));
            edit_->paste();
            replace(start, end, ModelText(text, true));
            return "paste foreign " + shown + at;
        case 6: {
            const int from = position(next(999));
            const int to = position(from + 1 + next(8));
            if (to <= from)
                return {};
            // The clipboard holds the text as EditorText gives it.
            const std::u16string copied = ModelText(FileText(model_.substr(from, to - from)));
            select(from, to);
            edit_->copy();
            select(start, end);
            edit_->paste();
            replace(start, end, copied);
            return "copy " + std::to_string(from) + ".." + std::to_string(to) + " to" + at;
        }
        default:
            if (start == end)
                return {};
            edit_->cut();
            replace(start, end, {});
            return "cut" + at;
        }
    }

    std::mt19937 random_{GetParam()};
    std::u16string model_;
    std::vector<std::u16string> history_;
};

// After each edit the text is the model's; undo then walks back through the model's history to
// the start. Qt may join steps into one (keys typed in a row) but never gives a text the edits
// did not have.
TEST_P(RandomEdits, MatchTheModelAndUndoBackThroughItsHistory) {
    const std::u16string start = u"行1\r\n\r\n行3";
    SetEditorText(*document_, start);
    history_ = {model_ = ModelText(start)};
    std::string log;
    for (int step = 0; step < 200; ++step) {
        const std::string done = edit();
        if (done.empty())
            continue;
        log += done + "\n";
        history_.push_back(model_);
        ASSERT_EQ(text(), FileText(model_)) << log;
    }
    size_t at = history_.size() - 1;
    for (size_t press = 0; press < 2 * history_.size() && document_->isUndoAvailable(); ++press) {
        edit_->undo();
        while (at > 0 && FileText(history_[at]) != text())
            --at;
        ASSERT_EQ(text(), FileText(history_[at])) << "undo " << press + 1 << " of\n" << log;
    }
    EXPECT_FALSE(document_->isUndoAvailable());
    EXPECT_FALSE(document_->isModified());
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomEdits, ::testing::Range(1u, 9u));

} // namespace
} // namespace korvel
