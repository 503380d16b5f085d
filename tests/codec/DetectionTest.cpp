#include "codec/Detection.h"

#include "ConverterHarness.h"

#include <gtest/gtest.h>

// The detection rules case by case, through the verdicts they lead to. Each detector on its own
// is held against a literal reading of its rules by the detection fuzz target, over seeds cut
// at every length.

namespace korvel {
namespace {

using testing::ExactCopy;
using testing::ViewOf;

template <typename Verdict> struct Row {
    const char* name;
    std::string_view bytes;
    Verdict expected;
};

TEST(DetectTextEncoding, DecidesByTheFirstRuleThatFits) {
    using enum TextEncoding;
    const Row<TextEncoding> rows[] = {
        {"empty", "", Undetermined},
        {"mark-then-euc", "\xEF\xBB\xBF\xA1\xA2", Euc},
        {"mark-then-shift-jis-is-not-tried", "\xEF\xBB\xBF\x81\x40", Undetermined},
        {"mark-then-jis-escape-is-not-scanned", "\xEF\xBB\xBF\x1B$B0!", Undetermined},
        {"ascii-with-crlf", "abc\r\n", AsciiOnly},
        {"utf8-without-mark", "\xE3\x81\x82", Utf8N},
        {"utf8-overlong-and-five-byte-forms", "\xC0\x80\xF8\x88\x80\x80\x80", Utf8N},
        {"utf8-cut-at-the-end", "\xE3\x81", ShiftJis},
        {"utf16-with-mark", std::string_view("\xFF\xFE\x41\x00", 4), Unicode},
        {"utf16-without-any-zero-byte", "\xFF\xFE\x42\x30", Undetermined},
        {"jis", "\x1B$B0!\x1B(B", Jis},
        {"jis-escape-inside-shift-jis", "\x82\xA0\x1B$B", Jis},
        {"zero-before-escape", std::string_view("\x00\x1B$", 3), Unicode},
        {"escape-before-zero", std::string_view("\x1B$\x00", 3), Jis},
        {"shift-jis", "\x82\xA0", ShiftJis},
        {"shift-jis-lead-cut-at-the-end", "abc\x82", ShiftJis},
        {"shift-jis-trail-out-of-range-then-euc", "\xA1\xFE\x81\x7F", Undetermined},
        {"del-is-no-shift-jis-or-euc", "\x82\xA0\x7F", Undetermined},
        {"euc-pair-cut-at-the-end", "\xF2", Euc},
        {"euc-katakana-out-of-range", "\xFE\xA1\x8E\xE0", Undetermined},
        {"euc-katakana-and-triple", "\xF2\xA1\x8E\xA1\x8F\xA1\xFE", Euc},
        {"euc-triple-cut-after-two", "\xFE\xA1\x8F\xA1", Undetermined},
        {"euc-that-also-fits-shift-jis", "\xA4\xA2", ShiftJis},
        {"euc-beyond-shift-jis", "\xF2\xA1", Euc},
    };
    for (const auto& row : rows) {
        ExactCopy input(ViewOf(row.bytes));
        EXPECT_EQ(DetectTextEncoding(input.data(), input.size()), row.expected) << row.name;
    }
}

TEST(DetectLineEnding, WeighsCrLfPairsAgainstLoneBreaks) {
    using enum LineEnding;
    const Row<LineEnding> rows[] = {
        {"empty", "", NoLineBreak},
        {"mostly-cr", "a\rb\rc\r\n", Cr},
        {"mostly-lf", "a\r\nb\nc\nd\n", Lf},
        {"mostly-crlf", "a\r\nb\r\nc\n", CrLf},
        {"half-cr-half-lf-at-the-boundary", "a\r\nb\rc\n", CrLf},
        {"lone-cr-ties-lone-lf", "a\rb\n", Cr},
        {"lone-cr", "a\r", Cr},
        {"lf-cr-is-no-pair", "\n\r", Cr},
        {"utf16-pair", std::string_view("a\0\r\0\n\0", 6), CrLf},
        {"utf16-pair-cut-before-its-last-byte", std::string_view("\r\0\n", 3), CrLf},
        {"utf16-cr-then-other-unit", std::string_view("\r\0\n\x01", 4), Cr},
    };
    for (const auto& row : rows) {
        ExactCopy input(ViewOf(row.bytes));
        EXPECT_EQ(DetectLineEnding(input.data(), input.size()), row.expected) << row.name;
    }
}

// A null run is no data: no text of any kind and no line break.
TEST(Detection, NullRunIsNoData) {
    bool asciiOnly = false;
    EXPECT_EQ(DetectTextEncoding(nullptr, 0), TextEncoding::Undetermined);
    EXPECT_FALSE(IsUtf8Text(nullptr, 0, &asciiOnly));
    EXPECT_FALSE(IsShiftJisText(nullptr, 0));
    EXPECT_FALSE(IsEucText(nullptr, 0));
    EXPECT_EQ(DetectLineEnding(nullptr, 0), LineEnding::NoLineBreak);
}

} // namespace
} // namespace korvel
