#include "codec/Detection.h"

#include "ConverterHarness.h"

#include <algorithm>
#include <gtest/gtest.h>

// The detection rules case by case. The fast paths are held against a literal reading of the
// same rules by the detection fuzz target, over its seeds cut at every length.

namespace korvel {
namespace {

using testing::ExactCopy;
using testing::ViewOf;

struct EncodingRow {
    const char* name;
    std::string_view bytes;
    TextEncoding expected;
};

TEST(DetectTextEncoding, DecidesByTheFirstRuleThatFits) {
    using enum TextEncoding;
    const EncodingRow rows[] = {
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
        {"euc-that-also-fits-shift-jis", "\xA4\xA2", ShiftJis},
        {"euc-beyond-shift-jis", "\xF2\xA1", Euc},
    };
    for (const EncodingRow& row : rows) {
        ExactCopy input(ViewOf(row.bytes));
        EXPECT_EQ(DetectTextEncoding(input.data(), input.size()), row.expected) << row.name;
    }
}

struct ValidityRow {
    const char* name;
    std::string_view bytes;
    bool utf8;
    bool shiftJis;
    bool euc;
};

// asciiOnly is the one output beside the verdicts: it tells AsciiOnly from Utf8N.
TEST(TextValidity, EachCodeSetKnowsItsOwnBytes) {
    const ValidityRow rows[] = {
        {"empty", "", true, true, true},
        {"tab-cr-lf", "a~\t\r\n", true, true, true},
        {"del-is-utf8-text-only", "\x7F", true, false, false},
        {"nul", std::string_view("a\0", 2), false, false, false},
        {"escape", "\x1B", false, false, false},
        {"utf8-encoded-surrogate", "\xED\xA0\xBD", true, true, false},
        {"utf8-cut-reads-the-zero-behind", "\xE3\x81", false, true, false},
        {"utf8-bad-continuation", "\xE3\x41\x82", false, true, false},
        {"katakana-edges", "\xA1\xDF", false, true, true},
        {"lead-edges", "\x81\x40\x9F\xFC\xE0\x80\xEF\x7E", false, true, false},
        {"lead-cut-at-the-end", "a\x81", false, true, false},
        {"trail-7f", "\x81\x7F", false, false, false},
        {"lead-then-lf", "\x81\n", false, false, false},
        {"user-defined-lead", "\xF0\x40", false, false, false},
        {"euc-pair-edges", "\xA1\xFE\xFE\xA1", false, false, true},
        {"euc-pair-cut-at-the-end", "a\xFE", false, false, true},
        {"euc-katakana", "\x8E\xA1\x8E\xDF", false, true, true},
        {"euc-katakana-mark-at-the-end", "\x8E", false, true, false},
        {"euc-triple", "\x8F\xA1\xFE", false, false, true},
        {"euc-triple-cut-after-two", "\x8F\xA1", false, true, false},
    };
    for (const ValidityRow& row : rows) {
        ExactCopy input(ViewOf(row.bytes));
        bool asciiOnly = false;
        EXPECT_EQ(IsUtf8Text(input.data(), input.size(), &asciiOnly), row.utf8) << row.name;
        const bool highByte = std::ranges::any_of(
            row.bytes, [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
        EXPECT_TRUE(!row.utf8 || asciiOnly != highByte) << row.name;
        EXPECT_EQ(IsShiftJisText(input.data(), input.size()), row.shiftJis) << row.name;
        EXPECT_EQ(IsEucText(input.data(), input.size()), row.euc) << row.name;
    }
}

struct LineEndingRow {
    const char* name;
    std::string_view bytes;
    LineEnding expected;
};

TEST(DetectLineEnding, WeighsCrLfPairsAgainstLoneBreaks) {
    using enum LineEnding;
    const LineEndingRow rows[] = {
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
    for (const LineEndingRow& row : rows) {
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
