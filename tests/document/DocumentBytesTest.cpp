#include "document/DocumentBytes.h"

#include "DocumentHarness.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <vector>

namespace korvel {
namespace {

using testing::Bytes;
using testing::Hex;
using testing::Load;
using testing::Save;
using testing::ViewOf;

struct LoadRow {
    const char* name;
    std::string_view file;
    TextEncoding requested;
    TextEncoding encoding;
    LineEnding lineEnding;
    std::u16string_view text;
};

void ExpectLoads(std::span<const LoadRow> rows) {
    for (const LoadRow& row : rows) {
        const testing::LoadedText loaded = Load(ViewOf(row.file), row.requested);
        EXPECT_EQ(loaded.encoding, row.encoding) << row.name;
        EXPECT_EQ(loaded.lineEnding, row.lineEnding) << row.name;
        EXPECT_EQ(Hex(loaded.text), Hex(row.text)) << row.name;
    }
}

TEST(DecodeDocumentBytes, DetectionResultsThatReadAsShiftJis) {
    using enum TextEncoding;
    const LoadRow rows[] = {
        {"empty-file", "", AutoDetect, ShiftJis, LineEnding::CrLf, u""},
        {"ascii-only-without-break", "abc", AutoDetect, ShiftJis, LineEnding::CrLf, u"abc"},
        {"ascii-only", "abc\r\n", AutoDetect, ShiftJis, LineEnding::CrLf, u"abc\r\n"},
        {"undetermined", "\x1BK\xFF", AutoDetect, ShiftJis, LineEnding::CrLf, u"\x1BK\uFFFD"},
        {"shift-jis", "\x82\xA0\xB1", AutoDetect, ShiftJis, LineEnding::CrLf, u"あｱ"},
        {"euc", "\xB4\xC1\xBB\xFA", AutoDetect, Euc, LineEnding::CrLf, u"漢字"},
        {"jis", "\x1B$B$\"\x1B(B\n", AutoDetect, Jis, LineEnding::Lf, u"あ\r\n"},
        {"requested-ascii-only", "a", AsciiOnly, ShiftJis, LineEnding::CrLf, u"a"},
        {"requested-undetermined", "a", Undetermined, ShiftJis, LineEnding::CrLf, u"a"},
    };
    ExpectLoads(rows);
}

TEST(DecodeDocumentBytes, MarksOfUtf8AndUnicode) {
    using enum TextEncoding;
    const LoadRow rows[] = {
        {"utf8-mark-skipped", "\xEF\xBB\xBF\xE3\x81\x82", AutoDetect, Utf8, LineEnding::CrLf,
         u"あ"},
        {"utf8-mark-kept-as-utf8n", "\xEF\xBB\xBF\xE3\x81\x82", Utf8N, Utf8N, LineEnding::CrLf,
         u"\uFEFFあ"},
        {"utf8-mark-skipped-untested", "abcd", Utf8, Utf8, LineEnding::CrLf, u"d"},
        {"utf8-mark-alone", "\xEF\xBB\xBF", Utf8, Utf8, LineEnding::CrLf, u""},
        {"utf8-shorter-than-its-mark", "\xEF\xBB", Utf8, Utf8, LineEnding::CrLf, u""},
        {"utf8-empty", "", Utf8, Utf8, LineEnding::CrLf, u""},
        {"utf8n-without-mark", "\xE3\x81\x82", AutoDetect, Utf8N, LineEnding::CrLf, u"あ"},
        {"unicode-mark-ff-fe", std::string_view("\xFF\xFE\x41\x00", 4), AutoDetect, Unicode,
         LineEnding::CrLf, u"A"},
        {"unicode-mark-fe-ff-skipped-not-swapped", std::string_view("\xFE\xFF\x00\x41", 4), Unicode,
         Unicode, LineEnding::CrLf, u"\u4100"},
        {"unicode-without-mark", std::string_view("\x42\x30\x44\x30", 4), Unicode, Unicode,
         LineEnding::CrLf, u"あい"},
        {"unicode-without-zero-byte-is-not-detected", std::string_view("\x42\x30\x44\x30", 4),
         AutoDetect, ShiftJis, LineEnding::CrLf, u"B0D0"},
        {"unicode-mark-only-once", std::string_view("\xFF\xFE\xFF\xFE", 4), Unicode, Unicode,
         LineEnding::CrLf, u"\uFEFF"},
        {"unicode-empty", "", Unicode, Unicode, LineEnding::CrLf, u""},
        // The lone last byte reads with the 0 that follows every file, and so is saved again.
        {"unicode-odd-last-byte-kept", std::string_view("\xFF\xFE\x41\x00\x42", 5), Unicode,
         Unicode, LineEnding::CrLf, u"AB"},
        {"unicode-odd-last-byte-kept-in-place", std::string_view("\x41\x00\x42", 3), Unicode,
         Unicode, LineEnding::CrLf, u"AB"},
    };
    ExpectLoads(rows);
}

TEST(DecodeDocumentBytes, TheFileLineEndingIsWidenedAndOtherLoneBreaksKept) {
    using enum TextEncoding;
    const LoadRow rows[] = {
        {"cr", "a\rb\r", AutoDetect, ShiftJis, LineEnding::Cr, u"a\r\nb\r\n"},
        {"cr-keeps-lone-lf", "a\rb\nc\rd\r", AutoDetect, ShiftJis, LineEnding::Cr,
         u"a\r\nb\nc\r\nd\r\n"},
        {"cr-widens-the-cr-of-a-pair-too", "a\rb\rc\r\n", AutoDetect, ShiftJis, LineEnding::Cr,
         u"a\r\nb\r\nc\r\n\n"},
        {"lf-keeps-lone-cr", "a\nb\rc\nd\n", AutoDetect, ShiftJis, LineEnding::Lf,
         u"a\r\nb\rc\r\nd\r\n"},
        {"lf-widens-the-lf-of-a-pair-too", "a\r\nb\nc\nd\n", AutoDetect, ShiftJis, LineEnding::Lf,
         u"a\r\r\nb\r\nc\r\nd\r\n"},
        {"crlf-keeps-lone-breaks", "a\r\nb\rc\r\nd\ne\r\n", AutoDetect, ShiftJis, LineEnding::CrLf,
         u"a\r\nb\rc\r\nd\ne\r\n"},
        {"forced-code-set-still-gets-its-line-ending", "a\rb", Utf8N, Utf8N, LineEnding::Cr,
         u"a\r\nb"},
        {"unicode-lf",
         std::string_view("\xFF\xFE"
                          "a\0\n\0b\0\n\0",
                          10),
         AutoDetect, Unicode, LineEnding::Lf, u"a\r\nb\r\n"},
        {"unicode-crlf", std::string_view("a\0\r\0\n\0", 6), AutoDetect, Unicode, LineEnding::CrLf,
         u"a\r\n"},
        {"jis-lf", "\x1B$B$\"\x1B(B\n\x1B$B$\"\x1B(B\n", AutoDetect, Jis, LineEnding::Lf,
         u"あ\r\nあ\r\n"},
    };
    ExpectLoads(rows);
}

TEST(DecodeDocumentBytes, RequestedCodeSets) {
    using enum TextEncoding;
    const LoadRow rows[] = {
        {"euc-jis-x-0212-third-byte-read-again", "\x8F\xB0\xA1\xA1\xA4\xA2", Euc, Euc,
         LineEnding::CrLf, u"■\u3000あ"},
        {"euc-katakana", "\x8E\xB1", Euc, Euc, LineEnding::CrLf, u"ｱ"},
        {"jis-katakana", "\x1B(I1\x1B(B", Jis, Jis, LineEnding::CrLf, u"ｱ"},
        {"garbled-mail-lost-escapes", "$B$\"(B", GarbledMail, ShiftJis, LineEnding::CrLf, u"あ"},
        {"garbled-mail-eighth-bit", "\x1B$B\xA4\xA2", GarbledMail, ShiftJis, LineEnding::CrLf,
         u"あ"},
        {"shift-jis-forced-on-utf8", "\xE3\x81\x82", ShiftJis, ShiftJis, LineEnding::CrLf,
         u"縺\uFFFD"},
    };
    ExpectLoads(rows);
}

// The repair clears eighth bits in place; the caller's bytes are not its to change.
TEST(DecodeDocumentBytes, GarbledMailLeavesTheFileBytesAlone) {
    const Bytes file = testing::BytesOf("\x1B$B\xA4\xA2\xA4\xA4");
    const Bytes before = file;
    const DecodedDocument decoded = DecodeDocumentBytes(file, TextEncoding::GarbledMail);
    EXPECT_EQ(decoded.status, CodecOk);
    EXPECT_EQ(Hex(decoded.text), Hex(u"あい"));
    EXPECT_EQ(file, before);
}

// A Unicode file that needs no widening may be read in place; the text must still be a valid
// UTF-16 view whatever the alignment of the bytes, and survive a move of the result.
TEST(DecodeDocumentBytes, TextReadInPlaceStaysRightWhenMovedAndAtAnOddAddress) {
    const std::string_view utf16("\xFF\xFE\x42\x30\r\0\n\0\x44\x30", 10);
    std::vector<std::uint8_t> storage(utf16.size() + 1);
    for (const std::size_t offset : {0u, 1u}) {
        SCOPED_TRACE(offset);
        std::copy(utf16.begin(), utf16.end(), storage.begin() + offset);
        DecodedDocument decoded = DecodeDocumentBytes(
            std::span<const std::uint8_t>(storage.data() + offset, utf16.size()),
            TextEncoding::AutoDetect);
        ASSERT_EQ(decoded.status, CodecOk);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(decoded.text.data()) % alignof(char16_t), 0u);
        const DecodedDocument moved = std::move(decoded);
        EXPECT_EQ(moved.encoding, TextEncoding::Unicode);
        EXPECT_EQ(Hex(moved.text), Hex(u"あ\r\nい"));
    }
}

struct SaveRow {
    const char* name;
    std::u16string_view text;
    TextEncoding encoding;
    LineEnding lineEnding;
    int jisKatakanaMode;
    std::string_view file;
};

TEST(EncodeDocumentText, LineEndingsCodeSetsAndMarks) {
    using enum TextEncoding;
    const SaveRow rows[] = {
        {"lf", u"a\r\nb", ShiftJis, LineEnding::Lf, 0, "a\nb"},
        {"cr", u"a\r\nb", ShiftJis, LineEnding::Cr, 0, "a\rb"},
        {"crlf", u"a\r\nb", ShiftJis, LineEnding::CrLf, 0, "a\r\nb"},
        {"cr-keeps-lone-lf-and-cr", u"a\r\nb\nc\rd", ShiftJis, LineEnding::Cr, 0, "a\rb\nc\rd"},
        {"lf-of-cr-cr-lf", u"\r\r\n", ShiftJis, LineEnding::Lf, 0, "\r\n"},
        {"shift-jis-unmappable", u"€あ", ShiftJis, LineEnding::CrLf, 0, "?\x82\xA0"},
        {"euc", u"あｱ", Euc, LineEnding::CrLf, 0, "\xA4\xA2\x8E\xB1"},
        {"jis-katakana-mode-1", u"ｱ", Jis, LineEnding::CrLf, 1, "\x1B(I1\x1B(B"},
        {"jis-katakana-mode-0", u"ｱ", Jis, LineEnding::CrLf, 0, "\x1B$B%\"\x1B(B"},
        {"jis-line-break-ends-a-stretch", u"あ\r\nあ", Jis, LineEnding::Lf, 0,
         "\x1B$B$\"\x1B(B\n\x1B$B$\"\x1B(B"},
        {"utf8-mark", u"あ", Utf8, LineEnding::CrLf, 0, "\xEF\xBB\xBF\xE3\x81\x82"},
        {"utf8n-no-mark", u"あ", Utf8N, LineEnding::CrLf, 0, "\xE3\x81\x82"},
        {"unicode-mark-and-two-bytes-each", u"あ\r\n", Unicode, LineEnding::Lf, 0,
         std::string_view("\xFF\xFE\x42\x30\n\0", 6)},
        {"empty-shift-jis", u"", ShiftJis, LineEnding::CrLf, 0, ""},
        {"empty-jis", u"", Jis, LineEnding::Cr, 1, ""},
        {"empty-euc", u"", Euc, LineEnding::Lf, 0, ""},
        {"empty-utf8n", u"", Utf8N, LineEnding::CrLf, 0, ""},
        {"empty-utf8", u"", Utf8, LineEnding::CrLf, 0, "\xEF\xBB\xBF"},
        {"empty-unicode", u"", Unicode, LineEnding::CrLf, 0, "\xFF\xFE"},
    };
    for (const SaveRow& row : rows) {
        EXPECT_EQ(Hex(Save(row.text, row.encoding, row.lineEnding, row.jisKatakanaMode)),
                  Hex(ViewOf(row.file)))
            << row.name;
    }
}

// The body may be the text itself; it must survive a move of the result.
TEST(EncodeDocumentText, BodyReadFromTheTextSurvivesAMove) {
    const std::u16string text = u"あ\r\nい";
    EncodedDocument encoded = EncodeDocumentText(text, TextEncoding::Unicode, LineEnding::CrLf, 0);
    ASSERT_EQ(encoded.status, CodecOk);
    const EncodedDocument moved = std::move(encoded);
    EXPECT_EQ(Hex(moved.mark), "[FF FE]");
    EXPECT_EQ(Hex(moved.body), Hex(ViewOf(text)));
}

// Whatever mix of breaks a file holds, loading and saving it with what the load found gives
// its bytes back (an Excel CSV keeps LF inside cells and CR LF between rows).
TEST(DocumentBytes, LoneBreaksRoundTripByteForByteInEveryCodeSet) {
    const std::u16string_view files[] = {
        u"a\rb\nc\rd\r",          u"a\rb\rc\r\n", u"a\r\nb\nc\nd\n",  u"a\nb\rc\nd\n",
        u"a\r\nb\rc\r\nd\ne\r\n", u"\r\r\n\n\r",  u"あ\n漢\rｱ\r\n\r", u"\n\n\r\n\r",
    };
    using enum TextEncoding;
    for (const std::u16string_view fileText : files) {
        for (const TextEncoding encoding : {ShiftJis, Jis, Euc, Utf8, Utf8N, Unicode}) {
            for (const int mode : {0, 1}) {
                // The file's bytes as the saver writes them when no break needs converting.
                const Bytes file = Save(fileText, encoding, LineEnding::CrLf, mode);
                const testing::LoadedText loaded = Load(file, encoding);
                EXPECT_EQ(Hex(Save(loaded.text, loaded.encoding, loaded.lineEnding, mode)),
                          Hex(file))
                    << Hex(fileText) << " as " << static_cast<int>(encoding) << ", mode " << mode;
            }
        }
    }
}

} // namespace
} // namespace korvel
