#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Searching in the editor's text, as the program counts it: UTF-16 with CR LF between lines.
// A match never splits a surrogate pair or a CR LF pair, so whatever is selected is whole.
namespace korvel {

inline constexpr std::size_t kNoMatch = std::u16string_view::npos;

// The one fold used when case is ignored, applied to the text and to the search text alike.
// Each UTF-16 unit folds to one unit, so positions in the folded text are positions in the
// text. Full-width Latin letters fold too (Ａ to ａ): Japanese users type them.
std::u16string FoldCase(std::u16string_view text);

// The first match of needle that begins at or after from.
std::size_t FindMatchAfter(std::u16string_view text, std::u16string_view needle, std::size_t from);

// The match found by stepping through the text from its start, each search going on after the
// previous match's end, that is the last to begin before `before`. Stepping by the needle's
// length passes over overlapping matches: in "aaa" the last "aa" before 3 is at 0.
std::size_t FindMatchBefore(std::u16string_view text, std::u16string_view needle,
                            std::size_t before);

// Every match from the start, left to right, each replaced once; text put in is never searched
// again. haystack is the text searched (text itself, or its fold), the pieces between matches
// are copied from text.
struct ReplacedRange {
    std::size_t count = 0;
    // The span of text from the first match's start to the last match's end, and what takes
    // its place. Nothing outside it changes.
    std::size_t start = 0;
    std::size_t end = 0;
    std::u16string replacement;
};
ReplacedRange ReplaceEveryMatch(std::u16string_view text, std::u16string_view haystack,
                                std::u16string_view needle, std::u16string_view replacement);

} // namespace korvel
