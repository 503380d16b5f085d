#include "settings/CPPageTap.h"

#include "settings/SettingsStore.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>

namespace korvel {

namespace {

// Two choices side by side in their own button group; the group's ids are the indexes.
void AddChoices(QRadioButton* (&buttons)[2], QBoxLayout& layout, QObject* owner) {
    auto* row = new QHBoxLayout;
    auto* group = new QButtonGroup(owner);
    for (int index = 0; index < 2; ++index) {
        row->addWidget(buttons[index]);
        group->addButton(buttons[index], index);
    }
    row->addStretch();
    layout.addLayout(row);
}

} // namespace

CPPageTap::CPPageTap(SettingsStore& store, QWidget* parent)
    : SettingsPage(parent), store_(store), delay_{new QRadioButton(QStringLiteral("普通"), this),
                                                  new QRadioButton(QStringLiteral("長め"), this)},
      select_{new QRadioButton(QStringLiteral("ダブルタップ"), this),
              new QRadioButton(QStringLiteral("シングルタップ"), this)},
      zoom_(new QComboBox(this)) {
    setWindowTitle(QStringLiteral("タップ"));
    auto* layout = new QVBoxLayout(this);

    auto* delay = new QGroupBox(QStringLiteral("タップ＆ホールドの認識遅延時間"), this);
    auto* delayLayout = new QVBoxLayout(delay);
    AddChoices(delay_, *delayLayout, this);
    layout->addWidget(delay);

    auto* browser = new QGroupBox(QStringLiteral("ファイル選択ダイアログ"), this);
    auto* browserLayout = new QVBoxLayout(browser);
    auto* selectLabel = new QLabel(QStringLiteral("ファイルリストでのファイルの選択方法"), browser);
    selectLabel->setWordWrap(true);
    browserLayout->addWidget(selectLabel);
    AddChoices(select_, *browserLayout, this);
    auto* zoomLabel =
        new QLabel(QStringLiteral("ディレクトリツリーとファイルリストの拡大"), browser);
    zoomLabel->setWordWrap(true);
    zoomLabel->setBuddy(zoom_);
    browserLayout->addWidget(zoomLabel);
    zoom_->addItems({QStringLiteral("なし"), QStringLiteral("余白のシングルタップ"),
                     QStringLiteral("余白のダブルタップ")});
    browserLayout->addWidget(zoom_);
    layout->addWidget(browser);
    layout->addStretch();

    delay_[store_.read(setting::LONG_DELAY)]->setChecked(true);
    select_[store_.read(setting::SELECT_BY_SINGLE_TAP)]->setChecked(true);
    zoom_->setCurrentIndex(store_.read(setting::STR_ZOOM_METHOD));
}

void CPPageTap::writeValues() {
    store_.write(setting::LONG_DELAY, delay_[1]->isChecked() ? 1 : 0);
    store_.write(setting::SELECT_BY_SINGLE_TAP, select_[1]->isChecked() ? 1 : 0);
    store_.write(setting::STR_ZOOM_METHOD, zoom_->currentIndex());
}

} // namespace korvel
