#pragma once

#include <QWidget>

class QCheckBox;
class QLabel;

namespace korvel {

// A check box whose text wraps: a check box cannot break its own line, and a long text would
// otherwise make a dialog wider than a small screen. A tap on the text toggles it, as on the
// text of an ordinary check box.
class WrappingCheckBox : public QWidget {
    Q_OBJECT
public:
    WrappingCheckBox(const QString& text, QWidget* parent = nullptr);

    QCheckBox* box() const { return box_; }
    QString text() const;
    bool isChecked() const;
    void setChecked(bool checked);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QCheckBox* box_;
    QLabel* label_;
};

} // namespace korvel
