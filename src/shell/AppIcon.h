#pragma once

#include <QIcon>

namespace korvel {

// The program's icon: the desktop theme's "korveledit" when the theme has it, else the icon
// files installed beside the program, else those of the source tree.
QIcon ApplicationIcon();

} // namespace korvel
