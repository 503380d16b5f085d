#include "macro/MacroPlayer.h"

#include "macro/KeyInjection.h"
#include "macro/MacroSyntax.h"
#include "messages/MessageService.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QKeyEvent>
#include <QTimer>
#include <QWidget>
#include <optional>

namespace korvel {

namespace {

constexpr int kMessageStopPlaying = 30003;
constexpr int kMessageReleaseKeys = 35021;
constexpr int kReminderIntervalMs = 2000;
constexpr int kKeyPollMs = 20;

// The keys a TYPE command may name.
std::optional<Qt::Key> NamedKey(const QString& name) {
    static const std::pair<const char16_t*, Qt::Key> kKeys[] = {
        {u"BS", Qt::Key_Backspace}, {u"BACKSPACE", Qt::Key_Backspace}, {u"END", Qt::Key_End},
        {u"HOME", Qt::Key_Home},    {u"LEFT", Qt::Key_Left},           {u"UP", Qt::Key_Up},
        {u"RIGHT", Qt::Key_Right},  {u"DOWN", Qt::Key_Down},           {u"DEL", Qt::Key_Delete},
        {u"DELETE", Qt::Key_Delete}};
    for (const auto& [keyName, key] : kKeys)
        if (name.compare(QStringView(keyName), Qt::CaseInsensitive) == 0)
            return key;
    return std::nullopt;
}

// The key that types c while modifiers are held; nothing for a character no key is mapped to.
std::optional<Qt::Key> KeyOfCharacter(QChar c) {
    const char16_t unit = c.unicode();
    if (unit == u'\t')
        return Qt::Key_Tab;
    if (unit == u'\n')
        return Qt::Key_Return;
    if (unit == u' ' || (unit >= u'0' && unit <= u'@') || (unit >= u'A' && unit <= u'Z'))
        return static_cast<Qt::Key>(unit);
    if (unit >= u'a' && unit <= u'z')
        return static_cast<Qt::Key>(unit - u'a' + u'A');
    return std::nullopt;
}

// The text a keyboard gives with the key: a control character under Ctrl, a letter in the case
// Shift makes.
QString TextOfKey(Qt::Key key, Qt::KeyboardModifiers modifiers) {
    if (key == Qt::Key_Tab)
        return QStringLiteral("\t");
    if (key == Qt::Key_Return)
        return QStringLiteral("\r");
    if (key > 0xff)
        return QString();
    if (key >= Qt::Key_A && key <= Qt::Key_Z) {
        if (modifiers & Qt::ControlModifier)
            return QString(QChar(char16_t(key - Qt::Key_A + 1)));
        return QString(QChar(char16_t(modifiers & Qt::ShiftModifier ? key : key + 0x20)));
    }
    return QString(QChar(char16_t(key)));
}

// A quoted TYPE text as it is typed: the quotes off, the escapes read, a line feed as the text's
// line break.
QString DecodeTypedText(const QString& quoted) {
    return macro::DecodeMacroText(quoted).replace(u'\n', QStringLiteral("\r\n"));
}

void ProcessPendingEvents() {
    QApplication::processEvents(QEventLoop::AllEvents);
}

} // namespace

void SleepResponsively(int ms) {
    ProcessPendingEvents();
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

MacroPlayer::MacroPlayer(QObject* parent) : QObject(parent) {
    qApp->installEventFilter(this);
}

bool MacroPlayer::eventFilter(QObject* watched, QEvent* event) {
    const QEvent::Type type = event->type();
    if (type == QEvent::ShortcutOverride || type == QEvent::KeyPress ||
        type == QEvent::KeyRelease) {
        const auto* key = static_cast<const QKeyEvent*>(event);
        if (key->key() == Qt::Key_P && !key->isAutoRepeat())
            pKeyDown_ = type != QEvent::KeyRelease;
    }
    return QObject::eventFilter(watched, event);
}

void MacroPlayer::waitForKeysReleased(QWidget* parent) {
    const auto keysHeld = [this] {
        return pKeyDown_ || (QGuiApplication::queryKeyboardModifiers() &
                             (Qt::ControlModifier | Qt::ShiftModifier)) != Qt::NoModifier;
    };
    QElapsedTimer interval;
    interval.start();
    while (keysHeld()) {
        if (interval.elapsed() > kReminderIntervalMs) {
            MessageRequest request;
            request.id = kMessageReleaseKeys;
            request.icon = MessageIcon::Warning;
            request.parent = parent;
            ShowMessage(request);
            if (parent != nullptr)
                parent->window()->update();
            interval.restart();
        }
        SleepResponsively(kKeyPollMs);
    }
}

void MacroPlayer::play(const std::vector<MacroCommand>& commands, MacroTarget& target) {
    if (playing_)
        return;
    playing_ = true;
    waitForKeysReleased(target.messageParent());
    running_ = true;
    std::size_t position = 0;
    for (;;) {
        const int code = step(commands, position, target);
        if (code == kEnded)
            break;
        if (code != kStopped)
            target.carryOut(commands[position - 1]);
        if (running_)
            continue;
        MessageRequest request;
        request.id = kMessageStopPlaying;
        request.buttons = MessageButtons::YesNo;
        request.icon = MessageIcon::Question;
        request.parent = target.messageParent();
        if (ShowMessage(request) == MessageAnswer::Yes)
            break;
        running_ = true;
    }
    releaseHeldKeys();
    running_ = false;
    playing_ = false;
}

int MacroPlayer::step(const std::vector<MacroCommand>& commands, std::size_t& position,
                      MacroTarget& target) {
    if (position == 0)
        releaseHeldKeys();
    while (position < commands.size()) {
        if (!running_)
            return kStopped;
        const MacroCommand& command = commands[position++];
        switch (command.code) {
        case MacroCommandCode::Type:
            type(command, target);
            ProcessPendingEvents();
            break;
        case MacroCommandCode::Lock:
        case MacroCommandCode::Unlock: {
            const bool down = command.code == MacroCommandCode::Lock;
            (command.shift ? shiftLocked_ : ctrlLocked_) = down;
            sendModifier(command.shift ? Qt::Key_Shift : Qt::Key_Control, down);
            break;
        }
        case MacroCommandCode::Sleep:
            SleepResponsively(command.value);
            break;
        case MacroCommandCode::FindUpward:
        case MacroCommandCode::Find:
        case MacroCommandCode::Replace:
        case MacroCommandCode::ReplaceAll:
        case MacroCommandCode::NewFile:
        case MacroCommandCode::Open:
        case MacroCommandCode::Save:
        case MacroCommandCode::Copy:
        case MacroCommandCode::Cut:
        case MacroCommandCode::Paste:
        case MacroCommandCode::Select:
        case MacroCommandCode::Unselect:
        case MacroCommandCode::Goto:
        case MacroCommandCode::EnableWindow:
        case MacroCommandCode::SetFocus:
            return static_cast<int>(command.code);
        default: {
            MessageRequest request;
            request.text = QStringLiteral("未知のコマンド(%d)を検出");
            request.arguments = {QString::number(static_cast<int>(command.code))};
            request.parent = target.messageParent();
            ShowMessage(request);
            break;
        }
        }
    }
    return kEnded;
}

void MacroPlayer::sendModifier(Qt::Key key, bool down) {
    const Qt::KeyboardModifier modifier = key == Qt::Key_Shift     ? Qt::ShiftModifier
                                          : key == Qt::Key_Control ? Qt::ControlModifier
                                                                   : Qt::AltModifier;
    held_.setFlag(modifier, down);
    SendKey(key, down, held_);
}

void MacroPlayer::sendKeyStroke(Qt::Key key, Qt::KeyboardModifiers modifiers, const QString& text) {
    SendKey(key, true, modifiers, text);
    SendKey(key, false, modifiers, text);
}

void MacroPlayer::type(const MacroCommand& command, MacroTarget& target) {
    const bool quoted = command.text.startsWith(u'"');
    const bool plain = !command.ctrl && !command.shift && !command.alt && held_ == Qt::NoModifier;
    if (plain && quoted) {
        target.typeText(DecodeTypedText(command.text));
        return;
    }
    // The command's own modifiers go down around its keys, unless LOCK already holds them.
    const std::pair<bool, Qt::Key> modifiers[] = {{command.ctrl && !ctrlLocked_, Qt::Key_Control},
                                                  {command.shift && !shiftLocked_, Qt::Key_Shift},
                                                  {command.alt, Qt::Key_Alt}};
    for (const auto& [pressed, key] : modifiers)
        if (pressed)
            sendModifier(key, true);
    if (!quoted) {
        if (const std::optional<Qt::Key> key = NamedKey(command.text))
            sendKeyStroke(*key, held_, TextOfKey(*key, held_));
    } else {
        // Between the quotes, as written: an escape is two keys, the backslash being skipped.
        QStringView characters = QStringView(command.text).mid(1);
        if (characters.endsWith(u'"'))
            characters.chop(1);
        for (const QChar c : characters)
            if (const std::optional<Qt::Key> key = KeyOfCharacter(c))
                sendKeyStroke(*key, held_, TextOfKey(*key, held_));
    }
    for (auto it = std::rbegin(modifiers); it != std::rend(modifiers); ++it)
        if (it->first)
            sendModifier(it->second, false);
}

void MacroPlayer::releaseHeldKeys() {
    if (ctrlLocked_)
        sendModifier(Qt::Key_Control, false);
    if (shiftLocked_)
        sendModifier(Qt::Key_Shift, false);
    ctrlLocked_ = false;
    shiftLocked_ = false;
}

} // namespace korvel
