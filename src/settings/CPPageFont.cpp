#include "settings/CPPageFont.h"

#include "settings/SettingsStore.h"
#include "widgets/ElidedLabel.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace korvel {

namespace {

const char16_t* const kSlotTitles[] = {u"フォント１", u"フォント２", u"フォント３", u"フォント４"};

} // namespace

CPPageFont::CPPageFont(SettingsStore& store, QWidget* parent)
    : SettingsPage(parent), store_(store) {
    setWindowTitle(QStringLiteral("フォント"));
    auto* layout = new QVBoxLayout(this);
    for (int slot = 0; slot < kSlots; ++slot) {
        const setting::FontSlotSettings& values = setting::kFontSlots[static_cast<size_t>(slot)];
        FontChoice& choice = choices_[static_cast<size_t>(slot)];
        choice.face = store_.read(values.name);
        choice.size = store_.read(values.size);
        choice.bold = store_.read(values.bold) != 0;
        choice.italic = store_.read(values.italic) != 0;

        auto* group = new QGroupBox(QString::fromUtf16(kSlotTitles[slot]), this);
        auto* row = new QHBoxLayout(group);
        SlotWidgets& widgets = widgets_[static_cast<size_t>(slot)];
        widgets.face = new ElidedLabel(group);
        widgets.size = new QLabel(group);
        widgets.size->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        widgets.size->setMinimumWidth(
            widgets.size->fontMetrics().horizontalAdvance(QStringLiteral("000")));
        widgets.button = new QPushButton(QStringLiteral("..."), group);
        row->addWidget(widgets.face, 1);
        row->addWidget(widgets.size);
        row->addWidget(new QLabel(QStringLiteral("pt"), group));
        row->addWidget(widgets.button);
        connect(widgets.button, &QPushButton::clicked, this, [this, slot] { choose(slot); });
        layout->addWidget(group);
        showSlot(slot);
    }
    layout->addStretch();
}

QString CPPageFont::faceText(int slot) const {
    return widgets_.at(static_cast<size_t>(slot)).face->fullText();
}

QString CPPageFont::sizeText(int slot) const {
    return widgets_.at(static_cast<size_t>(slot)).size->text();
}

void CPPageFont::choose(int slot) {
    if (const std::optional<FontChoice> chosen =
            ChooseFont(choices_[static_cast<size_t>(slot)], this)) {
        choices_[static_cast<size_t>(slot)] = *chosen;
        showSlot(slot);
    }
}

void CPPageFont::showSlot(int slot) {
    const FontChoice& choice = choices_[static_cast<size_t>(slot)];
    const SlotWidgets& widgets = widgets_[static_cast<size_t>(slot)];
    widgets.face->setFullText(choice.face);
    // The face label carries the slot's style, so bold and italic show without words.
    QFont font = widgets.face->font();
    font.setBold(choice.bold);
    font.setItalic(choice.italic);
    widgets.face->setFont(font);
    widgets.size->setText(QString::number(choice.size));
}

void CPPageFont::writeValues() {
    for (int slot = 0; slot < kSlots; ++slot) {
        const setting::FontSlotSettings& values = setting::kFontSlots[static_cast<size_t>(slot)];
        const FontChoice& choice = choices_[static_cast<size_t>(slot)];
        store_.write(values.name, choice.face);
        store_.write(values.size, choice.size);
        store_.write(values.bold, choice.bold ? 1 : 0);
        store_.write(values.italic, choice.italic ? 1 : 0);
    }
}

} // namespace korvel
