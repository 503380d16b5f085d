#pragma once

#include <span>

namespace korvel::detail {

struct StringEntry {
    int id;
    const char16_t* text;
};

// The numbered texts, in ascending order of id.
std::span<const StringEntry> StringTableEntries();
// The English texts used where a string is missing, in ascending order of id.
std::span<const StringEntry> EnglishFallbackEntries();

} // namespace korvel::detail
