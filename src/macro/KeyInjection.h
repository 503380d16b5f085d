#pragma once

#include <QString>
#include <Qt>

namespace korvel {

// Sends one key press or release down the road a key from the keyboard takes: the shortcuts of
// the window first, then the focused widget. The modifiers are the ones held while the key
// goes, and become the program's view of the keyboard (QGuiApplication::keyboardModifiers).
// Without a focused window the key goes nowhere.
void SendKey(Qt::Key key, bool down, Qt::KeyboardModifiers modifiers, const QString& text = {});

} // namespace korvel
