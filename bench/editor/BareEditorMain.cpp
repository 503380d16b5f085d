// korvel_bare_editor [FILE]: the reference program of korvel_startup_bench, a window of the
// editor's size holding one QPlainTextEdit, with the Shift_JIS FILE opened the simplest way
// before the window shows.

#include "BareEditor.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <QStringList>

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QPlainTextEdit edit;
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() > 1 &&
        !korvel::bench::OpenTheSimpleWay(edit, arguments.at(1), "Shift_JIS"))
        return 1;
    edit.resize(800, 600);
    edit.show();
    return QApplication::exec();
}
