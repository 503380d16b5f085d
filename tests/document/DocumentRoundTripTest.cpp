#include "Cp932Oracle.h"
#include "DocumentHarness.h"

#include <gtest/gtest.h>
#include <random>

namespace korvel {
namespace {

using testing::Bytes;
using testing::Hex;
using testing::Load;
using testing::Save;
using enum TextEncoding;

constexpr LineEnding kLineEndings[] = {LineEnding::CrLf, LineEnding::Cr, LineEnding::Lf};

// The code units a code set can hold without loss, line breaks apart.
struct Repertoire {
    std::vector<char16_t> shiftJis; // CP932 characters whose code decodes back to them
    std::vector<char16_t> jisX0208; // of those, the ones JIS and EUC carry
    std::vector<char16_t> halfWidthKatakana;
    std::vector<char16_t> anyUnit; // UTF-8 carries every code unit, surrogates included
    std::vector<char16_t> unicode; // no unit with a CR or LF byte, which the line-ending count sees
};

const Repertoire& Units() {
    static const Repertoire repertoire = [] {
        Repertoire r;
        for (std::uint32_t u = 1; u < 0x10000; ++u) {
            const auto unit = static_cast<char16_t>(u);
            if (unit == u'\r' || unit == u'\n') {
                continue;
            }
            r.anyUnit.push_back(unit);
            if ((u & 0xFF) != 0x0A && (u & 0xFF) != 0x0D && (u >> 8) != 0x0A && (u >> 8) != 0x0D) {
                r.unicode.push_back(unit);
            }
            const std::optional<Bytes> code = reference::EncodeCp932(unit);
            if (!code || reference::DecodeCp932(*code) != unit || (u < 0x20 && u != u'\t')) {
                continue;
            }
            r.shiftJis.push_back(unit);
            const std::uint8_t first = (*code)[0];
            const bool jisRow =
                (first >= 0x81 && first <= 0x9F) || (first >= 0xE0 && first <= 0xEF);
            if (code->size() == 1 && first >= 0xA1 && first <= 0xDF) {
                r.halfWidthKatakana.push_back(unit);
            } else if ((code->size() == 1 && first < 0x80) || (code->size() == 2 && jisRow)) {
                r.jisX0208.push_back(unit);
            }
        }
        return r;
    }();
    return repertoire;
}

// Lines of random units from the pools, joined by CR LF as the editor holds them.
std::vector<std::u16string>
GeneratedTexts(std::initializer_list<const std::vector<char16_t>*> pools, unsigned seed) {
    std::vector<char16_t> pool;
    for (const std::vector<char16_t>* units : pools) {
        pool.insert(pool.end(), units->begin(), units->end());
    }
    std::mt19937 rng(seed);
    std::uniform_int_distribution<std::size_t> pick(0, pool.size() - 1);
    std::uniform_int_distribution<int> lineCount(0, 5);
    std::uniform_int_distribution<int> lineLength(0, 12);
    std::vector<std::u16string> texts = {u"", u"\r\n", u"\r\n\r\n"};
    for (int i = 0; i < 60; ++i) {
        std::u16string text;
        for (int line = lineCount(rng); line > 0; --line) {
            for (int n = lineLength(rng); n > 0; --n) {
                text.push_back(pool[pick(rng)]);
            }
            text += u"\r\n";
        }
        for (int n = lineLength(rng); n > 0; --n) {
            text.push_back(pool[pick(rng)]);
        }
        texts.push_back(text);
    }
    return texts;
}

void ExpectRoundTrips(const std::vector<std::u16string>& texts, TextEncoding encoding,
                      int jisKatakanaMode) {
    for (const std::u16string& text : texts) {
        for (const LineEnding lineEnding : kLineEndings) {
            const Bytes file = Save(text, encoding, lineEnding, jisKatakanaMode);
            const testing::LoadedText loaded = Load(file, encoding);
            const bool hasBreak = text.find(u'\n') != std::u16string::npos;
            if (loaded.text != text || loaded.encoding != encoding ||
                loaded.lineEnding != (hasBreak ? lineEnding : LineEnding::CrLf)) {
                FAIL() << Hex(text) << " saved with line ending " << static_cast<int>(lineEnding)
                       << " as " << Hex(file) << " loaded as " << Hex(loaded.text)
                       << ", line ending " << static_cast<int>(loaded.lineEnding);
            }
        }
    }
}

TEST(DocumentRoundTrip, ShiftJisHoldsEveryCp932Character) {
    const Repertoire& r = Units();
    ExpectRoundTrips(GeneratedTexts({&r.shiftJis}, 2101), ShiftJis, 0);
}

TEST(DocumentRoundTrip, EucHoldsJisX0208AndHalfWidthKatakana) {
    const Repertoire& r = Units();
    ExpectRoundTrips(GeneratedTexts({&r.jisX0208, &r.halfWidthKatakana}, 2102), Euc, 0);
}

TEST(DocumentRoundTrip, JisHoldsHalfWidthKatakanaOnlyInModeOne) {
    const Repertoire& r = Units();
    ExpectRoundTrips(GeneratedTexts({&r.jisX0208}, 2103), Jis, 0);
    ExpectRoundTrips(GeneratedTexts({&r.jisX0208, &r.halfWidthKatakana}, 2104), Jis, 1);
}

TEST(DocumentRoundTrip, Utf8WithAndWithoutMarkHoldsEveryCodeUnit) {
    const Repertoire& r = Units();
    const std::vector<std::u16string> texts = GeneratedTexts({&r.anyUnit}, 2105);
    ExpectRoundTrips(texts, Utf8, 0);
    ExpectRoundTrips(texts, Utf8N, 0);
    ExpectRoundTrips({u"\uFEFFmark-like first character"}, Utf8, 0);
    ExpectRoundTrips({u"\uFEFFmark-like first character"}, Utf8N, 0);
}

TEST(DocumentRoundTrip, UnicodeHoldsEveryCodeUnit) {
    const Repertoire& r = Units();
    ExpectRoundTrips(GeneratedTexts({&r.unicode}, 2106), Unicode, 0);
    ExpectRoundTrips({u"\uFEFFmark-like first character", u"\uFFFEreversed"}, Unicode, 0);
}

// Half-width katakana saved as JIS in mode 0 come back full width, sound marks merged.
TEST(DocumentRoundTrip, JisModeZeroWidensKatakana) {
    const Bytes file = Save(u"ｶﾞｳﾞﾊﾟ", Jis, LineEnding::CrLf, 0);
    EXPECT_EQ(Hex(Load(file, Jis).text), Hex(u"ガウ゛パ"));
}

} // namespace
} // namespace korvel
