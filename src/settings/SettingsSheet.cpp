#include "settings/SettingsSheet.h"

#include "settings/CPPageColor.h"
#include "settings/CPPageEdit.h"
#include "settings/CPPageFile.h"
#include "settings/CPPageFont.h"
#include "settings/CPPageTap.h"
#include "settings/PenTargets.h"
#include "widgets/DialogButtons.h"
#include "widgets/ScreenFit.h"

#include <QScrollArea>
#include <QTabWidget>
#include <QVBoxLayout>

namespace korvel {

SettingsSheet::SettingsSheet(SettingsStore& store, const SettingsSeams& seams, QWidget* parent)
    : QDialog(parent), tabs_(new QTabWidget(this)), color_(new CPPageColor(store)),
      edit_(new CPPageEdit(store)), file_(new CPPageFile(store, seams)),
      font_(new CPPageFont(store)), tap_(new CPPageTap(store)) {
    setWindowTitle(QStringLiteral("設定"));
    auto* layout = new QVBoxLayout(this);
    tabs_->setUsesScrollButtons(true);
    tabs_->setElideMode(Qt::ElideNone);
    for (SettingsPage* page : {static_cast<SettingsPage*>(color_),
                               static_cast<SettingsPage*>(edit_), static_cast<SettingsPage*>(file_),
                               static_cast<SettingsPage*>(font_), static_cast<SettingsPage*>(tap_)})
        addPage(page);
    layout->addWidget(tabs_, 1);
    layout->addLayout(OkCancelRow(*this));
    EnlargeForPen(*this);
    FitToScreen(*this, QSize(520, 600));
}

void SettingsSheet::addPage(SettingsPage* page) {
    // A page taller than a small screen scrolls instead of pushing OK off it.
    auto* scroller = new QScrollArea(tabs_);
    scroller->setWidget(page);
    scroller->setWidgetResizable(true);
    scroller->setFrameShape(QFrame::NoFrame);
    scroller->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    tabs_->addTab(scroller, page->windowTitle());
    pages_.append(page);
}

void SettingsSheet::accept() {
    // The page in front is checked first: its fault is the one the user is looking at.
    QList<SettingsPage*> order = pages_;
    const qsizetype front = tabs_->currentIndex();
    if (front > 0)
        order.move(front, 0);
    for (SettingsPage* page : order) {
        tabs_->setCurrentIndex(static_cast<int>(pages_.indexOf(page)));
        if (!page->checkValues())
            return;
    }
    tabs_->setCurrentIndex(static_cast<int>(front));
    for (SettingsPage* page : pages_)
        page->writeValues();
    QDialog::accept();
}

bool RunSettingsSheet(SettingsStore& store, const SettingsSeams& seams, QWidget* parent) {
    SettingsSheet sheet(store, seams, parent);
    return sheet.exec() == QDialog::Accepted;
}

} // namespace korvel
