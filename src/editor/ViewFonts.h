#pragma once

#include <QFont>

namespace korvel {

class SettingsStore;

// The font of one slot (0 to 3, "フォント１" to "フォント４") from its four settings. The size is
// in points and becomes pixels as size x vertical dots per inch / 72, truncated, so a slot looks
// the same size on every screen of the same density. A face the system lacks falls back to its
// monospaced Japanese font.
QFont SlotFont(const SettingsStore& store, int slot, const QFont& base, int dotsPerInchY);

// The pixel height of a point size, with the truncating division of the stored arithmetic.
int PixelHeightOf(int points, int dotsPerInchY);

} // namespace korvel
