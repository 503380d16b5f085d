#pragma once

#include "codec/CodecTypes.h"

#include <QDateTime>
#include <QDialog>
#include <optional>

class QComboBox;
class QLabel;

namespace korvel {

class ElidedLabel;

// "ファイル情報": the document's path, size and time, and the code set and line ending that the
// next save writes.
class FileInfoDialog : public QDialog {
    Q_OBJECT
public:
    // path is empty for a text never saved. size and time are left out when the file could not
    // be read.
    FileInfoDialog(const QString& path, std::optional<qint64> size, const QDateTime& time,
                   TextEncoding encoding, LineEnding lineEnding, QWidget* parent = nullptr);

    TextEncoding encoding() const;
    LineEnding lineEnding() const;

    const QString& pathText() const;
    QString sizeText() const;
    QString timeText() const;
    QComboBox* encodingList() const { return encodings_; }
    QComboBox* lineEndingList() const { return lineEndings_; }

    // "1,234,567 バイト".
    static QString FormatSize(qint64 size);
    // The time as the program writes dates: "2026 年 11月 23日 5:08:02".
    static QString FormatTime(const QDateTime& time);

private:
    ElidedLabel* path_;
    QLabel* time_;
    QLabel* size_;
    QComboBox* encodings_;
    QComboBox* lineEndings_;
};

// Shows the dialog for the file at path (read now); the choices, or nothing when cancelled.
struct FileInfoChoice {
    TextEncoding encoding;
    LineEnding lineEnding;
};
std::optional<FileInfoChoice> RunFileInfoDialog(const QString& path, TextEncoding encoding,
                                                LineEnding lineEnding, QWidget* parent);

} // namespace korvel
