#include "browser/PropertiesDialog.h"

#include "support/ScratchFolder.h"

#include <QCheckBox>
#include <QLabel>

namespace korvel {
namespace {

using testing::ScratchFolder;

// The dialog shows path, size and time, and sets the read-only state both ways; a failed change
// is reported and keeps it open, and a link's permissions, which are its target's, are left alone.
TEST(PropertiesDialog, ShowsTheEntryAndChangesItsReadOnlyState) {
    ScratchFolder folder;
    folder.writeSized("a.txt", 12345);
    folder.setModified("a.txt", QDateTime(QDate(2023, 4, 5), QTime(6, 7, 8)));
    folder.link("link", folder.path("a.txt"));
    const QString path = folder.path("a.txt");
    for (const bool readOnly : {true, false}) {
        PropertiesDialog dialog(path);
        QStringList texts;
        for (const QLabel* label : dialog.findChildren<QLabel*>())
            texts.append(label->text());
        EXPECT_TRUE(texts.contains(path) && texts.contains(QStringLiteral("12,345 バイト")) &&
                    texts.contains(QStringLiteral("2023/04/05 06:07:08")))
            << texts.join(u'|').toStdString();
        EXPECT_EQ(dialog.isReadOnlyChecked(), !readOnly);
        dialog.setReadOnlyChecked(readOnly);
        dialog.accept();
        EXPECT_EQ(dialog.result(), QDialog::Accepted);
        EXPECT_EQ(folder.isReadOnly("a.txt"), readOnly);
        EXPECT_TRUE(dialog.apply()); // nothing left to change
    }
    EXPECT_FALSE(PropertiesDialog(folder.path("link")).findChild<QCheckBox*>()->isEnabled());

    PropertiesDialog dialog(path);
    QFile::remove(path);
    dialog.setReadOnlyChecked(true);
    ScriptedMessageService messages{MessageAnswer::Ok};
    dialog.accept();
    EXPECT_EQ(messages.shownIds(), QList<int>{30507});
    EXPECT_NE(dialog.result(), QDialog::Accepted);
}

} // namespace
} // namespace korvel
