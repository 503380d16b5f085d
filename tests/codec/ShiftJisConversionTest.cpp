#include "codec/ShiftJisConversion.h"

#include "ConverterHarness.h"
#include "Cp932Oracle.h"
#include "ReferenceCodec.h"
#include "TestInputs.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace korvel {
namespace {

using reference::IsCp932Lead;
using reference::IsCp932Trail;
using testing::Bytes;
using testing::Convert;
using testing::ExactCopy;
using testing::Hex;
using testing::UnitsOf;
using testing::ViewOf;

std::optional<std::u16string> Decode(testing::ByteView shiftJis) {
    const std::optional<Bytes> out = Convert(ShiftJisToUnicode, shiftJis, 2);
    if (!out) {
        return std::nullopt;
    }
    return UnitsOf(*out);
}

std::optional<Bytes> Encode(std::u16string_view text) {
    return Convert(UnicodeToShiftJis, ViewOf(text), 1);
}

struct DecodeRow {
    const char* name;
    std::string_view shiftJis;
    std::u16string_view expected;
};

// Each code on its own is checked against iconv below; these are the codes in context.
TEST(ShiftJisToUnicode, SubstitutesWhatCp932CannotDecode) {
    const DecodeRow rows[] = {
        {"user-defined-area", "\xF0\x40", u"\uE000"},
        {"wave-dash-is-fullwidth-tilde", "\x81\x60", u"\uFF5E"},
        {"lead-then-lf", "\x81\n", u"\uFFFD\n"},
        {"lead-then-del", "\x81\x7F", u"\uFFFD\u007F"},
        {"lead-takes-a-lead-byte-as-trail", "\x81\x82\xA0", u"\u2260\uFFFD"},
        {"lead-at-the-end", "a\x82", u"a\uFFFD"},
        {"unassigned-pair-is-one-substitute", "\x85\x40z", u"\uFFFDz"},
        {"undecodable-single-bytes", "\x80\xA0\xFD\xFE\xFF", u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"nul-is-a-character", std::string_view("a\0b", 3), std::u16string_view(u"a\0b", 3)},
    };
    for (const DecodeRow& row : rows) {
        EXPECT_EQ(Hex(Decode(ViewOf(row.shiftJis)).value_or(u"(failed)")), Hex(row.expected))
            << row.name;
    }
}

struct EncodeRow {
    const char* name;
    std::u16string_view text;
    std::string_view expected;
};

TEST(UnicodeToShiftJis, WritesQuestionMarkForWhatCp932Lacks) {
    const EncodeRow rows[] = {
        {"e-acute", u"a\u00E9b", "a?b"},
        {"wave-dash-one-way", u"\u301C", "\x81\x60"},
        {"lone-high-surrogate", u"\xD83Dx", "?x"},
        {"lone-low-surrogate", u"\xDE00", "?"},
        {"surrogate-pair-is-one-character", u"\xD83D\xDE00", "?"},
        {"reversed-pair-is-two", u"\xDE00\xD83D", "??"},
        {"user-defined-area", u"\uE000", "\xF0\x40"},
    };
    for (const EncodeRow& row : rows) {
        EXPECT_EQ(Hex(Encode(row.text).value_or(Bytes{})), Hex(ViewOf(row.expected))) << row.name;
    }
}

TEST(UnicodeToShiftJis, EmptyTextIsUnconvertibleAndAnOddByteIsIgnored) {
    std::uint8_t* output = nullptr;
    std::size_t length = 0;
    ExactCopy empty(Bytes{});
    EXPECT_EQ(UnicodeToShiftJis(empty.data(), 0, &output, &length), CodecUnconvertible);
    EXPECT_EQ(Hex(Convert(UnicodeToShiftJis, ViewOf(std::string_view("A\0B", 3)), 1).value()),
              "[41]");
}

// Each BMP code point on its own against glibc's CP932, in one long text. The low surrogates
// come before the high ones so that no two of them form a pair.
TEST(UnicodeToShiftJis, EveryBmpCodePointAgreesWithIconv) {
    std::vector<std::uint32_t> order;
    for (std::uint32_t unit = 0; unit < 0x10000; ++unit) {
        order.push_back(unit);
    }
    std::rotate(order.begin() + 0xD800, order.begin() + 0xDC00, order.begin() + 0xE000);
    std::u16string text;
    std::vector<Bytes> codes;
    Bytes expected;
    for (const std::uint32_t unit : order) {
        text.push_back(static_cast<char16_t>(unit));
        codes.push_back(reference::EncodeCp932(static_cast<char16_t>(unit)).value_or(Bytes{'?'}));
        expected.insert(expected.end(), codes.back().begin(), codes.back().end());
    }
    const std::optional<Bytes> out = Encode(text);
    ASSERT_TRUE(out);
    if (*out == expected) {
        return;
    }
    std::size_t at = 0;
    for (std::size_t unit = 0; unit < codes.size(); ++unit) {
        const Bytes got(out->begin() + std::min(at, out->size()),
                        out->begin() + std::min(at + codes[unit].size(), out->size()));
        ASSERT_EQ(Hex(got), Hex(codes[unit])) << "code unit " << Hex(text.substr(unit, 1));
        at += codes[unit].size();
    }
    FAIL() << "output has " << out->size() << " bytes, expected " << expected.size();
}

// Every single byte, every lead/trail pair and every lead with a byte that cannot trail it.
TEST(ShiftJisToUnicode, EveryCp932CodeAgreesWithIconv) {
    Bytes input;
    std::u16string expected;
    auto add = [&](std::initializer_list<std::uint8_t> code,
                   std::initializer_list<char16_t> units) {
        input.insert(input.end(), code);
        for (const char16_t unit : units) {
            expected.push_back(unit); // not insert: GCC 12 warns falsely on that (-Wrestrict)
        }
    };
    auto decoded = [](std::initializer_list<std::uint8_t> code) {
        return reference::DecodeCp932(std::span(code.begin(), code.size())).value_or(u'\uFFFD');
    };
    for (unsigned b = 0; b < 0x100; ++b) {
        const auto byte = static_cast<std::uint8_t>(b);
        if (!IsCp932Lead(byte)) {
            add({byte}, {decoded({byte})});
        }
    }
    for (unsigned lead = 0x81; lead <= 0xFC; ++lead) {
        const auto l = static_cast<std::uint8_t>(lead);
        for (unsigned second = 0; second < 0x100 && IsCp932Lead(l); ++second) {
            const auto s = static_cast<std::uint8_t>(second);
            if (IsCp932Trail(s)) {
                add({l, s}, {decoded({l, s})});
            } else if (!IsCp932Lead(s)) {
                add({l, s}, {u'\uFFFD', decoded({s})});
            }
        }
    }
    add({0x81}, {u'\uFFFD'});
    const std::optional<std::u16string> out = Decode(input);
    ASSERT_TRUE(out);
    ASSERT_EQ(out->size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if ((*out)[i] != expected[i]) {
            FAIL() << "unit " << i << " is " << Hex(out->substr(i, 1)) << ", expected "
                   << Hex(expected.substr(i, 1));
        }
    }
}

TEST(ShiftJisConversion, EveryJisX0208CharacterCp932MapsRoundTripsThroughTheTables) {
    int mapped = 0;
    for (std::uint8_t j1 = 0x21; j1 <= 0x7E; ++j1) {
        for (std::uint8_t j2 = 0x21; j2 <= 0x7E; ++j2) {
            const reference::BytePair s = reference::JisPairToShiftJis(j1, j2);
            const std::uint8_t code[2] = {s.first, s.second};
            const std::optional<char16_t> unit = reference::DecodeCp932(code);
            if (!unit) {
                continue;
            }
            ++mapped;
            const std::u16string character(1, *unit);
            ASSERT_TRUE(Decode(code) == character) << "decoding " << Hex(code);
            const std::optional<Bytes> encoded = Encode(character);
            ASSERT_TRUE(encoded);
            ASSERT_TRUE(Decode(*encoded) == character)
                << "via " << Hex(*encoded) << " from " << Hex(code);
        }
    }
    EXPECT_GT(mapped, 7000); // JIS X 0208 has 6879 characters; CP932 adds NEC and IBM rows
}

class ShiftJisCrossCheck : public ::testing::Test {
protected:
    static const std::vector<Bytes>& Inputs() {
        static const std::vector<Bytes> inputs = testing::CrossCheckInputs(1401);
        return inputs;
    }
};

TEST_F(ShiftJisCrossCheck, ShiftJisToUnicode) {
    for (const Bytes& input : Inputs()) {
        const std::optional<std::u16string> out = Decode(input);
        ASSERT_TRUE(out);
        const std::u16string expected = reference::ShiftJisToUnicode(input);
        if (*out != expected) {
            FAIL() << Hex(input) << " gave " << Hex(*out) << ", expected " << Hex(expected);
        }
    }
}

// The generated bytes read as UTF-16LE; an empty text is a status of its own.
TEST_F(ShiftJisCrossCheck, UnicodeToShiftJis) {
    for (const Bytes& input : Inputs()) {
        const std::u16string text = UnitsOf(input);
        if (text.empty()) {
            continue;
        }
        const std::optional<Bytes> out = Convert(UnicodeToShiftJis, input, 1);
        ASSERT_TRUE(out);
        const Bytes expected = reference::UnicodeToShiftJis(text);
        if (*out != expected) {
            FAIL() << Hex(input) << " gave " << Hex(*out) << ", expected " << Hex(expected);
        }
    }
}

} // namespace
} // namespace korvel
