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

// The sizes every icon is drawn in beforehand: the small icon of 100% to 400% and the steps
// between, so that no row ever gets an icon larger or smaller than the square it was laid out
// for.
constexpr int kIconSizes[] = {16, 20, 24, 32, 40, 48, 64};

// The icon filling a square of exactly size pixels, centred. Themes and styles offer odd shapes
// (a speaker 16 x 14) and odd sizes (a folder at 16 only, a page at 22 but not 16), and a view
// draws what it is given.
QPixmap SquarePixmap(const QIcon& icon, int size) {
    QPixmap square(size, size);
    square.fill(Qt::transparent);
    const QPixmap source = icon.pixmap(QSize(size, size), 1.0);
    if (source.isNull())
        return square;
    const QSize fitted = source.size().scaled(size, size, Qt::KeepAspectRatio);
    QPainter painter(&square);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(
        QRect(QPoint((size - fitted.width()) / 2, (size - fitted.height()) / 2), fitted), source);
    return square;
}

QIcon Squared(const QIcon& base, bool shortcutMark = false) {
    QIcon squared;
    for (int size : kIconSizes) {
        QPixmap pixmap = SquarePixmap(base, size);
        if (shortcutMark) {
            QPainter painter(&pixmap);
            const int emblemSize = qMax(8, size / 2);
            painter.drawPixmap(0, size - emblemSize, ShortcutEmblem(emblemSize));
        }
        squared.addPixmap(pixmap);
    }
    return squared;
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
    for (int plain = 0; plain < file_icon::Count; plain += 2) {
        icons[plain + file_icon::ShortcutMark] = Squared(icons[plain], true);
        icons[plain] = Squared(icons[plain]);
    }
    return icons;
}

} // namespace

const QIcon& FileIcon(int index) {
    static const std::array<QIcon, file_icon::Count> icons = MakeFileIcons();
    return icons[std::size_t(qBound(0, index, file_icon::Count - 1))];
}

const QIcon& FolderIcon() {
    static const QIcon icon = Squared(ThemeIcon("folder", QStyle::SP_DirClosedIcon));
    return icon;
}

const QIcon& OpenFolderIcon() {
    static const QIcon icon = Squared(ThemeIcon("folder-open", QStyle::SP_DirOpenIcon));
    return icon;
}

const QIcon& DeviceIcon() {
    static const QIcon icon = Squared(ThemeIcon("drive-harddisk", QStyle::SP_DriveHDIcon));
    return icon;
}

} // namespace korvel
