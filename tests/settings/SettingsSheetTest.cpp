// The settings sheet on its real pages: what each page refuses and asks, what confirming writes
// and cancelling does not, and the associations and the macro file reached through the seams.
#include "settings/SettingsSheet.h"

#include "messages/testing/ScriptedMessageService.h"
#include "settings/CPPageColor.h"
#include "settings/CPPageEdit.h"
#include "settings/CPPageFile.h"
#include "settings/CPPageFont.h"
#include "settings/CPPageTap.h"
#include "settings/ColorPicker.h"
#include "settings/SettingColor.h"
#include "settings/SettingsStore.h"
#include "settings/WrappingCheckBox.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>
#include <map>
#include <memory>

// Readable values in failure output.
static void PrintTo(const QColor& color, std::ostream* out) {
    *out << color.name().toStdString();
}
static void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace korvel {
namespace {

using Answer = MessageAnswer;
constexpr int kUnwritten = -1;

// Runs act on the modal dialog of type T once it shows.
template <typename T> void WhenDialogShows(std::function<void(T&)> act) {
    QTimer::singleShot(0, [act] {
        auto* dialog = qobject_cast<T*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        act(*dialog);
    });
}

class SettingsSheetTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir_.isValid());
        store_ = std::make_unique<SettingsStore>(dir_.filePath(QStringLiteral("settings.ini")));
    }

    // A sheet on the screen, as the user gets it.
    std::unique_ptr<SettingsSheet> openSheet(const SettingsSeams& seams = {}) {
        auto sheet = std::make_unique<SettingsSheet>(*store_, seams);
        sheet->show();
        sheet->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(sheet.get()));
        return sheet;
    }

    int stored(const IntSetting& setting) const {
        return store_->readInt(QLatin1StringView(setting.name), kUnwritten);
    }
    bool nothingWritten() const { return store_->openGroup(kSettingsGroup)->childKeys().isEmpty(); }

    QTemporaryDir dir_;
    std::unique_ptr<SettingsStore> store_;
};

// A tab width outside 1-80 keeps the sheet open on the edit page with the field active and
// writes nothing of any page; the bounds themselves are written.
TEST_F(SettingsSheetTest, TabWidthIsCheckedBeforeAnythingIsWritten) {
    const struct {
        const char* typed;
        int written; // kUnwritten: refused with 40005
    } rows[] = {{"0", kUnwritten}, {"81", kUnwritten}, {"", kUnwritten}, {"x8", kUnwritten},
                {"1", 1},          {"80", 80},         {" 12 ", 12}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.typed);
        QFile::remove(dir_.filePath(QStringLiteral("settings.ini")));
        auto sheet = openSheet();
        sheet->tabs()->setCurrentIndex(4); // the fault is found from another page
        sheet->tapPage()->zoomList()->setCurrentIndex(0);
        sheet->editPage()->tabField()->setText(QString::fromLatin1(row.typed));
        const bool refused = row.written == kUnwritten;
        ScriptedMessageService messages;
        if (refused)
            messages.script({Answer::Ok});
        sheet->accept();
        EXPECT_EQ(messages.shownIds(), refused ? QList<int>{40005} : QList<int>{});
        EXPECT_EQ(sheet->result(), refused ? QDialog::Rejected : QDialog::Accepted);
        EXPECT_EQ(stored(setting::TAB_SIZE), row.written);
        if (refused) {
            EXPECT_TRUE(nothingWritten());
            EXPECT_EQ(sheet->tabs()->currentIndex(), 1);
            QApplication::processEvents();
            EXPECT_TRUE(sheet->editPage()->tabField()->hasFocus());
        }
    }
}

// A start-up macro that is switched on must name an existing file. No path or a folder: Yes
// switches the load off and the sheet closes, No keeps it open. A missing file keeps it open.
TEST_F(SettingsSheetTest, StartupMacroIsCheckedOnConfirm) {
    const QString file = dir_.filePath(QStringLiteral("start.mcr"));
    QFile(file).open(QIODevice::WriteOnly);
    const struct {
        bool on;
        QString path;
        std::optional<Answer> answer;
        int shown;
        int load; // kUnwritten: the sheet stayed open
    } rows[] = {
        {true, QString(), Answer::Yes, 30041, 0},
        {true, QString(), Answer::No, 30041, kUnwritten},
        {true, dir_.path(), Answer::Yes, 30042, 0},
        {true, dir_.path(), Answer::No, 30042, kUnwritten},
        {true, dir_.filePath(QStringLiteral("gone.mcr")), Answer::Ok, 40020, kUnwritten},
        {true, file, std::nullopt, 0, 1},
        {false, QString(), std::nullopt, 0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.path.toStdString() + (row.on ? " on" : " off"));
        QFile::remove(dir_.filePath(QStringLiteral("settings.ini")));
        auto sheet = openSheet();
        sheet->filePage()->loadMacroBox()->setChecked(row.on);
        sheet->filePage()->macroField()->setText(row.path);
        ScriptedMessageService messages;
        if (row.answer)
            messages.script({*row.answer});
        sheet->accept();
        EXPECT_EQ(messages.shownIds(), row.shown ? QList<int>{row.shown} : QList<int>{});
        EXPECT_EQ(stored(setting::LOAD_DAFAULT_MACRO), row.load);
        if (row.load == kUnwritten) {
            EXPECT_EQ(sheet->result(), QDialog::Rejected);
            EXPECT_EQ(sheet->tabs()->currentWidget()->findChild<CPPageFile*>(), sheet->filePage());
        } else {
            EXPECT_EQ(store_->read(setting::DEFAULT_MACRO_FILE_NAME), row.path);
        }
    }
}

// Every page's changes reach the store on OK, under their own names; キャンセル writes
// nothing at all.
TEST_F(SettingsSheetTest, ConfirmWritesEveryPageAndCancelWritesNothing) {
    for (const bool confirm : {false, true}) {
        SCOPED_TRACE(confirm ? "OK" : "キャンセル");
        QFile::remove(dir_.filePath(QStringLiteral("settings.ini")));
        auto sheet = openSheet();
        WhenDialogShows<ColorPicker>([](ColorPicker& picker) {
            picker.setColor(QColor(0x12, 0x34, 0x56));
            picker.accept();
        });
        sheet->colorPage()->backgroundButton()->click();
        WhenDialogShows<FontChooser>([](FontChooser& chooser) {
            chooser.faceField()->setText(QStringLiteral("IPAGothic"));
            chooser.sizeField()->setText(QStringLiteral("20"));
            chooser.boldBox()->setChecked(true);
            chooser.italicBox()->setChecked(true);
            chooser.accept();
        });
        sheet->fontPage()->chooseButton(2)->click();
        CPPageEdit& edit = *sheet->editPage();
        edit.tabField()->setText(QStringLiteral("4"));
        edit.codeSetBox()->setChecked(false);
        edit.katakanaButton(1)->setChecked(true);
        CPPageTap& tap = *sheet->tapPage();
        tap.delayButton(0)->setChecked(true);
        tap.selectButton(0)->setChecked(true);
        tap.zoomList()->setCurrentIndex(0); // "なし"
        if (!confirm) {
            sheet->reject();
            EXPECT_TRUE(nothingWritten());
            continue;
        }
        sheet->accept();
        ASSERT_EQ(sheet->result(), QDialog::Accepted);
        const std::pair<IntSetting, int> written[] = {
            {setting::COLOR_BACKGROUND, 0x563412},
            {setting::COLOR_TEXT, 0},
            {setting::FONT3_SIZE, 20},
            {setting::FONT3_BOLD, 1},
            {setting::FONT3_ITALIC, 1},
            {setting::FONT2_SIZE, 9},
            {setting::FONT2_BOLD, 0},
            {setting::TAB_SIZE, 4},
            {setting::SELECTABLE_CODE_SET, 0},
            {setting::JIS_KATAKANA_MODE, 1},
            {setting::LONG_DELAY, 0},
            {setting::SELECT_BY_SINGLE_TAP, 0},
            {setting::STR_ZOOM_METHOD, 0},
            {setting::LOAD_DAFAULT_MACRO, 0},
        };
        for (const auto& [value, expected] : written)
            EXPECT_EQ(stored(value), expected) << value.name;
        EXPECT_EQ(store_->read(setting::FONT3_NAME), QStringLiteral("IPAGothic"));
        EXPECT_EQ(store_->read(setting::FONT1_NAME), DefaultValue(setting::FONT1_NAME));

        // A new sheet starts from what was written.
        auto again = openSheet();
        EXPECT_EQ(again->editPage()->tabField()->text(), QStringLiteral("4"));
        EXPECT_TRUE(again->editPage()->katakanaButton(1)->isChecked());
        EXPECT_TRUE(again->tapPage()->delayButton(0)->isChecked());
        EXPECT_EQ(again->tapPage()->zoomList()->currentIndex(), 0);
        EXPECT_EQ(again->colorPage()->backgroundColor(), QColor(0x12, 0x34, 0x56));
        EXPECT_EQ(again->fontPage()->sizeText(2), QStringLiteral("20"));
    }
}

// The chosen colours show in the preview; a cancelled picker changes nothing; "リセット" is
// black text on white.
TEST_F(SettingsSheetTest, ColorPageShowsChoicesAndResets) {
    store_->write(setting::COLOR_TEXT, 0x0000FF);
    CPPageColor page(*store_);
    const auto previewText = [&page] { return page.preview()->palette().color(QPalette::Text); };
    EXPECT_EQ(previewText(), QColor(Qt::red));
    WhenDialogShows<ColorPicker>([](ColorPicker& picker) {
        picker.setColor(Qt::blue);
        picker.reject();
    });
    page.textButton()->click();
    EXPECT_EQ(page.textColor(), QColor(Qt::red));
    WhenDialogShows<ColorPicker>([](ColorPicker& picker) {
        EXPECT_EQ(picker.color(), QColor(Qt::white)); // opens on the current colour
        picker.setColor(Qt::yellow);
        picker.accept();
    });
    page.backgroundButton()->click();
    EXPECT_EQ(page.preview()->palette().color(QPalette::Base), QColor(Qt::yellow));
    page.resetButton()->click();
    EXPECT_EQ(previewText(), QColor(Qt::black));
    EXPECT_EQ(page.backgroundColor(), QColor(Qt::white));
}

// A font slot's labels show what the chooser returned; a cancelled chooser leaves the slot.
TEST_F(SettingsSheetTest, FontPageShowsTheChosenFont) {
    CPPageFont page(*store_);
    WhenDialogShows<FontChooser>([](FontChooser& chooser) {
        EXPECT_EQ(chooser.choice().size, 18); // opens on the slot's own values
        chooser.sizeField()->setText(QStringLiteral("30"));
        chooser.reject();
    });
    page.chooseButton(3)->click();
    EXPECT_EQ(page.sizeText(3), QStringLiteral("18"));
    WhenDialogShows<FontChooser>([](FontChooser& chooser) {
        chooser.faceField()->setText(QStringLiteral("Some Face"));
        chooser.sizeField()->setText(QStringLiteral("30"));
        chooser.accept();
    });
    page.chooseButton(3)->click();
    EXPECT_EQ(page.faceText(3), QStringLiteral("Some Face"));
    EXPECT_EQ(page.sizeText(3), QStringLiteral("30"));
    EXPECT_EQ(page.faceText(0), DefaultValue(setting::FONT1_NAME));
}

// A box is checked when all of its extensions are ours; on OK only the boxes the user changed
// are applied, each extension once, and any failure is told once with 40006.
TEST_F(SettingsSheetTest, AssociationBoxesApplyTheirChanges) {
    const struct {
        QString failing;
        QList<int> shown;
    } rows[] = {{QString(), {}}, {QStringLiteral(".xml"), {40006}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.failing.toStdString());
        std::map<QString, bool> associated = {{QStringLiteral(".txt"), true},
                                              {QStringLiteral(".htm"), true},
                                              {QStringLiteral(".ini"), true}};
        QStringList calls;
        SettingsSeams seams;
        seams.isAssociated = [&](const QString& extension) { return associated[extension]; };
        seams.setAssociated = [&](const QString& extension, bool associate) {
            calls.append(extension + (associate ? u'+' : u'-'));
            return extension != row.failing;
        };
        auto sheet = openSheet(seams);
        const QList<QCheckBox*>& boxes = sheet->filePage()->extensionBoxes();
        ASSERT_EQ(boxes.size(), 5);
        QList<bool> checked;
        for (const QCheckBox* box : boxes)
            checked.append(box->isChecked());
        // .htm alone does not make "HTM, HTML, XML" ours.
        EXPECT_EQ(checked, (QList<bool>{true, false, true, false, false}));
        boxes[0]->setChecked(false);
        boxes[1]->setChecked(true);
        boxes[4]->setChecked(true);
        ScriptedMessageService messages;
        if (!row.shown.isEmpty())
            messages.script({Answer::Ok});
        sheet->accept();
        EXPECT_EQ(calls, (QStringList{".txt-", ".htm+", ".html+", ".xml+", ".mcr+"}));
        EXPECT_EQ(messages.shownIds(), row.shown);
        EXPECT_EQ(sheet->result(), QDialog::Accepted);
    }
}

// "..." asks the browse seam, starting from the path in the field; a cancelled browse leaves
// the field as it was.
TEST_F(SettingsSheetTest, MacroBrowseFillsThePathWhenAFileIsChosen) {
    store_->write(setting::DEFAULT_MACRO_FILE_NAME, QStringLiteral("/old/a.mcr"));
    std::optional<QString> answer;
    QStringList asked;
    SettingsSeams seams;
    seams.chooseMacroFile = [&](const QString& current, QWidget*) {
        asked.append(current);
        return answer;
    };
    CPPageFile page(*store_, seams);
    page.browseButton()->click();
    EXPECT_EQ(page.macroField()->text(), QStringLiteral("/old/a.mcr"));
    answer = QStringLiteral("/new/b.mcr");
    page.browseButton()->click();
    EXPECT_EQ(page.macroField()->text(), QStringLiteral("/new/b.mcr"));
    EXPECT_EQ(asked, (QStringList{"/old/a.mcr", "/old/a.mcr"}));
}

// The long code-set label wraps instead of widening the page, and a tap on it toggles the box.
TEST_F(SettingsSheetTest, WrappedCheckBoxTextTogglesTheBox) {
    WrappingCheckBox box(
        QStringLiteral("ファイル選択ダイアログに【コード】プルダウンリストを表示する"));
    box.resize(150, box.heightForWidth(150));
    box.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&box));
    EXPECT_LE(box.minimumSizeHint().width(), 150);
    QWidget* text = box.childAt(box.width() - 5, 8);
    ASSERT_NE(text, nullptr);
    ASSERT_NE(text, box.box());
    QTest::mouseClick(text, Qt::LeftButton);
    EXPECT_TRUE(box.isChecked());
    QTest::mouseClick(text, Qt::LeftButton);
    EXPECT_FALSE(box.isChecked());
}

} // namespace
} // namespace korvel
