#pragma once

#include "settings/SettingsPage.h"
#include "settings/SettingsSeams.h"

#include <QList>

class QCheckBox;
class QLineEdit;
class QPushButton;

namespace korvel {

class SettingsStore;

// "拡張子・マクロ": which extensions open with this program, and the macro loaded at start-up
// (LOAD_DAFAULT_MACRO, DEFAULT_MACRO_FILE_NAME). A start-up macro that is switched on must name
// a file: with no path (30041) or a folder (30042) the page offers to switch it off, and a path
// that does not exist (40020) keeps the sheet open.
class CPPageFile : public SettingsPage {
    Q_OBJECT
public:
    CPPageFile(SettingsStore& store, SettingsSeams seams, QWidget* parent = nullptr);

    // "TXT", "HTM, HTML, XML", "INI", "INF", "MCR", in this order.
    const QList<QCheckBox*>& extensionBoxes() const { return extensionBoxes_; }
    QCheckBox* loadMacroBox() const { return loadMacro_; }
    QLineEdit* macroField() const { return macroField_; }
    QPushButton* browseButton() const { return browse_; }

    bool checkValues() override;
    void writeValues() override;

private:
    void browseForMacro();
    void applyAssociations();

    SettingsStore& store_;
    SettingsSeams seams_;
    QList<QCheckBox*> extensionBoxes_;
    // Each box's state as the page found it: only the boxes the user changed are applied.
    QList<bool> associatedAtStart_;
    QCheckBox* loadMacro_;
    QLineEdit* macroField_;
    QPushButton* browse_;
};

} // namespace korvel
