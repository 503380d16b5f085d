#pragma once

#include <QColor>

namespace korvel {

// Colours are stored as the design's 0x00BBGGRR words, so that a settings file written by one
// version reads the same in every other; widgets see them as QColor only at the edge.
QColor ColorFromSetting(int value);
int SettingFromColor(const QColor& color);

} // namespace korvel
