#include "editor/EditorText.h"

#include <QPlainTextEdit>
#include <QTextCursor>
#include <QTextDocument>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace korvel {
namespace {

// gtest names allow no "-".
template <typename Case> std::string CaseName(const ::testing::TestParamInfo<Case>& info) {
    std::string name = info.param.name;
    for (char& c : name)
        c = c == '-' ? '_' : c;
    return name;
}

struct TextCase {
    const char* name;
    std::u16string text;
};

std::ostream& operator<<(std::ostream& out, const TextCase& textCase) {
    return out << textCase.name;
}

const std::u16string kNul(u"a\0b", 3);
const std::u16string kLoneSurrogates{u'a',  char16_t(0xD800), u'b', char16_t(0xDC00),
                                     u'\r', char16_t(0xDBFF)};

const TextCase kTexts[] = {
    {"empty", u""},
    {"only-breaks", u"\r\n\r\n\r\n"},
    {"lone-cr-in-crlf-file", u"a,b\r\nc\rd\r\ne"},
    {"lone-lf-in-crlf-file", u"\"cell\nwith break\",x\r\ny\r\n"},
    {"cr-at-end", u"abc\r"},
    {"cr-before-crlf", u"a\r\r\nb"},
    {"lf-cr-is-no-pair", u"a\n\rb"},
    {"runs-of-marks", u"\n\n\r\r\n\n\r"},
    {"paragraph-separator", u"a\u2029b\r\nc"},
    {"line-separator", u"a\u2028b"},
    {"frame-characters", u"\uFDD0x\uFDD1"},
    {"object-replacement", u"a\uFFFCb\uFFFC"},
    {"control-pictures", u"\u240D\u240A\r\n\u240A"},
    {"nbsp", u"a\u00A0b"},
    {"nul", kNul},
    {"surrogate-pairs", u"\U0001F600\r\n\U00020BB7"},
    {"lone-surrogates", kLoneSurrogates},
    {"japanese-and-tabs", u"日本語\tテキスト\r\n\tｶﾀｶﾅ"},
};

// The document position of each offset of text: a CR LF pair is one position (the break).
std::vector<int> DocumentPositions(const std::u16string& text) {
    std::vector<int> positions;
    int position = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        positions.push_back(position);
        if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') {
            ++i;
            positions.push_back(-1);
        }
        ++position;
    }
    positions.push_back(position);
    return positions;
}

int CrLfCount(const std::u16string& text) {
    int count = 0;
    for (size_t i = 0; i + 1 < text.size(); ++i)
        count += text[i] == u'\r' && text[i + 1] == u'\n';
    return count;
}

QTextCursor Selection(QTextDocument& document, int start, int end) {
    QTextCursor cursor(&document);
    cursor.setPosition(start);
    cursor.setPosition(end, QTextCursor::KeepAnchor);
    return cursor;
}

class EditorTextTest : public ::testing::Test {
protected:
    std::unique_ptr<QTextDocument> document_{CreateEditorDocument(nullptr)};
};

class EditorTextRoundTrip : public EditorTextTest,
                            public ::testing::WithParamInterface<TextCase> {};

TEST_P(EditorTextRoundTrip, ComesBackUnchangedAndUnmodified) {
    const std::u16string& text = GetParam().text;
    SetEditorText(*document_, u"older text\r\nwith\nmarks\r");
    QTextCursor(document_.get()).insertText(QStringLiteral("an edit"));

    SetEditorText(*document_, text);

    EXPECT_EQ(EditorText(*document_), text);
    EXPECT_EQ(EditorTextLength(*document_), static_cast<qsizetype>(text.size()));
    EXPECT_FALSE(document_->isModified());
    EXPECT_FALSE(document_->isUndoAvailable());
    EXPECT_TRUE(document_->isUndoRedoEnabled());
}

TEST_P(EditorTextRoundTrip, OnlyCrLfStartsALine) {
    const std::u16string& text = GetParam().text;
    SetEditorText(*document_, text);
    EXPECT_EQ(document_->blockCount(), CrLfCount(text) + 1);
    // Each other character, marks included, is one position in the document.
    EXPECT_EQ(document_->characterCount() - 1, static_cast<int>(text.size()) - CrLfCount(text));
}

TEST_P(EditorTextRoundTrip, EverySelectionGivesItsPartOfTheText) {
    const std::u16string& text = GetParam().text;
    SetEditorText(*document_, text);
    const std::vector<int> positions = DocumentPositions(text);
    for (size_t from = 0; from < positions.size(); ++from) {
        for (size_t to = from; to < positions.size(); ++to) {
            if (positions[from] < 0 || positions[to] < 0)
                continue;
            const std::u16string expected = text.substr(from, to - from);
            const QTextCursor selection = Selection(*document_, positions[to], positions[from]);
            EXPECT_EQ(EditorText(selection), expected) << "offsets " << from << " to " << to;
            EXPECT_EQ(EditorTextLength(selection), static_cast<qsizetype>(expected.size()))
                << "offsets " << from << " to " << to;
        }
    }
}

TEST_P(EditorTextRoundTrip, InsertedTextComesBackInItsPlace) {
    const std::u16string& text = GetParam().text;
    SetEditorText(*document_, u"[\n|\r\n]");
    QTextCursor cursor = Selection(*document_, 1, 3); // the LF mark and the "|"
    InsertEditorText(cursor, text);

    EXPECT_EQ(EditorText(*document_), u"[" + text + u"\r\n]");
    EXPECT_EQ(cursor.position(), 1 + static_cast<int>(text.size()) - CrLfCount(text));
    document_->undo();
    EXPECT_EQ(EditorText(*document_), u"[\n|\r\n]");
}

INSTANTIATE_TEST_SUITE_P(Texts, EditorTextRoundTrip, ::testing::ValuesIn(kTexts),
                         CaseName<TextCase>);

// Editing next to marks, the way the edit control's own typing and deleting do it.
struct EditCase {
    const char* name;
    std::u16string text;
    int position;
    void (*edit)(QTextCursor&);
    std::u16string expected;
};

std::ostream& operator<<(std::ostream& out, const EditCase& editCase) {
    return out << editCase.name;
}

const EditCase kEdits[] = {
    {"type-after-mark", u"a\nb", 2, [](QTextCursor& c) { c.insertText(QStringLiteral("X")); },
     u"a\nXb"},
    {"type-before-mark-at-line-start", u"\nb", 0,
     [](QTextCursor& c) { c.insertText(QStringLiteral("X")); }, u"X\nb"},
    // A real U+FFFC typed after a mark would come back as the mark's character if it
    // inherited the mark's object type.
    {"object-character-after-mark", u"a\r", 2,
     [](QTextCursor& c) { c.insertText(QString(QChar(0xFFFC))); }, u"a\r\uFFFC"},
    {"object-character-before-mark", u"\u2029", 0,
     [](QTextCursor& c) { c.insertText(QString(QChar(0xFFFC))); }, u"\uFFFC\u2029"},
    {"new-line-after-mark", u"a\n", 2, [](QTextCursor& c) { c.insertBlock(); }, u"a\n\r\n"},
    {"type-on-new-line-after-mark", u"a\n", 2,
     [](QTextCursor& c) {
         c.insertBlock();
         c.insertText(QString(QChar(0xFFFC)));
     },
     u"a\n\r\n\uFFFC"},
    {"delete-mark", u"a\nb", 1, [](QTextCursor& c) { c.deleteChar(); }, u"ab"},
    {"backspace-mark", u"a\rb", 2, [](QTextCursor& c) { c.deletePreviousChar(); }, u"ab"},
    {"join-marks-of-one-kind", u"\nx\n", 1, [](QTextCursor& c) { c.deleteChar(); }, u"\n\n"},
    {"join-lines-around-mark", u"\n\r\n\r", 1, [](QTextCursor& c) { c.deleteChar(); }, u"\n\r"},
};

class EditorTextEdit : public EditorTextTest, public ::testing::WithParamInterface<EditCase> {};

TEST_P(EditorTextEdit, KeepsMarksAndUndoRestoresThem) {
    const EditCase& edit = GetParam();
    SetEditorText(*document_, edit.text);
    QTextCursor cursor(document_.get());
    cursor.setPosition(edit.position);
    edit.edit(cursor);

    EXPECT_EQ(EditorText(*document_), edit.expected);
    EXPECT_EQ(EditorTextLength(*document_), static_cast<qsizetype>(edit.expected.size()));
    EXPECT_TRUE(document_->isModified());
    while (document_->isUndoAvailable())
        document_->undo();
    EXPECT_EQ(EditorText(*document_), edit.text);
    EXPECT_FALSE(document_->isModified());
    while (document_->isRedoAvailable())
        document_->redo();
    EXPECT_EQ(EditorText(*document_), edit.expected);
}

INSTANTIATE_TEST_SUITE_P(Edits, EditorTextEdit, ::testing::ValuesIn(kEdits), CaseName<EditCase>);

TEST_F(EditorTextTest, LargeTextWithScatteredMarksRoundTrips) {
    std::u16string text;
    for (int row = 0; text.size() < 4'000'000; ++row) {
        text += u"行" + std::u16string(row % 50, u'x') + u",\"cell";
        text += row % 7 == 0 ? u"\nwith break\"" : u"\"";
        text += row % 1000 == 0 ? u"\r" : u"\r\n";
    }
    SetEditorText(*document_, text);
    EXPECT_EQ(EditorTextLength(*document_), static_cast<qsizetype>(text.size()));
    EXPECT_TRUE(EditorText(*document_) == text);
}

TEST_F(EditorTextTest, SettingTextKeepsTheDocumentsOptions) {
    QTextOption option = document_->defaultTextOption();
    option.setTabStopDistance(123);
    document_->setDefaultTextOption(option);
    document_->setUndoRedoEnabled(false);

    SetEditorText(*document_, u"a\tb\nc");

    EXPECT_EQ(document_->defaultTextOption().tabStopDistance(), 123);
    EXPECT_FALSE(document_->isUndoRedoEnabled());
}

// The marks are drawn: each takes room on its line, where a bare U+FFFC would take none.
TEST(EditorTextMarks, AreVisibleInAnEditControl) {
    QPlainTextEdit edit;
    QTextDocument* document = CreateEditorDocument(&edit);
    edit.setDocument(document);
    edit.resize(400, 200);
    SetEditorText(*document, u"a\r\n\ra\na\u2028a\u2029a\uFDD0a\uFDD1a\uFFFCa");

    QTextCursor cursor(document);
    cursor.setPosition(2);
    for (int mark = 0; mark < 7; ++mark) {
        const int before = edit.cursorRect(cursor).left();
        cursor.movePosition(QTextCursor::NextCharacter);
        const int after = edit.cursorRect(cursor).left();
        EXPECT_GT(after, before) << "mark " << mark;
        cursor.movePosition(QTextCursor::NextCharacter);
    }
    EXPECT_EQ(document->blockCount(), 2);
}

} // namespace
} // namespace korvel
