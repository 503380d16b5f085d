#include "document/DocumentBytes.h"

#include "TestInputs.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>

namespace korvel {
namespace {

using testing::Bytes;
using testing::Hex;
using testing::ViewOf;
using enum TextEncoding;
using LE = LineEnding;

struct Loaded {
    TextEncoding encoding;
    LineEnding lineEnding;
    std::u16string text;
};

// Loads the file from a block of exactly its size, at an even and an odd address, and moves the
// result before reading it: the text may view into the file or the storage, must stay valid UTF-16
// at either address, and the file's bytes are not the loader's to change.
Loaded Load(testing::ByteView file, TextEncoding requested) {
    Loaded loaded[2];
    for (const std::size_t offset : {0u, 1u}) {
        const auto block = std::make_unique<std::uint8_t[]>(file.size() + offset);
        std::uint8_t* const copy = block.get() + offset;
        std::copy(file.begin(), file.end(), copy);
        DecodedDocument made = DecodeDocumentBytes({copy, file.size()}, requested);
        const DecodedDocument decoded = std::move(made);
        EXPECT_EQ(decoded.status, CodecOk) << Hex(file);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(decoded.text.data()) % alignof(char16_t), 0u);
        EXPECT_TRUE(std::equal(file.begin(), file.end(), copy)) << "file changed: " << Hex(file);
        loaded[offset] = {decoded.encoding, decoded.lineEnding, std::u16string(decoded.text)};
    }
    EXPECT_EQ(Hex(loaded[1].text), Hex(loaded[0].text)) << "at an odd address: " << Hex(file);
    return loaded[0];
}

Bytes Save(std::u16string_view text, TextEncoding encoding, LineEnding lineEnding, int mode) {
    EncodedDocument made = EncodeDocumentText(text, encoding, lineEnding, mode);
    const EncodedDocument encoded = std::move(made);
    EXPECT_EQ(encoded.status, CodecOk) << Hex(text);
    Bytes file(encoded.mark.begin(), encoded.mark.end());
    file.insert(file.end(), encoded.body.begin(), encoded.body.end());
    return file;
}

// One row per way a code set is chosen or read, per mark and per line-ending rule; the code sets'
// own bytes are the codec's.
TEST(DecodeDocumentBytes, ChoosesTheCodeSetSkipsItsMarkAndWidensTheFilesBreaks) {
    const struct {
        std::string_view file;
        TextEncoding requested;
        TextEncoding encoding;
        LineEnding lineEnding;
        std::u16string_view text;
    } rows[] = {
        {"abc", AutoDetect, ShiftJis, LE::CrLf, u"abc"},               // ASCII only, no break
        {"\x1BK\xFF", AutoDetect, ShiftJis, LE::CrLf, u"\x1BK\uFFFD"}, // undetermined
        {"\x1B$B$\"\x1B(B\n", AutoDetect, Jis, LE::Lf, u"あ\r\n"},
        // Repaired mail is saved as Shift_JIS; the repair works on a copy of the file.
        {"\x1B$B\xA4\xA2\xA4\xA4", GarbledMail, ShiftJis, LE::CrLf, u"あい"},
        {"\xEF\xBB\xBF\xE3\x81\x82", AutoDetect, Utf8, LE::CrLf, u"あ"},
        {"\xEF\xBB\xBF\xE3\x81\x82", Utf8N, Utf8N, LE::CrLf, u"\uFEFFあ"},
        {"abcd", Utf8, Utf8, LE::CrLf, u"d"}, // the mark is skipped untested
        {"\xEF\xBB", Utf8, Utf8, LE::CrLf, u""},
        {{"\xFF\xFE\x41\x00", 4}, AutoDetect, Unicode, LE::CrLf, u"A"},
        {{"\xFE\xFF\x00\x41", 4}, Unicode, Unicode, LE::CrLf, u"\u4100"}, // skipped, not swapped
        {{"\xFF\xFE\xFF\xFE", 4}, Unicode, Unicode, LE::CrLf, u"\uFEFF"},
        // A lone last byte reads with the 0 that follows every file, and so is saved again.
        {{"\xFF\xFE\x41\x00\x42", 5}, Unicode, Unicode, LE::CrLf, u"AB"},
        {{"\x41\x00\x42", 3}, Unicode, Unicode, LE::CrLf, u"AB"},
        {{"\xFF\xFE\x42\x30\r\0\n\0\x44\x30", 10}, AutoDetect, Unicode, LE::CrLf, u"あ\r\nい"},
        // The file's own break is widened, the other lone one kept to be written back.
        {"a\rb\nc\rd\r", AutoDetect, ShiftJis, LE::Cr, u"a\r\nb\nc\r\nd\r\n"},
        {"a\rb\rc\r\n", AutoDetect, ShiftJis, LE::Cr, u"a\r\nb\r\nc\r\n\n"},
        {"a\nb\rc\nd\n", AutoDetect, ShiftJis, LE::Lf, u"a\r\nb\rc\r\nd\r\n"},
        {"a\r\nb\rc\r\nd\ne\r\n", AutoDetect, ShiftJis, LE::CrLf, u"a\r\nb\rc\r\nd\ne\r\n"},
        {"a\rb", Utf8N, Utf8N, LE::Cr, u"a\r\nb"},
    };
    for (const auto& row : rows) {
        const Loaded loaded = Load(ViewOf(row.file), row.requested);
        EXPECT_EQ(loaded.encoding, row.encoding) << Hex(ViewOf(row.file));
        EXPECT_EQ(loaded.lineEnding, row.lineEnding) << Hex(ViewOf(row.file));
        EXPECT_EQ(Hex(loaded.text), Hex(row.text)) << Hex(ViewOf(row.file));
    }
}

TEST(EncodeDocumentText, NarrowsBreaksPassesTheKatakanaModeAndWritesMarks) {
    const struct {
        std::u16string_view text;
        TextEncoding encoding;
        LineEnding lineEnding;
        int jisKatakanaMode;
        std::string_view file;
    } rows[] = {
        {u"a\r\nb", ShiftJis, LE::Lf, 0, "a\nb"},
        {u"a\r\nb\nc\rd", ShiftJis, LE::Cr, 0, "a\rb\nc\rd"},
        {u"\r\r\n", ShiftJis, LE::Lf, 0, "\r\n"},
        {u"ｱ", Jis, LE::CrLf, 1, "\x1B(I1\x1B(B"},
        {u"ｱ", Jis, LE::CrLf, 0, "\x1B$B%\"\x1B(B"},
        {u"あ", Utf8, LE::CrLf, 0, "\xEF\xBB\xBF\xE3\x81\x82"},
        {u"あ", Utf8N, LE::CrLf, 0, "\xE3\x81\x82"},
        {u"あ\r\n", Unicode, LE::Lf, 0, {"\xFF\xFE\x42\x30\n\0", 6}},
        {u"", ShiftJis, LE::CrLf, 0, ""},
        {u"", Utf8, LE::CrLf, 0, "\xEF\xBB\xBF"},
        {u"", Unicode, LE::CrLf, 0, "\xFF\xFE"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Hex(Save(row.text, row.encoding, row.lineEnding, row.jisKatakanaMode)),
                  Hex(ViewOf(row.file)))
            << Hex(row.text) << " as " << ::testing::PrintToString(row.encoding);
    }
}

// Whatever mix of breaks a file holds, saving what its load found gives its bytes back in every
// code set and katakana mode (an Excel CSV keeps LF inside cells and CR LF between rows).
TEST(DocumentBytes, LoneBreaksRoundTripByteForByte) {
    const std::u16string_view mixed[] = {
        u"a\rb\nc\rd\r",          u"a\rb\rc\r\n", u"a\r\nb\nc\nd\n",  u"a\nb\rc\nd\n",
        u"a\r\nb\rc\r\nd\ne\r\n", u"\r\r\n\n\r",  u"あ\n漢\rｱ\r\n\r", u"\n\n\r\n\r",
    };
    for (const TextEncoding encoding : {ShiftJis, Jis, Euc, Utf8, Utf8N, Unicode}) {
        for (const int mode : {0, 1}) {
            SCOPED_TRACE(::testing::Message()
                         << ::testing::PrintToString(encoding) << " mode " << mode);
            for (const std::u16string_view text : mixed) {
                const Bytes file = Save(text, encoding, LE::CrLf, mode);
                const Loaded loaded = Load(file, encoding);
                EXPECT_EQ(Hex(Save(loaded.text, loaded.encoding, loaded.lineEnding, mode)),
                          Hex(file));
            }
        }
    }
}

// Japanese texts with UTF-8 twins written by others (Debian package libpython3.11-testsuite), so
// our reading of the code sets is not checked against itself.
Bytes SampleFile(const std::string& name) {
    std::ifstream in("/usr/lib/python3.11/test/cjkencodings/" + name + ".txt", std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Detected or chosen, the code set reads the twin's text, and saving gives the file back.
TEST(SampleFiles, ReadAsTheirTwinsAndSaveBackByteForByte) {
    for (const auto& [name, encoding] : {std::pair{"shift_jis", ShiftJis}, std::pair{"euc_jp", Euc},
                                         std::pair{"iso2022_jp", Jis}}) {
        SCOPED_TRACE(name);
        const Bytes file = SampleFile(name);
        if (file.empty()) {
            GTEST_SKIP() << "no samples: install libpython3.11-testsuite";
        }
        const std::u16string twin = Load(SampleFile(std::string(name) + "-utf8"), Utf8N).text;
        for (const TextEncoding requested : {AutoDetect, encoding}) {
            const Loaded loaded = Load(file, requested);
            EXPECT_EQ(loaded.encoding, encoding);
            EXPECT_TRUE(loaded.text == twin) << Hex(loaded.text);
            for (const int mode : {0, 1}) {
                EXPECT_EQ(Hex(Save(loaded.text, encoding, loaded.lineEnding, mode)), Hex(file));
            }
        }
    }
}

} // namespace
} // namespace korvel
