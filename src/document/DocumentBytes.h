#pragma once

#include "codec/CodecBlock.h"
#include "codec/CodecTypes.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace korvel {

// The byte side of loading: file bytes to the editor's text (UTF-16, CR LF breaks).
struct DecodedDocument {
    CodecStatus status = CodecOk;
    TextEncoding encoding = TextEncoding::ShiftJis; // the code set used, ShiftJis to Unicode
    LineEnding lineEnding = LineEnding::CrLf;       // CrLf, Cr or Lf (NoLineBreak reads as CrLf)
    std::u16string_view text; // into storage, or into the file bytes when no copy was needed
    CodecBlock storage;
};

// requested is AutoDetect, GarbledMail or a code set; AsciiOnly and Undetermined read as
// ShiftJis. The file bytes need no padding. The text may point into fileBytes (a Unicode file
// whose breaks need no widening), so keep them alive while the text is in use.
DecodedDocument DecodeDocumentBytes(std::span<const std::uint8_t> fileBytes,
                                    TextEncoding requested);

// DecodeDocumentBytes in steps, for a caller that decodes a large file piece by piece: the code
// set and line ending come from the whole file, then each piece is decoded with them. A piece
// must end where no character, escape sequence or CR LF pair goes on into the next one, and
// decode in the shift state it starts in; first marks the piece that starts the file (a mark is
// skipped only there). GarbledMail is decoded as one piece.
TextEncoding ChooseDocumentEncoding(std::span<const std::uint8_t> fileBytes,
                                    TextEncoding requested);
LineEnding ChooseDocumentLineEnding(std::span<const std::uint8_t> fileBytes);
DecodedDocument DecodeDocumentPiece(std::span<const std::uint8_t> pieceBytes, TextEncoding encoding,
                                    LineEnding lineEnding, bool first);

// The byte side of saving: the editor's text to the file's bytes, mark first.
struct EncodedDocument {
    CodecStatus status = CodecOk;
    std::span<const std::uint8_t> mark; // FF FE, EF BB BF or nothing
    std::span<const std::uint8_t> body; // into storage, or into the text when no copy was needed
    CodecBlock storage;
};

// encoding is ShiftJis to Unicode; jisKatakanaMode 1 keeps half-width katakana in JIS files.
EncodedDocument EncodeDocumentText(std::u16string_view text, TextEncoding encoding,
                                   LineEnding lineEnding, int jisKatakanaMode);

} // namespace korvel
