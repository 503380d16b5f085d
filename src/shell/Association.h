#pragma once

#include <QList>
#include <QString>

class QWidget;

namespace korvel {

// One extension the program can open from the desktop's file manager, with its class: the
// desktop entry "<className>.desktop" that runs the program, named after its description.
struct AssociationClass {
    QString extension;
    QString className;
    QString description;
};

// The seven extensions in the order of their list (".txt;.htm;.html;.xml;.inf;.ini;.mcr").
QList<AssociationClass> AssociationClasses();

// The MIME type whose default application is the extension's owner. Extensions that the
// system's MIME database gives no type, and .mcr, get one of their own; so does an extension
// the system files under the type of an earlier, different kind of document in the list (an
// .ini that the system calls plain text), so that associating it does not take over .txt.
QString MimeTypeOfExtension(const QString& extension);

// What the start-up check finds for one extension, or for all of them.
enum class AssociationCheck {
    Fine = 0,           // ours and pointing at this program, or not ours at all
    MissingProgram = 1, // ours, but the program it runs is gone
    OtherProgram = 2,   // ours, but run by another copy of the program
};

// Makes the class's desktop entry run programPath and makes it the default application of the
// extension's type, keeping the previous default in the entry (X-Korvel-OldEntry). The
// extension must begin with "."; false when it does not or when a file cannot be written.
bool RegisterExtension(const QString& extension, const QString& className,
                       const QString& description, const QString& programPath);
// Gives the extension's type back to its previous default application, if it is ours now.
// False only when a file cannot be written.
bool UnregisterExtension(const QString& extension);

AssociationCheck CheckExtension(const QString& extension, const QString& programPath);
// The worst of the seven extensions' checks: another program before a missing one.
AssociationCheck CheckAssociation(const QString& programPath);
// Points the command and icon of every class entry there is at programPath; false when one of
// them cannot be rewritten.
bool RepairAssociation(const QString& programPath);

// For the settings page: whether files with this extension open with programPath now, and the
// switch that registers or unregisters it (false on a failed write).
bool IsExtensionAssociated(const QString& extension, const QString& programPath);
bool SetExtensionAssociated(const QString& extension, bool associated, const QString& programPath);

// Start-up: checks the associations and, on a problem, asks once whether to repair them, then
// repairs them on Yes. Call it once the main window is shown.
void StartupAssociationCheck(QWidget* parent);
void StartupAssociationCheck(QWidget* parent, const QString& programPath);

} // namespace korvel
