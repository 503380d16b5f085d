#pragma once

#include "settings/FontChooser.h"
#include "settings/SettingsPage.h"

#include <array>

class QLabel;
class QPushButton;

namespace korvel {

class ElidedLabel;
class SettingsStore;

// "フォント": the four font slots "フォント１" .. "フォント４", each with its face, size, bold
// and italic (FONTn_NAME, FONTn_SIZE, FONTn_BOLD, FONTn_ITALIC), chosen with the font chooser.
class CPPageFont : public SettingsPage {
    Q_OBJECT
public:
    static constexpr int kSlots = 4;

    explicit CPPageFont(SettingsStore& store, QWidget* parent = nullptr);

    const FontChoice& slotChoice(int slot) const { return choices_.at(static_cast<size_t>(slot)); }
    QPushButton* chooseButton(int slot) const {
        return widgets_.at(static_cast<size_t>(slot)).button;
    }
    QString faceText(int slot) const;
    QString sizeText(int slot) const;

    void writeValues() override;

private:
    struct SlotWidgets {
        ElidedLabel* face;
        QLabel* size;
        QPushButton* button;
    };

    void choose(int slot);
    void showSlot(int slot);

    SettingsStore& store_;
    std::array<FontChoice, kSlots> choices_;
    std::array<SlotWidgets, kSlots> widgets_{};
};

} // namespace korvel
