#include "editor/TextSearch.h"

#include <QChar>

namespace korvel {

namespace {

bool IsHighSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsLowSurrogate(char16_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

// True when position falls inside a pair of units that belong together.
bool SplitsPair(std::u16string_view text, std::size_t position) {
    if (position == 0 || position >= text.size())
        return false;
    const char16_t before = text[position - 1];
    const char16_t after = text[position];
    return (IsHighSurrogate(before) && IsLowSurrogate(after)) ||
           (before == u'\r' && after == u'\n');
}

char16_t FoldUnit(char16_t unit) {
    if (unit < 0x80)
        return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 0x20) : unit;
    if (IsHighSurrogate(unit) || IsLowSurrogate(unit))
        return unit;
    const char32_t folded = QChar::toCaseFolded(static_cast<char32_t>(unit));
    return folded <= 0xFFFF ? static_cast<char16_t>(folded) : unit;
}

} // namespace

std::u16string FoldCase(std::u16string_view text) {
    std::u16string folded(text.size(), u'\0');
    for (std::size_t i = 0; i < text.size(); ++i)
        folded[i] = FoldUnit(text[i]);
    return folded;
}

std::size_t FindMatchAfter(std::u16string_view text, std::u16string_view needle, std::size_t from) {
    if (needle.empty())
        return kNoMatch;
    for (std::size_t at = text.find(needle, from); at != kNoMatch; at = text.find(needle, at + 1)) {
        if (!SplitsPair(text, at) && !SplitsPair(text, at + needle.size()))
            return at;
    }
    return kNoMatch;
}

std::size_t FindMatchBefore(std::u16string_view text, std::u16string_view needle,
                            std::size_t before) {
    std::size_t result = kNoMatch;
    for (std::size_t at = FindMatchAfter(text, needle, 0); at != kNoMatch && at < before;
         at = FindMatchAfter(text, needle, at + needle.size()))
        result = at;
    return result;
}

ReplacedRange ReplaceEveryMatch(std::u16string_view text, std::u16string_view haystack,
                                std::u16string_view needle, std::u16string_view replacement) {
    ReplacedRange replaced;
    std::size_t copiedTo = kNoMatch;
    for (std::size_t at = FindMatchAfter(haystack, needle, 0); at != kNoMatch;
         at = FindMatchAfter(haystack, needle, at + needle.size())) {
        if (copiedTo == kNoMatch)
            replaced.start = copiedTo = at;
        replaced.replacement.append(text.substr(copiedTo, at - copiedTo));
        replaced.replacement.append(replacement);
        copiedTo = at + needle.size();
        ++replaced.count;
    }
    if (replaced.count != 0)
        replaced.end = copiedTo;
    return replaced;
}

} // namespace korvel
