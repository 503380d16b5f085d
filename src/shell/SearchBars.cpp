#include "shell/SearchBars.h"

#include "editor/CEditer.h"
#include "editor/EditControl.h"
#include "messages/MessageService.h"
#include "shell/BarParts.h"
#include "shell/CommandIds.h"
#include "shell/CommandTable.h"
#include "shell/FindBar.h"
#include "shell/Menus.h"
#include "shell/ReplaceBar.h"

#include <QApplication>
#include <QLayout>
#include <QLineEdit>

namespace korvel {

namespace {

constexpr int kMessageEmptySearch = 40018;
constexpr int kMessageEmptyReplace = 40012;

} // namespace

SearchBars::SearchBars(CEditer& view, QWidget& barArea)
    : QObject(&barArea), view_(view), barArea_(barArea), findBar_(new FindBar(&barArea)),
      replaceBar_(new ReplaceBar(&barArea)) {
    barArea_.layout()->addWidget(findBar_);
    barArea_.layout()->addWidget(replaceBar_);
    findBar_->hide();
    replaceBar_->hide();

    connect(findBar_, &FindBar::findTowardsStart, this, [this] { findFromFindBar(true); });
    connect(findBar_, &FindBar::findTowardsEnd, this, [this] { findFromFindBar(false); });
    connect(findBar_, &FindBar::closeRequested, this, &SearchBars::hideBars);
    connect(replaceBar_, &ReplaceBar::findNext, this, &SearchBars::findNextFromReplaceBar);
    connect(replaceBar_, &ReplaceBar::replaceOne, this, &SearchBars::replaceOneFromReplaceBar);
    connect(replaceBar_, &ReplaceBar::replaceAll, this, &SearchBars::replaceAllFromReplaceBar);
    connect(replaceBar_, &ReplaceBar::closeRequested, this, &SearchBars::hideBars);
}

void SearchBars::addCommands(CommandTable& table) {
    auto text = [](int id) { return MainMenuText(id); };
    table.add(command::Find, text(command::Find), {[this] { openFindBar(); }});
    table.add(command::Replace, text(command::Replace), {[this] { openReplaceBar(); }});
    table.add(command::FindBackward, text(command::FindBackward), {[this] { searchKey(false); }});
    table.add(command::FindForward, text(command::FindForward), {[this] { searchKey(true); }});
    table.add(command::ReplaceNext, text(command::ReplaceNext), {[this] { replaceKey(); }});
    table.add(command::HideBar, text(command::HideBar), {[this] { hideBars(); }});
    table.add(command::IgnoreCase, text(command::IgnoreCase), {[this] { toggleCase(); }});
    table.add(command::NextPane, QString(), {[this] { focusNextPane(false); }});
    table.add(command::PreviousPane, QString(), {[this] { focusNextPane(true); }});
}

QLineEdit* SearchBars::focusedEdit() const {
    for (QLineEdit* edit :
         {findBar_->textEdit(), replaceBar_->findEdit(), replaceBar_->replacementEdit()}) {
        if (edit->hasFocus())
            return edit;
    }
    return nullptr;
}

QString SearchBars::selectionForBar() const {
    // A bar holds one line: the selection up to its first line break.
    const QString selected = view_.selectedText();
    return selected.left(selected.indexOf(QStringLiteral("\r\n")));
}

void SearchBars::showBar(QWidget* bar, QLineEdit* edit) {
    QWidget* other = bar == findBar_ ? static_cast<QWidget*>(replaceBar_) : findBar_;
    other->hide();
    if (view_.hasSelection())
        edit->setText(selectionForBar());
    bar->show();
    barArea_.show();
    edit->setFocus();
    edit->selectAll();
}

void SearchBars::openFindBar() {
    showBar(findBar_, findBar_->textEdit());
}

void SearchBars::openReplaceBar() {
    showBar(replaceBar_, replaceBar_->findEdit());
}

void SearchBars::hideBars() {
    findBar_->hide();
    replaceBar_->hide();
    barArea_.hide();
    view_.activeControl()->setFocus();
}

void SearchBars::searchKey(bool towardsStart) {
    if (!replaceBar_->isHidden()) {
        QLineEdit* edit = replaceBar_->findEdit();
        if (edit->text().isEmpty())
            edit->setText(selectionForBar());
        findNextFromReplaceBar();
        return;
    }
    QLineEdit* edit = findBar_->textEdit();
    if (findBar_->isHidden()) {
        openFindBar();
        if (!edit->text().isEmpty())
            findFromFindBar(towardsStart);
        return;
    }
    if (edit->text().isEmpty())
        edit->setText(selectionForBar());
    findFromFindBar(towardsStart);
}

void SearchBars::replaceKey() {
    if (replaceBar_->isHidden())
        openReplaceBar();
    else
        replaceOneFromReplaceBar();
}

void SearchBars::toggleCase() {
    if (!findBar_->isHidden())
        findBar_->caseOption().toggle();
    else if (!replaceBar_->isHidden())
        replaceBar_->caseOption().toggle();
}

void SearchBars::focusNextPane(bool backwards) {
    // The panes in the order of F6: the text, then the boxes of the bar that is shown.
    QList<QWidget*> panes{view_.activeControl()};
    if (!findBar_->isHidden())
        panes.append(findBar_->textEdit());
    if (!replaceBar_->isHidden())
        panes.append({replaceBar_->findEdit(), replaceBar_->replacementEdit()});
    const qsizetype current = panes.indexOf(QApplication::focusWidget());
    const qsizetype step = backwards ? panes.size() - 1 : 1;
    panes[(std::max<qsizetype>(current, 0) + step) % panes.size()]->setFocus();
}

bool SearchBars::refuseEmpty(QLineEdit* edit, int message) {
    if (!edit->text().isEmpty())
        return false;
    MessageRequest request;
    request.id = message;
    request.icon = MessageIcon::Warning;
    request.parent = view_.window();
    ShowMessage(request);
    edit->setFocus();
    return true;
}

void SearchBars::findFromFindBar(bool towardsStart) {
    QLineEdit* edit = findBar_->textEdit();
    if (refuseEmpty(edit, kMessageEmptySearch))
        return;
    const bool ignoreCase = findBar_->caseOption().ignoresCase();
    view_.find(edit->text(), towardsStart, ignoreCase, FindMode::Plain);
    view_.record({towardsStart ? RecordedAction::FindTowardsStart : RecordedAction::Find,
                  edit->text(), QString(), ignoreCase ? 1 : 0});
}

void SearchBars::findNextFromReplaceBar() {
    QLineEdit* edit = replaceBar_->findEdit();
    if (refuseEmpty(edit, kMessageEmptyReplace))
        return;
    const bool ignoreCase = replaceBar_->caseOption().ignoresCase();
    view_.find(edit->text(), false, ignoreCase, FindMode::NothingReplaced);
    view_.record({RecordedAction::Find, edit->text(), QString(), ignoreCase ? 1 : 0});
}

void SearchBars::replaceOneFromReplaceBar() {
    QLineEdit* edit = replaceBar_->findEdit();
    if (refuseEmpty(edit, kMessageEmptyReplace))
        return;
    const bool ignoreCase = replaceBar_->caseOption().ignoresCase();
    const QString replacement = replaceBar_->replacementEdit()->text();
    view_.replaceOne(edit->text(), replacement, ignoreCase);
    view_.record({RecordedAction::Replace, edit->text(), replacement, ignoreCase ? 1 : 0});
}

void SearchBars::replaceAllFromReplaceBar() {
    QLineEdit* edit = replaceBar_->findEdit();
    if (refuseEmpty(edit, kMessageEmptyReplace))
        return;
    const bool ignoreCase = replaceBar_->caseOption().ignoresCase();
    const QString replacement = replaceBar_->replacementEdit()->text();
    if (view_.replaceAll(edit->text(), replacement, ignoreCase))
        view_.record({RecordedAction::ReplaceAll, edit->text(), replacement, ignoreCase ? 1 : 0});
}

} // namespace korvel
