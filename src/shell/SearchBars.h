#pragma once

#include <QObject>

class QLineEdit;
class QWidget;

namespace korvel {

class CEditer;
class CommandTable;
class FindBar;
class ReplaceBar;

// The find and replace bars in the window's bar area and the commands that drive them: opening
// the bars, the search keys, the bar buttons, hiding, the case option and the panes. The bars
// hand the searching to the view and every search the user starts to the view's recorder.
class SearchBars : public QObject {
    Q_OBJECT
public:
    SearchBars(CEditer& view, QWidget& barArea);

    // Registers the commands 32773, 57641, 32828 to 32832 and the pane keys.
    void addCommands(CommandTable& table);

    FindBar* findBar() const { return findBar_; }
    ReplaceBar* replaceBar() const { return replaceBar_; }
    // The edit box of a bar that has the focus, if any: copy, cut and paste go there first.
    QLineEdit* focusedEdit() const;

    void openFindBar();
    void openReplaceBar();
    void hideBars();

private:
    // Ctrl+F and Ctrl+B.
    void searchKey(bool towardsStart);
    // Ctrl+R.
    void replaceKey();
    void toggleCase();
    void focusNextPane(bool backwards);
    // The buttons.
    void findFromFindBar(bool towardsStart);
    void findNextFromReplaceBar();
    void replaceOneFromReplaceBar();
    void replaceAllFromReplaceBar();

    void showBar(QWidget* bar, QLineEdit* edit);
    // A bar button's empty search text: the message, and the box gets the focus.
    bool refuseEmpty(QLineEdit* edit, int message);
    QString selectionForBar() const;

    CEditer& view_;
    QWidget& barArea_;
    FindBar* findBar_;
    ReplaceBar* replaceBar_;
};

} // namespace korvel
