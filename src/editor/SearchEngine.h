#pragma once

#include <cstddef>
#include <string>
#include <string_view>

class QWidget;

namespace korvel {

// What the search engine acts on. Positions count the text as the program does: a line break
// is the two characters CR LF.
class SearchTarget {
public:
    virtual ~SearchTarget() = default;
    virtual std::u16string text() const = 0;
    virtual std::size_t selectionStart() const = 0;
    virtual std::size_t selectionEnd() const = 0;
    // Selects a match, brings it into view and gives the text the focus.
    virtual void selectMatch(std::size_t start, std::size_t end) = 0;
    // Moves the selection without scrolling (the start of a wrapped search).
    virtual void setSelection(std::size_t start, std::size_t end) = 0;
    // Replaces the selection, as one undo step.
    virtual void replaceSelection(std::u16string_view text) = 0;
    // Replaces start to end with text as one undo step, the caret after it.
    virtual void replaceRange(std::size_t start, std::size_t end, std::u16string_view text) = 0;
    // Where the engine's message boxes stand; may be null.
    virtual QWidget* messageParent() const = 0;
};

// Which not-found message a forward search gives: a plain search, one from the replace bar
// that replaced nothing, or one right after a replacement.
enum class FindMode { Plain = 0, NothingReplaced = 1, AfterReplacement = 2 };

// Find, replace one and replace all, with their questions and messages. Needs no window: the
// target may be any text.
class SearchEngine {
public:
    explicit SearchEngine(SearchTarget& target) : target_(target) {}

    // Selects the next match towards the end or the start of the text. Returns true when a
    // match was selected; otherwise the user has been told.
    bool find(std::u16string_view needle, bool towardsStart, bool ignoreCase, FindMode mode);
    // Replaces every match, as one undo step, and says how many. False only for an empty
    // needle.
    bool replaceAll(std::u16string_view needle, std::u16string_view replacement, bool ignoreCase);
    // Replaces the selection when it is a match, then finds the next one towards the end.
    bool replaceOne(std::u16string_view needle, std::u16string_view replacement, bool ignoreCase);

private:
    bool findTowardsEnd(std::u16string_view needle, bool ignoreCase, FindMode mode);
    bool findTowardsStart(std::u16string_view needle, bool ignoreCase);
    bool ask(int id) const;
    void tell(int id, int count = 0) const;

    SearchTarget& target_;
};

} // namespace korvel
