#pragma once

#include "macro/MacroCommand.h"

#include <QString>
#include <QStringView>
#include <cstdint>
#include <vector>

namespace korvel {

// A macro file as the checker read it.
struct CheckedMacro {
    std::vector<MacroCommand> commands; // empty when hasError
    std::int32_t majorVersion = 1, minorVersion = 0;
    QString tooltip, explanation; // empty when not given; the last TOOLTIP and EXPLAIN win
    QString diagnostics;          // each line ends in CR LF
    bool hasError = false;
};

// Checks a whole macro file, given as its decoded text (see DecodeMacroFile). Every line is
// checked even after an error, so that one load reports every problem.
CheckedMacro CheckMacro(QStringView fileText);

// What the load-error dialog holds: the diagnostics, and after an error a rule and the notice
// that the load was stopped. Empty for a macro that loads cleanly.
QString LoadReport(const CheckedMacro& macro);

} // namespace korvel
