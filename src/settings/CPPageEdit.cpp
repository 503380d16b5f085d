#include "settings/CPPageEdit.h"

#include "messages/MessageService.h"
#include "settings/SettingsStore.h"
#include "settings/WrappingCheckBox.h"

#include <QButtonGroup>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QVBoxLayout>

namespace korvel {

namespace {

constexpr int kMessageBadTabWidth = 40005;

} // namespace

CPPageEdit::CPPageEdit(SettingsStore& store, QWidget* parent)
    : SettingsPage(parent), store_(store), tabField_(new QLineEdit(this)),
      codeSetBox_(new WrappingCheckBox(
          QStringLiteral("ファイル選択ダイアログに【コード】プルダウンリストを表示する"), this)),
      katakana_{new QRadioButton(QStringLiteral("ファイルを保存する際に全角に変換"), this),
                new QRadioButton(QStringLiteral("JIS X 0201を適用して半角のまま保存"), this)} {
    setWindowTitle(QStringLiteral("編集・文字コード"));
    auto* layout = new QVBoxLayout(this);

    auto* editing = new QGroupBox(QStringLiteral("テキストの編集"), this);
    auto* editingRow = new QHBoxLayout(editing);
    auto* tabLabel = new QLabel(QStringLiteral("タブ(&T)："), editing);
    tabLabel->setBuddy(tabField_);
    editingRow->addWidget(tabLabel);
    editingRow->addWidget(tabField_);
    editingRow->addStretch();
    // Wide enough for the numbers the check lets through, and one more digit to see a typo.
    tabField_->setMaximumWidth(tabField_->fontMetrics().horizontalAdvance(QStringLiteral("0000")) +
                               24);
    layout->addWidget(editing);

    auto* codeSet = new QGroupBox(QStringLiteral("文字コード"), this);
    auto* codeSetLayout = new QVBoxLayout(codeSet);
    codeSetBox_->setParent(codeSet);
    codeSetLayout->addWidget(codeSetBox_);
    layout->addWidget(codeSet);

    auto* katakana = new QGroupBox(QStringLiteral("JIS コードでの半角カタカナの扱い"), this);
    auto* katakanaLayout = new QVBoxLayout(katakana);
    auto* katakanaGroup = new QButtonGroup(this);
    for (int index = 0; index < 2; ++index) {
        katakana_[index]->setParent(katakana);
        katakanaLayout->addWidget(katakana_[index]);
        katakanaGroup->addButton(katakana_[index], index);
    }
    layout->addWidget(katakana);
    layout->addStretch();

    tabField_->setText(QString::number(store_.read(setting::TAB_SIZE)));
    codeSetBox_->setChecked(store_.read(setting::SELECTABLE_CODE_SET) != 0);
    katakana_[store_.read(setting::JIS_KATAKANA_MODE)]->setChecked(true);
}

int CPPageEdit::tabWidth() const {
    bool isNumber = false;
    const int width = tabField_->text().trimmed().toInt(&isNumber);
    return isNumber ? width : 0;
}

bool CPPageEdit::checkValues() {
    const int width = tabWidth();
    if (width >= setting::TAB_SIZE.minimum && width <= setting::TAB_SIZE.maximum)
        return true;
    MessageRequest request;
    request.id = kMessageBadTabWidth;
    request.icon = MessageIcon::Warning;
    request.parent = this;
    ShowMessage(request);
    tabField_->setFocus();
    tabField_->selectAll();
    return false;
}

void CPPageEdit::writeValues() {
    store_.write(setting::TAB_SIZE, tabWidth());
    store_.write(setting::SELECTABLE_CODE_SET, codeSetBox_->isChecked() ? 1 : 0);
    store_.write(setting::JIS_KATAKANA_MODE, katakana_[1]->isChecked() ? 1 : 0);
}

} // namespace korvel
