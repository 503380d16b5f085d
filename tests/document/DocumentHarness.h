#pragma once

// Runs the load and save byte steps as the editor does and returns what a user would get: the
// code set, the line ending and the text, or the bytes of the file.

#include "ConverterHarness.h"
#include "TestInputs.h"
#include "document/DocumentBytes.h"

#include <gtest/gtest.h>
#include <string>

namespace korvel::testing {

struct LoadedText {
    TextEncoding encoding = TextEncoding::AutoDetect;
    LineEnding lineEnding = LineEnding::NoLineBreak;
    std::u16string text;
};

inline LoadedText Load(ByteView fileBytes, TextEncoding requested) {
    ExactCopy file(fileBytes);
    const DecodedDocument decoded = DecodeDocumentBytes({file.data(), file.size()}, requested);
    EXPECT_EQ(decoded.status, CodecOk) << Hex(fileBytes);
    return {decoded.encoding, decoded.lineEnding, std::u16string(decoded.text)};
}

inline Bytes Save(std::u16string_view text, TextEncoding encoding, LineEnding lineEnding,
                  int jisKatakanaMode = 0) {
    const EncodedDocument encoded = EncodeDocumentText(text, encoding, lineEnding, jisKatakanaMode);
    EXPECT_EQ(encoded.status, CodecOk) << Hex(text);
    Bytes file(encoded.mark.begin(), encoded.mark.end());
    file.insert(file.end(), encoded.body.begin(), encoded.body.end());
    return file;
}

} // namespace korvel::testing
