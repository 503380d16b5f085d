#pragma once

#include <QString>

class QPlainTextEdit;

namespace korvel::bench {

// The reference the editor is measured against: the simplest Qt code that shows a file, the
// whole file read by QFile::readAll, decoded by QStringDecoder (ICU's converter for
// "Shift_JIS") and given to QPlainTextEdit::setPlainText. encoding is a QStringDecoder name.
// False, with the reason on stderr, when the file cannot be read or decoded.
bool OpenTheSimpleWay(QPlainTextEdit& edit, const QString& path, const char* encoding);

} // namespace korvel::bench
