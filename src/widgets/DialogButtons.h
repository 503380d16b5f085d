#pragma once

class QDialog;
class QHBoxLayout;

namespace korvel {

// The row of "OK" and "キャンセル" at the foot of a dialog, right-aligned, OK the default: OK
// calls the dialog's accept(), so a dialog can check its fields there.
QHBoxLayout* OkCancelRow(QDialog& dialog);

} // namespace korvel
