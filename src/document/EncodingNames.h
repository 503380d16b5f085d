#pragma once

#include "codec/CodecTypes.h"

#include <string_view>

namespace korvel {

// The editor's own words for code sets and line endings (UTF-8 strings).
// A code set read as Shift_JIS (AsciiOnly, Undetermined) is named "シフトJIS".
std::string_view EncodingDisplayName(TextEncoding encoding);
std::string_view LineEndingDisplayName(LineEnding lineEnding);

// The code set lists of the Open and Save dialogs, by position.
inline constexpr TextEncoding kLoadEncodingList[] = {
    TextEncoding::AutoDetect, TextEncoding::ShiftJis,   TextEncoding::Jis,
    TextEncoding::Euc,        TextEncoding::Unicode,    TextEncoding::Utf8,
    TextEncoding::Utf8N,      TextEncoding::GarbledMail};
inline constexpr TextEncoding kSaveEncodingList[] = {TextEncoding::ShiftJis, TextEncoding::Jis,
                                                     TextEncoding::Euc,      TextEncoding::Unicode,
                                                     TextEncoding::Utf8,     TextEncoding::Utf8N};

} // namespace korvel
