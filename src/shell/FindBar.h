#pragma once

#include <QWidget>

class QLineEdit;
class QToolButton;

namespace korvel {

class CaseButtons;

// The find bar above the text: the text to find, "▲" and "▼" to search towards the start or
// the end, the case option "Aa" and "×" to close. Enter searches towards the end, Escape
// closes.
class FindBar : public QWidget {
    Q_OBJECT
public:
    explicit FindBar(QWidget* parent = nullptr);

    QLineEdit* textEdit() const { return text_; }
    CaseButtons& caseOption() const { return *case_; }
    QToolButton* towardsStartButton() const { return towardsStart_; }
    QToolButton* towardsEndButton() const { return towardsEnd_; }
    QToolButton* closeButton() const { return close_; }

signals:
    void findTowardsStart();
    void findTowardsEnd();
    void closeRequested();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QLineEdit* text_;
    QToolButton* towardsStart_;
    QToolButton* towardsEnd_;
    CaseButtons* case_;
    QToolButton* close_;
};

} // namespace korvel
