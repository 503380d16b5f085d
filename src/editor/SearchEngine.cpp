#include "editor/SearchEngine.h"

#include "editor/TextSearch.h"
#include "messages/MessageService.h"

#include <new>

namespace korvel {

namespace {

constexpr int kAskWrapToStart = 30001;
constexpr int kAskWrapToEnd = 30002;
constexpr int kNotFound = 40003;
constexpr int kNoMatchForReplace = 40014;
constexpr int kNoMoreMatches = 40017;
constexpr int kEmptyReplaceText = 40012;
constexpr int kReplacedCount = 33026;
constexpr int kOutOfMemory = 40000;

int NotFoundMessage(FindMode mode) {
    switch (mode) {
    case FindMode::NothingReplaced:
        return kNoMatchForReplace;
    case FindMode::AfterReplacement:
        return kNoMoreMatches;
    case FindMode::Plain:
        break;
    }
    return kNotFound;
}

// The text as searched: folded when case is ignored.
std::u16string Searched(std::u16string text, bool ignoreCase) {
    return ignoreCase ? FoldCase(text) : text;
}

} // namespace

bool SearchEngine::find(std::u16string_view needle, bool towardsStart, bool ignoreCase,
                        FindMode mode) {
    if (needle.empty())
        return false;
    try {
        return towardsStart ? findTowardsStart(needle, ignoreCase)
                            : findTowardsEnd(needle, ignoreCase, mode);
    } catch (const std::bad_alloc&) {
        // A search needs two copies of the text; a huge text on a small machine may not fit.
        MessageRequest request;
        request.id = kOutOfMemory;
        request.icon = MessageIcon::Stop;
        request.parent = target_.messageParent();
        ShowMessage(request);
        return false;
    }
}

bool SearchEngine::findTowardsEnd(std::u16string_view needle, bool ignoreCase, FindMode mode) {
    const std::u16string text = Searched(target_.text(), ignoreCase);
    const std::u16string sought = Searched(std::u16string(needle), ignoreCase);
    const std::size_t selectionStart = target_.selectionStart();
    std::size_t from = target_.selectionEnd();
    for (bool wrapped = false;; wrapped = true) {
        const std::size_t at = FindMatchAfter(text, sought, from);
        if (at != kNoMatch) {
            target_.selectMatch(at, at + sought.size());
            return true;
        }
        // The question only when starting again from the top would find something.
        const bool matchBefore =
            selectionStart != 0 && FindMatchAfter(text, sought, 0) < selectionStart;
        if (wrapped || !matchBefore || !ask(kAskWrapToStart))
            break;
        target_.setSelection(0, 0);
        from = 0;
    }
    tell(NotFoundMessage(mode));
    return false;
}

bool SearchEngine::findTowardsStart(std::u16string_view needle, bool ignoreCase) {
    const std::u16string text = Searched(target_.text(), ignoreCase);
    const std::u16string sought = Searched(std::u16string(needle), ignoreCase);
    const std::size_t selectionEnd = target_.selectionEnd();
    std::size_t before = target_.selectionStart();
    for (bool wrapped = false;; wrapped = true) {
        const std::size_t at = FindMatchBefore(text, sought, before);
        if (at != kNoMatch) {
            target_.selectMatch(at, at + sought.size());
            return true;
        }
        const bool matchAfter =
            before != text.size() && FindMatchAfter(text, sought, selectionEnd) != kNoMatch;
        if (wrapped || !matchAfter || !ask(kAskWrapToEnd))
            break;
        target_.setSelection(text.size(), text.size());
        before = text.size();
    }
    // Searching towards the start always says plainly that nothing was found.
    tell(kNotFound);
    return false;
}

bool SearchEngine::replaceAll(std::u16string_view needle, std::u16string_view replacement,
                              bool ignoreCase) {
    if (needle.empty()) {
        tell(kEmptyReplaceText);
        return false;
    }
    const std::u16string text = target_.text();
    const ReplacedRange replaced =
        ignoreCase ? ReplaceEveryMatch(text, FoldCase(text), FoldCase(needle), replacement)
                   : ReplaceEveryMatch(text, text, needle, replacement);
    if (replaced.count == 0) {
        tell(kNoMatchForReplace);
        return true;
    }
    target_.replaceRange(replaced.start, replaced.end, replaced.replacement);
    tell(kReplacedCount, static_cast<int>(replaced.count));
    return true;
}

bool SearchEngine::replaceOne(std::u16string_view needle, std::u16string_view replacement,
                              bool ignoreCase) {
    if (needle.empty()) {
        tell(kEmptyReplaceText);
        return false;
    }
    const std::u16string text = target_.text();
    const std::size_t start = target_.selectionStart();
    const std::u16string_view selected =
        std::u16string_view(text).substr(start, target_.selectionEnd() - start);
    const bool isMatch = ignoreCase ? FoldCase(selected) == FoldCase(needle) : selected == needle;
    if (isMatch)
        target_.replaceSelection(replacement);
    return find(needle, false, ignoreCase,
                isMatch ? FindMode::AfterReplacement : FindMode::NothingReplaced);
}

bool SearchEngine::ask(int id) const {
    MessageRequest request;
    request.id = id;
    request.buttons = MessageButtons::YesNo;
    request.icon = MessageIcon::Question;
    request.parent = target_.messageParent();
    return ShowMessage(request) == MessageAnswer::Yes;
}

void SearchEngine::tell(int id, int count) const {
    MessageRequest request;
    request.id = id;
    if (id == kReplacedCount)
        request.arguments = {QString::number(count)};
    request.icon = id == kEmptyReplaceText ? MessageIcon::Warning : MessageIcon::Information;
    request.parent = target_.messageParent();
    ShowMessage(request);
}

} // namespace korvel
