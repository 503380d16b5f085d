#include "browser/FileIcons.h"

#include "browser/FileListing.h"

#include <QApplication>
#include <QPainter>
#include <QStyle>
#include <array>

namespace korvel {
namespace {

QIcon ThemeIcon(const char* name, QStyle::StandardPixmap fallback) {
    QIcon icon = QIcon::fromTheme(QString::fromLatin1(name));
    if (icon.isNull())
        icon = QApplication::style()->standardIcon(fallback);
    return icon;
}

QIcon ThemeIcon(const char* name, const char* secondName, QStyle::StandardPixmap fallback) {
    const QIcon icon = QIcon::fromTheme(QString::fromLatin1(name));
    return icon.isNull() ? ThemeIcon(secondName, fallback) : icon;
}

// The theme's link emblem, or a small arrow drawn here.
QPixmap ShortcutEmblem(int size) {
    const QIcon emblem = QIcon::fromTheme(QStringLiteral("emblem-symbolic-link"));
    if (!emblem.isNull())
        return emblem.pixmap(size, size);
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::black, 1));
    painter.setBrush(Qt::white);
    painter.drawRect(QRectF(0.5, 0.5, size - 1.0, size - 1.0));
    painter.setPen(QPen(Qt::blue, qMax(1.0, size / 6.0)));
    painter.drawLine(QPointF(size * 0.25, size * 0.75), QPointF(size * 0.7, size * 0.3));
    painter.drawLine(QPointF(size * 0.4, size * 0.3), QPointF(size * 0.7, size * 0.3));
    painter.drawLine(QPointF(size * 0.7, size * 0.3), QPointF(size * 0.7, size * 0.6));
    return pixmap;
}

QIcon WithShortcutMark(const QIcon& base) {
    QIcon marked;
    for (int size : {16, 22, 24, 32, 48}) {
        QPixmap pixmap = base.pixmap(size, size);
        if (pixmap.isNull())
            continue;
        QPainter painter(&pixmap);
        const int emblemSize = qMax(8, size / 2);
        painter.drawPixmap(0, size - emblemSize, ShortcutEmblem(emblemSize));
        painter.end();
        marked.addPixmap(pixmap);
    }
    return marked;
}

std::array<QIcon, file_icon::Count> MakeFileIcons() {
    std::array<QIcon, file_icon::Count> icons;
    icons[file_icon::Text] = ThemeIcon("text-plain", "text-x-generic", QStyle::SP_FileIcon);
    icons[file_icon::Folder] = FolderIcon();
    icons[file_icon::Image] = ThemeIcon("image-x-generic", QStyle::SP_FileIcon);
    icons[file_icon::Audio] = ThemeIcon("audio-x-generic", QStyle::SP_MediaVolume);
    icons[file_icon::Html] = ThemeIcon("text-html", QStyle::SP_FileIcon);
    icons[file_icon::Program] = ThemeIcon("application-x-executable", QStyle::SP_ComputerIcon);
    icons[file_icon::Generic] = ThemeIcon("unknown", "text-x-generic", QStyle::SP_FileIcon);
    for (int plain = 0; plain < file_icon::Count; plain += 2)
        icons[plain + file_icon::ShortcutMark] = WithShortcutMark(icons[plain]);
    return icons;
}

} // namespace

const QIcon& FileIcon(int index) {
    static const std::array<QIcon, file_icon::Count> icons = MakeFileIcons();
    return icons[std::size_t(qBound(0, index, file_icon::Count - 1))];
}

const QIcon& FolderIcon() {
    static const QIcon icon = ThemeIcon("folder", QStyle::SP_DirClosedIcon);
    return icon;
}

const QIcon& OpenFolderIcon() {
    static const QIcon icon = ThemeIcon("folder-open", QStyle::SP_DirOpenIcon);
    return icon;
}

const QIcon& DeviceIcon() {
    static const QIcon icon = ThemeIcon("drive-harddisk", QStyle::SP_DriveHDIcon);
    return icon;
}

} // namespace korvel
