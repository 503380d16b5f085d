#pragma once

#include <QString>
#include <optional>
#include <string_view>

namespace korvel {

// The text of a macro file's bytes. UTF-16LE when the first 1024 bytes begin with FF FE or
// FE FF or hold a zero byte (a leading U+FEFF or U+FFFE is dropped); otherwise Shift_JIS, or
// UTF-8 when the bytes are valid UTF-8 holding more than ASCII. Shift_JIS and UTF-8 files are
// read in text mode: a CR LF becomes one LF.
QString DecodeMacroFile(std::string_view bytes);

// The decoded text of the file at path; nothing when it cannot be read.
std::optional<QString> ReadMacroFile(const QString& path);

} // namespace korvel
