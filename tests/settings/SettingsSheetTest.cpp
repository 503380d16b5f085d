// The settings sheet on its real pages and the choosers they open: what each refuses and asks,
// what confirming writes and cancelling does not, the custom colours kept, and the associations
// and the macro file reached through the seams.
#include "settings/SettingsSheet.h"

#include "messages/testing/ScriptedMessageService.h"
#include "settings/CPPageColor.h"
#include "settings/CPPageEdit.h"
#include "settings/CPPageFile.h"
#include "settings/CPPageFont.h"
#include "settings/CPPageTap.h"
#include "settings/ColorPicker.h"
#include "settings/ColorSwatch.h"
#include "settings/FontChooser.h"
#include "settings/SettingColor.h"
#include "settings/SettingsStore.h"
#include "settings/WrappingCheckBox.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QFontDatabase>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QSlider>
#include <QSpinBox>
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

// Runs act with answer scripted for each box expected, and checks that those boxes showed.
void ExpectBoxes(const QList<int>& expected, Answer answer, const std::function<void()>& act) {
    ScriptedMessageService messages;
    for (qsizetype i = 0; i < expected.size(); ++i)
        messages.script({answer});
    act();
    EXPECT_EQ(messages.shownIds(), expected);
}

class SettingsSheetTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(dir_.isValid()); }

    // A sheet on the screen, as the user gets it, over an empty settings file.
    std::unique_ptr<SettingsSheet> openSheet(const SettingsSeams& seams = {}, bool fresh = true) {
        if (fresh)
            store_ = std::make_unique<SettingsStore>(dir_.filePath(QString::number(++files_)));
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
    int files_ = 0;
    std::unique_ptr<SettingsStore> store_ =
        std::make_unique<SettingsStore>(dir_.filePath(QStringLiteral("settings.ini")));
};

// A tab width outside 1-80 (40005), found from another page, brings the edit page to the front
// with the field active and writes nothing of any page.
TEST_F(SettingsSheetTest, TabWidthIsCheckedBeforeAnythingIsWritten) {
    const std::pair<const char*, int> rows[] = {{"0", kUnwritten},  {"81", kUnwritten},
                                                {"x8", kUnwritten}, {"1", 1},
                                                {"80", 80},         {" 12 ", 12}};
    for (const auto& [typed, written] : rows) {
        SCOPED_TRACE(typed);
        auto sheet = openSheet();
        sheet->tabs()->setCurrentIndex(4);
        sheet->tapPage()->zoomList()->setCurrentIndex(0);
        sheet->editPage()->tabField()->setText(QString::fromLatin1(typed));
        const bool refused = written == kUnwritten;
        ExpectBoxes(refused ? QList<int>{40005} : QList<int>{}, Answer::Ok,
                    [&] { sheet->accept(); });
        EXPECT_EQ(sheet->result(), refused ? QDialog::Rejected : QDialog::Accepted);
        EXPECT_EQ(stored(setting::TAB_SIZE), written);
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
    const QString gone = dir_.filePath(QStringLiteral("gone.mcr"));
    const struct {
        bool on;
        QString path;
        Answer answer;
        QList<int> shown;
        int load; // kUnwritten: the sheet stayed open
    } rows[] = {
        {true, QString(), Answer::Yes, {30041}, 0},
        {true, QString(), Answer::No, {30041}, kUnwritten},
        {true, dir_.path(), Answer::Yes, {30042}, 0},
        {true, gone, Answer::Ok, {40020}, kUnwritten},
        {true, file, Answer::Ok, {}, 1},
        {false, QString(), Answer::Ok, {}, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.path.toStdString() + (row.on ? " on" : " off"));
        auto sheet = openSheet();
        sheet->filePage()->loadMacroBox()->setChecked(row.on);
        sheet->filePage()->macroField()->setText(row.path);
        ExpectBoxes(row.shown, row.answer, [&] { sheet->accept(); });
        EXPECT_EQ(stored(setting::LOAD_DAFAULT_MACRO), row.load);
        if (row.load == kUnwritten)
            EXPECT_EQ(sheet->tabs()->currentWidget()->findChild<CPPageFile*>(), sheet->filePage());
        else
            EXPECT_EQ(store_->read(setting::DEFAULT_MACRO_FILE_NAME), row.path);
    }
}

// Every page's changes reach the store on OK, under their own names, and a new sheet starts from
// them; キャンセル writes nothing at all.
TEST_F(SettingsSheetTest, ConfirmWritesEveryPageAndCancelWritesNothing) {
    for (const bool confirm : {false, true}) {
        SCOPED_TRACE(confirm ? "OK" : "キャンセル");
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
        sheet->editPage()->tabField()->setText(QStringLiteral("4"));
        sheet->editPage()->codeSetBox()->setChecked(false);
        sheet->editPage()->katakanaButton(1)->setChecked(true);
        sheet->tapPage()->delayButton(0)->setChecked(true);
        sheet->tapPage()->selectButton(0)->setChecked(true);
        sheet->tapPage()->zoomList()->setCurrentIndex(0); // "なし"
        if (!confirm) {
            sheet->reject();
            EXPECT_TRUE(nothingWritten());
            continue;
        }
        sheet->accept();
        using namespace setting;
        QList<int> values;
        for (const IntSetting& value :
             {COLOR_BACKGROUND, FONT3_SIZE, FONT3_BOLD, FONT3_ITALIC, FONT2_SIZE, TAB_SIZE,
              SELECTABLE_CODE_SET, JIS_KATAKANA_MODE, LONG_DELAY, SELECT_BY_SINGLE_TAP,
              STR_ZOOM_METHOD})
            values.append(stored(value));
        EXPECT_EQ(values, (QList<int>{0x563412, 20, 1, 1, 9, 4, 0, 1, 0, 0, 0}));
        EXPECT_EQ(store_->read(setting::FONT3_NAME), QStringLiteral("IPAGothic"));
        EXPECT_EQ(store_->read(setting::FONT1_NAME), DefaultValue(setting::FONT1_NAME));

        auto again = openSheet({}, false);
        EXPECT_EQ(again->editPage()->tabField()->text(), QStringLiteral("4"));
        EXPECT_TRUE(again->editPage()->katakanaButton(1)->isChecked());
        EXPECT_TRUE(again->tapPage()->delayButton(0)->isChecked());
        EXPECT_EQ(again->tapPage()->zoomList()->currentIndex(), 0);
        EXPECT_EQ(again->colorPage()->backgroundColor(), QColor(0x12, 0x34, 0x56));
        EXPECT_EQ(again->fontPage()->sizeText(2), QStringLiteral("20"));
    }
}

// The page shows the stored colours (0x00BBGGRR) in its preview and each picker opens on its
// own; a cancelled picker changes nothing; "リセット" is black text on white.
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
        EXPECT_EQ(picker.color(), QColor(Qt::white));
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
    for (const bool confirm : {false, true}) {
        WhenDialogShows<FontChooser>([confirm](FontChooser& chooser) {
            EXPECT_EQ(chooser.choice().size, 18); // opens on the slot's own values
            chooser.faceField()->setText(QStringLiteral("Some Face"));
            chooser.sizeField()->setText(QStringLiteral("30"));
            confirm ? chooser.accept() : chooser.reject();
        });
        page.chooseButton(3)->click();
        EXPECT_EQ(page.sizeText(3), confirm ? QStringLiteral("30") : QStringLiteral("18"));
    }
    EXPECT_EQ(page.faceText(3), QStringLiteral("Some Face"));
    EXPECT_EQ(page.faceText(0), DefaultValue(setting::FONT1_NAME));
}

// A box is checked when all of its extensions are ours; on OK only the boxes the user changed
// are applied, each extension once, and any failure is told once with 40006.
TEST_F(SettingsSheetTest, AssociationBoxesApplyTheirChanges) {
    for (const QString& failing : {QString(), QStringLiteral(".xml")}) {
        std::map<QString, bool> associated = {{".txt", true}, {".htm", true}, {".ini", true}};
        QStringList calls;
        SettingsSeams seams;
        seams.isAssociated = [&](const QString& extension) { return associated[extension]; };
        seams.setAssociated = [&](const QString& extension, bool associate) {
            calls.append(extension + (associate ? u'+' : u'-'));
            return extension != failing;
        };
        auto sheet = openSheet(seams);
        const QList<QCheckBox*>& boxes = sheet->filePage()->extensionBoxes();
        QList<bool> checked;
        for (const QCheckBox* box : boxes)
            checked.append(box->isChecked());
        // .htm alone does not make "HTM, HTML, XML" ours.
        EXPECT_EQ(checked, (QList<bool>{true, false, true, false, false}));
        boxes[0]->setChecked(false);
        boxes[1]->setChecked(true);
        boxes[4]->setChecked(true);
        ExpectBoxes(failing.isEmpty() ? QList<int>{} : QList<int>{40006}, Answer::Ok,
                    [&] { sheet->accept(); });
        EXPECT_EQ(calls, (QStringList{".txt-", ".htm+", ".html+", ".xml+", ".mcr+"}));
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

// Basic colours, the fields and the sliders all set one colour; the picker opens on the colour
// it is given.
TEST_F(SettingsSheetTest, ColorPickerMixesOneColour) {
    ColorPicker picker(QColor(1, 2, 3), *store_);
    EXPECT_EQ(picker.channelField(0)->value(), 1);
    EXPECT_EQ(picker.channelSlider(2)->value(), 3);
    ColorSwatch* basic = picker.basicColors().at(10);
    basic->click();
    EXPECT_EQ(picker.color(), basic->color());
    picker.channelSlider(1)->setValue(200);
    EXPECT_EQ(picker.channelField(1)->value(), 200);
    picker.channelField(0)->setValue(7);
    EXPECT_EQ(picker.channelSlider(0)->value(), 7);
    EXPECT_EQ(picker.swatch()->color(), picker.color());
    EXPECT_EQ(picker.color().green(), 200);
}

// Added custom colours come first, the oldest drops off after five, one added again moves to
// the front; they are kept when the picker closes either way and the next picker shows them.
TEST_F(SettingsSheetTest, CustomColoursAreKeptNewestFirst) {
    const QColor w(Qt::white), a(1, 1, 1), b(2, 2, 2), c(3, 3, 3), d(4, 4, 4), e(5, 5, 5),
        f(6, 6, 6);
    const struct {
        QList<QColor> added;
        bool confirm;
        QList<QColor> kept;
        int count;
    } rows[] = {
        {{}, false, {w, w, w, w, w}, 0},  {{a, b}, false, {b, a, w, w, w}, 2},
        {{a}, true, {a, b, w, w, w}, 2},  {{c, d, e, f}, true, {f, e, d, c, a}, 5},
        {{d}, false, {d, f, e, c, a}, 5},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.added.size());
        ColorPicker picker(w, *store_);
        for (const QColor& color : row.added) {
            picker.setColor(color);
            picker.addCustomButton()->click();
        }
        row.confirm ? picker.accept() : picker.reject();
        EXPECT_EQ(store_->read(setting::CUSTOM_COLOR_COUNT), row.count);
        ColorPicker next(w, *store_);
        QList<QColor> kept;
        for (const ColorSwatch* swatch : next.customColors())
            kept.append(swatch->color());
        EXPECT_EQ(kept, row.kept);
        next.customColors().at(0)->click(); // a custom colour is a choice like the basic ones
        EXPECT_EQ(next.color(), row.kept.front());
    }
}

// The faces that can show Japanese come first, so a Japanese user finds them at the top.
TEST(FontChooserFaces, JapaneseFacesComeFirst) {
    const QStringList faces = FaceNamesJapaneseFirst();
    ASSERT_FALSE(faces.isEmpty());
    bool inJapanesePart = true;
    for (const QString& face : faces) {
        const bool japanese = QFontDatabase::writingSystems(face).contains(QFontDatabase::Japanese);
        inJapanesePart = inJapanesePart && japanese;
        EXPECT_TRUE(!japanese || inJapanesePart) << face.toStdString();
    }
}

// The size must be 1-144 (else 40024 and the chooser stays open); the list and the fields fill
// each other and the preview; a face the system lacks is kept as it is.
TEST(FontChooser, ChecksTheSizeAndFillsTheFields) {
    const FontChoice start{QStringLiteral("ＭＳ ゴシック"), 9, false, true};
    FontChooser chooser(start);
    chooser.show();
    EXPECT_EQ(chooser.choice(), start);
    EXPECT_EQ(chooser.sizeList()->currentItem()->text(), QStringLiteral("9"));
    const std::pair<const char*, bool> sizes[] = {
        {"0", false}, {"145", false}, {"9pt", false}, {"1", true}, {"144", true}};
    for (const auto& [size, accepted] : sizes) {
        SCOPED_TRACE(size);
        chooser.setResult(QDialog::Rejected);
        chooser.sizeField()->setText(QString::fromLatin1(size));
        ExpectBoxes(accepted ? QList<int>{} : QList<int>{40024}, Answer::Ok,
                    [&] { chooser.accept(); });
        EXPECT_EQ(chooser.result(), accepted ? QDialog::Accepted : QDialog::Rejected);
    }
    chooser.sizeList()->setCurrentRow(0);
    EXPECT_EQ(chooser.sizeField()->text(), chooser.sizeList()->item(0)->text());
    chooser.faceList()->setCurrentRow(0);
    const QString firstFace = chooser.faceList()->item(0)->text();
    EXPECT_EQ(chooser.faceField()->text(), firstFace);
    EXPECT_EQ(chooser.preview()->font().family(), firstFace);
    chooser.boldBox()->setChecked(true);
    EXPECT_TRUE(chooser.preview()->font().bold());
}

} // namespace
} // namespace korvel
