#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

// The wildcard patterns of the file-type filters and of names typed into the browse dialog.
namespace korvel {

bool HasWildcard(QStringView text);

// Whether a name matches a pattern of "*" and "?", in any letter case. Several patterns may be
// given separated by ";". As users of these patterns expect, "x.*" also matches a name "x"
// without a dot, so "*.*" matches every name.
bool MatchesWildcard(QStringView name, QStringView patterns);

// The file list's extension filter for a type's patterns: ".txt" for "*.txt", ".ini" and ".inf"
// for "*.ini;*.inf". Empty, meaning every file, when one of the patterns is "*" or "*.*".
QStringList ExtensionFilterOf(QStringView patterns);

// The extension a name without one gets from its type: the first pattern's extension with its
// dot (".txt" for "*.txt;*.text"); empty when that pattern names none ("*.*", "*").
QString DefaultExtensionOf(QStringView patterns);

} // namespace korvel
