#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// The record a second start sends to the running instance: the identifier 0x1024, the byte
// count of the path, and the path as UTF-16 with its terminating 0, numbers and text in little
// endian. An empty path (just the 0) asks the instance only to come to the front.
namespace korvel {

inline constexpr std::uint32_t kHandoverIdentifier = 0x1024;
// A path longer than any the system can open is no path: the receiver takes no more.
inline constexpr std::size_t kMaxHandoverBytes = 64 * 1024;
inline constexpr std::size_t kHandoverHeaderBytes = 8;

std::vector<std::byte> MakeHandoverRecord(std::u16string_view path);

// How many bytes the record that begins with header takes in all; nothing when the header
// already shows it is no record (another identifier, an odd, empty or too large count).
std::optional<std::size_t> HandoverRecordSize(std::span<const std::byte> header);

// The path of a whole record; nothing for anything else (a short or long record, no
// terminating 0, a 0 inside the path).
std::optional<std::u16string> ParseHandoverRecord(std::span<const std::byte> record);

} // namespace korvel
