#include "settings/CPPageFile.h"

#include "messages/MessageService.h"
#include "settings/SettingsStore.h"

#include <QCheckBox>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

namespace korvel {

namespace {

constexpr int kQuestionNoMacroFile = 30041;
constexpr int kQuestionMacroIsFolder = 30042;
constexpr int kMessageNoSuchMacro = 40020;
constexpr int kMessageAssociationFailed = 40006;

// The check boxes and the extensions each one stands for.
struct ExtensionBox {
    const char* label;
    QStringList extensions;
};

const QList<ExtensionBox>& ExtensionBoxes() {
    static const QList<ExtensionBox> boxes = {
        {"TXT", {QStringLiteral(".txt")}},
        {"HTM, HTML, XML",
         {QStringLiteral(".htm"), QStringLiteral(".html"), QStringLiteral(".xml")}},
        {"INI", {QStringLiteral(".ini")}},
        {"INF", {QStringLiteral(".inf")}},
        {"MCR", {QStringLiteral(".mcr")}},
    };
    return boxes;
}

} // namespace

CPPageFile::CPPageFile(SettingsStore& store, SettingsSeams seams, QWidget* parent)
    : SettingsPage(parent), store_(store), seams_(std::move(seams)),
      loadMacro_(new QCheckBox(QStringLiteral("起動時に指定のマクロを読み込む"), this)),
      macroField_(new QLineEdit(this)), browse_(new QPushButton(QStringLiteral("..."), this)) {
    setWindowTitle(QStringLiteral("拡張子・マクロ"));
    auto* layout = new QVBoxLayout(this);

    auto* extensions = new QGroupBox(QStringLiteral("関連付けする拡張子"), this);
    auto* grid = new QGridLayout(extensions);
    int index = 0;
    for (const ExtensionBox& entry : ExtensionBoxes()) {
        auto* box = new QCheckBox(QString::fromLatin1(entry.label), extensions);
        // A box that stands for several extensions is checked when all of them are ours.
        const bool associated =
            seams_.isAssociated && std::all_of(entry.extensions.begin(), entry.extensions.end(),
                                               [this](const QString& extension) {
                                                   return seams_.isAssociated(extension);
                                               });
        box->setChecked(associated);
        associatedAtStart_.append(associated);
        extensionBoxes_.append(box);
        grid->addWidget(box, index / 2, index % 2);
        ++index;
    }
    layout->addWidget(extensions);

    auto* macro = new QGroupBox(QStringLiteral("マクロのロード"), this);
    auto* macroLayout = new QVBoxLayout(macro);
    macroLayout->addWidget(loadMacro_);
    auto* pathRow = new QHBoxLayout;
    pathRow->addWidget(macroField_, 1);
    pathRow->addWidget(browse_);
    macroLayout->addLayout(pathRow);
    layout->addWidget(macro);
    layout->addStretch();

    loadMacro_->setChecked(store_.read(setting::LOAD_DAFAULT_MACRO) != 0);
    macroField_->setText(store_.read(setting::DEFAULT_MACRO_FILE_NAME));
    connect(browse_, &QPushButton::clicked, this, &CPPageFile::browseForMacro);
}

void CPPageFile::browseForMacro() {
    if (!seams_.chooseMacroFile)
        return;
    if (const std::optional<QString> path = seams_.chooseMacroFile(macroField_->text(), this))
        macroField_->setText(*path);
}

bool CPPageFile::checkValues() {
    if (!loadMacro_->isChecked())
        return true;
    const QFileInfo file(macroField_->text());
    const bool empty = macroField_->text().isEmpty();
    if (empty || file.isDir()) {
        MessageRequest request;
        request.id = empty ? kQuestionNoMacroFile : kQuestionMacroIsFolder;
        request.buttons = MessageButtons::YesNo;
        request.icon = MessageIcon::Question;
        request.defaultButton = MessageAnswer::Yes;
        request.parent = this;
        if (ShowMessage(request) != MessageAnswer::Yes) {
            macroField_->setFocus();
            return false;
        }
        loadMacro_->setChecked(false);
        return true;
    }
    if (!file.exists()) {
        MessageRequest request;
        request.id = kMessageNoSuchMacro;
        request.icon = MessageIcon::Warning;
        request.parent = this;
        ShowMessage(request);
        macroField_->setFocus();
        macroField_->selectAll();
        return false;
    }
    return true;
}

void CPPageFile::writeValues() {
    store_.write(setting::LOAD_DAFAULT_MACRO, loadMacro_->isChecked() ? 1 : 0);
    store_.write(setting::DEFAULT_MACRO_FILE_NAME, macroField_->text());
    applyAssociations();
}

void CPPageFile::applyAssociations() {
    bool failed = false;
    for (qsizetype i = 0; i < extensionBoxes_.size(); ++i) {
        const bool wanted = extensionBoxes_[i]->isChecked();
        if (wanted == associatedAtStart_[i])
            continue;
        for (const QString& extension : ExtensionBoxes()[i].extensions)
            failed |= !seams_.setAssociated || !seams_.setAssociated(extension, wanted);
    }
    if (!failed)
        return;
    MessageRequest request;
    request.id = kMessageAssociationFailed;
    request.icon = MessageIcon::Warning;
    request.parent = this;
    ShowMessage(request);
}

} // namespace korvel
