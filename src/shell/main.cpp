#include "shell/MainWindow.h"

#include <QApplication>
#include <QMessageBox>

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Harrow Apps"));
    QApplication::setApplicationName(QStringLiteral("Korvelエディタ"));

    korvel::MainWindow window;
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() > 1 && !window.openFile(arguments.at(1))) {
        QMessageBox::critical(&window, QStringLiteral("Korvelエディタ"),
                              QStringLiteral("下記ファイルのオープンでエラーが発生しました。\n\n%1")
                                  .arg(arguments.at(1)));
    }
    window.show();
    return QApplication::exec();
}
