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
    {"only_breaks", u"\r\n\r\n\r\n"},
    {"lone_cr_in_crlf_file", u"a,b\r\nc\rd\r\ne"},
    {"lone_lf_in_crlf_file", u"\"cell\nwith break\",x\r\ny\r\n"},
    {"cr_at_end", u"abc\r"},
    {"cr_before_crlf", u"a\r\r\nb"},
    {"lf_cr_is_no_pair", u"a\n\rb"},
    {"runs_of_marks", u"\n\n\r\r\n\n\r"},
    {"paragraph_separator", u"a\u2029b\r\nc"},
    {"line_separator", u"a\u2028b"},
    {"frame_characters", u"\uFDD0x\uFDD1"},
    {"object_replacement", u"a\uFFFCb\uFFFC"},
    {"control_pictures", u"\u240D\u240A\r\n\u240A"},
    {"nbsp", u"a\u00A0b"},
    {"nul", kNul},
    {"surrogate_pairs", u"\U0001F600\r\n\U00020BB7"},
    {"lone_surrogates", kLoneSurrogates},
    {"japanese_and_tabs", u"日本語\tテキスト\r\n\tｶﾀｶﾅ"},
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

// Only a CR LF pair starts a line; every other character, marks included, is one position.
TEST_P(EditorTextRoundTrip, ComesBackUnchangedAndUnmodified) {
    const std::u16string& text = GetParam().text;
    SetEditorText(*document_, u"older text\r\nwith\nmarks\r");
    QTextCursor(document_.get()).insertText(QStringLiteral("an edit"));

    SetEditorText(*document_, text);

    EXPECT_EQ(EditorText(*document_), text);
    EXPECT_EQ(EditorTextLength(*document_), static_cast<qsizetype>(text.size()));
    EXPECT_EQ(document_->blockCount(), CrLfCount(text) + 1);
    EXPECT_FALSE(document_->isModified());
    EXPECT_FALSE(document_->isUndoAvailable());
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
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(EditorTextTest, LargeTextWithScatteredMarksRoundTrips) {
    std::u16string text;
    for (int row = 0; text.size() < 4'000'000; ++row) {
        text.append(u"行").append(row % 50, u'x').append(u",\"cell");
        text += row % 7 == 0 ? u"\nwith break\"" : u"\"";
        text += row % 1000 == 0 ? u"\r" : u"\r\n";
    }
    SetEditorText(*document_, text);
    EXPECT_EQ(EditorTextLength(*document_), static_cast<qsizetype>(text.size()));
    EXPECT_TRUE(EditorText(*document_) == text);
}

// Qt's insertText() keeps the format of the character before, a mark's included: only the
// object type tells a mark, and insertText() clears it.
TEST_F(EditorTextTest, AnObjectCharacterTypedAfterAMarkIsNoMark) {
    SetEditorText(*document_, u"a\r");
    QTextCursor cursor(document_.get());
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(QString(QChar(0xFFFC)));
    EXPECT_EQ(EditorText(*document_), u"a\r\uFFFC");
}

// The view sets the tab stops and may switch undo off; a new text must keep both.
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
