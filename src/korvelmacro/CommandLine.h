#pragma once

#include <QString>
#include <QStringList>

namespace korvel::macrotool {

enum ExitStatus {
    kExitLoaded = 0,     // every macro loads; warnings allowed
    kExitMacroError = 1, // a macro has an error and would not load
    kExitUnreadable = 2, // a file cannot be read, or the command line is wrong
};

// Runs one command line (the arguments after the program name) and returns its exit status.
// The sub-command is the first argument; the rest are its macro files.
int RunCommandLine(const QStringList& arguments);

QString UsageText();

} // namespace korvel::macrotool
