#pragma once

#include <QWidget>

class QLineEdit;
class QToolButton;

namespace korvel {

class CaseButtons;

// The replace bar above the text, in two rows: the text to find with the case option "Aa" and
// "×", then the replacement with "次" (find the next), "置" (replace this one and find the
// next) and "全" (replace all). Both boxes end at the same place. Enter finds the next, Escape
// closes.
class ReplaceBar : public QWidget {
    Q_OBJECT
public:
    explicit ReplaceBar(QWidget* parent = nullptr);

    QLineEdit* findEdit() const { return find_; }
    QLineEdit* replacementEdit() const { return replacement_; }
    CaseButtons& caseOption() const { return *case_; }
    QToolButton* nextButton() const { return next_; }
    QToolButton* replaceButton() const { return replace_; }
    QToolButton* replaceAllButton() const { return replaceAll_; }
    QToolButton* closeButton() const { return close_; }

signals:
    void findNext();
    void replaceOne();
    void replaceAll();
    void closeRequested();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QLineEdit* find_;
    QLineEdit* replacement_;
    CaseButtons* case_;
    QToolButton* close_;
    QToolButton* next_;
    QToolButton* replace_;
    QToolButton* replaceAll_;
};

} // namespace korvel
