#include "browser/PropertiesDialog.h"

#include "browser/FileEntry.h"
#include "fileops/FileOpPrompt.h"
#include "fileops/FileSystem.h"

#include <QCheckBox>
#include <QDateTime>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QVBoxLayout>
#include <sys/stat.h>

namespace korvel {
namespace {

QLabel* Value(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setWordWrap(true);
    return label;
}

QString SizeDescription(const FileEntry& entry) {
    if (entry.isFolder())
        return {};
    return QLocale(QLocale::Japanese).toString(qulonglong(entry.size())) +
           QStringLiteral(" バイト");
}

QString TimeDescription(const FileEntry& entry) {
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(entry.lastWrite / 1'000'000);
    return time.toString(QStringLiteral("yyyy/MM/dd HH:mm:ss"));
}

} // namespace

PropertiesDialog::PropertiesDialog(const QString& path, QWidget* parent)
    : QDialog(parent), path_(path) {
    setWindowTitle(QStringLiteral("プロパティ"));
    const std::optional<FileEntry> entry = ReadEntry(path);
    const bool link = entry && (entry->attributes & kAttributeLink) != 0;
    readOnly_ = entry && (entry->attributes & kAttributeReadOnly) != 0;

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("パス:"), Value(path, this));
    if (entry) {
        form->addRow(QStringLiteral("サイズ:"), Value(SizeDescription(*entry), this));
        form->addRow(QStringLiteral("更新日時:"), Value(TimeDescription(*entry), this));
    }
    readOnlyBox_ = new QCheckBox(QStringLiteral("読み取り専用"), this);
    readOnlyBox_->setChecked(readOnly_);
    // A link has no permissions of its own; changing them would change its target's.
    readOnlyBox_->setEnabled(entry.has_value() && !link);
    form->addRow(QString(), readOnlyBox_);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Cancel)->setText(QStringLiteral("ｷｬﾝｾﾙ"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
}

bool PropertiesDialog::isReadOnlyChecked() const {
    return readOnlyBox_->isChecked();
}

void PropertiesDialog::setReadOnlyChecked(bool readOnly) {
    readOnlyBox_->setChecked(readOnly);
}

bool PropertiesDialog::apply() {
    if (!readOnlyBox_->isEnabled() || readOnlyBox_->isChecked() == readOnly_)
        return true;
    FileOpStatus status = FileOpStatus::Failed;
    if (const auto attributes = files::AttributesOf(path_)) {
        const std::uint32_t mode = readOnlyBox_->isChecked()
                                       ? attributes->mode & ~std::uint32_t(S_IWUSR)
                                       : attributes->mode | S_IWUSR;
        status = files::SetAttributes(path_, files::Attributes{mode});
    }
    if (status != FileOpStatus::Done) {
        FileOpPrompt(true, this)
            .tell(fileops_message::kAttributeChangeError, {}, MessageIcon::Stop);
        return false;
    }
    readOnly_ = readOnlyBox_->isChecked();
    return true;
}

void PropertiesDialog::accept() {
    if (apply())
        QDialog::accept();
}

} // namespace korvel
