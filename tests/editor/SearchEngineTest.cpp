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

    int undoSteps = 0;

private:
    std::u16string text_;
    std::size_t start_;
    std::size_t end_;
};

constexpr auto kYes = MessageAnswer::Yes;
constexpr auto kNo = MessageAnswer::No;

// A text with its selection between ⟦ and ⟧, as the rows write it.
TextTarget Marked(std::u16string_view marked) {
    const std::size_t start = marked.find(u'⟦');
    const std::size_t end = marked.find(u'⟧');
    std::u16string text(marked.substr(0, start));
    text += marked.substr(start + 1, end - start - 1);
    text += marked.substr(end + 1);
    return TextTarget(std::move(text), start, end - 1);
}

std::u16string MarkedText(const TextTarget& target) {
    const std::u16string text = target.text();
    const std::size_t start = target.selectionStart();
    const std::size_t end = target.selectionEnd();
    return text.substr(0, start) + u"⟦" + text.substr(start, end - start) + u"⟧" + text.substr(end);
}

// Answers every box the row expects: the questions as given, the others with OK.
void Answer(ScriptedMessageService& messages, const QList<int>& ids, MessageAnswer question) {
    for (int id : ids)
        messages.script({id == 30001 || id == 30002 ? question : MessageAnswer::Ok});
}

TEST(SearchEngine, FindSelectsTheMatchOrSaysWhy) {
    // how: '<' searches towards the start, 'i' ignores case, '1'/'2' the replace bar's modes.
    const struct {
        const char* fault;
        std::u16string before;
        std::u16string needle;
        const char* how;
        MessageAnswer wrap;
        QList<int> messages;
        std::u16string after;
    } rows[] = {
        // clang-format off
        {"starts at the selection's end", u"⟦abc⟧ abc", u"abc", "", kYes, {}, u"abc ⟦abc⟧"},
        {"no question when nothing lies before", u"⟦⟧xyz abc", u"q", "", kYes, {40003}, u"⟦⟧xyz abc"},
        {"a match before is offered, Yes finds it", u"abc xy⟦⟧z", u"abc", "", kYes, {30001}, u"⟦abc⟧ xyz"},
        {"No leaves the selection", u"abc xy⟦⟧z", u"abc", "", kNo, {30001, 40003}, u"abc xy⟦⟧z"},
        {"the replace bar names the find text", u"⟦⟧xyz", u"q", "1", kYes, {40014}, u"⟦⟧xyz"},
        {"after a replacement: no more", u"⟦⟧xyz", u"q", "2", kYes, {40017}, u"⟦⟧xyz"},
        {"backward steps over overlaps", u"aaa⟦⟧", u"aa", "<", kYes, {}, u"⟦aa⟧a"},
        {"backward finds a match at the start", u"ab ⟦⟧xx", u"ab", "<", kYes, {}, u"⟦ab⟧ xx"},
        {"backward wraps to the end on Yes", u"⟦⟧xx ab ab", u"ab", "<", kYes, {30002}, u"xx ab ⟦ab⟧"},
        {"backward: No says not found", u"⟦⟧xx ab", u"ab", "<", kNo, {30002, 40003}, u"⟦⟧xx ab"},
        {"backward asks only when a match lies after", u"⟦xx ab⟧", u"ab", "<", kYes, {40003}, u"⟦xx ab⟧"},
        {"backward always says plainly not found", u"⟦⟧xx", u"ab", "<2", kYes, {40003}, u"⟦⟧xx"},
        {"ignoring case folds the text", u"⟦⟧xx ABC", u"abc", "i", kYes, {}, u"xx ⟦ABC⟧"},
        {"minding case does not", u"⟦⟧xx ABC", u"abc", "", kYes, {40003}, u"⟦⟧xx ABC"},
        {"full-width letters fold", u"⟦⟧xx ＡＢＣ", u"ａｂｃ", "i", kYes, {}, u"xx ⟦ＡＢＣ⟧"},
        {"a match runs across a line break", u"⟦⟧a\r\nb", u"a\r\nb", "", kYes, {}, u"⟦a\r\nb⟧"},
        {"half a line break is no match", u"⟦⟧a\r\nb", u"\nb", "", kYes, {40003}, u"⟦⟧a\r\nb"},
        {"half a surrogate pair is no match", u"⟦⟧x\U0001F600", u"\xDE00", "", kYes, {40003}, u"⟦⟧x\U0001F600"},
        {"a whole pair is found", u"⟦⟧x\U0001F600", u"\U0001F600", "", kYes, {}, u"x⟦\U0001F600⟧"},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.fault);
        const std::string how = row.how;
        const FindMode mode = how.find('1') != std::string::npos   ? FindMode::NothingReplaced
                              : how.find('2') != std::string::npos ? FindMode::AfterReplacement
                                                                   : FindMode::Plain;
        ScriptedMessageService messages;
        Answer(messages, row.messages, row.wrap);
        TextTarget target = Marked(row.before);
        const bool found = SearchEngine(target).find(row.needle, how.find('<') != std::string::npos,
                                                     how.find('i') != std::string::npos, mode);
        EXPECT_EQ(found, row.messages.isEmpty() || row.messages.back() < 40000);
        EXPECT_EQ(messages.shownIds(), row.messages);
        EXPECT_EQ(MarkedText(target), row.after);
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
        // clang-format off
        {"inserted text is never searched again", u"a-a", u"a", u"aa", false, u"aa-aa", {33026}},
        {"overlapping matches are replaced left to right", u"aaa", u"aa", u"X", false, u"Xa", {33026}},
        {"case ignored", u"Abc aBC", u"abc", u"x", true, u"x x", {33026}},
        {"nothing to replace", u"abc", u"q", u"x", false, u"abc", {40014}},
        // clang-format on
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
    const struct {
        const char* fault;
        std::u16string before;
        bool ignoreCase;
        QList<int> messages;
        std::u16string after;
    } rows[] = {
        // clang-format off
        {"a selection differing in case matches when case is ignored", u"⟦ABC⟧ abc", true, {}, u"X ⟦abc⟧"},
        {"and is left alone when case matters", u"⟦ABC⟧ abc", false, {}, u"ABC ⟦abc⟧"},
        {"after the last one there are no more", u"⟦abc⟧", false, {40017}, u"X⟦⟧"},
        {"nothing replaced and nothing found", u"⟦⟧xyz", false, {40014}, u"⟦⟧xyz"},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.fault);
        ScriptedMessageService messages;
        Answer(messages, row.messages, kYes);
        TextTarget target = Marked(row.before);
        SearchEngine(target).replaceOne(u"abc", u"X", row.ignoreCase);
        EXPECT_EQ(MarkedText(target), row.after);
        EXPECT_EQ(messages.shownIds(), row.messages);
    }
}

} // namespace
} // namespace korvel
