// korvelmacro: checks macro files and lists their commands as the editor reads them.

#include "korvelmacro/CommandLine.h"

#include <QFile>

int main(int argc, char** argv) {
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments += QFile::decodeName(argv[i]);
    return korvel::macrotool::RunCommandLine(arguments);
}
