#pragma once

#include <QMargins>
#include <QRect>

class QWidget;

namespace korvel {

// Where a window goes so that all of it, the frame a window manager adds included, stands on
// the available part of the screen: client is the window's own geometry, frame the margins of
// the frame around it, available the screen's work area. The size shrinks only where it must,
// never below minimum; the position moves only as far as it must.
QRect FittedGeometry(QRect client, QMargins frame, QRect available, QSize minimum);

// Sizes window to wanted, or less on a small screen, and keeps it on the screen once it is
// shown: the frame is known only when the window manager has framed the window, so the fit is
// made again then.
void FitToScreen(QWidget& window, QSize wanted);

} // namespace korvel
