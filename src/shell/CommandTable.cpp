#include "shell/CommandTable.h"

#include <QAction>

namespace korvel {

CommandTable::CommandTable(QObject* parent) : QObject(parent) {}

QAction* CommandTable::add(int id, const QString& text, Handlers handlers) {
    auto* action = new QAction(text, this);
    action->setData(id);
    action->setCheckable(static_cast<bool>(handlers.checked));
    // Key presses and menu picks both land here, so the enable rule is asked at the moment of
    // use, not only when a menu last showed.
    connect(action, &QAction::triggered, this, [this, id] { run(id); });
    commands_[id] = Command{action, std::move(handlers)};
    return action;
}

QAction* CommandTable::action(int id) const {
    const auto found = commands_.find(id);
    return found == commands_.end() ? nullptr : found->second.action;
}

bool CommandTable::isEnabled(int id) const {
    const auto found = commands_.find(id);
    if (found == commands_.end())
        return false;
    const Handlers& handlers = found->second.handlers;
    return !handlers.enabled || handlers.enabled();
}

bool CommandTable::isChecked(int id) const {
    const auto found = commands_.find(id);
    return found != commands_.end() && found->second.handlers.checked &&
           found->second.handlers.checked();
}

bool CommandTable::run(int id) {
    const auto found = commands_.find(id);
    if (found == commands_.end() || !isEnabled(id) || !found->second.handlers.run) {
        updateStates();
        return false;
    }
    found->second.handlers.run();
    updateStates();
    return true;
}

void CommandTable::updateStates() {
    for (const auto& [id, command] : commands_) {
        command.action->setEnabled(isEnabled(id));
        if (command.action->isCheckable())
            command.action->setChecked(isChecked(id));
    }
}

} // namespace korvel
