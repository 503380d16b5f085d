#pragma once

#include <QIcon>

namespace korvel {

// The icon of a `FileIconIndex` (0-13): the desktop theme's icon of the kind, or a style icon
// where the theme has none; the odd numbers carry the shortcut mark.
const QIcon& FileIcon(int index);

// The folder tree's images: a closed and an open folder, and the device.
const QIcon& FolderIcon();
const QIcon& OpenFolderIcon();
const QIcon& DeviceIcon();

} // namespace korvel
