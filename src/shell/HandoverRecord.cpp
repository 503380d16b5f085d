#include "shell/HandoverRecord.h"

namespace korvel {

namespace {

void PutUint32(std::vector<std::byte>& out, std::uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8)
        out.push_back(static_cast<std::byte>((value >> shift) & 0xFF));
}

std::uint32_t Uint32At(std::span<const std::byte> bytes, std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value |= std::to_integer<std::uint32_t>(bytes[at + i]) << (8 * i);
    return value;
}

} // namespace

std::vector<std::byte> MakeHandoverRecord(std::u16string_view path) {
    std::vector<std::byte> record;
    const std::size_t count = (path.size() + 1) * 2;
    record.reserve(kHandoverHeaderBytes + count);
    PutUint32(record, kHandoverIdentifier);
    PutUint32(record, static_cast<std::uint32_t>(count));
    for (char16_t unit : path) {
        record.push_back(static_cast<std::byte>(unit & 0xFF));
        record.push_back(static_cast<std::byte>(unit >> 8));
    }
    record.push_back(std::byte{0});
    record.push_back(std::byte{0});
    return record;
}

std::optional<std::size_t> HandoverRecordSize(std::span<const std::byte> header) {
    if (header.size() < kHandoverHeaderBytes || Uint32At(header, 0) != kHandoverIdentifier)
        return std::nullopt;
    const std::uint32_t count = Uint32At(header, 4);
    if (count < 2 || count % 2 != 0 || count > kMaxHandoverBytes)
        return std::nullopt;
    return kHandoverHeaderBytes + count;
}

std::optional<std::u16string> ParseHandoverRecord(std::span<const std::byte> record) {
    const std::optional<std::size_t> size = HandoverRecordSize(record);
    if (!size || record.size() != *size)
        return std::nullopt;
    std::u16string path;
    for (std::size_t at = kHandoverHeaderBytes; at + 2 < record.size(); at += 2) {
        const auto unit = static_cast<char16_t>(std::to_integer<unsigned>(record[at]) |
                                                std::to_integer<unsigned>(record[at + 1]) << 8);
        if (unit == 0)
            return std::nullopt;
        path.push_back(unit);
    }
    if (record[record.size() - 2] != std::byte{0} || record[record.size() - 1] != std::byte{0})
        return std::nullopt;
    return path;
}

} // namespace korvel
