#pragma once

#include "macro/MacroCommand.h"

#include <QObject>
#include <functional>
#include <vector>

class QKeyEvent;

namespace korvel {

// While recording, turns what the user does into macro commands: the named keys and the typed
// characters (and input method commits) aimed at the text, and the view's own commands handed
// in through add().
class MacroRecorder : public QObject {
    Q_OBJECT
public:
    // Keys count only when receiver, the widget they are delivered to, is the text.
    explicit MacroRecorder(std::function<bool(const QObject* receiver)> isText,
                           QObject* parent = nullptr);

    bool isRecording() const { return recording_; }
    // Starting empties the list.
    void start();
    void stop();
    const std::vector<MacroCommand>& commands() const { return commands_; }

    // A command of the view; the modifiers held at this moment are recorded with it.
    void add(MacroCommand command);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void addKey(const QKeyEvent& key);
    void addCharacters(QStringView text, bool ctrl, bool alt);

    std::function<bool(const QObject*)> isText_;
    bool recording_ = false;
    std::vector<MacroCommand> commands_;
};

} // namespace korvel
