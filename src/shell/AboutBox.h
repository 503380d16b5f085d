#pragma once

#include <QDialog>

class QLabel;

namespace korvel {

// "バージョン情報": the program's name and version, what it is for, its licence and the Qt it
// runs on.
class AboutBox : public QDialog {
    Q_OBJECT
public:
    explicit AboutBox(QWidget* parent = nullptr);

    // The lines of the box as shown, one after another.
    QString text() const;

private:
    QList<QLabel*> lines_;
};

void ShowAboutBox(QWidget* parent);

} // namespace korvel
