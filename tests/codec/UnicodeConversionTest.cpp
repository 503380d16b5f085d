#include "ConverterHarness.h"
#include "VectorLevels.h"
#include "codec/ShiftJisConversion.h"
#include "codec/Utf8Conversion.h"

#include <algorithm>
#include <gtest/gtest.h>

// Text to and from Shift_JIS and UTF-8: every code both ways against glibc, and the editor's own
// quirks case by case. The fast paths meet the same judges (and a byte-wise reading of the
// UTF-8 rules) in the fuzz target, over its seeds cut at every length; surrogates go through
// UTF-8 as code units of their own there.

namespace korvel {
namespace {

using testing::Bytes;
using testing::Convert;
using testing::Hex;
using testing::UnitsOf;
using testing::ViewOf;

struct DecodeRow {
    const char* name;
    std::string_view bytes;
    std::u16string_view expected;
};

// A lead byte takes the next byte only when it is in the trail range.
TEST(ShiftJisToUnicode, SubstitutesWhatCp932CannotDecode) {
    const DecodeRow rows[] = {
        {"lead-then-lf-keeps-the-lf", "\x81\n", u"\uFFFD\n"},
        {"lead-then-del", "\x81\x7F", u"\uFFFD\u007F"},
        {"lead-takes-a-lead-byte-as-trail", "\x81\x82\xA0", u"\u2260\uFFFD"},
        {"lead-at-the-end", "a\x82", u"a\uFFFD"},
        {"unassigned-pair-is-one-substitute", "\x85\x40z", u"\uFFFDz"},
    };
    for (const DecodeRow& row : rows) {
        EXPECT_EQ(Hex(UnitsOf(Convert(ShiftJisToUnicode, ViewOf(row.bytes), 2))), Hex(row.expected))
            << row.name;
    }
}

struct EncodeRow {
    const char* name;
    std::u16string_view text;
    std::string_view expected;
};

TEST(UnicodeToShiftJis, WritesOneQuestionMarkPerCharacterCp932Lacks) {
    const EncodeRow rows[] = {
        {"lone-high-surrogate", u"\xD83Dx", "?x"},
        {"lone-low-surrogate", u"\xDE00", "?"},
        {"surrogate-pair-is-one-character", u"\xD83D\xDE00", "?"},
        {"reversed-pair-is-two", u"\xDE00\xD83D", "??"},
    };
    for (const EncodeRow& row : rows) {
        EXPECT_EQ(Hex(Convert(UnicodeToShiftJis, ViewOf(row.text), 1)), Hex(ViewOf(row.expected)))
            << row.name;
    }
}

// Each BMP code point on its own, in one long text. The low surrogates come before the high
// ones so that no two of them form a pair.
TEST(UnicodeToShiftJis, EveryBmpCodePointAgreesWithIconv) {
    std::u16string text;
    for (std::uint32_t unit = 0; unit < 0x10000; ++unit) {
        text.push_back(static_cast<char16_t>(unit));
    }
    std::rotate(text.begin() + 0xD800, text.begin() + 0xDC00, text.begin() + 0xE000);
    const Bytes out = Convert(UnicodeToShiftJis, ViewOf(text), 1);
    std::size_t at = 0;
    for (const char16_t unit : text) {
        const Bytes code = reference::EncodeCp932(unit).value_or(Bytes{'?'});
        const std::size_t end = std::min(at + code.size(), out.size());
        ASSERT_EQ(Hex(Bytes(out.begin() + std::min(at, end), out.begin() + end)), Hex(code))
            << "code unit " << Hex(std::u16string(1, unit));
        at += code.size();
    }
    EXPECT_EQ(at, out.size());
}

// Every single byte, every lead/trail pair and every lead with a byte that cannot trail it.
TEST(ShiftJisToUnicode, EveryCp932CodeAgreesWithIconv) {
    Bytes input;
    for (unsigned lead = 0; lead < 0x100; ++lead) {
        for (unsigned second = 0; second < 0x100; ++second) {
            input.insert(input.end(), {static_cast<std::uint8_t>(lead),
                                       static_cast<std::uint8_t>(second), '\n'});
        }
    }
    const std::u16string out = UnitsOf(Convert(ShiftJisToUnicode, input, 2));
    const std::u16string expected = reference::ShiftJisToUnicode(input);
    ASSERT_EQ(out.size(), expected.size());
    const auto [differs, _] = std::mismatch(out.begin(), out.end(), expected.begin());
    if (differs != out.end()) {
        const std::size_t unit = static_cast<std::size_t>(differs - out.begin());
        FAIL() << "unit " << unit << " is " << Hex(out.substr(unit, 1)) << ", expected "
               << Hex(expected.substr(unit, 1));
    }
}

TEST(Utf8ToUnicode, DecodesByLeadLengthWithoutTestingContinuations) {
    const DecodeRow rows[] = {
        {"four-byte-becomes-black-square", "\xF0\x9F\x98\x80", u"\u25A0"},
        {"five-and-six-byte",
         "\xF8\x88\x80\x80\x80\xFC\x84\x80\x80\x80\x80"
         "a",
         u"\u25A0\u25A0a"},
        {"stray-continuation-dropped", "\x80\x41", u"A"},
        {"fe-ff-dropped", "\xFE\x41\xFF", u"A"},
        {"continuation-not-tested", "\xC3\x41z", u"\u00C1z"},
        {"overlong-nul", "\xC0\x80", std::u16string_view(u"\0", 1)},
        {"encoded-surrogates-kept", "\xED\xA0\xBD\xED\xB8\x80", u"\xD83D\xDE00"},
        {"mark-kept", "\xEF\xBB\xBF", u"\uFEFF"},
        {"cut-three-byte-reads-zeros", "a\xE3\x81", u"a\u3040"},
        {"cut-lead-reads-zeros", "\xE3", u"\u3000"},
        {"cut-six-byte-swallows-the-rest", "\xFC\x41\x42", u"\u25A0"},
    };
    for (const DecodeRow& row : rows) {
        EXPECT_EQ(Hex(UnitsOf(Convert(Utf8ToUnicode, ViewOf(row.bytes), 2))), Hex(row.expected))
            << row.name;
    }
}

// Every BMP character in one text, through the encoder and back through the decoder.
TEST(Utf8Conversion, EveryBmpCharacterAgreesWithIconvBothWays) {
    std::u16string text;
    for (std::uint32_t unit = 0; unit < 0x10000; ++unit) {
        if (unit < 0xD800 || unit > 0xDFFF) {
            text.push_back(static_cast<char16_t>(unit));
        }
    }
    const Bytes utf8 = Convert(UnicodeToUtf8, ViewOf(text), 2);
    EXPECT_TRUE(utf8 == reference::Iconv("UTF-8", "UTF-16LE", ViewOf(text)));
    testing::ForEachVectorLevel(
        [&] { EXPECT_TRUE(UnitsOf(Convert(Utf8ToUnicode, utf8, 2)) == text); });
}

} // namespace
} // namespace korvel
