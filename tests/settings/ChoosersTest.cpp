// The colour picker and the font chooser as the pages use them: what they return on OK and on
// キャンセル, the custom colours they keep, the sizes they refuse.
#include "messages/testing/ScriptedMessageService.h"
#include "settings/ColorPicker.h"
#include "settings/ColorSwatch.h"
#include "settings/FontChooser.h"
#include "settings/SettingColor.h"
#include "settings/SettingsStore.h"

#include <QApplication>
#include <QCheckBox>
#include <QFontDatabase>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTimer>
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

// Answers the modal dialog of type T with act once it shows.
template <typename T> void WhenDialogShows(std::function<void(T&)> act) {
    QTimer::singleShot(0, [act] {
        auto* dialog = qobject_cast<T*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        act(*dialog);
    });
}

class ChoosersTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir_.isValid());
        store_ = std::make_unique<SettingsStore>(dir_.filePath(QStringLiteral("settings.ini")));
    }

    QList<QColor> customColors(const ColorPicker& picker) const {
        QList<QColor> colors;
        for (const ColorSwatch* swatch : picker.customColors())
            colors.append(swatch->color());
        return colors;
    }

    QTemporaryDir dir_;
    std::unique_ptr<SettingsStore> store_;
};

// Stored colours are 0x00BBGGRR, whatever QColor's own order.
TEST(SettingColor, StoredWordsAreBlueGreenRed) {
    const std::pair<int, QColor> rows[] = {{0x000000FF, QColor(255, 0, 0)},
                                           {0x0000FF00, QColor(0, 255, 0)},
                                           {0x00FF0000, QColor(0, 0, 255)},
                                           {0x00563412, QColor(0x12, 0x34, 0x56)}};
    for (const auto& [stored, color] : rows) {
        EXPECT_EQ(ColorFromSetting(stored), color) << stored;
        EXPECT_EQ(SettingFromColor(color), stored) << stored;
    }
}

// Basic colours, the fields and the sliders all set one colour, which OK returns and
// キャンセル does not.
TEST_F(ChoosersTest, ColorPickerReturnsTheMixedColourOrNothing) {
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

    for (const bool confirm : {true, false}) {
        WhenDialogShows<ColorPicker>([confirm](ColorPicker& shown) {
            shown.channelSlider(2)->setValue(99);
            confirm ? shown.accept() : shown.reject();
        });
        const std::optional<QColor> chosen = ChooseColor(QColor(10, 20, 30), *store_);
        EXPECT_EQ(chosen, confirm ? std::optional<QColor>(QColor(10, 20, 99)) : std::nullopt);
    }
}

// Added custom colours come first, the oldest drops off after five, one added again moves to
// the front; they are kept when the picker closes either way and the next picker shows them.
TEST_F(ChoosersTest, CustomColoursAreKeptNewestFirst) {
    const QColor white(Qt::white);
    const QColor a(1, 1, 1), b(2, 2, 2), c(3, 3, 3), d(4, 4, 4), e(5, 5, 5), f(6, 6, 6);
    const struct {
        QList<QColor> added;
        bool confirm;
        QList<QColor> kept;
        int count;
    } rows[] = {
        {{}, false, {white, white, white, white, white}, 0},
        {{a, b}, false, {b, a, white, white, white}, 2},
        {{a}, true, {a, b, white, white, white}, 2},
        {{c, d, e, f}, true, {f, e, d, c, a}, 5},
        {{d}, false, {d, f, e, c, a}, 5},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.added.size());
        ColorPicker picker(white, *store_);
        for (const QColor& color : row.added) {
            picker.setColor(color);
            picker.addCustomButton()->click();
        }
        row.confirm ? picker.accept() : picker.reject();
        EXPECT_EQ(store_->read(setting::CUSTOM_COLOR_COUNT), row.count);
        ColorPicker next(white, *store_);
        EXPECT_EQ(customColors(next), row.kept);
        // A custom colour is a choice like the basic ones.
        next.customColors().at(0)->click();
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
        if (!japanese)
            inJapanesePart = false;
        EXPECT_TRUE(!japanese || inJapanesePart) << face.toStdString();
    }
}

// The size must be 1-144 (else 40024 and the chooser stays open on the size field); the list
// and the fields fill each other; OK returns the choice, キャンセル nothing.
TEST_F(ChoosersTest, FontChooserChecksTheSizeAndReturnsTheChoice) {
    const FontChoice start{QStringLiteral("ＭＳ ゴシック"), 9, false, true};
    FontChooser chooser(start);
    chooser.show();
    EXPECT_EQ(chooser.choice(), start); // a face the system lacks is kept as it is
    EXPECT_EQ(chooser.sizeList()->currentItem()->text(), QStringLiteral("9"));
    const struct {
        const char* size;
        bool accepted;
    } sizes[] = {{"0", false},   {"145", false}, {"", false},
                 {"9pt", false}, {"1", true},    {"144", true}};
    for (const auto& [size, accepted] : sizes) {
        SCOPED_TRACE(size);
        chooser.setResult(QDialog::Rejected);
        chooser.sizeField()->setText(QString::fromLatin1(size));
        ScriptedMessageService messages;
        if (!accepted)
            messages.script({Answer::Ok});
        chooser.accept();
        EXPECT_EQ(messages.shownIds(), accepted ? QList<int>{} : QList<int>{40024});
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
    EXPECT_EQ(chooser.preview()->text(), QStringLiteral("abc あいう"));

    for (const bool confirm : {true, false}) {
        WhenDialogShows<FontChooser>([confirm](FontChooser& shown) {
            shown.sizeField()->setText(QStringLiteral("33"));
            shown.boldBox()->setChecked(true);
            confirm ? shown.accept() : shown.reject();
        });
        const std::optional<FontChoice> chosen = ChooseFont(start);
        const FontChoice expected{start.face, 33, true, true};
        EXPECT_EQ(chosen, confirm ? std::optional<FontChoice>(expected) : std::nullopt);
    }
}

} // namespace
} // namespace korvel
