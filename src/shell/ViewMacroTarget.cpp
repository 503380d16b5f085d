#include "shell/ViewMacroTarget.h"

#include "editor/CEditer.h"

#include <QApplication>
#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <QWidget>

namespace korvel {

namespace {

// A line feed typed in a macro text is a line break, which the text holds as CR LF.
QString WithLineBreaks(QString text) {
    for (qsizetype i = 0; i < text.size(); ++i)
        if (text[i] == u'\n' && (i == 0 || text[i - 1] != u'\r'))
            text.insert(i++, u'\r');
    return text;
}

bool IsPointerInput(QEvent::Type type) {
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TabletPress:
    case QEvent::TabletRelease:
    case QEvent::TabletMove:
        return true;
    default:
        return false;
    }
}

} // namespace

ViewMacroTarget::ViewMacroTarget(CEditer& view) : view_(view) {}

void ViewMacroTarget::typeText(const QString& text) {
    view_.typeText(text);
}

QWidget* ViewMacroTarget::messageParent() const {
    return view_.window();
}

void ViewMacroTarget::carryOut(const MacroCommand& command) {
    const bool flag = command.value != 0;
    switch (command.code) {
    case MacroCommandCode::FindUpward:
    case MacroCommandCode::Find:
        view_.find(WithLineBreaks(command.text), command.code == MacroCommandCode::FindUpward, flag,
                   FindMode::Plain);
        break;
    case MacroCommandCode::Replace:
    case MacroCommandCode::ReplaceAll: {
        const qsizetype split = command.text.indexOf(QStringLiteral("\r\n"));
        const QString from = WithLineBreaks(command.text.left(split));
        const QString to = split < 0 ? QString() : WithLineBreaks(command.text.mid(split + 2));
        if (command.code == MacroCommandCode::ReplaceAll)
            view_.replaceAll(from, to, flag);
        else
            view_.replaceOne(from, to, flag);
        break;
    }
    case MacroCommandCode::NewFile:
        view_.newDocument(!flag);
        break;
    case MacroCommandCode::Open: {
        const QString path = QDir::cleanPath(QFileInfo(command.text).absoluteFilePath());
        if (flag && !QFileInfo::exists(path))
            view_.newDocument(false, path);
        else
            view_.openPath(path, !flag);
        break;
    }
    case MacroCommandCode::Save:
        if (flag)
            view_.save();
        else
            view_.saveAsPath(QDir::cleanPath(QFileInfo(command.text).absoluteFilePath()),
                             view_.encoding(), view_.lineEnding());
        break;
    case MacroCommandCode::Copy:
        view_.copy();
        break;
    case MacroCommandCode::Cut:
        view_.cut();
        break;
    case MacroCommandCode::Paste:
        view_.paste();
        break;
    case MacroCommandCode::Select:
        if (command.value == 0)
            view_.selectAll();
        else
            view_.selectLinePart(command.value == 2   ? CEditer::LinePart::BeforeCaret
                                 : command.value == 3 ? CEditer::LinePart::AfterCaret
                                                      : CEditer::LinePart::Whole);
        break;
    case MacroCommandCode::Unselect:
        view_.collapseSelection(flag);
        break;
    case MacroCommandCode::Goto:
        if (command.text == u"HOME")
            view_.goToTextStart();
        else if (command.text == u"END")
            view_.goToTextEnd();
        else if (command.text == u"VIEWTOP")
            view_.goToFirstVisibleLine();
        else if (command.text == u"+")
            view_.goToLineRelative(command.value);
        else if (command.text == u"-")
            view_.goToLineRelative(-command.value);
        else
            view_.goToLine(std::clamp(command.value, 1, view_.lineCount()) - 1);
        break;
    case MacroCommandCode::EnableWindow:
        if (flag)
            enableUserInput();
        else
            disableUserInput();
        break;
    default:
        break;
    }
}

void ViewMacroTarget::disableUserInput() {
    if (inputDisabled_)
        return;
    inputDisabled_ = true;
    qApp->installEventFilter(this);
}

void ViewMacroTarget::enableUserInput() {
    if (!inputDisabled_)
        return;
    inputDisabled_ = false;
    qApp->removeEventFilter(this);
}

bool ViewMacroTarget::eventFilter(QObject* watched, QEvent* event) {
    // The macro's keys still arrive; the user's pointer does not reach the window.
    if (IsPointerInput(event->type()) && watched->isWidgetType() &&
        static_cast<QWidget*>(watched)->window() == view_.window())
        return true;
    return QObject::eventFilter(watched, event);
}

} // namespace korvel
