#include "macro/MacroLoadDialog.h"

#include "widgets/ScreenFit.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace korvel {

void ShowMacroLoadReport(const QString& report, QWidget* parent) {
    QDialog dialog(parent);
    dialog.setWindowTitle(QStringLiteral("マクロ・ロードエラー"));
    auto* layout = new QVBoxLayout(&dialog);
    auto* text = new QPlainTextEdit(&dialog);
    text->setObjectName(QStringLiteral("report"));
    text->setReadOnly(true);
    text->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    QString shown = report;
    shown.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    text->setPlainText(shown);
    layout->addWidget(text, 1);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, &dialog);
    buttons->button(QDialogButtonBox::Ok)->setText(QStringLiteral("OK"));
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    layout->addWidget(buttons);
    FitToScreen(dialog, QSize(640, 360));
    dialog.exec();
}

} // namespace korvel
