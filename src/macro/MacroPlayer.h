#pragma once

#include "macro/MacroCommand.h"

#include <QObject>
#include <cstddef>
#include <vector>

class QWidget;

namespace korvel {

// The view's side of playing: typed text goes in through it, and it carries out the commands
// that act on the document and the text (FIND, REPLACE, NEWFILE, OPEN, SAVE, COPY, CUT, PASTE,
// SELECT, UNSELECT, GOTO, ENABLEWINDOW).
class MacroTarget {
public:
    virtual ~MacroTarget() = default;
    // Puts text (CR LF between lines) in place of the selection, as typing does.
    virtual void typeText(const QString& text) = 0;
    virtual void carryOut(const MacroCommand& command) = 0;
    // Where the player's questions stand.
    virtual QWidget* messageParent() const = 0;
};

// Plays a command list: keys travel as real keys do, typed text goes straight to the text, and
// the view's commands are handed back to the target. Everything runs on the interface thread,
// which is kept responsive by processing events after each key and while sleeping.
class MacroPlayer : public QObject {
    Q_OBJECT
public:
    // What step() returns when it hands back no command.
    static constexpr int kStopped = 22;
    static constexpr int kEnded = 23;

    explicit MacroPlayer(QObject* parent = nullptr);

    bool isPlaying() const { return playing_; }
    // Waits until Ctrl, Shift and P are released (reminding the user every 2 seconds), then
    // plays commands to their end or until a stop request is confirmed.
    void play(const std::vector<MacroCommand>& commands, MacroTarget& target);
    // Asks a playing macro to stop: before its next command the user confirms.
    void requestStop() { running_ = false; }

    // Runs commands from position on, up to the first one the view must carry out, whose code
    // it returns with position past it; kStopped after a stop request, kEnded at the end of the
    // list. A position of 0 first lets go of the keys held by LOCK.
    int step(const std::vector<MacroCommand>& commands, std::size_t& position, MacroTarget& target);
    // Releases Ctrl and Shift where LOCK holds them.
    void releaseHeldKeys();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void waitForKeysReleased(QWidget* parent);
    void type(const MacroCommand& command, MacroTarget& target);
    void sendKeyStroke(Qt::Key key, Qt::KeyboardModifiers modifiers, const QString& text);
    void sendModifier(Qt::Key key, bool down);

    bool playing_ = false;
    bool running_ = false;
    bool ctrlLocked_ = false;
    bool shiftLocked_ = false;
    Qt::KeyboardModifiers held_;
    // The P of Ctrl+Shift+P may still be down when playing is asked for.
    bool pKeyDown_ = false;
};

// Waits ms milliseconds while the window goes on drawing and taking input.
void SleepResponsively(int ms);

} // namespace korvel
