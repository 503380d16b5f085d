#pragma once

#include "settings/SettingsPage.h"

class QComboBox;
class QRadioButton;

namespace korvel {

class SettingsStore;

// "タップ": the tap-and-hold time (LONG_DELAY), how the file list opens a file or folder
// (SELECT_BY_SINGLE_TAP) and how the folder tree and the file list are enlarged
// (STR_ZOOM_METHOD).
class CPPageTap : public SettingsPage {
    Q_OBJECT
public:
    explicit CPPageTap(SettingsStore& store, QWidget* parent = nullptr);

    // Index 0 "普通", 1 "長め".
    QRadioButton* delayButton(int index) const { return delay_[index]; }
    // Index 0 "ダブルタップ", 1 "シングルタップ".
    QRadioButton* selectButton(int index) const { return select_[index]; }
    QComboBox* zoomList() const { return zoom_; }

    void writeValues() override;

private:
    SettingsStore& store_;
    QRadioButton* delay_[2];
    QRadioButton* select_[2];
    QComboBox* zoom_;
};

} // namespace korvel
