#include "editor/SearchEngine.h"

#include "messages/testing/ScriptedMessageService.h"

#include <QString>
#include <gtest/gtest.h>
#include <optional>
#include <random>

namespace korvel {
namespace {

// A text with a selection and nothing else: the engine needs no window.
class TextTarget : public SearchTarget {
public:
    TextTarget(std::u16string text, std::size_t start, std::size_t end)
        : text_(std::move(text)), start_(start), end_(end) {}

    std::u16string text() const override { return text_; }
    std::size_t selectionStart() const override { return start_; }
    std::size_t selectionEnd() const override { return end_; }
    void selectMatch(std::size_t start, std::size_t end) override { setSelection(start, end); }
    void setSelection(std::size_t start, std::size_t end) override {
        start_ = start;
        end_ = end;
    }
    void replaceSelection(std::u16string_view text) override { replaceRange(start_, end_, text); }
    void replaceRange(std::size_t start, std::size_t end, std::u16string_view text) override {
        text_.replace(start, end - start, text);
        start_ = end_ = start + text.size();
        ++undoSteps;
    }
    QWidget* messageParent() const override { return nullptr; }

    std::pair<std::size_t, std::size_t> selection() const { return {start_, end_}; }
    int undoSteps = 0;

private:
    std::u16string text_;
    std::size_t start_;
    std::size_t end_;
};

using Selection = std::pair<std::size_t, std::size_t>;
constexpr auto kYes = MessageAnswer::Yes;
constexpr auto kNo = MessageAnswer::No;

struct FindRow {
    const char* fault;
    std::u16string text;
    Selection selection;
    std::u16string needle;
    bool towardsStart;
    bool ignoreCase;
    FindMode mode;
    MessageAnswer wrapAnswer; // the answer to a question whether to go on from the other end
    QList<int> messages;
    Selection selected; // the selection afterwards
};

// Answers every box the row expects: the questions as given, the others with OK.
void Answer(ScriptedMessageService& messages, const QList<int>& ids, MessageAnswer question) {
    for (int id : ids)
        messages.script({id == 30001 || id == 30002 ? question : MessageAnswer::Ok});
}

TEST(SearchEngine, FindSelectsTheMatchOrSaysWhy) {
    const FindRow rows[] = {
        {"forward search starts at the selection's end",
         u"abc abc",
         {0, 3},
         u"abc",
         false,
         false,
         FindMode::Plain,
         kYes,
         {},
         {4, 7}},
        {"no question when nothing lies before the caret",
         u"xyz abc",
         {0, 0},
         u"q",
         false,
         false,
         FindMode::Plain,
         kYes,
         {40003},
         {0, 0}},
        {"a match before the caret is offered, Yes finds it",
         u"abc xyz",
         {5, 5},
         u"abc",
         false,
         false,
         FindMode::Plain,
         kYes,
         {30001},
         {0, 3}},
        {"No leaves the selection",
         u"abc xyz",
         {5, 5},
         u"abc",
         false,
         false,
         FindMode::Plain,
         kNo,
         {30001, 40003},
         {5, 5}},
        {"the replace bar's search names the find text",
         u"xyz",
         {0, 0},
         u"q",
         false,
         false,
         FindMode::NothingReplaced,
         kYes,
         {40014},
         {0, 0}},
        {"after a replacement it says there are no more",
         u"xyz",
         {0, 0},
         u"q",
         false,
         false,
         FindMode::AfterReplacement,
         kYes,
         {40017},
         {0, 0}},
        {"backward steps over overlapping matches",
         u"aaa",
         {3, 3},
         u"aa",
         true,
         false,
         FindMode::Plain,
         kYes,
         {},
         {0, 2}},
        {"backward finds a match at the very start",
         u"ab xx",
         {3, 3},
         u"ab",
         true,
         false,
         FindMode::Plain,
         kYes,
         {},
         {0, 2}},
        {"backward wraps to the end on Yes",
         u"xx ab ab",
         {0, 0},
         u"ab",
         true,
         false,
         FindMode::Plain,
         kYes,
         {30002},
         {6, 8}},
        {"backward: No says not found",
         u"xx ab ab",
         {0, 0},
         u"ab",
         true,
         false,
         FindMode::Plain,
         kNo,
         {30002, 40003},
         {0, 0}},
        {"backward asks only when a match lies after",
         u"xx ab",
         {0, 5},
         u"ab",
         true,
         false,
         FindMode::Plain,
         kYes,
         {40003},
         {0, 5}},
        {"backward always says plainly not found",
         u"xx",
         {0, 0},
         u"ab",
         true,
         false,
         FindMode::AfterReplacement,
         kYes,
         {40003},
         {0, 0}},
        {"ignoring case folds the text",
         u"xx ABC",
         {0, 0},
         u"abc",
         false,
         true,
         FindMode::Plain,
         kYes,
         {},
         {3, 6}},
        {"minding case does not",
         u"xx ABC",
         {0, 0},
         u"abc",
         false,
         false,
         FindMode::Plain,
         kYes,
         {40003},
         {0, 0}},
        {"full-width letters fold",
         u"xx ＡＢＣ",
         {0, 0},
         u"ａｂｃ",
         false,
         true,
         FindMode::Plain,
         kYes,
         {},
         {3, 6}},
        {"a match runs across a line break",
         u"a\r\nb",
         {0, 0},
         u"a\r\nb",
         false,
         false,
         FindMode::Plain,
         kYes,
         {},
         {0, 4}},
        {"half a line break is no match",
         u"a\r\nb",
         {0, 0},
         u"\nb",
         false,
         false,
         FindMode::Plain,
         kYes,
         {40003},
         {0, 0}},
        {"half a surrogate pair is no match",
         u"x\U0001F600",
         {0, 0},
         u"\xDE00",
         false,
         false,
         FindMode::Plain,
         kYes,
         {40003},
         {0, 0}},
        {"a whole pair is found",
         u"x\U0001F600",
         {0, 0},
         u"\U0001F600",
         false,
         false,
         FindMode::Plain,
         kYes,
         {},
         {1, 3}},
    };
    for (const FindRow& row : rows) {
        SCOPED_TRACE(row.fault);
        ScriptedMessageService messages;
        Answer(messages, row.messages, row.wrapAnswer);
        TextTarget target(row.text, row.selection.first, row.selection.second);
        const bool found =
            SearchEngine(target).find(row.needle, row.towardsStart, row.ignoreCase, row.mode);
        const bool toldNotFound = !row.messages.isEmpty() && row.messages.back() >= 40000;
        EXPECT_EQ(found, !toldNotFound);
        EXPECT_EQ(messages.shownIds(), row.messages);
        EXPECT_EQ(target.selection(), row.selected);
    }
}

TEST(SearchEngine, ReplaceAllReplacesEachMatchOnceInOneStep) {
    struct Row {
        const char* fault;
        std::u16string text, needle, replacement;
        bool ignoreCase;
        std::u16string result;
        QList<int> messages;
    };
    const Row rows[] = {
        {"inserted text is never searched again", u"a-a", u"a", u"aa", false, u"aa-aa", {33026}},
        {"overlapping matches are replaced left to right",
         u"aaa",
         u"aa",
         u"X",
         false,
         u"Xa",
         {33026}},
        {"case ignored", u"Abc aBC", u"abc", u"x", true, u"x x", {33026}},
        {"nothing to replace", u"abc", u"q", u"x", false, u"abc", {40014}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fault);
        ScriptedMessageService messages;
        Answer(messages, row.messages, kYes);
        TextTarget target(row.text, 0, 0);
        EXPECT_TRUE(SearchEngine(target).replaceAll(row.needle, row.replacement, row.ignoreCase));
        EXPECT_EQ(target.text(), row.result);
        EXPECT_EQ(messages.shownIds(), row.messages);
        EXPECT_EQ(target.undoSteps, row.messages.front() == 33026 ? 1 : 0);
    }
    ScriptedMessageService messages{MessageAnswer::Ok, MessageAnswer::Ok};
    TextTarget target(u"a-a", 0, 0);
    SearchEngine(target).replaceAll(u"a", u"b", false);
    EXPECT_EQ(messages.shown().front().text, QStringLiteral("2 箇所の文字列を置換しました。"));
    EXPECT_FALSE(SearchEngine(target).replaceAll(u"", u"b", false));
    EXPECT_EQ(messages.shownIds().back(), 40012);
}

// QString::replace is the oracle: over texts of whole characters and whole line breaks the two
// must agree on every text, in both case modes.
TEST(SearchEngine, ReplaceAllAgreesWithQString) {
    const std::u16string pieces[] = {u"a", u"A", u"b", u"\r\n", u"あ", u"\U0001F600"};
    std::mt19937 random(14);
    const auto make = [&](int most) {
        std::u16string text;
        for (int n = std::uniform_int_distribution(1, most)(random); n > 0; --n)
            text += pieces[std::uniform_int_distribution<std::size_t>(0, 5)(random)];
        return text;
    };
    for (int round = 0; round < 400; ++round) {
        const std::u16string text = make(40);
        const std::u16string needle = make(3);
        const std::u16string replacement = round % 3 == 0 ? u"" : make(4);
        const bool ignoreCase = round % 2 == 1;
        ScriptedMessageService messages{MessageAnswer::Ok};
        TextTarget target(text, 0, 0);
        SearchEngine(target).replaceAll(needle, replacement, ignoreCase);
        const QString expected = QString::fromStdU16String(text).replace(
            QString::fromStdU16String(needle), QString::fromStdU16String(replacement),
            ignoreCase ? Qt::CaseInsensitive : Qt::CaseSensitive);
        ASSERT_EQ(QString::fromStdU16String(target.text()), expected) << round;
    }
}

TEST(SearchEngine, ReplaceOneReplacesOnlyAMatchThenFindsTheNext) {
    struct Row {
        const char* fault;
        std::u16string text;
        Selection selection;
        bool ignoreCase;
        std::u16string result;
        Selection selected;
        QList<int> messages;
    };
    const Row rows[] = {
        {"a selection differing in case is a match when case is ignored",
         u"ABC abc",
         {0, 3},
         true,
         u"X abc",
         {2, 5},
         {}},
        {"and is left alone when case matters", u"ABC abc", {0, 3}, false, u"ABC abc", {4, 7}, {}},
        {"after the last one there are no more", u"abc", {0, 3}, false, u"X", {1, 1}, {40017}},
        {"nothing replaced and nothing found", u"xyz", {0, 0}, false, u"xyz", {0, 0}, {40014}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fault);
        ScriptedMessageService messages;
        Answer(messages, row.messages, kYes);
        TextTarget target(row.text, row.selection.first, row.selection.second);
        SearchEngine(target).replaceOne(u"abc", u"X", row.ignoreCase);
        EXPECT_EQ(target.text(), row.result);
        EXPECT_EQ(target.selection(), row.selected);
        EXPECT_EQ(messages.shownIds(), row.messages);
    }
}

} // namespace
} // namespace korvel
