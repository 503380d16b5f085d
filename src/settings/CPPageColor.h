#pragma once

#include "settings/SettingsPage.h"

#include <QColor>

class QPlainTextEdit;
class QPushButton;

namespace korvel {

class ColorSwatch;
class SettingsStore;

// "カラー": the text colour (COLOR_TEXT) and the background colour (COLOR_BACKGROUND), each
// chosen with the colour picker, and a preview of text in them; "リセット" goes back to black
// text on white.
class CPPageColor : public SettingsPage {
    Q_OBJECT
public:
    explicit CPPageColor(SettingsStore& store, QWidget* parent = nullptr);

    QColor textColor() const;
    QColor backgroundColor() const;
    QPushButton* textButton() const { return textButton_; }
    QPushButton* backgroundButton() const { return backgroundButton_; }
    QPushButton* resetButton() const { return reset_; }
    QPlainTextEdit* preview() const { return preview_; }

    void writeValues() override;

private:
    void choose(ColorSwatch* swatch);
    void showColors();

    SettingsStore& store_;
    ColorSwatch* text_;
    ColorSwatch* background_;
    QPushButton* textButton_;
    QPushButton* backgroundButton_;
    QPlainTextEdit* preview_;
    QPushButton* reset_;
};

} // namespace korvel
