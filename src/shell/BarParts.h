#pragma once

#include <QObject>
#include <functional>

class QEvent;
class QHBoxLayout;
class QToolButton;
class QWidget;

// The parts the find bar and the replace bar are made of.
namespace korvel {

// A bar's right edge stays this far from the window's, as the bar strip leaves room there.
inline constexpr int kBarRightMargin = 20;

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

// Enter and Escape in a bar's edit box: Enter runs enter, Escape runs escape. True when the
// key was one of them.
bool HandleBarKey(QEvent* event, const std::function<void()>& enter,
                  const std::function<void()>& escape);

} // namespace korvel
