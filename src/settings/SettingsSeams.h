#pragma once

#include <QString>
#include <functional>
#include <optional>

class QWidget;

namespace korvel {

// What the pages need from the layers above the settings: the program fills these in.
struct SettingsSeams {
    // Whether files with extension (".txt") open with this program.
    std::function<bool(const QString& extension)> isAssociated;
    // Makes extension open with this program (associate) or gives it back to its former
    // owner; false when that could not be written.
    std::function<bool(const QString& extension, bool associate)> setAssociated;
    // "マクロファイル選択": the browse dialog for the start-up macro, starting at current;
    // the chosen path, or nothing when it was cancelled.
    std::function<std::optional<QString>(const QString& current, QWidget* parent)> chooseMacroFile;
};

} // namespace korvel
