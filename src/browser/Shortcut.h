#pragma once

#include <QByteArrayView>
#include <QString>
#include <QStringList>
#include <QStringView>
#include <optional>

// Shortcuts as the browser follows them: ".lnk" text files ("count#target", in the 8-bit code
// page) and symbolic links.
namespace korvel {

// How much of a .lnk file is read. The browse dialog reads more than the file list does; the two
// limits have always differed and a shortcut longer than the list's limit shows unresolved in the
// list yet opens from the dialog, so both are kept.
inline constexpr qsizetype kShortcutReadLimit = 780;
inline constexpr qsizetype kListShortcutReadLimit = 520;

// Whether a name's extension (from its last ".") is ".lnk", in any letter case.
bool HasShortcutExtension(QStringView name);

// The target text of a .lnk file's bytes: after the first "#", up to the first CR LF (or NUL),
// one pair of enclosing double quotes dropped, decoded from CP932. Empty when there is none.
// Takes any bytes.
QString ParseShortcutText(QByteArrayView bytes);

// The paths a target text may lead to, in the order they are tried. "\\" reads as "/" and a
// leading "\\Windows\\" as "/usr/bin/". A target without a leading separator is only followed
// for a program (".exe"), first in "/usr/bin/", then in "/".
QStringList ShortcutCandidates(const QString& targetText);

struct ShortcutTarget {
    QString path;
    bool isFolder = false;
};

// Follows a shortcut: a symbolic link (whatever its name) to what it points at, a .lnk file to
// the first of its candidates that exists. Nothing when the path is not a shortcut, cannot be
// read, or leads nowhere.
std::optional<ShortcutTarget> ResolveShortcut(const QString& path,
                                              qsizetype readLimit = kShortcutReadLimit);

} // namespace korvel
