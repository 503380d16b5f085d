#include "settings/ColorPicker.h"

#include "settings/ColorSwatch.h"
#include "settings/PenTargets.h"
#include "settings/SettingColor.h"
#include "settings/SettingsStore.h"
#include "widgets/DialogButtons.h"
#include "widgets/ScreenFit.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QVBoxLayout>

namespace korvel {

namespace {

// Three rows of eight: the plain colours and their dark and light kin, enough to pick a text
// or paper colour with one tap.
constexpr int kBasicColumns = 8;
constexpr QRgb kBasicColors[] = {
    0x000000, 0x808080, 0x800000, 0x808000, 0x008000, 0x008080, 0x000080, 0x800080,
    0xFFFFFF, 0xC0C0C0, 0xFF0000, 0xFFFF00, 0x00FF00, 0x00FFFF, 0x0000FF, 0xFF00FF,
    0xFFFFE0, 0xFFE0C0, 0xFFC0C0, 0xE0FFE0, 0xE0F0FF, 0xE0E0FF, 0x404040, 0x804000,
};

const char16_t* const kChannelLabels[] = {u"赤(&R)：", u"緑(&G)：", u"青(&U)："};

} // namespace

ColorPicker::ColorPicker(const QColor& current, SettingsStore& store, QWidget* parent)
    : QDialog(parent), store_(store),
      addCustom_(new QPushButton(QStringLiteral("カスタム色に追加(&A)"), this)),
      swatch_(new ColorSwatch(current, this)) {
    setWindowTitle(QStringLiteral("カラー選択"));
    auto* layout = new QVBoxLayout(this);

    auto* basicGroup = new QGroupBox(QStringLiteral("基本色"), this);
    auto* basicGrid = new QGridLayout(basicGroup);
    for (QRgb rgb : kBasicColors) {
        auto* swatch = new ColorSwatch(QColor(rgb), basicGroup);
        const auto index = static_cast<int>(basic_.size());
        basicGrid->addWidget(swatch, index / kBasicColumns, index % kBasicColumns);
        basic_.append(swatch);
    }
    layout->addWidget(basicGroup);

    auto* customGroup = new QGroupBox(QStringLiteral("カスタム色"), this);
    auto* customRow = new QHBoxLayout(customGroup);
    customCount_ = store_.read(setting::CUSTOM_COLOR_COUNT);
    for (const IntSetting& slot : setting::kCustomColors) {
        auto* swatch = new ColorSwatch(ColorFromSetting(store_.read(slot)), customGroup);
        customRow->addWidget(swatch);
        custom_.append(swatch);
    }
    customRow->addStretch();
    customRow->addWidget(addCustom_);
    layout->addWidget(customGroup);

    for (ColorSwatch* swatch : basic_ + custom_)
        connect(swatch, &ColorSwatch::clicked, this, [this, swatch] { setColor(swatch->color()); });
    connect(addCustom_, &QPushButton::clicked, this, &ColorPicker::addCustomColor);

    auto* mixGrid = new QGridLayout;
    for (int channel = 0; channel < 3; ++channel) {
        auto* label = new QLabel(QString::fromUtf16(kChannelLabels[channel]), this);
        // The slider is the pen's way to a value and the field the keyboard's, so the field
        // does without its small arrows.
        auto* field = new QSpinBox(this);
        field->setRange(0, 255);
        field->setButtonSymbols(QAbstractSpinBox::NoButtons);
        field->setAlignment(Qt::AlignRight);
        field->setMinimumWidth(field->fontMetrics().horizontalAdvance(QStringLiteral("0000")) + 12);
        auto* slider = new QSlider(Qt::Horizontal, this);
        slider->setRange(0, 255);
        slider->setPageStep(16);
        label->setBuddy(field);
        connect(slider, &QSlider::valueChanged, field, &QSpinBox::setValue);
        connect(field, &QSpinBox::valueChanged, slider, &QSlider::setValue);
        connect(field, &QSpinBox::valueChanged, this, [this] { swatch_->setColor(color()); });
        mixGrid->addWidget(label, channel, 0);
        mixGrid->addWidget(field, channel, 1);
        mixGrid->addWidget(slider, channel, 2);
        fields_[static_cast<size_t>(channel)] = field;
        sliders_[static_cast<size_t>(channel)] = slider;
    }
    mixGrid->setColumnStretch(2, 1);
    auto* mixRow = new QHBoxLayout;
    mixRow->addLayout(mixGrid, 1);
    swatch_->setMinimumSize(2 * kPenTarget, 2 * kPenTarget);
    swatch_->setFocusPolicy(Qt::NoFocus);
    mixRow->addWidget(swatch_);
    layout->addLayout(mixRow);

    layout->addStretch();
    layout->addLayout(OkCancelRow(*this));
    setColor(current);
    EnlargeForPen(*this);
    FitToScreen(*this, sizeHint());
}

QColor ColorPicker::color() const {
    return QColor(fields_[0]->value(), fields_[1]->value(), fields_[2]->value());
}

void ColorPicker::setColor(const QColor& color) {
    const QColor rgb = color.toRgb();
    fields_[0]->setValue(rgb.red());
    fields_[1]->setValue(rgb.green());
    fields_[2]->setValue(rgb.blue());
    swatch_->setColor(this->color());
}

void ColorPicker::addCustomColor() {
    const QColor added = color();
    // The newest goes first and the others move along; one already kept moves to the front
    // instead of taking a second place.
    const auto kept = static_cast<qsizetype>(customCount_);
    qsizetype from = custom_.size() - 1;
    for (qsizetype i = 0; i < kept; ++i) {
        if (custom_[i]->color() == added) {
            from = i;
            break;
        }
    }
    if (from == custom_.size() - 1 && kept < custom_.size())
        ++customCount_;
    for (qsizetype i = from; i > 0; --i)
        custom_[i]->setColor(custom_[i - 1]->color());
    custom_[0]->setColor(added);
    customChanged_ = true;
}

void ColorPicker::done(int result) {
    if (customChanged_) {
        for (qsizetype i = 0; i < custom_.size(); ++i)
            store_.write(setting::kCustomColors[static_cast<size_t>(i)],
                         SettingFromColor(custom_[i]->color()));
        store_.write(setting::CUSTOM_COLOR_COUNT, customCount_);
        customChanged_ = false;
    }
    QDialog::done(result);
}

std::optional<QColor> ChooseColor(const QColor& current, SettingsStore& store, QWidget* parent) {
    ColorPicker picker(current, store, parent);
    if (picker.exec() != QDialog::Accepted)
        return std::nullopt;
    return picker.color();
}

} // namespace korvel
