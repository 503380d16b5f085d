#pragma once

// The editor's command line: options for Qt, and the one file to open.

#include <QString>
#include <QStringList>
#include <vector>

namespace korvel {

// Everything after the first "--" is a file name, even one that looks like an option, so Qt
// must not see it: Qt takes "-style", "-platform" and the like out of its arguments, with the
// word after them.
struct SplitArguments {
    std::vector<char*> forQt; // the program, then what came before "--"; ends with a null
    QStringList fileNames;    // what came after "--"
};
SplitArguments SplitAtDoubleDash(int argc, char** argv);

// The start-up rule for a path on the command line: white space trimmed at both ends; a path
// that begins with a double quote is the text up to the next one, trimmed again. No other
// quote is touched.
QString TrimmedCommandLinePath(QString path);

struct StartupFile {
    QString path;          // absolute; empty when no file was named
    QString unknownOption; // set when an argument Qt did not know looks like an option
    QStringList ignored;   // further names: the editor holds one document
};

// leftByQt: the arguments after the program that Qt did not take, trimmed by the start-up rule;
// fileNames from the split, taken as they stand. A relative path is made absolute in
// workingFolder.
StartupFile StartupFileOf(const QStringList& leftByQt, const QStringList& fileNames,
                          const QString& workingFolder);

} // namespace korvel
