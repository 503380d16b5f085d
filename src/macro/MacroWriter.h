#pragma once

#include "macro/MacroCommand.h"

#include <QDate>
#include <QString>
#include <vector>

namespace korvel {

// One command as the writer writes it, without its closing line feed; checking it gives the
// command back. A command longer than a line of the reader is continued over several lines, and
// one that would end in a backslash is followed by an empty line, so the reader does not join it
// to the next command. TOOLTIP, EXPLAIN and unknown commands are never written: empty.
QString MacroCommandLine(const MacroCommand& command);

// The five header lines with the creation date, each ending in a line feed.
QString MacroFileHeader(QDate today);

// Writes the header and the commands in Shift_JIS with LF line ends and no mark, replacing the
// file only when everything was written. False: nothing was written.
bool WriteMacroFile(const QString& path, const std::vector<MacroCommand>& commands, QDate today);

// The name the save dialog proposes in folder: the first "新規マクロ(n).mcr" that does not exist
// there, n from 1 to 255; 255 when all exist.
QString ProposedMacroFileName(const QString& folder);

} // namespace korvel
