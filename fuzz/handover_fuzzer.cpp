// The record a later start sends to the running instance, on any bytes: no crash, and whatever
// is taken as a record is exactly the record of the path taken from it.

#include "FuzzCheck.h"
#include "shell/HandoverRecord.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using korvel::fuzz::Require;
    const auto bytes = std::as_bytes(std::span(data, size));
    const std::optional<std::u16string> path = korvel::ParseHandoverRecord(bytes);
    if (!path)
        return 0;
    const std::optional<std::size_t> wanted = korvel::HandoverRecordSize(bytes);
    Require(wanted && *wanted == size, "a record taken has the size its header gives");
    const std::vector<std::byte> remade = korvel::MakeHandoverRecord(*path);
    Require(std::equal(remade.begin(), remade.end(), bytes.begin(), bytes.end()),
            "a record taken is the record of its path");
    Require(path->find(u'\0') == std::u16string::npos, "a path holds no 0");
    return 0;
}
