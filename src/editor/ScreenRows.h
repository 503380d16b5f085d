#pragma once

class QPlainTextEdit;

namespace korvel {

// Rows as the user sees them: a wrapped line takes as many rows as it is drawn on. Positions
// are document positions.

// The screen row of position, counted from the top of the control's viewport; negative above.
int RowOnScreen(const QPlainTextEdit* control, int position);
// How many whole rows the viewport shows.
int RowsOnScreen(const QPlainTextEdit* control);
// Scrolls so that the row of position stands rowFromTop rows below the top, as far as the text
// allows.
void ScrollRowTo(QPlainTextEdit* control, int position, int rowFromTop);

} // namespace korvel
