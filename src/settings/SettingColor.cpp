#include "settings/SettingColor.h"

namespace korvel {

QColor ColorFromSetting(int value) {
    const auto bgr = static_cast<unsigned>(value);
    return QColor(static_cast<int>(bgr & 0xFF), static_cast<int>((bgr >> 8) & 0xFF),
                  static_cast<int>((bgr >> 16) & 0xFF));
}

int SettingFromColor(const QColor& color) {
    const QColor rgb = color.toRgb();
    return rgb.red() | (rgb.green() << 8) | (rgb.blue() << 16);
}

} // namespace korvel
