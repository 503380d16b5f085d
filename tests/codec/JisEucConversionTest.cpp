#include "codec/JisEucConversion.h"

#include "ConverterHarness.h"
#include "Cp932Oracle.h"
#include "ReferenceCodec.h"
#include "TestInputs.h"

#include <gtest/gtest.h>

namespace korvel {
namespace {

using testing::Bytes;
using testing::BytesOf;
using testing::Convert;
using testing::ExactCopy;
using testing::Hex;
using testing::ViewOf;

struct ConversionRow {
    const char* name;
    std::string_view input;
    std::string_view expected;
};

template <typename Converter, typename... Extra>
void ExpectRows(std::span<const ConversionRow> rows, Converter converter, Extra... extra) {
    for (const ConversionRow& row : rows) {
        const std::optional<Bytes> out = Convert(converter, ViewOf(row.input), 1, extra...);
        EXPECT_EQ(Hex(out.value_or(BytesOf("(failed)"))), Hex(ViewOf(row.expected))) << row.name;
    }
}

struct EscapeRow {
    std::string_view bytes; // from ESC on
    int mode;
    int characterSet;
    int length;
};

TEST(ParseJisEscape, KnowsEveryRowOfTheTableWithAndWithoutEsc) {
    const EscapeRow rows[] = {
        {"\x1B$@", 1, 0, 3},       {"\x1B$B", 1, 1, 3},  {"\x1B$(D", 1, 2, 4},
        {"\x1B$(O", 1, 4, 4},      {"\x1B$(P", 1, 4, 4}, {"\x1B&@\x1B$B", 1, 3, 6},
        {"\x1B(I", 2, 6, 3},       {"\x1B(B", 0, 7, 3},  {"\x1B(J", 0, 8, 3},
        {"\x1B(H", 0, 9, 3},       {"\x1B$A", 3, 10, 0}, {"\x1B$(Q", 3, 10, 0},
        {"\x1B&@\x1B$", 3, 10, 0}, {"\x1B$", 3, 10, 0},  {"\x1B", 3, 10, 0},
    };
    for (const EscapeRow& row : rows) {
        const std::string terminated(row.bytes); // the reader stops at the 0 behind it
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(terminated.c_str());
        int characterSet = -1;
        int length = -2;
        EXPECT_EQ(ParseJisEscape(bytes, true, &characterSet, &length), row.mode)
            << Hex(ViewOf(row.bytes));
        EXPECT_EQ(characterSet, row.characterSet) << Hex(ViewOf(row.bytes));
        EXPECT_EQ(length, row.length) << Hex(ViewOf(row.bytes));
        characterSet = -1;
        length = -2;
        EXPECT_EQ(ParseJisEscape(bytes + 1, false, &characterSet, &length), row.mode)
            << "body of " << Hex(ViewOf(row.bytes));
        EXPECT_EQ(characterSet, row.characterSet) << "body of " << Hex(ViewOf(row.bytes));
        EXPECT_EQ(length, row.length - 1) << "body of " << Hex(ViewOf(row.bytes));
    }
    int characterSet = 0;
    int length = 0;
    const auto* notEsc = reinterpret_cast<const std::uint8_t*>("$B");
    EXPECT_EQ(ParseJisEscape(notEsc, true, &characterSet, &length), 3);
}

// Sound marks merge into KA to TO and HA to HO only.
TEST(HalfKanaToFullWidth, EveryKatakanaWithAndWithoutMarkMatchesTheReference) {
    for (unsigned kana = 0xA1; kana <= 0xDF; ++kana) {
        for (const std::uint8_t next : {0x00, 0xDE, 0xDF}) {
            std::uint8_t scratch[2] = {static_cast<std::uint8_t>(kana), next};
            const reference::FullWidthKana expected =
                reference::HalfKanaToFullWidth(static_cast<std::uint8_t>(kana), next);
            EXPECT_EQ(HalfKanaToFullWidth(scratch), expected.merged ? 1 : 0)
                << kana << "+" << +next;
            EXPECT_EQ(Hex(scratch), Hex(Bytes{expected.shiftJis.first, expected.shiftJis.second}))
                << kana << "+" << +next;
        }
    }
}

TEST(JisToShiftJis, FollowsTheEscapes) {
    const ConversionRow rows[] = {
        {"kanji-stretch", "\x1B$B$\"\x1B(B", "\x82\xA0"},
        {"katakana-without-return-to-ascii", "\x1B(I1", "\xB1"},
        {"katakana-sets-the-eighth-bit-of-everything", "\x1B(I1\n", "\xB1\x8A"},
        {"jis-x-0212-read-as-0208", "\x1B$(D0!", "\x88\x9F"},
        {"jis-x-0208-1990", "\x1B&@\x1B$B0!", "\x88\x9F"},
        {"old-jis", "\x1B$@0!\x1B(J~", "\x88\x9F~"},
        {"crlf-inside-a-kanji-stretch-is-a-pair", "\x1B$B\r\n", "\x77\x29"},
        {"unknown-escape-drops-only-esc-and-returns-to-ascii", "\x1B$B\x1BK0!", "K0!"},
        {"escape-cut-at-the-end", "a\x1B$", "a$"},
        {"high-bytes-copied-in-ascii-mode", "\xA4\xA2", "\xA4\xA2"},
        {"empty", "", ""},
    };
    ExpectRows(rows, JisToShiftJis);
}

TEST(EucToShiftJis, ConvertsPairsAndKatakanaAndMarksJisX0212) {
    const ConversionRow rows[] = {
        {"hiragana", "\xA4\xA2", "\x82\xA0"},
        {"katakana", "\x8E\xB1", "\xB1"},
        {"jis-x-0212-uses-two-bytes-only", "\x8F\xB0\xA1\x41", "\x81\xA1\x81\x60"},
        {"ascii-and-breaks", "A\r\n", "A\r\n"},
        {"c1-byte-copied", "\x80", "\x80"},
        {"last-code", "\xFE\xFE", "\xEF\xFC"},
        {"empty", "", ""},
    };
    ExpectRows(rows, EucToShiftJis);
}

TEST(ShiftJisToEuc, ConvertsPairsAndKatakanaAndCopiesTheRest) {
    const ConversionRow rows[] = {
        {"hiragana", "\x82\xA0", "\xA4\xA2"},
        {"katakana", "\xB1", "\x8E\xB1"},
        {"ascii-and-breaks", "A\r\n", "A\r\n"},
        {"bytes-of-no-range-copied", "\x80\xA0\xF0\xFF", "\x80\xA0\xF0\xFF"},
        {"last-jis-x-0208-row", "\xEA\xA4", "\xF4\xA6"},
        {"empty", "", ""},
    };
    ExpectRows(rows, ShiftJisToEuc);
}

TEST(ShiftJisToJis, HalfWidthKatakanaBecomesFullWidthInModeZero) {
    const ConversionRow rows[] = {
        {"merged-voiced", "\xB6\xDE", "\x1B$B%,\x1B(B"},
        {"u-and-dakuten-stay-two", "\xB3\xDE", "\x1B$B%&!+\x1B(B"},
        {"a", "\xB1", "\x1B$B%\"\x1B(B"},
        {"ascii-needs-no-escape", "A\r\n", "A\r\n"},
        {"line-break-ends-a-stretch", "\x82\xA0\r\n\x82\xA0", "\x1B$B$\"\x1B(B\r\n\x1B$B$\"\x1B(B"},
        {"kana-and-kanji-share-a-stretch", "\xB1\x82\xA0", "\x1B$B%\"$\"\x1B(B"},
        {"byte-of-no-range-copied", "\x82\xA0\xF0", "\x1B$B$\"\x1B(B\xF0"},
        {"empty", "", ""},
    };
    ExpectRows(rows, ShiftJisToJis, 0);
    ExpectRows(rows, ShiftJisToJis, 2);
}

TEST(ShiftJisToJis, ModeOneKeepsHalfWidthKatakana) {
    const ConversionRow rows[] = {
        {"a", "\xB1", "\x1B(I1\x1B(B"},
        {"voiced-kept-as-two", "\xB6\xDE", "\x1B(I6^\x1B(B"},
        {"katakana-then-kanji", "\xB1\x82\xA0", "\x1B(I1\x1B$B$\"\x1B(B"},
        {"katakana-then-ascii", "\xB1z", "\x1B(I1\x1B(Bz"},
    };
    ExpectRows(rows, ShiftJisToJis, 1);
}

struct GarbledRow {
    const char* name;
    std::string_view input;
    std::string_view shiftJis;
    std::string_view sourceAfter;
};

TEST(GarbledMailToShiftJis, RestoresLostEscapesAndEighthBits) {
    const GarbledRow rows[] = {
        {"escapes-lost", "$B$\"(B", "\x82\xA0", "$B$\"(B"},
        {"eighth-bit-set-after-escape", "\x1B$B\xA4\xA2", "\x82\xA0", "\x1B$B$\""},
        {"escape-with-eighth-bit", "\x9B$B$\"", "\x82\xA0", "\x1B$B$\""},
        {"intact-mail-unchanged", "\x1B$B$\"\x1B(Ba",
         "\x82\xA0"
         "a",
         "\x1B$B$\"\x1B(Ba"},
        {"ordinary-paren-b-becomes-an-escape", "a(Bb", "ab", "a(Bb"},
        {"body-tested-before-its-eighth-bit-is-cleared", "$\xC2$\xA2", "$B$\"", "$B$\""},
        {"katakana-mode", "(I1(B", "\xB1", "(I1(B"},
        {"empty", "", "", ""},
    };
    for (const GarbledRow& row : rows) {
        ExactCopy source(ViewOf(row.input));
        const std::optional<Bytes> out = Convert(GarbledMailToShiftJis, source, 1);
        EXPECT_EQ(Hex(out.value_or(BytesOf("(failed)"))), Hex(ViewOf(row.shiftJis))) << row.name;
        EXPECT_EQ(Hex(source.bytes()), Hex(ViewOf(row.sourceAfter))) << row.name;
    }
}

// All 94 x 94 JIS X 0208 codes through every direction: JIS, EUC and Shift_JIS must agree
// with the row-cell arithmetic and with each other.
TEST(JisEucConversion, EveryJisX0208CodeAgreesWithTheRowCellArithmetic) {
    const Bytes anchors = BytesOf("\x30\x21\x88\x9F"
                                  "\x24\x22\x82\xA0"
                                  "\x21\x21\x81\x40"
                                  "\x74\x26\xEA\xA4"
                                  "\x5E\x21\x9F\x9F"
                                  "\x5F\x21\xE0\x40"
                                  "\x7E\x7E\xEF\xFC");
    for (std::size_t i = 0; i < anchors.size(); i += 4) {
        EXPECT_EQ(reference::JisPairToShiftJis(anchors[i], anchors[i + 1]),
                  (reference::BytePair{anchors[i + 2], anchors[i + 3]}))
            << "reference arithmetic at " << Hex(testing::ByteView(anchors).subspan(i, 4));
    }
    Bytes jis = BytesOf("\x1B$B");
    Bytes euc;
    Bytes shiftJis;
    for (std::uint8_t j1 = 0x21; j1 <= 0x7E; ++j1) {
        for (std::uint8_t j2 = 0x21; j2 <= 0x7E; ++j2) {
            const reference::BytePair s = reference::JisPairToShiftJis(j1, j2);
            ASSERT_EQ(reference::ShiftJisPairToJis(s.first, s.second),
                      (reference::BytePair{j1, j2}));
            jis.insert(jis.end(), {j1, j2});
            euc.insert(euc.end(), {static_cast<std::uint8_t>(j1 | 0x80),
                                   static_cast<std::uint8_t>(j2 | 0x80)});
            shiftJis.insert(shiftJis.end(), {s.first, s.second});
        }
    }
    jis.insert(jis.end(), {0x1B, '(', 'B'});
    EXPECT_TRUE(Convert(JisToShiftJis, jis, 1) == shiftJis);
    EXPECT_TRUE(Convert(EucToShiftJis, euc, 1) == shiftJis);
    EXPECT_TRUE(Convert(ShiftJisToEuc, shiftJis, 1) == euc);
    EXPECT_TRUE(Convert(ShiftJisToJis, shiftJis, 1, 0) == jis);
    EXPECT_TRUE(Convert(ShiftJisToJis, shiftJis, 1, 1) == jis);
}

class JisEucCrossCheck : public ::testing::Test {
protected:
    static const std::vector<Bytes>& Inputs() {
        static const std::vector<Bytes> inputs = testing::CrossCheckInputs(1501);
        return inputs;
    }
};

TEST_F(JisEucCrossCheck, JisToShiftJis) {
    for (const Bytes& input : Inputs()) {
        const std::optional<Bytes> out = Convert(JisToShiftJis, input, 1);
        ASSERT_TRUE(out);
        testing::ExpectSameOutput(reference::JisToShiftJis(input), *out, input);
        if (HasFailure()) {
            return;
        }
    }
}

TEST_F(JisEucCrossCheck, EucToShiftJis) {
    for (const Bytes& input : Inputs()) {
        const std::optional<Bytes> out = Convert(EucToShiftJis, input, 1);
        ASSERT_TRUE(out);
        testing::ExpectSameOutput(reference::EucToShiftJis(input), *out, input);
        if (HasFailure()) {
            return;
        }
    }
}

TEST_F(JisEucCrossCheck, GarbledMailToShiftJisAndTheSourceItLeaves) {
    for (const Bytes& input : Inputs()) {
        ExactCopy source(input);
        const std::optional<Bytes> out = Convert(GarbledMailToShiftJis, source, 1);
        ASSERT_TRUE(out);
        Bytes expectedSource;
        testing::ExpectSameOutput(reference::GarbledMailToShiftJis(input, &expectedSource), *out,
                                  input);
        if (source.bytes() != expectedSource) {
            EXPECT_EQ(Hex(source.bytes()), Hex(expectedSource)) << "source after " << Hex(input);
        }
        if (HasFailure()) {
            return;
        }
    }
}

TEST_F(JisEucCrossCheck, ShiftJisToEuc) {
    for (const Bytes& input : Inputs()) {
        const std::optional<Bytes> out = Convert(ShiftJisToEuc, input, 1);
        ASSERT_TRUE(out);
        testing::ExpectSameOutput(reference::ShiftJisToEuc(input), *out, input);
        if (HasFailure()) {
            return;
        }
    }
}

TEST_F(JisEucCrossCheck, ShiftJisToJisInEveryKatakanaMode) {
    for (const int mode : {0, 1, 2}) {
        SCOPED_TRACE(::testing::Message() << "katakana mode " << mode);
        for (const Bytes& input : Inputs()) {
            const std::optional<Bytes> out = Convert(ShiftJisToJis, input, 1, mode);
            ASSERT_TRUE(out);
            testing::ExpectSameOutput(reference::ShiftJisToJis(input, mode), *out, input);
            if (HasFailure()) {
                return;
            }
        }
    }
}

} // namespace
} // namespace korvel
