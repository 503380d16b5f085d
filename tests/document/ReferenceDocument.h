#pragma once

// The byte side of loading and saving, built step by step from the reference codec: the oracle
// for DecodeDocumentBytes and EncodeDocumentText.

#include "ReferenceCodec.h"

#include <string>
#include <string_view>

namespace korvel::reference {

struct DecodedText {
    TextEncoding encoding;
    LineEnding lineEnding;
    std::u16string text;
    // False where the text is not pinned down: a pair cut by the end of the data, a 0 byte
    // handed to the Shift_JIS step, a 0 code unit or an odd byte in a Unicode file.
    bool textSettled;
};

DecodedText DecodeDocument(ByteView fileBytes, TextEncoding requested);

struct EncodedBytes {
    Bytes mark;
    Bytes body;
};

EncodedBytes EncodeDocument(std::u16string_view text, TextEncoding encoding, LineEnding lineEnding,
                            int jisKatakanaMode);

} // namespace korvel::reference
