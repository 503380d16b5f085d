#include "settings/FontChooser.h"

#include "messages/MessageService.h"
#include "settings/PenTargets.h"
#include "widgets/DialogButtons.h"
#include "widgets/ScreenFit.h"

#include <QCheckBox>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QVBoxLayout>
#include <algorithm>

namespace korvel {

namespace {

constexpr int kSmallestSize = 1;
constexpr int kLargestSize = 144;
constexpr int kMessageBadSize = 40024;
constexpr int kListedSizes[] = {6, 7, 8, 9, 10, 11, 12, 14, 16, 18, 20, 22, 24, 26, 28, 36, 48, 72};
// Above this the preview shows the face at this height: a 144-point sample would push the
// buttons off a small screen, and the shape of the letters is what the preview is for.
constexpr int kLargestPreviewPixels = 64;

// The first entry of list whose text begins with text, ignoring case; exact matches first.
QListWidgetItem* Matching(QListWidget& list, const QString& text) {
    if (text.isEmpty())
        return nullptr;
    const QList<QListWidgetItem*> exact = list.findItems(text, Qt::MatchFixedString);
    if (!exact.isEmpty())
        return exact.front();
    const QList<QListWidgetItem*> starts = list.findItems(text, Qt::MatchStartsWith);
    return starts.isEmpty() ? nullptr : starts.front();
}

// Picks item in list without its pick being taken for the user's.
void ShowInList(QListWidget& list, QListWidgetItem* item) {
    const QSignalBlocker blocker(list);
    list.setCurrentItem(item);
    if (item != nullptr)
        list.scrollToItem(item, QAbstractItemView::PositionAtCenter);
    else
        list.clearSelection();
}

} // namespace

QStringList FaceNamesJapaneseFirst() {
    QStringList japanese;
    QStringList others;
    for (const QString& family : QFontDatabase::families()) {
        if (QFontDatabase::isPrivateFamily(family))
            continue;
        if (QFontDatabase::writingSystems(family).contains(QFontDatabase::Japanese))
            japanese.append(family);
        else
            others.append(family);
    }
    const auto byName = [](const QString& a, const QString& b) {
        return QString::localeAwareCompare(a, b) < 0;
    };
    std::sort(japanese.begin(), japanese.end(), byName);
    std::sort(others.begin(), others.end(), byName);
    return japanese + others;
}

FontChooser::FontChooser(const FontChoice& current, QWidget* parent)
    : QDialog(parent), startFace_(current.face), faceField_(new QLineEdit(current.face, this)),
      faceList_(new QListWidget(this)),
      sizeField_(new QLineEdit(QString::number(current.size), this)),
      sizeList_(new QListWidget(this)), bold_(new QCheckBox(QStringLiteral("太字(&B)"), this)),
      italic_(new QCheckBox(QStringLiteral("斜体(&I)"), this)),
      preview_(new QLabel(QStringLiteral("abc あいう"), this)) {
    setWindowTitle(QStringLiteral("フォント選択"));
    auto* layout = new QVBoxLayout(this);

    auto* choices = new QGridLayout;
    auto* faceLabel = new QLabel(QStringLiteral("フォント名(&F)："), this);
    faceLabel->setBuddy(faceField_);
    auto* sizeLabel = new QLabel(QStringLiteral("サイズ(&S)："), this);
    sizeLabel->setBuddy(sizeField_);
    choices->addWidget(faceLabel, 0, 0);
    choices->addWidget(sizeLabel, 0, 1);
    choices->addWidget(faceField_, 1, 0);
    choices->addWidget(sizeField_, 1, 1);
    choices->addWidget(faceList_, 2, 0);
    choices->addWidget(sizeList_, 2, 1);
    choices->setColumnStretch(0, 3);
    choices->setColumnStretch(1, 1);
    choices->setRowStretch(2, 1);
    layout->addLayout(choices, 1);

    faceList_->addItems(FaceNamesJapaneseFirst());
    for (int size : kListedSizes)
        sizeList_->addItem(QString::number(size));
    for (QListWidget* list : {faceList_, sizeList_}) {
        list->setUniformItemSizes(true);
        list->setStyleSheet(
            QStringLiteral("QListView::item { min-height: %1px; }").arg(kPenTarget - 8));
    }
    sizeList_->setMinimumWidth(sizeField_->fontMetrics().horizontalAdvance(u'0') * 8);
    faceList_->setMinimumHeight(3 * kPenTarget);

    auto* styles = new QHBoxLayout;
    styles->addWidget(bold_);
    styles->addWidget(italic_);
    styles->addStretch();
    layout->addLayout(styles);
    bold_->setChecked(current.bold);
    italic_->setChecked(current.italic);

    auto* previewGroup = new QGroupBox(QStringLiteral("プレビュー"), this);
    auto* previewLayout = new QVBoxLayout(previewGroup);
    preview_->setAlignment(Qt::AlignCenter);
    preview_->setFixedHeight(kLargestPreviewPixels + 16);
    preview_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    previewLayout->addWidget(preview_);
    layout->addWidget(previewGroup);
    layout->addLayout(OkCancelRow(*this));

    // The list follows what is typed, and a pick in the list fills the field.
    connect(faceField_, &QLineEdit::textEdited, this, [this](const QString& text) {
        ShowInList(*faceList_, Matching(*faceList_, text.trimmed()));
        showPreview();
    });
    connect(faceList_, &QListWidget::currentTextChanged, this, [this](const QString& text) {
        faceField_->setText(text);
        showPreview();
    });
    connect(sizeField_, &QLineEdit::textEdited, this, [this](const QString& text) {
        const QList<QListWidgetItem*> same = sizeList_->findItems(text.trimmed(), Qt::MatchExactly);
        ShowInList(*sizeList_, same.isEmpty() ? nullptr : same.front());
        showPreview();
    });
    connect(sizeList_, &QListWidget::currentTextChanged, this, [this](const QString& text) {
        sizeField_->setText(text);
        showPreview();
    });
    connect(bold_, &QCheckBox::toggled, this, &FontChooser::showPreview);
    connect(italic_, &QCheckBox::toggled, this, &FontChooser::showPreview);

    ShowInList(*faceList_, Matching(*faceList_, current.face));
    const QList<QListWidgetItem*> size =
        sizeList_->findItems(QString::number(current.size), Qt::MatchExactly);
    ShowInList(*sizeList_, size.isEmpty() ? nullptr : size.front());
    showPreview();
    EnlargeForPen(*this);
    FitToScreen(*this, QSize(460, 560));
}

FontChoice FontChooser::choice() const {
    FontChoice choice;
    const QString face = faceField_->text().trimmed();
    // An emptied field leaves the face as it was: a slot without a face has no meaning.
    choice.face = face.isEmpty() ? startFace_ : face;
    bool isNumber = false;
    const int size = sizeField_->text().trimmed().toInt(&isNumber);
    choice.size = isNumber ? size : 0;
    choice.bold = bold_->isChecked();
    choice.italic = italic_->isChecked();
    return choice;
}

void FontChooser::accept() {
    const int size = choice().size;
    if (size < kSmallestSize || size > kLargestSize) {
        MessageRequest request;
        request.id = kMessageBadSize;
        request.icon = MessageIcon::Warning;
        request.parent = this;
        ShowMessage(request);
        sizeField_->setFocus();
        sizeField_->selectAll();
        return;
    }
    QDialog::accept();
}

void FontChooser::showPreview() {
    const FontChoice shown = choice();
    QFont font = preview_->font();
    font.setFamily(shown.face);
    font.setBold(shown.bold);
    font.setItalic(shown.italic);
    const int size = std::clamp(shown.size, kSmallestSize, kLargestSize);
    font.setPixelSize(std::clamp(size * logicalDpiY() / 72, 1, kLargestPreviewPixels));
    preview_->setFont(font);
}

std::optional<FontChoice> ChooseFont(const FontChoice& current, QWidget* parent) {
    FontChooser chooser(current, parent);
    if (chooser.exec() != QDialog::Accepted)
        return std::nullopt;
    return chooser.choice();
}

} // namespace korvel
