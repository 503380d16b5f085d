#pragma once

#include <QString>
#include <QtGlobal>

namespace korvel {

class SettingsStore;

// The list, shared by every running KorvelEdit of the user, of which instance has which file
// open: the group "OpenDocs" of the settings file, one value per instance, named by its
// process id and holding the path. Another start of the program that opens the same file is
// warned; values left behind by an instance that ended without tidying up are removed when
// they are come across.
class OpenDocuments {
public:
    explicit OpenDocuments(SettingsStore& store) : store_(store) {}

    // True when another living instance has path open (letter case ignored). Values of
    // instances that are gone are removed on the way.
    bool IsOpenElsewhere(const QString& path);
    // Records path as this instance's open document.
    void RegisterOpenDocument(const QString& path);
    // Removes this instance's value, if it wrote one.
    void UnregisterOpenDocument();

private:
    SettingsStore& store_;
    // The instance under which a value was written; 0 when none was.
    qint64 registeredInstance_ = 0;
};

// Whether process is a running KorvelEdit: alive, and running the same program as this one.
bool IsRunningInstance(qint64 process);

} // namespace korvel
