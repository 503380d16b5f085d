#pragma once

class QWidget;

namespace korvel {

// The smallest side of anything a pen or a finger has to hit in the settings dialogs: about
// the width of a fingertip on a 96 dpi screen, and comfortable for a pen on a denser one.
inline constexpr int kPenTarget = 36;

// Gives every button, field and list entry under root at least the pen target's height, so
// the dialogs are as easy to use on a tablet as with a mouse.
void EnlargeForPen(QWidget& root);

} // namespace korvel
