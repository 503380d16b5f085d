#pragma once

#include <QWidget>

namespace korvel {

// One page of the settings sheet. A page reads its settings when it is made, and its window
// title is the name on its tab. Confirming the sheet first checks every page, and writes only
// when all of them agree, so a refused value never leaves half a sheet written.
class SettingsPage : public QWidget {
    Q_OBJECT
public:
    using QWidget::QWidget;

    // False keeps the sheet open on this page; the page has told the user why and put the
    // focus where the fault is. A check may also settle a value, when the user agrees to it.
    virtual bool checkValues() { return true; }
    virtual void writeValues() = 0;
};

} // namespace korvel
