#pragma once

#include <QObject>

class QHBoxLayout;
class QToolButton;
class QWidget;

namespace korvel {

// A bar's case option: two "Aa" buttons of which one is shown, the one for a search that
// minds case (drawn pressed) or the one for a search that ignores it. Pressing the shown one
// swaps them. Which one is shown is the option; nothing else stores it.
class CaseButtons : public QObject {
    Q_OBJECT
public:
    // Adds both buttons to layout, the case-minding one shown.
    CaseButtons(QWidget* bar, QHBoxLayout* layout);

    bool ignoresCase() const;
    void toggle();

    QToolButton* caseMatters() const { return caseMatters_; }
    QToolButton* caseIgnored() const { return caseIgnored_; }

private:
    QToolButton* caseMatters_;
    QToolButton* caseIgnored_;
};

// A bar button of the usual bar size with its one-character label.
QToolButton* MakeBarButton(const QString& text, const QString& toolTip, QWidget* bar);

} // namespace korvel
