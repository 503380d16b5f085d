#include "widgets/DialogButtons.h"

#include <QDialog>
#include <QHBoxLayout>
#include <QPushButton>

namespace korvel {

QHBoxLayout* OkCancelRow(QDialog& dialog) {
    auto* ok = new QPushButton(QStringLiteral("OK"), &dialog);
    auto* cancel = new QPushButton(QStringLiteral("キャンセル"), &dialog);
    ok->setDefault(true);
    auto* row = new QHBoxLayout;
    row->addStretch();
    row->addWidget(ok);
    row->addWidget(cancel);
    QObject::connect(ok, &QPushButton::clicked, &dialog, &QDialog::accept);
    QObject::connect(cancel, &QPushButton::clicked, &dialog, &QDialog::reject);
    return row;
}

} // namespace korvel
