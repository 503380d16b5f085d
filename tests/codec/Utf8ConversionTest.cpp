#include "codec/Utf8Conversion.h"

#include "ConverterHarness.h"

#include <gtest/gtest.h>

// UTF-8 against glibc's where the two agree (every BMP character), and the editor's own
// quirks case by case. The block decoder is held against the byte-wise rules by the fuzz
// target, over its seeds cut at every length.

namespace korvel {
namespace {

using testing::Bytes;
using testing::Convert;
using testing::Hex;
using testing::UnitsOf;
using testing::ViewOf;

struct DecodeRow {
    const char* name;
    std::string_view utf8;
    std::u16string_view expected;
};

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
        EXPECT_EQ(Hex(UnitsOf(Convert(Utf8ToUnicode, ViewOf(row.utf8), 2))), Hex(row.expected))
            << row.name;
    }
}

// Surrogates are code units like any other: a pair becomes two three-byte sequences, which
// decode back to the pair.
TEST(Utf8Conversion, SurrogatePairIsTwoSequencesBothWays) {
    const std::u16string_view pair = u"\xD83D\xDE00";
    const Bytes utf8 = Convert(UnicodeToUtf8, ViewOf(pair), 2);
    EXPECT_EQ(Hex(utf8), "[ED A0 BD ED B8 80]");
    EXPECT_EQ(Hex(UnitsOf(Convert(Utf8ToUnicode, utf8, 2))), Hex(pair));
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
    EXPECT_TRUE(UnitsOf(Convert(Utf8ToUnicode, utf8, 2)) == text);
}

} // namespace
} // namespace korvel
