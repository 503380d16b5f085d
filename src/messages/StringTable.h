#pragma once

#include <QString>
#include <optional>

namespace korvel {

// The text of a numbered string, or nothing when the table holds no such id.
std::optional<QString> FindString(int id);

// The English text the program shows where a string is missing (column headers, dialog titles,
// the title bar); empty for the strings that have none.
QString EnglishFallback(int id);

// The string, else its English fallback, else an empty text.
QString LoadString(int id);

} // namespace korvel
