#pragma once

#include <QDialog>
#include <QString>
#include <QStringList>
#include <optional>

class QCheckBox;
class QLabel;
class QLineEdit;
class QListWidget;

namespace korvel {

// One font slot as the font page and the chooser exchange it.
struct FontChoice {
    QString face;
    int size = 9; // points, 1-144
    bool bold = false;
    bool italic = false;

    friend bool operator==(const FontChoice&, const FontChoice&) = default;
};

// "フォント選択": the face from the installed fonts (or typed), the size typed or picked from
// the list, "太字(&B)", "斜体(&I)", and the preview "abc あいう". OK refuses a size outside
// 1-144 with message 40024.
class FontChooser : public QDialog {
    Q_OBJECT
public:
    FontChooser(const FontChoice& current, QWidget* parent = nullptr);

    // What the controls hold now; the size is 0 when the field is not a number.
    FontChoice choice() const;

    QLineEdit* faceField() const { return faceField_; }
    QListWidget* faceList() const { return faceList_; }
    QLineEdit* sizeField() const { return sizeField_; }
    QListWidget* sizeList() const { return sizeList_; }
    QCheckBox* boldBox() const { return bold_; }
    QCheckBox* italicBox() const { return italic_; }
    QLabel* preview() const { return preview_; }

    void accept() override;

private:
    void showPreview();

    QString startFace_;
    QLineEdit* faceField_;
    QListWidget* faceList_;
    QLineEdit* sizeField_;
    QListWidget* sizeList_;
    QCheckBox* bold_;
    QCheckBox* italic_;
    QLabel* preview_;
};

// The installed faces: those that can show Japanese first, then the others, each part in
// alphabetical order.
QStringList FaceNamesJapaneseFirst();

// Shows the chooser on current: the chosen font, or nothing when it was cancelled.
std::optional<FontChoice> ChooseFont(const FontChoice& current, QWidget* parent = nullptr);

} // namespace korvel
