#include "codec/Detection.h"

#include "ConverterHarness.h"
#include "ReferenceCodec.h"
#include "TestInputs.h"

#include <gtest/gtest.h>
#include <string>

namespace korvel {
namespace {

using testing::ExactCopy;
using testing::Hex;
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
        {"mark-alone", "\xEF\xBB\xBF", Utf8},
        {"mark-then-jis-escape-is-not-scanned", "\xEF\xBB\xBF\x1B$B0!", Undetermined},
        {"ascii-with-crlf", "abc\r\n", AsciiOnly},
        {"ascii-with-del-and-tab", "a\tb\x7F", AsciiOnly},
        {"utf8-without-mark", "\xE3\x81\x82", Utf8N},
        {"utf8-overlong-and-five-byte-forms", "\xC0\x80\xF8\x88\x80\x80\x80", Utf8N},
        {"utf8-cut-at-the-end", "\xE3\x81", ShiftJis},
        {"utf16-with-mark", std::string_view("\xFF\xFE\x41\x00", 4), Unicode},
        {"utf16-without-any-zero-byte", "\xFF\xFE\x42\x30", Undetermined},
        {"jis", "\x1B$B0!\x1B(B", Jis},
        {"jis-only-returns-to-ascii", "a\x1B(B", Jis},
        {"jis-escape-inside-shift-jis", "\x82\xA0\x1B$B", Jis},
        {"zero-before-escape", std::string_view("\x00\x1B$", 3), Unicode},
        {"escape-before-zero", std::string_view("\x1B$\x00", 3), Jis},
        {"escape-of-no-interest", "\x1BK", Undetermined},
        {"escape-at-the-very-end", "a\x1B", Undetermined},
        {"shift-jis", "\x82\xA0", ShiftJis},
        {"euc-that-also-fits-shift-jis", "\xA4\xA2", ShiftJis},
        {"euc-katakana-that-also-fits-shift-jis", "\x8E\xB1", ShiftJis},
        {"euc-beyond-shift-jis", "\xF2\xA1", Euc},
        {"shift-jis-user-defined-lead", "\xF0\x40", Undetermined},
        {"shift-jis-lead-cut-at-the-end", "abc\x82", ShiftJis},
    };
    for (const EncodingRow& row : rows) {
        ExactCopy input(ViewOf(row.bytes));
        EXPECT_EQ(DetectTextEncoding(input.data(), input.size()), row.expected) << row.name;
    }
    EXPECT_EQ(DetectTextEncoding(nullptr, 0), TextEncoding::Undetermined);
}

struct Utf8Row {
    const char* name;
    std::string_view bytes;
    bool expected;
    bool asciiOnly; // checked when expected is true
};

TEST(IsUtf8Text, AcceptsTextBytesAndWellFormedSequencesOnly) {
    const Utf8Row rows[] = {
        {"empty", "", true, true},
        {"tab-cr-lf-del", "\t\r\n\x7F", true, true},
        {"nul", std::string_view("a\0", 2), false, false},
        {"escape", "\x1B", false, false},
        {"two-byte", "\xC3\xA9", true, false},
        {"six-byte", "\xFC\x84\x80\x80\x80\x80", true, false},
        {"encoded-surrogate", "\xED\xA0\xBD", true, false},
        {"stray-continuation", "\x80", false, false},
        {"fe", "\xFE", false, false},
        {"cut-three-byte-reads-the-zero-behind", "\xE3\x81", false, false},
        {"bad-continuation", "\xE3\x41\x82", false, false},
        {"six-byte-cut-after-five", "\xFC\x84\x80\x80\x80", false, false},
    };
    for (const Utf8Row& row : rows) {
        ExactCopy input(ViewOf(row.bytes));
        bool asciiOnly = !row.asciiOnly;
        EXPECT_EQ(IsUtf8Text(input.data(), input.size(), &asciiOnly), row.expected) << row.name;
        if (row.expected) {
            EXPECT_EQ(asciiOnly, row.asciiOnly) << row.name;
        }
    }
    bool asciiOnly = false;
    EXPECT_FALSE(IsUtf8Text(nullptr, 0, &asciiOnly));
}

struct ValidityRow {
    const char* name;
    std::string_view bytes;
    bool expected;
};

TEST(IsShiftJisText, KnowsLeadTrailAndKatakanaRanges) {
    const ValidityRow rows[] = {
        {"empty", "", true},
        {"ascii-and-breaks", "a~\t\r\n", true},
        {"katakana-edges", "\xA1\xDF", true},
        {"lead-edges", "\x81\x40\x9F\xFC\xE0\x80\xEF\x7E", true},
        {"lead-cut-at-the-end", "a\x81", true},
        {"trail-7f", "\x81\x7F", false},
        {"trail-fd", "\x81\xFD", false},
        {"lead-then-lf", "\x81\n", false},
        {"user-defined-lead", "\xF0\x40", false},
        {"80", "\x80", false},
        {"a0", "\xA0", false},
        {"del", "\x7F", false},
        {"nul", std::string_view("\0", 1), false},
    };
    for (const ValidityRow& row : rows) {
        ExactCopy input(ViewOf(row.bytes));
        EXPECT_EQ(IsShiftJisText(input.data(), input.size()), row.expected) << row.name;
    }
    EXPECT_FALSE(IsShiftJisText(nullptr, 0));
    // The same faults inside a long run, where whole blocks are checked at once.
    const std::string kanji = "\x82\xA0\x88\x9F\xEA\xA4";
    for (const ValidityRow& row : rows) {
        if (row.bytes.empty() || row.bytes.back() == '\x81') {
            continue; // a cut lead is only valid at the very end
        }
        for (const std::size_t at : {0u, 30u, 62u, 63u, 64u, 90u}) {
            std::string text;
            for (std::size_t k = 0; text.size() + 2 <= at; k = (k + 2) % kanji.size()) {
                text += kanji.substr(k, 2);
            }
            text.resize(at, 'a');
            text += row.bytes;
            text.resize(200, 'b');
            ExactCopy input(ViewOf(text));
            EXPECT_EQ(IsShiftJisText(input.data(), input.size()), row.expected)
                << row.name << " at " << at;
        }
    }
}

TEST(IsEucText, KnowsPairsKatakanaAndTheSupplementaryTriple) {
    const ValidityRow rows[] = {
        {"empty", "", true},
        {"pair-edges", "\xA1\xFE\xFE\xA1", true},
        {"pair-cut-at-the-end", "a\xA1", true},
        {"pair-with-ff", "\xA1\xFF", false},
        {"ff", "\xFF", false},
        {"katakana", "\x8E\xA1\x8E\xDF", true},
        {"katakana-out-of-range", "\x8E\xE0", false},
        {"katakana-mark-at-the-end", "\x8E", false},
        {"triple", "\x8F\xA1\xFE", true},
        {"triple-cut-after-two", "\x8F\xA1", false},
        {"triple-bad-third", "\x8F\xA1\x41", false},
        {"8e-where-second-byte-due", "\xA1\x8E\xA1", false},
        {"c1-control", "\x80", false},
        {"del", "\x7F", false},
    };
    for (const ValidityRow& row : rows) {
        ExactCopy input(ViewOf(row.bytes));
        EXPECT_EQ(IsEucText(input.data(), input.size()), row.expected) << row.name;
    }
    EXPECT_FALSE(IsEucText(nullptr, 0));
}

// DEL passes as UTF-8 text but is no Shift_JIS or EUC text byte, wherever it stands in a run
// of plain text (the detectors skip such runs a block at a time).
TEST(Detection, DelIsUtf8TextButNoShiftJisOrEucText) {
    for (std::size_t run = 1; run <= 80; ++run) {
        for (std::size_t del = 0; del < run; ++del) {
            std::string text(run, 'a');
            text[del] = '\x7F';
            ExactCopy utf8(ViewOf("\xC3\xA9" + text));
            ExactCopy shiftJis(ViewOf("\x82\xA0" + text));
            ExactCopy euc(ViewOf("\xA4\xA2" + text));
            bool asciiOnly = true;
            ASSERT_TRUE(IsUtf8Text(utf8.data(), utf8.size(), &asciiOnly))
                << "DEL at " << del << " of " << run;
            ASSERT_FALSE(IsShiftJisText(shiftJis.data(), shiftJis.size()))
                << "DEL at " << del << " of " << run;
            ASSERT_FALSE(IsEucText(euc.data(), euc.size())) << "DEL at " << del << " of " << run;
            ASSERT_EQ(DetectTextEncoding(shiftJis.data(), shiftJis.size()),
                      TextEncoding::Undetermined)
                << "DEL at " << del << " of " << run;
        }
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
        {"no-break", "abc", NoLineBreak},
        {"mostly-cr", "a\rb\rc\r\n", Cr},
        {"mostly-lf", "a\r\nb\nc\nd\n", Lf},
        {"mostly-crlf", "a\r\nb\r\nc\n", CrLf},
        {"half-cr-half-lf-at-the-boundary", "a\r\nb\rc\n", CrLf},
        {"lone-cr-ties-lone-lf", "a\rb\n", Cr},
        {"lone-lf", "a\nb\n", Lf},
        {"lone-cr", "a\r", Cr},
        {"lf-cr-is-no-pair", "\n\r", Cr},
        {"utf16-pair", std::string_view("a\0\r\0\n\0", 6), CrLf},
        {"utf16-pair-cut-before-its-last-byte", std::string_view("\r\0\n", 3), CrLf},
        {"utf16-cr-then-other-unit", std::string_view("\r\0\n\x01", 4), Cr},
        {"utf16-lf-only", std::string_view("a\0\n\0", 4), Lf},
    };
    for (const LineEndingRow& row : rows) {
        ExactCopy input(ViewOf(row.bytes));
        EXPECT_EQ(DetectLineEnding(input.data(), input.size()), row.expected) << row.name;
    }
    EXPECT_EQ(DetectLineEnding(nullptr, 0), NoLineBreak);
}

// The detectors against the reference over generated inputs, many of them cut mid-sequence.
class DetectionCrossCheck : public ::testing::Test {
protected:
    static const std::vector<testing::Bytes>& Inputs() {
        static const std::vector<testing::Bytes> inputs = testing::CrossCheckInputs(1201);
        return inputs;
    }
};

TEST_F(DetectionCrossCheck, DetectTextEncoding) {
    for (const testing::Bytes& bytes : Inputs()) {
        ExactCopy input(bytes);
        ASSERT_EQ(DetectTextEncoding(input.data(), input.size()),
                  reference::DetectTextEncoding(bytes))
            << Hex(bytes);
    }
}

TEST_F(DetectionCrossCheck, IsUtf8TextAndAsciiOnly) {
    for (const testing::Bytes& bytes : Inputs()) {
        ExactCopy input(bytes);
        bool asciiOnly = false;
        bool expectedAsciiOnly = false;
        const bool expected = reference::IsUtf8Text(bytes, &expectedAsciiOnly);
        ASSERT_EQ(IsUtf8Text(input.data(), input.size(), &asciiOnly), expected) << Hex(bytes);
        if (expected) {
            ASSERT_EQ(asciiOnly, expectedAsciiOnly) << Hex(bytes);
        }
    }
}

TEST_F(DetectionCrossCheck, IsShiftJisTextAndIsEucText) {
    for (const testing::Bytes& bytes : Inputs()) {
        ExactCopy input(bytes);
        ASSERT_EQ(IsShiftJisText(input.data(), input.size()), reference::IsShiftJisText(bytes))
            << Hex(bytes);
        ASSERT_EQ(IsEucText(input.data(), input.size()), reference::IsEucText(bytes)) << Hex(bytes);
    }
}

TEST_F(DetectionCrossCheck, DetectLineEnding) {
    for (const testing::Bytes& bytes : Inputs()) {
        ExactCopy input(bytes);
        ASSERT_EQ(DetectLineEnding(input.data(), input.size()), reference::DetectLineEnding(bytes))
            << Hex(bytes);
    }
}

TEST_F(DetectionCrossCheck, Utf8LeadLengthOfEveryByte) {
    for (int b = 0; b < 0x100; ++b) {
        ASSERT_EQ(Utf8LeadLength(static_cast<std::uint8_t>(b)),
                  reference::Utf8LeadLength(static_cast<std::uint8_t>(b)))
            << "byte " << b;
    }
}

} // namespace
} // namespace korvel
