#include "shell/MainWindow.h"

#include "document/DocumentBytes.h"

#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QPlainTextEdit>

namespace korvel {

namespace {
const QString kUntitled = QStringLiteral("(新規テキスト)");
const QString kProgramTitle = QStringLiteral("Korvelエディタ");
} // namespace

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent), editor_(new QPlainTextEdit(this)) {
    editor_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setCentralWidget(editor_);
    setWindowTitle(kUntitled + QStringLiteral(" - ") + kProgramTitle);
    resize(800, 600);
}

bool MainWindow::openFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        return false;
    }
    const DecodedDocument document =
        DecodeDocumentBytes({reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                             static_cast<std::size_t>(bytes.size())},
                            TextEncoding::AutoDetect);
    if (document.status != CodecOk) {
        return false;
    }
    editor_->setPlainText(QString(reinterpret_cast<const QChar*>(document.text.data()),
                                  static_cast<qsizetype>(document.text.size())));
    editor_->document()->setModified(false);
    encoding_ = document.encoding;
    lineEnding_ = document.lineEnding;
    setWindowTitle(QFileInfo(path).fileName() + QStringLiteral(" - ") + kProgramTitle);
    return true;
}

QString MainWindow::text() const {
    return editor_->toPlainText();
}

} // namespace korvel
