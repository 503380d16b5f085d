#include "browser/PropertiesDialog.h"

#include "messages/testing/ScriptedMessageService.h"
#include "support/ScratchFolder.h"

#include <QCheckBox>
#include <QLabel>
#include <gtest/gtest.h>

namespace korvel {
namespace {

using testing::ScratchFolder;

bool OwnerMayWrite(const QString& path) {
    return QFile::permissions(path) & QFile::WriteOwner;
}

QStringList Texts(const QDialog& dialog) {
    QStringList texts;
    for (const QLabel* label : dialog.findChildren<QLabel*>())
        texts.append(label->text());
    return texts;
}

TEST(PropertiesDialog, ShowsPathSizeAndTime) {
    ScratchFolder folder;
    folder.writeSized("a.txt", 12345);
    folder.setModified("a.txt", QDateTime(QDate(2023, 4, 5), QTime(6, 7, 8)));
    const PropertiesDialog dialog(folder.path("a.txt"));
    const QStringList texts = Texts(dialog);
    EXPECT_TRUE(texts.contains(folder.path("a.txt")));
    EXPECT_TRUE(texts.contains(QStringLiteral("12,345 バイト")));
    EXPECT_TRUE(texts.contains(QStringLiteral("2023/04/05 06:07:08")));
    EXPECT_FALSE(dialog.isReadOnlyChecked());
}

TEST(PropertiesDialog, ChangesTheReadOnlyStateBothWays) {
    ScratchFolder folder;
    folder.write("a.txt");
    const QString path = folder.path("a.txt");
    {
        PropertiesDialog dialog(path);
        dialog.setReadOnlyChecked(true);
        dialog.accept();
        EXPECT_EQ(dialog.result(), QDialog::Accepted);
        EXPECT_FALSE(OwnerMayWrite(path));
    }
    PropertiesDialog dialog(path);
    EXPECT_TRUE(dialog.isReadOnlyChecked());
    dialog.setReadOnlyChecked(false);
    EXPECT_TRUE(dialog.apply());
    EXPECT_TRUE(OwnerMayWrite(path));
}

TEST(PropertiesDialog, ReportsAFailedChangeAndStaysOpen) {
    ScratchFolder folder;
    folder.write("a.txt");
    const QString path = folder.path("a.txt");
    PropertiesDialog dialog(path);
    QFile::remove(path);
    dialog.setReadOnlyChecked(true);
    ScriptedMessageService messages{MessageAnswer::Ok};
    dialog.accept();
    EXPECT_EQ(messages.shownIds(), QList<int>{30507});
    EXPECT_EQ(messages.shown().front().icon, MessageIcon::Stop);
    EXPECT_NE(dialog.result(), QDialog::Accepted);
}

TEST(PropertiesDialog, LeavesALinksPermissionsAlone) {
    ScratchFolder folder;
    folder.write("a.txt");
    folder.link("link", folder.path("a.txt"));
    const PropertiesDialog dialog(folder.path("link"));
    EXPECT_FALSE(dialog.findChild<QCheckBox*>()->isEnabled());
}

} // namespace
} // namespace korvel
