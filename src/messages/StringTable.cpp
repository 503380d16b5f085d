#include "messages/StringTable.h"

#include "messages/StringTableData.h"

#include <algorithm>

namespace korvel {
namespace {

std::optional<QString> Find(std::span<const detail::StringEntry> entries, int id) {
    const auto entry = std::ranges::lower_bound(entries, id, {}, &detail::StringEntry::id);
    if (entry == entries.end() || entry->id != id)
        return std::nullopt;
    return QString::fromUtf16(entry->text);
}

} // namespace

std::optional<QString> FindString(int id) {
    return Find(detail::StringTableEntries(), id);
}

QString EnglishFallback(int id) {
    return Find(detail::EnglishFallbackEntries(), id).value_or(QString());
}

QString LoadString(int id) {
    if (std::optional<QString> text = FindString(id))
        return *std::move(text);
    return EnglishFallback(id);
}

} // namespace korvel
