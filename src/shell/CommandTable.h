#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <map>

class QAction;

namespace korvel {

// Every command of the program by its id: what it does, and when it is enabled and checked.
// The states are worked out on demand (before a menu shows, when the selection, the clipboard
// or the document changes), never stored by the commands themselves.
class CommandTable : public QObject {
    Q_OBJECT
public:
    struct Handlers {
        std::function<void()> run{};
        // Empty: always enabled.
        std::function<bool()> enabled{};
        // Empty: the command has no check mark.
        std::function<bool()> checked{};
    };

    explicit CommandTable(QObject* parent = nullptr);

    // Adds a command; text is its menu text, a tab before the key name it shows.
    QAction* add(int id, const QString& text, Handlers handlers);

    // The command's action; nullptr for an id that is not in the table.
    QAction* action(int id) const;
    bool isEnabled(int id) const;
    bool isChecked(int id) const;
    // Runs the command when it is enabled now; returns whether it ran.
    bool run(int id);

    // Brings every action's enabled and checked state up to date.
    void updateStates();

private:
    struct Command {
        QAction* action;
        Handlers handlers;
    };
    std::map<int, Command> commands_;
};

} // namespace korvel
