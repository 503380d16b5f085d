#include "codec/JisEucConversion.h"

#include "ConverterHarness.h"
#include "VectorLevels.h"
#include "codec/ShiftJisConversion.h"

#include <gtest/gtest.h>

// The JIS X 0208 arithmetic of every direction against glibc, and the escapes, katakana and
// repairs case by case. The fuzz target adds memory safety, round trips on any bytes, and
// ParseJisEscape reading every escape alike with and without its ESC.

namespace korvel {
namespace {

using testing::Bytes;
using testing::BytesOf;
using testing::ByteView;
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
        EXPECT_EQ(Hex(Convert(converter, ViewOf(row.input), 1, extra...)),
                  Hex(ViewOf(row.expected)))
            << row.name;
    }
}

// Half-width katakana become their full-width letters. A sound mark merges only into KA to TO
// (voiced) and HA to HO (voiced and semi-voiced), whose marked letters follow the plain ones.
TEST(HalfKanaToFullWidth, EveryKatakanaWithEveryFollowingByte) {
    const std::u16string_view fullWidth = u"。「」、・ヲァィゥェォャュョッーアイウエオカキクケコサ"
                                          u"シスセソタチツテトナニヌネノハヒフヘ"
                                          u"ホマミムメモヤユヨラリルレロワン゛゜";
    for (unsigned kana = 0xA1; kana <= 0xDF; ++kana) {
        const bool kaToTo = kana >= 0xB6 && kana <= 0xC4;
        const bool haToHo = kana >= 0xCA && kana <= 0xCE;
        for (unsigned next = 0; next < 0x100; ++next) {
            const bool voiced = next == 0xDE && (kaToTo || haToHo);
            const bool semiVoiced = next == 0xDF && haToHo;
            std::uint8_t scratch[2] = {static_cast<std::uint8_t>(kana),
                                       static_cast<std::uint8_t>(next)};
            ASSERT_EQ(HalfKanaToFullWidth(scratch), voiced || semiVoiced ? 1 : 0)
                << kana << "+" << next;
            const int mark = voiced ? 1 : semiVoiced ? 2 : 0;
            ASSERT_EQ(reference::DecodeCp932(scratch), fullWidth[kana - 0xA1] + mark)
                << kana << "+" << next;
        }
    }
}

TEST(JisToShiftJis, FollowsTheEscapes) {
    const ConversionRow rows[] = {
        {"every-escape-sets-its-mode-and-is-skipped-whole",
         "\x1B$@0!\x1B(H~\x1B$(D0!\x1B(J~\x1B$(O0!\x1B$(P0!\x1B&@\x1B$B0!\x1B(I1\x1B$B$\"\x1B(B~",
         "\x88\x9F~\x88\x9F~\x88\x9F\x88\x9F\x88\x9F\xB1\x82\xA0~"},
        {"unknown-escapes-drop-only-esc", "\x1B$(Q\x1B&@\x1B$", "$(Q&@$"},
        {"katakana-without-return-to-ascii", "\x1B(I1", "\xB1"},
        {"katakana-sets-the-eighth-bit-of-everything", "\x1B(I1\n", "\xB1\x8A"},
        {"crlf-inside-a-kanji-stretch-is-a-pair", "\x1B$B\r\n", "\x77\x29"},
        {"unknown-escape-drops-only-esc-and-returns-to-ascii", "\x1B$B\x1BK0!", "K0!"},
        {"escape-cut-at-the-end", "a\x1B$", "a$"},
        {"high-bytes-copied-in-ascii-mode", "\xA4\xA2", "\xA4\xA2"},
    };
    ExpectRows(rows, JisToShiftJis);
}

// Katakana and the supplementary set are the bytes EUC has beside the JIS X 0208 pairs.
TEST(EucConversion, KatakanaJisX0212AndBytesOfNoRange) {
    const ConversionRow toShiftJis[] = {
        {"katakana", "\x8E\xB1", "\xB1"},
        {"jis-x-0212-uses-two-bytes-only", "\x8F\xB0\xA1\x41", "\x81\xA1\x81\x60"},
        {"c1-byte-copied", "\x80", "\x80"},
    };
    ExpectRows(toShiftJis, EucToShiftJis);
    const ConversionRow fromShiftJis[] = {
        {"katakana", "\xB1", "\x8E\xB1"},
        {"bytes-of-no-range-copied", "\x80\xA0\xF0\xFF", "\x80\xA0\xF0\xFF"},
    };
    ExpectRows(fromShiftJis, ShiftJisToEuc);
}

// Mode 1 keeps half-width katakana; any other mode makes them full width, merging sound marks.
TEST(ShiftJisToJis, EscapesEachStretchAndHandlesKatakanaByMode) {
    const ConversionRow fullWidth[] = {
        {"merged-voiced", "\xB6\xDE", "\x1B$B%,\x1B(B"},
        {"u-and-dakuten-stay-two", "\xB3\xDE", "\x1B$B%&!+\x1B(B"},
        {"ascii-needs-no-escape", "A\r\n", "A\r\n"},
        {"line-break-ends-a-stretch", "\x82\xA0\r\n\x82\xA0", "\x1B$B$\"\x1B(B\r\n\x1B$B$\"\x1B(B"},
        {"kana-and-kanji-share-a-stretch", "\xB1\x82\xA0", "\x1B$B%\"$\"\x1B(B"},
        {"byte-of-no-range-copied", "\x82\xA0\xF0", "\x1B$B$\"\x1B(B\xF0"},
    };
    ExpectRows(fullWidth, ShiftJisToJis, 0);
    ExpectRows(fullWidth, ShiftJisToJis, 2);
    const ConversionRow kept[] = {
        {"voiced-kept-as-two", "\xB6\xDE", "\x1B(I6^\x1B(B"},
        {"katakana-then-kanji", "\xB1\x82\xA0", "\x1B(I1\x1B$B$\"\x1B(B"},
        {"katakana-then-ascii", "\xB1z", "\x1B(I1\x1B(Bz"},
    };
    ExpectRows(kept, ShiftJisToJis, 1);
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
    };
    for (const GarbledRow& row : rows) {
        ExactCopy source(ViewOf(row.input));
        EXPECT_EQ(Hex(Convert(GarbledMailToShiftJis, source, 1)), Hex(ViewOf(row.shiftJis)))
            << row.name;
        EXPECT_EQ(Hex(source.bytes()), Hex(ViewOf(row.sourceAfter))) << row.name;
    }
}

// What the JIS blocks leave to the byte-wise steps, at every offset of a block: an odd kanji
// stretch, whose last byte takes the ESC as its pair, and the escapes of the other sets.
TEST(JisToUnicode, EscapesAtEveryBlockOffsetReadAsThroughShiftJis) {
    const std::string_view tails[] = {"\x1B$B0!0\x1B(Bab", "\x1B(Jab\x1B$B0!\x1B(B",
                                      "\x1B(I12\x1B(Bab", "\x1B$@0!\x1B(Bab", "\x1B$B0!\x1BK"};
    constexpr std::size_t kTwoBlocks = 128;
    for (const std::string_view tail : tails) {
        for (std::size_t offset = 0; offset < kTwoBlocks; ++offset) {
            Bytes jis(offset, 'a');
            jis.insert(jis.end(), tail.begin(), tail.end());
            jis.insert(jis.end(), kTwoBlocks, 'z');
            const Bytes expected = Convert(ShiftJisToUnicode, Convert(JisToShiftJis, jis, 1), 2);
            testing::ForEachVectorLevel([&] {
                EXPECT_TRUE(Convert(JisToUnicode, jis, 2) == expected) << tail << " at " << offset;
            });
        }
    }
}

// All 94 x 94 JIS X 0208 codes: the Shift_JIS that EUC becomes reads as the same character in
// glibc wherever glibc knows the code, and JIS, EUC and Shift_JIS turn into one another exactly.
TEST(JisEucConversion, EveryJisX0208CodeAgreesWithIconvAndRoundTrips) {
    Bytes jis = BytesOf("\x1B$B");
    Bytes euc;
    for (std::uint8_t j1 = 0x21; j1 <= 0x7E; ++j1) {
        for (std::uint8_t j2 = 0x21; j2 <= 0x7E; ++j2) {
            jis.insert(jis.end(), {j1, j2});
            euc.insert(euc.end(), {static_cast<std::uint8_t>(j1 | 0x80),
                                   static_cast<std::uint8_t>(j2 | 0x80)});
        }
    }
    jis.insert(jis.end(), {0x1B, '(', 'B'});
    const Bytes shiftJis = Convert(EucToShiftJis, euc, 1);
    ASSERT_EQ(shiftJis.size(), euc.size());
    int known = 0;
    for (std::size_t i = 0; i < euc.size(); i += 2) {
        const auto character = reference::Iconv("UTF-16LE", "EUC-JP", ByteView(euc).subspan(i, 2));
        known += character ? 1 : 0;
        ASSERT_TRUE(!character || character == reference::Iconv("UTF-16LE", "SHIFT_JIS",
                                                                ByteView(shiftJis).subspan(i, 2)))
            << "EUC " << Hex(ByteView(euc).subspan(i, 2)) << " became "
            << Hex(ByteView(shiftJis).subspan(i, 2));
    }
    EXPECT_GE(known, 6879); // the characters of JIS X 0208
    EXPECT_TRUE(Convert(JisToShiftJis, jis, 1) == shiftJis);
    // The direct decoders against the route through Shift_JIS: every code in one long stretch,
    // then each after an ASCII byte, so that the blocks mix the two and JIS escapes every few
    // bytes, at every offset of a block.
    Bytes mixedShiftJis, mixedEuc, mixedJis;
    for (std::size_t i = 0; i < euc.size(); i += 2) {
        const auto ascii = static_cast<std::uint8_t>(0x20 + i / 2 % 0x5F);
        mixedShiftJis.insert(mixedShiftJis.end(), {ascii, shiftJis[i], shiftJis[i + 1]});
        mixedEuc.insert(mixedEuc.end(), {ascii, euc[i], euc[i + 1]});
        mixedJis.insert(mixedJis.end(),
                        {ascii, 0x1B, '$', 'B', jis[i + 3], jis[i + 4], 0x1B, '(', 'B'});
    }
    const Bytes text = Convert(ShiftJisToUnicode, shiftJis, 2);
    const Bytes mixedText = Convert(ShiftJisToUnicode, mixedShiftJis, 2);
    testing::ForEachVectorLevel([&] {
        EXPECT_TRUE(Convert(EucToUnicode, euc, 2) == text);
        EXPECT_TRUE(Convert(JisToUnicode, jis, 2) == text);
        EXPECT_TRUE(Convert(EucToUnicode, mixedEuc, 2) == mixedText);
        EXPECT_TRUE(Convert(JisToUnicode, mixedJis, 2) == mixedText);
    });
    EXPECT_TRUE(Convert(ShiftJisToEuc, shiftJis, 1) == euc);
    EXPECT_TRUE(Convert(ShiftJisToJis, shiftJis, 1, 0) == jis);
}

} // namespace
} // namespace korvel
