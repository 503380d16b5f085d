#include "editor/ViewFonts.h"

#include "settings/SettingsStore.h"

#include <QFontDatabase>
#include <QStringList>
#include <cstdlib>

namespace korvel {

namespace {

// Faces that render Japanese in even columns, tried in order when the chosen face is missing.
// The set-up installs the IPA gothic; the others are what desktops commonly carry.
constexpr const char* kJapaneseMonospaceFaces[] = {
    "IPAGothic", "IPAゴシック", "Noto Sans Mono CJK JP", "VL Gothic", "Takao Gothic",
};

QString AvailableFace(const QString& wanted) {
    const QStringList families = QFontDatabase::families();
    if (families.contains(wanted, Qt::CaseInsensitive))
        return wanted;
    for (const char* face : kJapaneseMonospaceFaces) {
        const QString name = QString::fromUtf8(face);
        if (families.contains(name, Qt::CaseInsensitive))
            return name;
    }
    return QFontDatabase::systemFont(QFontDatabase::FixedFont).family();
}

} // namespace

int PixelHeightOf(int points, int dotsPerInchY) {
    return std::abs(points * dotsPerInchY / 72);
}

QFont SlotFont(const SettingsStore& store, int slot, const QFont& base, int dotsPerInchY) {
    const setting::FontSlotSettings& values = setting::kFontSlots.at(static_cast<size_t>(slot));
    QFont font = base;
    font.setFamily(AvailableFace(store.read(values.name)));
    font.setWeight(store.read(values.bold) != 0 ? QFont::Bold : QFont::Normal);
    font.setItalic(store.read(values.italic) != 0);
    font.setPixelSize(std::max(1, PixelHeightOf(store.read(values.size), dotsPerInchY)));
    font.setStyleHint(QFont::Monospace);
    return font;
}

} // namespace korvel
