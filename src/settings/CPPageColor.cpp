#include "settings/CPPageColor.h"

#include "settings/ColorPicker.h"
#include "settings/ColorSwatch.h"
#include "settings/SettingColor.h"
#include "settings/SettingsStore.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace korvel {

namespace {

constexpr char16_t kPreviewText[] = u"Korvelエディタ\nabcdefg ABCDEFG 0123456789\n"
                                    u"あいうえお アイウエオ 漢字 ｱｲｳｴｵ";

} // namespace

CPPageColor::CPPageColor(SettingsStore& store, QWidget* parent)
    : SettingsPage(parent), store_(store),
      text_(new ColorSwatch(ColorFromSetting(store.read(setting::COLOR_TEXT)), this)),
      background_(new ColorSwatch(ColorFromSetting(store.read(setting::COLOR_BACKGROUND)), this)),
      textButton_(new QPushButton(QStringLiteral("..."), this)),
      backgroundButton_(new QPushButton(QStringLiteral("..."), this)),
      preview_(new QPlainTextEdit(QString::fromUtf16(kPreviewText), this)),
      reset_(new QPushButton(QStringLiteral("リセット"), this)) {
    setWindowTitle(QStringLiteral("カラー"));
    auto* layout = new QVBoxLayout(this);

    auto* colors = new QGridLayout;
    const struct {
        const char16_t* label;
        ColorSwatch* swatch;
        QPushButton* button;
    } rows[] = {{u"文字色：", text_, textButton_}, {u"背景色：", background_, backgroundButton_}};
    int row = 0;
    for (const auto& [label, swatch, button] : rows) {
        colors->addWidget(new QLabel(QString::fromUtf16(label), this), row, 0);
        swatch->setMinimumWidth(3 * swatch->minimumWidth());
        colors->addWidget(swatch, row, 1);
        colors->addWidget(button, row, 2);
        // The swatch is a larger target than its button, and does the same.
        connect(swatch, &ColorSwatch::clicked, this, [this, swatch] { choose(swatch); });
        connect(button, &QPushButton::clicked, this, [this, swatch] { choose(swatch); });
        ++row;
    }
    colors->setColumnStretch(3, 1);
    layout->addLayout(colors);

    auto* previewGroup = new QGroupBox(QStringLiteral("プレビュー"), this);
    auto* previewLayout = new QVBoxLayout(previewGroup);
    preview_->setReadOnly(true);
    preview_->setMinimumHeight(4 * preview_->fontMetrics().lineSpacing());
    previewLayout->addWidget(preview_, 1);
    previewLayout->addWidget(reset_, 0, Qt::AlignRight);
    layout->addWidget(previewGroup, 1);

    connect(reset_, &QPushButton::clicked, this, [this] {
        text_->setColor(ColorFromSetting(setting::COLOR_TEXT.defaultValue));
        background_->setColor(ColorFromSetting(setting::COLOR_BACKGROUND.defaultValue));
        showColors();
    });
    showColors();
}

QColor CPPageColor::textColor() const {
    return text_->color();
}

QColor CPPageColor::backgroundColor() const {
    return background_->color();
}

void CPPageColor::choose(ColorSwatch* swatch) {
    if (const std::optional<QColor> chosen = ChooseColor(swatch->color(), store_, this)) {
        swatch->setColor(*chosen);
        showColors();
    }
}

void CPPageColor::showColors() {
    QPalette palette = preview_->palette();
    for (QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        palette.setColor(group, QPalette::Text, text_->color());
        palette.setColor(group, QPalette::Base, background_->color());
    }
    preview_->setPalette(palette);
}

void CPPageColor::writeValues() {
    store_.write(setting::COLOR_TEXT, SettingFromColor(text_->color()));
    store_.write(setting::COLOR_BACKGROUND, SettingFromColor(background_->color()));
}

} // namespace korvel
