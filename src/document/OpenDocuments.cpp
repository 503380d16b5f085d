#include "document/OpenDocuments.h"

#include "settings/SettingNames.h"
#include "settings/SettingsStore.h"

#include <QFile>
#include <QSettings>
#include <cerrno>
#include <csignal>
#include <limits>
#include <unistd.h>

namespace korvel {

namespace {

// The program a process runs. The kernel marks a program file replaced since it started.
QString ProgramOf(const QString& process) {
    QString program = QFile::symLinkTarget(QStringLiteral("/proc/%1/exe").arg(process));
    const QString replaced = QStringLiteral(" (deleted)");
    if (program.endsWith(replaced))
        program.chop(replaced.size());
    return program;
}

qint64 ThisInstance() {
    return static_cast<qint64>(::getpid());
}

} // namespace

bool IsRunningInstance(qint64 process) {
    if (process <= 0 || process > std::numeric_limits<pid_t>::max())
        return false;
    if (::kill(static_cast<pid_t>(process), 0) != 0 && errno != EPERM)
        return false;
    // A process id comes back into use; only the same program counts as an instance.
    const QString program = ProgramOf(QString::number(process));
    return !program.isEmpty() && program == ProgramOf(QStringLiteral("self"));
}

bool OpenDocuments::IsOpenElsewhere(const QString& path) {
    const std::unique_ptr<QSettings> list = store_.openGroup(kOpenDocsGroup);
    list->sync();
    bool elsewhere = false;
    const QStringList instances = list->childKeys();
    for (const QString& name : instances) {
        bool isNumber = false;
        const qint64 instance = name.toLongLong(&isNumber);
        if (!isNumber || !IsRunningInstance(instance)) {
            list->remove(name);
            continue;
        }
        if (instance != ThisInstance() &&
            list->value(name).toString().compare(path, Qt::CaseInsensitive) == 0)
            elsewhere = true;
    }
    return elsewhere;
}

void OpenDocuments::RegisterOpenDocument(const QString& path) {
    registeredInstance_ = ThisInstance();
    store_.openGroup(kOpenDocsGroup)->setValue(QString::number(registeredInstance_), path);
}

void OpenDocuments::UnregisterOpenDocument() {
    if (registeredInstance_ == 0)
        return;
    store_.openGroup(kOpenDocsGroup)->remove(QString::number(registeredInstance_));
    registeredInstance_ = 0;
}

} // namespace korvel
