#pragma once

#include <QString>

class QWidget;

namespace korvel {

// "マクロ・ロードエラー": what the checker found in a macro, in a read-only box that scrolls.
void ShowMacroLoadReport(const QString& report, QWidget* parent);

} // namespace korvel
