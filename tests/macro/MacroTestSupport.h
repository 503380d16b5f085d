#pragma once

#include "macro/MacroCommand.h"

#include <ostream>

namespace korvel {

// Readable commands in failure messages.
inline void PrintTo(const MacroCommand& c, std::ostream* out) {
    *out << "{code " << int(c.code) << ", text \"" << c.text.toStdString() << "\", value "
         << c.value << (c.ctrl ? ", ctrl" : "") << (c.shift ? ", shift" : "")
         << (c.alt ? ", alt" : "") << "}";
}

// A command in one line: mods holds 'c', 's' and 'a' for Ctrl, Shift and Alt.
inline MacroCommand Cmd(MacroCommandCode code, const QString& text = {}, int value = 0,
                        std::string_view mods = {}) {
    MacroCommand c;
    c.code = code;
    c.text = text;
    c.value = value;
    c.ctrl = mods.find('c') != mods.npos;
    c.shift = mods.find('s') != mods.npos;
    c.alt = mods.find('a') != mods.npos;
    return c;
}

} // namespace korvel
