#pragma once

#include "macro/MacroPlayer.h"

#include <QObject>

namespace korvel {

class CEditer;

// Carries out on the editor view what a playing macro hands back: finds and replaces through
// the search engine, files through the view's own commands, and the caret and selection moves.
class ViewMacroTarget : public QObject, public MacroTarget {
public:
    explicit ViewMacroTarget(CEditer& view);

    void typeText(const QString& text) override;
    void carryOut(const MacroCommand& command) override;
    QWidget* messageParent() const override;

    // Takes the user's pointer input again after ENABLEWINDOW FALSE (done when playing ends).
    void enableUserInput();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void disableUserInput();

    CEditer& view_;
    bool inputDisabled_ = false;
};

} // namespace korvel
