#include "shell/AboutBox.h"

#include "shell/AppIcon.h"
#include "widgets/ScreenFit.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace korvel {

AboutBox::AboutBox(QWidget* parent) : QDialog(parent) {
    setWindowTitle(QStringLiteral("バージョン情報"));
    auto* layout = new QVBoxLayout(this);
    auto* top = new QHBoxLayout;
    auto* icon = new QLabel(this);
    icon->setPixmap(ApplicationIcon().pixmap(48, 48));
    icon->setAlignment(Qt::AlignTop);
    top->addWidget(icon);

    auto* lines = new QVBoxLayout;
    const QString texts[] = {
        QStringLiteral("Korvelエディタ"),
        // The version is the build's own, from the project's version in CMake.
        QStringLiteral("バージョン %1").arg(QStringLiteral(KORVEL_VERSION)),
        QStringLiteral("日本語のテキストファイルを編集するためのエディタ"),
        QStringLiteral("MIT License"),
        QStringLiteral("Qt %1").arg(QString::fromLatin1(qVersion())),
    };
    for (const QString& text : texts) {
        auto* line = new QLabel(text, this);
        line->setWordWrap(true);
        line->setTextInteractionFlags(Qt::TextSelectableByMouse);
        lines->addWidget(line);
        lines_.append(line);
    }
    QFont name = lines_.front()->font();
    name.setBold(true);
    name.setPointSizeF(name.pointSizeF() * 1.4);
    lines_.front()->setFont(name);
    top->addLayout(lines, 1);
    layout->addLayout(top);

    auto* buttons = new QDialogButtonBox(this);
    QPushButton* ok = buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
    ok->setDefault(true);
    ok->setMinimumSize(80, 36);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    layout->addWidget(buttons);
    FitToScreen(*this, QSize(400, sizeHint().height()));
}

QString AboutBox::text() const {
    QStringList texts;
    for (const QLabel* line : lines_)
        texts.append(line->text());
    return texts.join(u'\n');
}

void ShowAboutBox(QWidget* parent) {
    AboutBox box(parent);
    box.exec();
}

} // namespace korvel
