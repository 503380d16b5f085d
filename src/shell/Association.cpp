#include "shell/Association.h"

#include "messages/MessageService.h"
#include "messages/StringTable.h"
#include "shell/DesktopDatabases.h"
#include "shell/HelpPage.h"
#include "shell/XdgKeyFile.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <optional>
#include <utility>

namespace korvel {
namespace {

constexpr int kExtensionList = 35031;
constexpr int kAskOtherProgram = 40021;
constexpr int kAskBrokenData = 40022;
constexpr int kRepairFailed = 40023;

constexpr QStringView kEntryGroup = u"Desktop Entry";
constexpr QStringView kDefaultsGroup = u"Default Applications";
constexpr QStringView kOldEntryKey = u"X-Korvel-OldEntry";
constexpr QStringView kMacroExtension = u".mcr";

// The class of each extension of the list, in list order, with the name an earlier version
// gave it: a desktop entry of that name may still hold the extension's previous owner.
struct ClassStrings {
    int className;
    int description;
    QStringView earlierName;
};
constexpr ClassStrings kClasses[] = {
    {35007, 35011, u"Korvel Text"},  {35008, 35012, u"Korvel Htm"}, {35015, 35016, u"Korvel Html"},
    {35028, 35029, u"Korvel Xml"},   {35009, 35013, u"Korvel Inf"}, {35010, 35014, u"Korvel Ini"},
    {35018, 35019, u"Korvel Macro"},
};

QString DesktopId(QStringView className) {
    return className.toString() + QStringLiteral(".desktop");
}

QString DesktopEntryPath(QStringView className) {
    return UserApplicationsFolder() + u'/' + DesktopId(className);
}

std::optional<AssociationClass> ClassOf(const QString& extension) {
    for (const AssociationClass& entry : AssociationClasses()) {
        if (entry.extension.compare(extension, Qt::CaseInsensitive) == 0)
            return entry;
    }
    return std::nullopt;
}

QStringView EarlierNameOf(const QString& className) {
    for (const ClassStrings& strings : kClasses) {
        if (LoadString(strings.className) == className)
            return strings.earlierName;
    }
    return {};
}

// A default application is a list of desktop ids; the first one is the one that opens the files.
QString FirstDesktopId(const QString& defaultValue) {
    return defaultValue.section(u';', 0, 0).trimmed();
}

bool SameDesktopId(const QString& a, const QString& b) {
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

// The class whose desktop entry a desktop id names, by its current name.
std::optional<AssociationClass> ClassOfDesktopId(const QString& desktopId) {
    for (const AssociationClass& entry : AssociationClasses()) {
        if (SameDesktopId(desktopId, DesktopId(entry.className)))
            return entry;
    }
    return std::nullopt;
}

// The desktop entry standard's rule: an argument holding one of these must be quoted. Paths
// without them are written bare, because xdg-utils' own lookup of the default application (what
// xdg-open uses outside GNOME and KDE) takes a quoted program for a missing one.
bool NeedsQuoting(const QString& program) {
    static const QString kReserved = QStringLiteral(" \t\n\"'\\><~|&;$*?#()`");
    for (QChar c : program) {
        if (kReserved.contains(c))
            return true;
    }
    return false;
}

QString CommandLine(const QString& programPath) {
    QString program = programPath;
    program.replace(u'%', QStringLiteral("%%"));
    if (!NeedsQuoting(program))
        return program + QStringLiteral(" %f");
    QString quoted(u'"');
    for (QChar c : program) {
        if (c == u'"' || c == u'`' || c == u'$' || c == u'\\')
            quoted += u'\\';
        quoted += c;
    }
    return quoted + QStringLiteral("\" %f");
}

// The program part of a command line: the quoted first word, else the text up to the first
// blank; empty for a bare word with no blank behind it.
QString ProgramOfCommand(const QString& command) {
    QString program;
    if (command.startsWith(u'"')) {
        for (qsizetype i = 1; i < command.size(); ++i) {
            if (command[i] == u'\\' && i + 1 < command.size()) {
                program += command[++i];
                continue;
            }
            if (command[i] == u'"')
                break;
            program += command[i];
        }
    } else {
        const qsizetype blank = command.indexOf(u' ');
        if (blank < 0)
            return QString();
        program = command.left(blank);
    }
    return program.replace(QStringLiteral("%%"), QStringLiteral("%"));
}

QString ProgramOfEntry(const QString& entryPath) {
    XdgKeyFile entry;
    if (!entry.read(entryPath))
        return QString();
    return ProgramOfCommand(entry.value(kEntryGroup, u"Exec").value_or(QString()));
}

bool SameProgram(const QString& a, const QString& b) {
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

QString IconOf(const QString& programPath) {
    constexpr QStringView kIcon = u"icons/hicolor/256x256/apps/korveledit.png";
    const QString file = DataFilePath(QFileInfo(programPath).absolutePath(), kIcon, kIcon);
    return file.isEmpty() ? QStringLiteral("korveledit") : file;
}

void PointEntryAt(XdgKeyFile& entry, const QString& programPath) {
    entry.setValue(kEntryGroup, u"Exec", CommandLine(programPath));
    entry.setValue(kEntryGroup, u"Icon", IconOf(programPath));
}

std::optional<QString> DefaultApplicationOf(const QString& mimeType) {
    XdgKeyFile mimeApps;
    if (!mimeApps.read(UserMimeAppsList()))
        return std::nullopt;
    return mimeApps.value(kDefaultsGroup, mimeType);
}

// Who owned the type before us. When the type is ours already (registered again, or an
// extension sharing its type with another of ours), the owner before us is the one that entry
// kept; taking our own entry would hand the type back to ourselves on unregistering.
std::optional<QString> OwnerBeforeUs(const std::optional<QString>& currentDefault) {
    if (!currentDefault || currentDefault->trimmed().isEmpty())
        return std::nullopt;
    const std::optional<AssociationClass> ours = ClassOfDesktopId(FirstDesktopId(*currentDefault));
    if (!ours)
        return currentDefault;
    XdgKeyFile entry;
    if (!entry.read(DesktopEntryPath(ours->className)))
        return std::nullopt;
    return entry.value(kEntryGroup, kOldEntryKey);
}

// The type an extension gets when the extensions before it in the list hold the given types;
// desktopTypes are the system's types of the extensions.
QString TypeAfter(const QString& extension, const QString& description,
                  const QList<std::pair<QString, QString>>& earlier,
                  const QHash<QString, QString>& desktopTypes) {
    if (extension.compare(kMacroExtension, Qt::CaseInsensitive) == 0)
        return OwnMimeTypeOf(extension); // the program's own file format
    const QString desktop = desktopTypes.value(extension.toLower());
    if (desktop.isEmpty())
        return OwnMimeTypeOf(extension);
    for (const auto& [type, kind] : earlier) {
        if (type == desktop && kind != description)
            return OwnMimeTypeOf(extension);
    }
    return desktop;
}

// Every extension of the list with its type, worked out in list order.
QList<std::pair<AssociationClass, QString>> ClassesWithTypes() {
    const QList<AssociationClass> classes = AssociationClasses();
    QStringList extensions;
    for (const AssociationClass& entry : classes)
        extensions.append(entry.extension);
    const QHash<QString, QString> desktopTypes = DesktopMimeTypesOf(extensions);
    QList<std::pair<AssociationClass, QString>> typed;
    QList<std::pair<QString, QString>> earlier;
    for (const AssociationClass& entry : classes) {
        const QString type = TypeAfter(entry.extension, entry.description, earlier, desktopTypes);
        typed.append({entry, type});
        earlier.append({type, entry.description});
    }
    return typed;
}

QList<OwnMimeType> OwnTypesFor(const QString& extension, const QString& description) {
    QList<OwnMimeType> types;
    bool listed = false;
    for (const auto& [entry, type] : ClassesWithTypes()) {
        if (!IsOwnMimeType(type))
            continue;
        types.append({entry.extension, entry.description});
        listed = listed || entry.extension.compare(extension, Qt::CaseInsensitive) == 0;
    }
    if (!listed)
        types.append({extension, description});
    return types;
}

// CheckExtension for a class whose extension has mimeType.
AssociationCheck CheckClass(const AssociationClass& known, const QString& mimeType,
                            const QString& programPath) {
    const std::optional<QString> current = DefaultApplicationOf(mimeType);
    if (!current || !SameDesktopId(FirstDesktopId(*current), DesktopId(known.className)))
        return AssociationCheck::Fine; // not ours: not an error
    const QString program = ProgramOfEntry(DesktopEntryPath(known.className));
    if (program.isEmpty() || SameProgram(program, programPath))
        return AssociationCheck::Fine;
    return QFileInfo::exists(program) ? AssociationCheck::OtherProgram
                                      : AssociationCheck::MissingProgram;
}

} // namespace

QList<AssociationClass> AssociationClasses() {
    const QStringList extensions = LoadString(kExtensionList).split(u';', Qt::SkipEmptyParts);
    QList<AssociationClass> classes;
    for (qsizetype i = 0; i < extensions.size() && i < qsizetype(std::size(kClasses)); ++i) {
        classes.append({extensions[i], LoadString(kClasses[i].className),
                        LoadString(kClasses[i].description)});
    }
    return classes;
}

QString MimeTypeOfExtension(const QString& extension) {
    for (const auto& [entry, type] : ClassesWithTypes()) {
        if (entry.extension.compare(extension, Qt::CaseInsensitive) == 0)
            return type;
    }
    const QString desktop = DesktopMimeTypesOf({extension}).value(extension.toLower());
    return desktop.isEmpty() ? OwnMimeTypeOf(extension) : desktop;
}

bool RegisterExtension(const QString& extension, const QString& className,
                       const QString& description, const QString& programPath) {
    if (extension.size() < 2 || !extension.startsWith(u'.'))
        return false;
    const QString mimeType = MimeTypeOfExtension(extension);
    if (IsOwnMimeType(mimeType) && !InstallOwnMimeTypes(OwnTypesFor(extension, description)))
        return false;

    XdgKeyFile mimeApps;
    if (!mimeApps.read(UserMimeAppsList()))
        return false;
    const std::optional<QString> previousOwner =
        OwnerBeforeUs(mimeApps.value(kDefaultsGroup, mimeType));

    XdgKeyFile entry;
    entry.setValue(kEntryGroup, u"Type", QStringLiteral("Application"));
    entry.setValue(kEntryGroup, u"Name", description);
    PointEntryAt(entry, programPath);
    entry.setValue(kEntryGroup, u"MimeType", mimeType + u';');
    // One entry per extension in the application menus would only be clutter.
    entry.setValue(kEntryGroup, u"NoDisplay", QStringLiteral("true"));
    entry.setValue(kEntryGroup, u"Terminal", QStringLiteral("false"));
    if (previousOwner && !previousOwner->isEmpty())
        entry.setValue(kEntryGroup, kOldEntryKey, *previousOwner);
    // The entry first: the default never names an entry that is not there.
    if (!entry.write(DesktopEntryPath(className)))
        return false;

    mimeApps.setValue(kDefaultsGroup, mimeType, DesktopId(className));
    const bool written = mimeApps.write(UserMimeAppsList());
    RefreshApplicationsCache();
    return written;
}

bool UnregisterExtension(const QString& extension) {
    const std::optional<AssociationClass> known = ClassOf(extension);
    if (!known)
        return true; // not one of ours, so there is nothing to give back
    QString className = known->className;
    if (!QFileInfo::exists(DesktopEntryPath(className)))
        className = EarlierNameOf(className).toString();
    if (className.isEmpty() || !QFileInfo::exists(DesktopEntryPath(className)))
        return true;

    XdgKeyFile mimeApps;
    if (!mimeApps.read(UserMimeAppsList()))
        return false;
    const QString mimeType = MimeTypeOfExtension(extension);
    const std::optional<QString> current = mimeApps.value(kDefaultsGroup, mimeType);
    if (!current || !SameDesktopId(FirstDesktopId(*current), DesktopId(className)))
        return true;

    XdgKeyFile entry;
    entry.read(DesktopEntryPath(className));
    const QString previousOwner = entry.value(kEntryGroup, kOldEntryKey).value_or(QString());
    // With no previous owner kept, the user had made no choice for the type: without our line
    // the system's default opens it again, as "txtfile" and "htmlfile" did, and unticking an
    // extension never leaves it with us.
    if (previousOwner.isEmpty())
        mimeApps.removeKey(kDefaultsGroup, mimeType);
    else
        mimeApps.setValue(kDefaultsGroup, mimeType, previousOwner);
    return mimeApps.write(UserMimeAppsList());
}

AssociationCheck CheckExtension(const QString& extension, const QString& programPath) {
    const std::optional<AssociationClass> known = ClassOf(extension);
    if (!known)
        return AssociationCheck::Fine;
    return CheckClass(*known, MimeTypeOfExtension(extension), programPath);
}

AssociationCheck CheckAssociation(const QString& programPath) {
    AssociationCheck worst = AssociationCheck::Fine;
    // The types of all seven at once: working each out reads the system's type databases.
    for (const auto& [entry, mimeType] : ClassesWithTypes()) {
        const AssociationCheck found = CheckClass(entry, mimeType, programPath);
        if (found == AssociationCheck::OtherProgram)
            return found;
        if (found == AssociationCheck::MissingProgram)
            worst = found;
    }
    return worst;
}

bool RepairAssociation(const QString& programPath) {
    bool repaired = true;
    for (const AssociationClass& known : AssociationClasses()) {
        // Only entries that are there: an extension never associated has nothing to repair.
        const QString path = DesktopEntryPath(known.className);
        if (!QFileInfo::exists(path))
            continue;
        XdgKeyFile entry;
        if (!entry.read(path)) {
            repaired = false;
            continue;
        }
        PointEntryAt(entry, programPath);
        repaired = entry.write(path) && repaired;
    }
    RefreshApplicationsCache();
    return repaired;
}

bool IsExtensionAssociated(const QString& extension, const QString& programPath) {
    const std::optional<QString> current = DefaultApplicationOf(MimeTypeOfExtension(extension));
    if (!current)
        return false;
    // Any of our entries counts: .htm and .html share one type, so one entry opens both.
    const std::optional<AssociationClass> owner = ClassOfDesktopId(FirstDesktopId(*current));
    return owner && SameProgram(ProgramOfEntry(DesktopEntryPath(owner->className)), programPath);
}

bool SetExtensionAssociated(const QString& extension, bool associated, const QString& programPath) {
    const std::optional<AssociationClass> known = ClassOf(extension);
    if (!known)
        return false;
    if (!associated)
        return UnregisterExtension(known->extension);
    return RegisterExtension(known->extension, known->className, known->description, programPath);
}

void StartupAssociationCheck(QWidget* parent) {
    StartupAssociationCheck(parent, QCoreApplication::applicationFilePath());
}

void StartupAssociationCheck(QWidget* parent, const QString& programPath) {
    const AssociationCheck found = CheckAssociation(programPath);
    if (found == AssociationCheck::Fine)
        return;
    MessageRequest question;
    question.id = found == AssociationCheck::OtherProgram ? kAskOtherProgram : kAskBrokenData;
    question.buttons = MessageButtons::YesNo;
    question.icon = MessageIcon::Question;
    question.defaultButton = MessageAnswer::Yes;
    question.topmost = true;
    question.parent = parent;
    if (ShowMessage(question) != MessageAnswer::Yes || RepairAssociation(programPath))
        return;
    MessageRequest failure;
    failure.id = kRepairFailed;
    failure.icon = MessageIcon::Stop;
    failure.topmost = true;
    failure.parent = parent;
    ShowMessage(failure);
}

} // namespace korvel
