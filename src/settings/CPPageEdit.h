#pragma once

#include "settings/SettingsPage.h"

class QLineEdit;
class QRadioButton;

namespace korvel {

class SettingsStore;
class WrappingCheckBox;

// "編集・文字コード": the tab width (TAB_SIZE, 1-80, else message 40005), whether the Open and
// Save dialogs show their code-set list (SELECTABLE_CODE_SET), and what saving as JIS does
// with half-width katakana (JIS_KATAKANA_MODE).
class CPPageEdit : public SettingsPage {
    Q_OBJECT
public:
    explicit CPPageEdit(SettingsStore& store, QWidget* parent = nullptr);

    QLineEdit* tabField() const { return tabField_; }
    WrappingCheckBox* codeSetBox() const { return codeSetBox_; }
    // Index 0 "ファイルを保存する際に全角に変換", 1 "JIS X 0201を適用して半角のまま保存".
    QRadioButton* katakanaButton(int index) const { return katakana_[index]; }

    bool checkValues() override;
    void writeValues() override;

private:
    int tabWidth() const;

    SettingsStore& store_;
    QLineEdit* tabField_;
    WrappingCheckBox* codeSetBox_;
    QRadioButton* katakana_[2];
};

} // namespace korvel
