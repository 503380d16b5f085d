#pragma once

#include <QString>

namespace korvel {

// An editor action that is not a key, as the view hands it to the macro recorder: the code the
// macro language gives the command, its text, and its option flag or number.
enum class RecordedAction {
    FindTowardsStart = 4, // FIND /U
    Find = 5,
    Replace = 6,
    ReplaceAll = 7, // REPLACE /A
    NewFile = 8,
    Open = 9,
    Save = 10, // flag 1: to the document's own file (SAVE /A), else to text
    Copy = 11,
    Cut = 12,
    Paste = 13,
    SelectAll = 16,
    GoToLine = 19, // flag: the line, counted from 1
};

struct RecordedCommand {
    RecordedAction action;
    QString text{};
    // The replacement text of the REPLACE commands.
    QString replacement{};
    // 1 when case is ignored (/I) or the save goes to the document's own file (/A); the line of
    // a jump.
    int flag = 0;
};

} // namespace korvel
