#include "macro/MacroRecorder.h"

#include <QApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>

namespace korvel {

namespace {

// The keys recorded by name. Shift and Ctrl are recorded with them, except with the two that
// delete, whose Shift is no part of what they do here.
struct NamedKey {
    Qt::Key key;
    const char16_t* name;
    bool withModifiers;
};
constexpr NamedKey kNamedKeys[] = {
    {Qt::Key_Backspace, u"BS", false}, {Qt::Key_End, u"END", true},
    {Qt::Key_Home, u"HOME", true},     {Qt::Key_Left, u"LEFT", true},
    {Qt::Key_Up, u"UP", true},         {Qt::Key_Right, u"RIGHT", true},
    {Qt::Key_Down, u"DOWN", true},     {Qt::Key_Delete, u"DEL", false}};

// A typed character as a quoted TYPE text; nothing for the control characters that type
// nothing.
std::optional<QString> QuotedCharacter(QChar c) {
    switch (c.unicode()) {
    case u'\r':
        return QStringLiteral("\"\\n\"");
    case u'\t':
        return QStringLiteral("\"\\t\"");
    case u'\\':
        return QStringLiteral("\"\\\\\"");
    case u'"':
        return QStringLiteral("\"\\\"\"");
    default:
        if (c.unicode() < 0x20)
            return std::nullopt;
        return u'"' + QString(c) + u'"';
    }
}

} // namespace

MacroRecorder::MacroRecorder(std::function<bool(const QObject*)> isText, QObject* parent)
    : QObject(parent), isText_(std::move(isText)) {}

void MacroRecorder::start() {
    commands_.clear();
    recording_ = true;
    qApp->installEventFilter(this);
}

void MacroRecorder::stop() {
    recording_ = false;
    qApp->removeEventFilter(this);
}

void MacroRecorder::add(MacroCommand command) {
    if (!recording_)
        return;
    const Qt::KeyboardModifiers held = QGuiApplication::queryKeyboardModifiers();
    command.ctrl = held.testFlag(Qt::ControlModifier);
    command.shift = held.testFlag(Qt::ShiftModifier);
    command.alt = held.testFlag(Qt::AltModifier);
    commands_.push_back(std::move(command));
}

bool MacroRecorder::eventFilter(QObject* watched, QEvent* event) {
    // A key the text ignores travels on to its parents: counted at the text only, it is
    // recorded once.
    if (recording_ && isText_(watched)) {
        if (event->type() == QEvent::KeyPress)
            addKey(*static_cast<QKeyEvent*>(event));
        else if (event->type() == QEvent::InputMethod)
            addCharacters(static_cast<QInputMethodEvent*>(event)->commitString(), false, false);
    }
    return QObject::eventFilter(watched, event);
}

void MacroRecorder::addKey(const QKeyEvent& key) {
    const Qt::KeyboardModifiers modifiers = key.modifiers();
    for (const NamedKey& named : kNamedKeys) {
        if (named.key != key.key())
            continue;
        MacroCommand command{MacroCommandCode::Type, QString::fromUtf16(named.name)};
        command.shift = named.withModifiers && modifiers.testFlag(Qt::ShiftModifier);
        command.ctrl = named.withModifiers && modifiers.testFlag(Qt::ControlModifier);
        commands_.push_back(std::move(command));
        return;
    }
    // Ctrl+Enter types a line feed, which is no character of the text; recorded as Ctrl and
    // "\n" it would play back as Ctrl+N.
    const bool ctrl = modifiers.testFlag(Qt::ControlModifier);
    if (ctrl && (key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter))
        return;
    // The character carries Shift in its own case; Ctrl and Alt are recorded beside it.
    addCharacters(key.text(), ctrl, modifiers.testFlag(Qt::AltModifier));
}

void MacroRecorder::addCharacters(QStringView text, bool ctrl, bool alt) {
    for (qsizetype i = 0; i < text.size(); ++i) {
        std::optional<QString> quoted;
        // A character beyond the basic plane is one character of two units.
        if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            quoted = u'"' + text.mid(i, 2).toString() + u'"';
            ++i;
        } else {
            quoted = QuotedCharacter(text[i]);
        }
        if (!quoted)
            continue;
        MacroCommand command{MacroCommandCode::Type, std::move(*quoted)};
        command.ctrl = ctrl;
        command.alt = alt;
        commands_.push_back(std::move(command));
    }
}

} // namespace korvel
