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
#include "settings/SettingsStore.h"
#include "settings/WrappingCheckBox.h"
#include "support/WindowTest.h"

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
#include <algorithm>
#include <gtest/gtest.h>
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

using testing::WhenDialogShows;

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
    // A sheet on the screen, as the user gets it, over an empty settings file.
    std::unique_ptr<SettingsSheet> openSheet(const SettingsSeams& seams = {}) {
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

// OK checks every page before anything is written. A tab width outside 1-80 (40005), or a
// start-up macro switched on without an existing file, keeps the sheet open on the page at fault
// with its field active. No path or a folder asks (Yes switches the load off and the sheet
// closes, No keeps it open); a missing file is told.
TEST_F(SettingsSheetTest, OkChecksTheTabWidthAndTheStartupMacro) {
    const QString file = dir_.filePath(QStringLiteral("start.mcr"));
    QFile(file).open(QIODevice::WriteOnly);
    const QString folder = dir_.path(), gone = dir_.filePath(QStringLiteral("gone.mcr"));
    using enum MessageAnswer;
    constexpr int kNo = kUnwritten;
    const struct {
        const char* tab;
        bool on;
        QString macro;
        Answer answer;
        QList<int> shown;
        int front; // the page in front after a refusal; -1: the sheet closed
        int tabSize, load;
    } rows[] = {
        {"0", false, {}, Ok, {40005}, 1, kNo, kNo},  {"81", false, {}, Ok, {40005}, 1, kNo, kNo},
        {"x8", false, {}, Ok, {40005}, 1, kNo, kNo}, {"1", false, {}, Ok, {}, -1, 1, 0},
        {"80", false, {}, Ok, {}, -1, 80, 0},        {" 12 ", true, file, Ok, {}, -1, 12, 1},
        {"4", true, {}, Yes, {30041}, -1, 4, 0},     {"4", true, {}, No, {30041}, 2, kNo, kNo},
        {"4", true, folder, Yes, {30042}, -1, 4, 0}, {"4", true, gone, Ok, {40020}, 2, kNo, kNo}};
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.tab) + (row.on ? " on " : " off ") + row.macro.toStdString());
        auto sheet = openSheet();
        sheet->tabs()->setCurrentIndex(4); // the fault is found from another page
        sheet->editPage()->tabField()->setText(QString::fromLatin1(row.tab));
        sheet->filePage()->loadMacroBox()->setChecked(row.on);
        sheet->filePage()->macroField()->setText(row.macro);
        ExpectBoxes(row.shown, row.answer, [&] { sheet->accept(); });
        EXPECT_EQ(sheet->result(), row.front < 0 ? QDialog::Accepted : QDialog::Rejected);
        EXPECT_EQ(stored(setting::TAB_SIZE), row.tabSize);
        EXPECT_EQ(stored(setting::LOAD_DAFAULT_MACRO), row.load);
        if (row.front < 0) {
            EXPECT_EQ(store_->read(setting::DEFAULT_MACRO_FILE_NAME), row.macro);
            continue;
        }
        EXPECT_TRUE(nothingWritten());
        EXPECT_EQ(sheet->tabs()->currentIndex(), row.front);
        QApplication::processEvents();
        EXPECT_TRUE(row.front == 1 ? sheet->editPage()->tabField()->hasFocus()
                                   : sheet->filePage()->macroField()->hasFocus());
    }
}

// Every page's changes reach the store on OK, under their own names, and a new sheet starts from
// them; キャンセル writes nothing at all. On the way: each chooser opens on the current value and
// a cancelled one changes nothing; the previews and labels show the choices; "..." starts the
// browse seam from the path in the field; "リセット" is black text on white. Only the extension
// boxes the user changed are applied, each extension once.
TEST_F(SettingsSheetTest, ConfirmWritesEveryPageAndCancelWritesNothing) {
    for (const bool confirm : {false, true}) {
        SCOPED_TRACE(confirm ? "OK" : "キャンセル");
        QStringList asked, calls;
        SettingsSeams seams;
        seams.isAssociated = [](const QString& extension) {
            return QStringList{".txt", ".htm", ".ini"}.contains(extension);
        };
        seams.setAssociated = [&calls](const QString& extension, bool associate) {
            calls.append(extension + (associate ? u'+' : u'-'));
            return extension != ".xml";
        };
        seams.chooseMacroFile = [&asked](const QString& current, QWidget*) {
            asked.append(current);
            return asked.size() == 1 ? std::nullopt : std::optional(QStringLiteral("/new/b.mcr"));
        };
        auto sheet = openSheet(seams);
        CPPageColor& color = *sheet->colorPage();
        WhenDialogShows<ColorPicker>([confirm](ColorPicker& picker) {
            picker.setColor(Qt::red);
            confirm ? picker.accept() : picker.reject();
        });
        color.textButton()->click();
        EXPECT_EQ(color.preview()->palette().color(QPalette::Text), confirm ? Qt::red : Qt::black);
        WhenDialogShows<ColorPicker>([](ColorPicker& picker) {
            EXPECT_EQ(picker.color(), QColor(Qt::white));
            picker.setColor(QColor(0x12, 0x34, 0x56));
            picker.accept();
        });
        color.backgroundButton()->click();
        EXPECT_EQ(color.preview()->palette().color(QPalette::Base), QColor(0x12, 0x34, 0x56));
        for (const bool pick : {false, true}) {
            WhenDialogShows<FontChooser>([this, pick](FontChooser& chooser) {
                EXPECT_EQ(chooser.choice().size, store_->read(setting::FONT3_SIZE));
                chooser.faceField()->setText(QStringLiteral("IPAGothic"));
                chooser.sizeField()->setText(QStringLiteral("20"));
                chooser.boldBox()->setChecked(true);
                chooser.italicBox()->setChecked(true);
                pick ? chooser.accept() : chooser.reject();
            });
            sheet->fontPage()->chooseButton(2)->click();
        }
        EXPECT_EQ(sheet->fontPage()->faceText(2), QStringLiteral("IPAGothic"));
        EXPECT_EQ(sheet->fontPage()->sizeText(2), QStringLiteral("20"));
        sheet->editPage()->tabField()->setText(QStringLiteral("4"));
        sheet->editPage()->codeSetBox()->setChecked(false);
        sheet->editPage()->katakanaButton(1)->setChecked(true);
        sheet->tapPage()->delayButton(0)->setChecked(true);
        sheet->tapPage()->selectButton(0)->setChecked(true);
        sheet->tapPage()->zoomList()->setCurrentIndex(0); // "なし"
        sheet->filePage()->macroField()->setText(QStringLiteral("/old/a.mcr"));
        sheet->filePage()->browseButton()->click();
        sheet->filePage()->browseButton()->click();
        EXPECT_EQ(asked, (QStringList{"/old/a.mcr", "/old/a.mcr"}));
        const QList<QCheckBox*>& boxes = sheet->filePage()->extensionBoxes();
        QList<bool> checked;
        for (const QCheckBox* box : boxes)
            checked.append(box->isChecked());
        // .htm alone does not make "HTM, HTML, XML" ours.
        EXPECT_EQ(checked, (QList<bool>{true, false, true, false, false}));
        boxes[0]->setChecked(false);
        boxes[1]->setChecked(true);
        boxes[4]->setChecked(true);
        if (!confirm) {
            sheet->reject();
            EXPECT_TRUE(nothingWritten());
            EXPECT_TRUE(calls.isEmpty());
            continue;
        }
        ExpectBoxes({40006}, Answer::Ok, [&] { sheet->accept(); }); // .xml failed: told once
        ASSERT_EQ(sheet->result(), QDialog::Accepted);
        EXPECT_EQ(calls, (QStringList{".txt-", ".htm+", ".html+", ".xml+", ".mcr+"}));
        using namespace setting;
        QList<int> values;
        for (const IntSetting& value :
             {COLOR_TEXT, COLOR_BACKGROUND, FONT3_SIZE, FONT3_BOLD, FONT3_ITALIC, FONT2_SIZE,
              TAB_SIZE, SELECTABLE_CODE_SET, JIS_KATAKANA_MODE, LONG_DELAY, SELECT_BY_SINGLE_TAP,
              STR_ZOOM_METHOD})
            values.append(stored(value));
        EXPECT_EQ(values, (QList<int>{0x0000FF, 0x563412, 20, 1, 1, 9, 4, 0, 1, 0, 0, 0}));
        EXPECT_EQ(store_->read(FONT3_NAME), QStringLiteral("IPAGothic"));
        EXPECT_EQ(store_->read(DEFAULT_MACRO_FILE_NAME), QStringLiteral("/new/b.mcr"));

        SettingsSheet again(*store_, {});
        EXPECT_EQ(again.editPage()->tabField()->text(), QStringLiteral("4"));
        EXPECT_TRUE(again.editPage()->katakanaButton(1)->isChecked());
        EXPECT_TRUE(again.tapPage()->delayButton(0)->isChecked());
        EXPECT_EQ(again.tapPage()->zoomList()->currentIndex(), 0);
        EXPECT_EQ(again.fontPage()->sizeText(2), QStringLiteral("20"));
        CPPageColor& shown = *again.colorPage();
        EXPECT_EQ(shown.textColor(), QColor(Qt::red));
        EXPECT_EQ(shown.backgroundColor(), QColor(0x12, 0x34, 0x56));
        shown.resetButton()->click();
        EXPECT_EQ(shown.preview()->palette().color(QPalette::Text), QColor(Qt::black));
        EXPECT_EQ(shown.backgroundColor(), QColor(Qt::white));
    }
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
    // The colours the next picker keeps, after added ones in a picker closed with OK or not.
    const auto keptAfter = [&](const QList<QColor>& added, bool confirm) {
        ColorPicker picker(w, *store_);
        for (const QColor& color : added) {
            picker.setColor(color);
            picker.addCustomButton()->click();
        }
        confirm ? picker.accept() : picker.reject();
        ColorPicker next(w, *store_);
        QList<QColor> kept;
        for (ColorSwatch* swatch : next.customColors())
            kept.append(swatch->color());
        next.customColors().at(0)->click(); // a custom colour is a choice like the basic ones
        EXPECT_EQ(next.color(), kept.front());
        return kept;
    };
    EXPECT_EQ(keptAfter({a, b}, false), (QList<QColor>{b, a, w, w, w}));
    EXPECT_EQ(keptAfter({a}, true), (QList<QColor>{a, b, w, w, w}));
    EXPECT_EQ(keptAfter({c, d, e, f}, true), (QList<QColor>{f, e, d, c, a}));
    EXPECT_EQ(keptAfter({d}, false), (QList<QColor>{d, f, e, c, a}));
}

// The faces that can show Japanese come first, so a Japanese user finds them at the top.
TEST(FontChooserFaces, JapaneseFacesComeFirst) {
    const QStringList faces = FaceNamesJapaneseFirst();
    EXPECT_TRUE(std::is_partitioned(faces.begin(), faces.end(), [](const QString& face) {
        return QFontDatabase::writingSystems(face).contains(QFontDatabase::Japanese);
    }));
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
