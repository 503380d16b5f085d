#pragma once

#include <QString>
#include <cstdint>

namespace korvel {

// The numbers are the macro language's own command codes: the player and the recorder exchange
// them with the view, so they are fixed. 22 and 23 are the player's "stopped" and "end of list".
enum class MacroCommandCode : std::int32_t {
    Version = 0,
    Tooltip = 1,
    Explain = 2,
    Type = 3,
    FindUpward = 4, // FIND /U
    Find = 5,
    Replace = 6,
    ReplaceAll = 7, // REPLACE /A
    NewFile = 8,
    Open = 9,
    Save = 10,
    Copy = 11,
    Cut = 12,
    Paste = 13,
    Lock = 14,
    Unlock = 15,
    Select = 16,
    Unselect = 17,
    Sleep = 18,
    Goto = 19,
    EnableWindow = 20,
    SetFocus = 21,
    Unknown = 24,
};

// One command of a macro, as the checker reads it and the writer writes it.
//
// text: TYPE keeps its argument as written, for the player to read: a key name in upper case
// ("RIGHT", "BS", "BACKSPACE") or the quoted text with its quotes and escapes undecoded (an
// unclosed text has its closing quote supplied). FIND holds the decoded search text; REPLACE the
// decoded "from" text, CR LF, the decoded "to" text; OPEN and SAVE the path without its quotes,
// undecoded. GOTO holds "HOME", "END" or "VIEWTOP" (value 0), "+" or "-" with the line count in
// value, or nothing with the absolute line number in value.
//
// value: the option flag of FIND and REPLACE (/I), NEWFILE and OPEN (/F) and SAVE (/A); the
// SLEEP time in ms; SELECT ALL 0, LINE 1, LEFT 2, RIGHT 3; UNSELECT HEAD 1, TAIL 0;
// ENABLEWINDOW TRUE 1, FALSE 0.
//
// ctrl, shift, alt: the modifiers of TYPE; LOCK and UNLOCK set ctrl or shift.
struct MacroCommand {
    MacroCommandCode code = MacroCommandCode::Unknown;
    QString text;
    std::int32_t value = 0;
    bool ctrl = false, shift = false, alt = false;
    bool operator==(const MacroCommand&) const = default;
};

} // namespace korvel
