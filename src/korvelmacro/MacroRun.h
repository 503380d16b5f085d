#pragma once

#include "macro/MacroCommand.h"

#include <QStringList>
#include <vector>

namespace korvel {

class SettingsStore;

// Plays commands over each file in turn, in an editor window of its own (shown on the
// platform the application runs on; the command line picks the offscreen one). A file the
// macro changed and did not save is saved in its own code set and line ending. Every message
// box is printed to standard error as "[id] text" and answered with its default button; a
// file that cannot be opened, shows an error box while playing, or cannot be saved has
// failed and is left as it was. True when every file ran.
bool RunMacroOverFiles(const std::vector<MacroCommand>& commands, const QStringList& files,
                       SettingsStore& store);

} // namespace korvel
