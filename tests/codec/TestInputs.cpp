#include "TestInputs.h"

#include "Cp932Oracle.h"

#include <cstdio>

namespace korvel::testing {

namespace {

constexpr std::size_t kMaxSmallLength = 40;
constexpr int kRunsPerLength = 150;

// Escapes and escape bodies as lost-ESC mail has them.
constexpr std::string_view kEscapePieces[] = {
    "\x1B$@", "\x1B$B", "\x1B$(D", "\x1B$(O", "\x1B$(P", "\x1B&@\x1B$B",
    "\x1B(I", "\x1B(B", "\x1B(J",  "\x1B(H",  "\x1B(",   "\x1B$",
    "$B",     "(B",     "(I",      "&@",      "$\"",     "0!"};
// Line breaks, marks and characters of every code set, UTF-8 sequences of every length.
constexpr std::string_view kCharacterPieces[] = {"\r\n",
                                                 "\xEF\xBB\xBF",
                                                 "\xFF\xFE",
                                                 "\x82\xA0",
                                                 "\x88\x9F",
                                                 "\xEA\xA4",
                                                 "\xF0\x40",
                                                 "\xB6\xDE",
                                                 "\xCA\xDF",
                                                 "\xB3\xDE",
                                                 "\xA4\xA2",
                                                 "\x8E\xB1",
                                                 "\x8F\xB0\xA1",
                                                 "\xC8\xFE",
                                                 "\xE3\x81\x82",
                                                 "\xC3\xA9",
                                                 "\xF0\x9F\x98\x80",
                                                 "\xF8\x88\x80\x80\x80",
                                                 "\xFC\x84\x80\x80\x80\x80",
                                                 "\xED\xA0\xBD"};

// Pieces whose inside matters to some detector or converter.
const std::vector<Bytes>& Tokens() {
    static const std::vector<Bytes> tokens = [] {
        std::vector<Bytes> list;
        for (const std::uint8_t b : kInterestingBytes) {
            list.push_back({b});
        }
        list.push_back({'\r', 0, '\n', 0}); // a UTF-16LE line break
        for (const std::string_view piece : kEscapePieces) {
            list.push_back(BytesOf(piece));
        }
        for (const std::string_view piece : kCharacterPieces) {
            list.push_back(BytesOf(piece));
        }
        return list;
    }();
    return tokens;
}

Bytes ByteRun(std::mt19937& rng, std::size_t length) {
    std::uniform_int_distribution<std::size_t> pick(0, std::size(kInterestingBytes) - 1);
    Bytes run;
    while (run.size() < length) {
        run.push_back(kInterestingBytes[pick(rng)]);
    }
    return run;
}

Bytes TokenRun(std::mt19937& rng, std::size_t length) {
    std::uniform_int_distribution<std::size_t> pick(0, Tokens().size() - 1);
    Bytes run;
    while (run.size() < length) {
        const Bytes& token = Tokens()[pick(rng)];
        run.insert(run.end(), token.begin(), token.end());
    }
    run.resize(length);
    return run;
}

enum class LongTextMix { MostlyAscii, MostlyKanji, KatakanaAndKanji };

// Characters of JIS X 0208 rows (whose trail bytes cover the whole trail range, lead bytes
// included), half-width katakana with their sound marks, ASCII and line breaks.
std::u16string LongText(std::mt19937& rng, LongTextMix mix) {
    std::uniform_int_distribution<int> row(0x21, 0x74);
    std::uniform_int_distribution<int> cell(0x21, 0x7E);
    std::uniform_int_distribution<int> ascii(0x20, 0x7E);
    std::uniform_int_distribution<int> kana(0xFF61, 0xFF9F);
    std::uniform_int_distribution<int> percent(0, 99);
    std::u16string text;
    while (text.size() < 180) {
        const int p = percent(rng);
        if (p < 4) {
            text += u"\r\n";
        } else if (p < 6) {
            text.push_back(p == 4 ? u'\n' : u'\t');
        } else if (mix == LongTextMix::MostlyAscii ? p < 94 : p < 30) {
            text.push_back(static_cast<char16_t>(ascii(rng)));
        } else if (mix == LongTextMix::KatakanaAndKanji && p < 65) {
            text.push_back(static_cast<char16_t>(kana(rng)));
        } else {
            const reference::BytePair code = reference::JisPairToShiftJis(
                static_cast<std::uint8_t>(row(rng)), static_cast<std::uint8_t>(cell(rng)));
            const std::uint8_t pair[2] = {code.first, code.second};
            text.push_back(reference::DecodeCp932(pair).value_or(u'\u4E9C'));
        }
    }
    return text;
}

// The four- to six-byte forms that no UTF-16 text produces.
void InsertLongUtf8Forms(std::mt19937& rng, Bytes& utf8) {
    for (const std::string_view form :
         {"\xF0\x9F\x98\x80", "\xF8\x88\x80\x80\x80", "\xFC\x84\x80\x80\x80\x80"}) {
        std::uniform_int_distribution<std::size_t> at(0, utf8.size());
        std::size_t position = at(rng);
        while (position < utf8.size() && (utf8[position] & 0xC0) == 0x80) {
            ++position; // not inside another sequence
        }
        utf8.insert(utf8.begin() + position, form.begin(), form.end());
    }
}

} // namespace

std::vector<Bytes> GeneratedInputs(unsigned seed) {
    std::mt19937 rng(seed);
    std::vector<Bytes> inputs;
    for (std::size_t length = 0; length <= kMaxSmallLength; ++length) {
        for (int run = 0; run < kRunsPerLength; ++run) {
            inputs.push_back(ByteRun(rng, length));
            inputs.push_back(TokenRun(rng, length));
        }
    }
    for (const std::size_t length : {1000u, 2048u, 4095u, 4096u}) {
        inputs.push_back(ByteRun(rng, length));
        inputs.push_back(TokenRun(rng, length));
    }
    return inputs;
}

std::vector<Bytes> TruncatedTexts() {
    const Bytes shiftJis = reference::Cp932FromUtf8("漢字とかな、ｶﾀｶﾅ ｶﾞﾊﾟｳﾞ\r\nline 2 ＡＢ①\n");
    const Bytes pua = {0xF0, 0x40, 0x41, 0xFC, 0xFC};
    std::vector<Bytes> texts = {
        shiftJis,
        pua,
        reference::ShiftJisToEuc(shiftJis).bytes,
        BytesOf("\x8F\xB0\xA1\x41\xA4\xA2\x8E\xB1\x8F\xA1"),
        reference::ShiftJisToJis(shiftJis, 0).bytes,
        reference::ShiftJisToJis(shiftJis, 1).bytes,
        BytesOf("\x1B$(D0!\x1B&@\x1B$B$\"\x1B(J~\x1B(H\x1B$@0!\x1B$(O0!\x1B(O\x1B(B"),
        BytesOf("$B$\"$$(B abc (I1(B"),
        BytesOf("\x1B\xA4\xC2\xA4\xA2\xA8\xC2 \x9B$B$\"\x1B(B"),
        BytesOf("\xEF\xBB\xBF\xE3\x81\x82\xC3\xA9\xF0\x9F\x98\x80\xF8\x88\x80\x80\x80"
                "\xFC\x84\x80\x80\x80\x80\r\n"),
        BytesOf(std::string_view("\xFF\xFE\x42\x30\r\0\n\0a\0\r\0", 12)),
    };
    std::vector<Bytes> cuts;
    for (const Bytes& text : texts) {
        for (std::size_t length = 0; length <= text.size(); ++length) {
            cuts.emplace_back(text.begin(), text.begin() + length);
        }
    }
    return cuts;
}

std::vector<Bytes> LongTexts(unsigned seed) {
    std::mt19937 rng(seed);
    std::vector<Bytes> inputs;
    for (const LongTextMix mix :
         {LongTextMix::MostlyAscii, LongTextMix::MostlyKanji, LongTextMix::KatakanaAndKanji}) {
        const std::u16string text = LongText(rng, mix);
        const Bytes shiftJis = reference::UnicodeToShiftJis(text);
        Bytes utf8 = reference::UnicodeToUtf8(text);
        InsertLongUtf8Forms(rng, utf8);
        Bytes utf8WithMark = BytesOf("\xEF\xBB\xBF");
        utf8WithMark.insert(utf8WithMark.end(), utf8.begin(), utf8.end());
        const ByteView utf16 = ViewOf(text);
        for (const Bytes& encoded : {shiftJis, reference::ShiftJisToEuc(shiftJis).bytes,
                                     reference::ShiftJisToJis(shiftJis, 0).bytes,
                                     reference::ShiftJisToJis(shiftJis, 1).bytes, utf8,
                                     utf8WithMark, Bytes(utf16.begin(), utf16.end())}) {
            for (std::size_t cut = 0; cut < encoded.size(); ++cut) {
                inputs.emplace_back(encoded.begin(), encoded.begin() + cut);
                inputs.emplace_back(encoded.begin() + cut, encoded.end());
                Bytes spoilt = encoded;
                spoilt[cut] = kInterestingBytes[cut % std::size(kInterestingBytes)];
                inputs.push_back(std::move(spoilt));
            }
            inputs.push_back(encoded);
        }
    }
    return inputs;
}

std::vector<Bytes> CrossCheckInputs(unsigned seed) {
    std::vector<Bytes> inputs = GeneratedInputs(seed);
    for (std::vector<Bytes> more : {TruncatedTexts(), LongTexts(seed)}) {
        for (Bytes& input : more) {
            inputs.push_back(std::move(input));
        }
    }
    return inputs;
}

std::string Hex(ByteView bytes) {
    std::string text;
    char digits[4];
    for (const std::uint8_t b : bytes) {
        std::snprintf(digits, sizeof digits, "%02X ", b);
        text += digits;
    }
    if (!text.empty()) {
        text.pop_back();
    }
    return "[" + text + "]";
}

std::string Hex(std::u16string_view units) {
    std::string text;
    char digits[6];
    for (const char16_t unit : units) {
        std::snprintf(digits, sizeof digits, "%04X ", static_cast<unsigned>(unit));
        text += digits;
    }
    if (!text.empty()) {
        text.pop_back();
    }
    return "u[" + text + "]";
}

Bytes BytesOf(std::string_view text) {
    return Bytes(text.begin(), text.end());
}

ByteView ViewOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

ByteView ViewOf(std::u16string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size() * 2};
}

} // namespace korvel::testing

namespace korvel {

void PrintTo(TextEncoding encoding, std::ostream* os) {
    static constexpr const char* kNames[] = {"AsciiOnly",   "ShiftJis",    "Jis",     "Euc",
                                             "Utf8",        "Utf8N",       "Unicode", "AutoDetect",
                                             "GarbledMail", "Undetermined"};
    const auto value = static_cast<std::uint32_t>(encoding);
    *os << (value < std::size(kNames) ? kNames[value] : "TextEncoding?") << " (" << value << ")";
}

void PrintTo(LineEnding lineEnding, std::ostream* os) {
    static constexpr const char* kNames[] = {"CrLf", "Cr", "Lf", "NoLineBreak"};
    const auto value = static_cast<std::uint32_t>(lineEnding);
    *os << (value < std::size(kNames) ? kNames[value] : "LineEnding?") << " (" << value << ")";
}

} // namespace korvel
