#pragma once

#include <QColor>
#include <QDialog>
#include <QList>
#include <array>
#include <optional>

class QPushButton;
class QSlider;
class QSpinBox;

namespace korvel {

class ColorSwatch;
class SettingsStore;

// "カラー選択": a colour from the basic colours, from the five custom colours, or mixed with
// the red, green and blue fields and their sliders; the swatch shows the colour as it stands.
// The custom colours live in CUSTOM_COLOR1..5 and CUSTOM_COLOR_COUNT, the newest first; they
// are kept when the dialog closes either way, since adding one is an act of its own.
class ColorPicker : public QDialog {
    Q_OBJECT
public:
    ColorPicker(const QColor& current, SettingsStore& store, QWidget* parent = nullptr);

    QColor color() const;
    void setColor(const QColor& color);

    const QList<ColorSwatch*>& basicColors() const { return basic_; }
    const QList<ColorSwatch*>& customColors() const { return custom_; }
    QPushButton* addCustomButton() const { return addCustom_; }
    // 0 red, 1 green, 2 blue.
    QSpinBox* channelField(int channel) const { return fields_.at(static_cast<size_t>(channel)); }
    QSlider* channelSlider(int channel) const { return sliders_.at(static_cast<size_t>(channel)); }
    ColorSwatch* swatch() const { return swatch_; }

    void done(int result) override;

private:
    void addCustomColor();
    void showChannels();

    SettingsStore& store_;
    QList<ColorSwatch*> basic_;
    QList<ColorSwatch*> custom_;
    int customCount_ = 0;
    bool customChanged_ = false;
    QPushButton* addCustom_;
    std::array<QSpinBox*, 3> fields_{};
    std::array<QSlider*, 3> sliders_{};
    ColorSwatch* swatch_;
};

// Shows the picker on current: the chosen colour, or nothing when it was cancelled.
std::optional<QColor> ChooseColor(const QColor& current, SettingsStore& store,
                                  QWidget* parent = nullptr);

} // namespace korvel
