#pragma once

#include "codec/CodecTypes.h"

#include <QMainWindow>

class QPlainTextEdit;

namespace korvel {

// The editor's main window: for now a plain text view that shows one file read through the
// load pipeline.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(QWidget* parent = nullptr);

    // Reads the file, decides its code set and line ending and shows its text.
    // Returns false (and keeps the current text) when the file cannot be read or converted.
    bool openFile(const QString& path);

    QString text() const;
    TextEncoding encoding() const { return encoding_; }
    LineEnding lineEnding() const { return lineEnding_; }

private:
    QPlainTextEdit* editor_;
    TextEncoding encoding_ = TextEncoding::ShiftJis;
    LineEnding lineEnding_ = LineEnding::CrLf;
};

} // namespace korvel
