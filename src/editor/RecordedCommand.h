#pragma once

#include <QString>

namespace korvel {

// An editor action that is not a key, as the view hands it to the macro recorder: the code the
// macro language gives the command, its text, and its option flag.
enum class RecordedAction {
    FindTowardsStart = 4, // FIND /U
    Find = 5,
    Replace = 6,
    ReplaceAll = 7, // REPLACE /A
};

struct RecordedCommand {
    RecordedAction action;
    QString text;
    // The replacement text of the REPLACE commands.
    QString replacement{};
    // 1 when case is ignored (/I).
    int flag = 0;
};

} // namespace korvel
