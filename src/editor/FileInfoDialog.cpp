#include "editor/FileInfoDialog.h"

#include "messages/MessageFormat.h"
#include "messages/StringTable.h"
#include "widgets/DialogButtons.h"
#include "widgets/ElidedLabel.h"

#include <QComboBox>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <array>

namespace korvel {

namespace {

constexpr int kNewDocument = 35032;
constexpr int kBytes = 35036;
constexpr int kTimeFormat = 33005;

// The lists in their order, and what each position stands for.
constexpr std::array kEncodingItems = {
    std::pair{u"シフトJIS", TextEncoding::ShiftJis},
    std::pair{u"JIS", TextEncoding::Jis},
    std::pair{u"EUC", TextEncoding::Euc},
    std::pair{u"Unicode", TextEncoding::Unicode},
    std::pair{u"UTF-8", TextEncoding::Utf8},
    std::pair{u"UTF-8N", TextEncoding::Utf8N},
};
constexpr std::array kLineEndingItems = {
    std::pair{u"CR-LF", LineEnding::CrLf},
    std::pair{u"CR", LineEnding::Cr},
    std::pair{u"LF", LineEnding::Lf},
};

// Columns a text takes in a Japanese font: full-width characters take two.
int Columns(const QString& text) {
    int columns = 0;
    for (QChar c : text)
        columns += c.unicode() < 0x80 ? 1 : 2;
    return columns;
}

// Fills a list whose items carry leading blanks that align them to the right.
template <typename Items> void FillRightAligned(QComboBox* list, const Items& items) {
    int widest = 0;
    for (const auto& item : items)
        widest = std::max(widest, Columns(QString::fromUtf16(item.first)));
    for (const auto& item : items) {
        const QString text = QString::fromUtf16(item.first);
        list->addItem(QString(widest - Columns(text), u' ') + text);
    }
}

template <typename Items, typename Value> int PositionOf(const Items& items, Value value) {
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (items[i].second == value)
            return static_cast<int>(i);
    }
    return 0; // what the lists cannot show reads as their first item
}

QLabel* Caption(const char16_t* text, QWidget* parent) {
    return new QLabel(QString::fromUtf16(text), parent);
}

} // namespace

FileInfoDialog::FileInfoDialog(const QString& path, std::optional<qint64> size,
                               const QDateTime& time, TextEncoding encoding, LineEnding lineEnding,
                               QWidget* parent)
    : QDialog(parent), path_(new ElidedLabel(this)), time_(new QLabel(this)),
      size_(new QLabel(this)), encodings_(new QComboBox(this)), lineEndings_(new QComboBox(this)) {
    setWindowTitle(QStringLiteral("ファイル情報"));
    path_->setFullText(path.isEmpty() ? LoadString(kNewDocument) : path);
    if (size)
        size_->setText(FormatSize(*size));
    if (time.isValid())
        time_->setText(FormatTime(time));
    FillRightAligned(encodings_, kEncodingItems);
    FillRightAligned(lineEndings_, kLineEndingItems);
    encodings_->setCurrentIndex(PositionOf(kEncodingItems, encoding));
    lineEndings_->setCurrentIndex(PositionOf(kLineEndingItems, lineEnding));

    auto* layout = new QGridLayout(this);
    layout->addWidget(Caption(u"ファイル名:", this), 0, 0, 1, 2);
    layout->addWidget(path_, 1, 0, 1, 2);
    layout->addWidget(Caption(u"更新時間 ：", this), 2, 0);
    layout->addWidget(time_, 2, 1);
    layout->addWidget(Caption(u"サ　イ　ズ ：", this), 3, 0);
    layout->addWidget(size_, 3, 1);
    layout->addWidget(Caption(u"文字コード：", this), 4, 0);
    layout->addWidget(encodings_, 4, 1);
    layout->addWidget(Caption(u"改行コード：", this), 5, 0);
    layout->addWidget(lineEndings_, 5, 1);
    layout->setColumnStretch(1, 1);

    layout->addLayout(OkCancelRow(*this), 6, 0, 1, 2);
}

TextEncoding FileInfoDialog::encoding() const {
    return kEncodingItems.at(static_cast<std::size_t>(encodings_->currentIndex())).second;
}

LineEnding FileInfoDialog::lineEnding() const {
    return kLineEndingItems.at(static_cast<std::size_t>(lineEndings_->currentIndex())).second;
}

const QString& FileInfoDialog::pathText() const {
    return path_->fullText();
}

QString FileInfoDialog::sizeText() const {
    return size_->text();
}

QString FileInfoDialog::timeText() const {
    return time_->text();
}

QString FileInfoDialog::FormatSize(qint64 size) {
    QString digits = QString::number(size);
    for (qsizetype at = digits.size() - 3; at > 0; at -= 3)
        digits.insert(at, u',');
    return digits + LoadString(kBytes);
}

QString FileInfoDialog::FormatTime(const QDateTime& time) {
    const QDateTime local = time.toLocalTime();
    const QDate date = local.date();
    const QTime clock = local.time();
    return FormatMessage(LoadString(kTimeFormat),
                         {QString::number(date.year()), QString::number(date.month()),
                          QString::number(date.day()), QString::number(clock.hour()),
                          QString::number(clock.minute()), QString::number(clock.second())});
}

std::optional<FileInfoChoice> RunFileInfoDialog(const QString& path, TextEncoding encoding,
                                                LineEnding lineEnding, QWidget* parent) {
    std::optional<qint64> size;
    QDateTime time;
    const QFileInfo file(path);
    if (!path.isEmpty() && file.isFile() && file.isReadable()) {
        size = file.size();
        time = file.lastModified();
    }
    FileInfoDialog dialog(path, size, time, encoding, lineEnding, parent);
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    return FileInfoChoice{dialog.encoding(), dialog.lineEnding()};
}

} // namespace korvel
