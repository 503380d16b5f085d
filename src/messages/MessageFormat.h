#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

namespace korvel {

// Fills the fields of a string-table text from the arguments, in order, the way the program's
// printf-style texts expect: "%s" and "%d", each with an optional "0" flag and width ("%02d"
// pads a number with zeros, a width alone pads with blanks on the left); "%%" is one "%".
// Arguments are inserted as they are, never read as formats themselves. A field with no argument
// left, or one of another kind, stays as written, so a missing argument shows instead of
// vanishing.
QString FormatMessage(QStringView format, const QStringList& arguments);

} // namespace korvel
