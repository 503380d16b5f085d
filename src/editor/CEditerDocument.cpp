// The view's load and save commands: Open, Save, Save As and New, with their questions.
#include "browser/FileBrowserDialog.h"
#include "document/DocumentFiles.h"
#include "document/EncodingNames.h"
#include "editor/CEditer.h"
#include "editor/EditControl.h"
#include "editor/EditorText.h"
#include "editor/FileInfoDialog.h"
#include "editor/WaitCursor.h"
#include "messages/MessageService.h"
#include "messages/StringTable.h"
#include "settings/SettingsStore.h"

#include <QFileInfo>
#include <QTextDocument>
#include <algorithm>
#include <iterator>

namespace korvel {

namespace {

constexpr int kMessageSaveChanges = 30006;
constexpr int kMessageCannotAccess = 33003;
constexpr int kMessageIsFolder = 33004;
constexpr int kMessageOpenElsewhere = 35024;
constexpr int kMessageChangedOutside = 33038;
constexpr int kMessageSavedWithNewCodes = 30043;
constexpr int kOpenTitle = 35034;
constexpr int kSaveTitle = 35035;
constexpr int kFileFilter = 35045;
constexpr int kLoadEncodingChoices = 35046;
constexpr int kSaveEncodingChoices = 35047;

// The order of the line-ending row is the order of the LineEnding values.
const QString kLineEndingChoices = QStringLiteral("CR-LF|CR|LF||");

int SaveListPosition(TextEncoding encoding) {
    const auto* found =
        std::find(std::begin(kSaveEncodingList), std::end(kSaveEncodingList), encoding);
    return found == std::end(kSaveEncodingList)
               ? 0
               : static_cast<int>(std::distance(std::begin(kSaveEncodingList), found));
}

MessageAnswer ShowPathMessage(int id, const QString& path, QWidget* parent) {
    MessageRequest request;
    request.id = id;
    request.arguments = {path};
    request.icon = MessageIcon::Stop;
    request.topmost = true;
    request.parent = parent;
    return ShowMessage(request);
}

} // namespace

bool CEditer::loadDocument(const QString& path, TextEncoding& encoding, LineEnding& lineEnding,
                           bool checkOpenElsewhere) {
    const WaitCursor waitCursor;
    std::optional<LoadedDocument> loaded = LoadDocumentFile(path, encoding, window());
    if (!loaded)
        return false;
    replaceText(loaded->text);
    encoding = loaded->encoding;
    lineEnding = loaded->lineEnding;
    if (checkOpenElsewhere && openDocuments_.IsOpenElsewhere(path)) {
        // A warning only: the user may well mean to read the file twice.
        MessageRequest request;
        request.id = kMessageOpenElsewhere;
        request.icon = MessageIcon::Warning;
        request.topmost = true;
        request.parent = window();
        ShowMessage(request);
    }
    openDocuments_.RegisterOpenDocument(path);
    return true;
}

void CEditer::replaceText(std::u16string_view text) {
    SetEditorText(*document_, text);
    EditControl* active = activeControl();
    active->moveCursor(QTextCursor::Start);
    active->ensureCursorVisible();
    emit commandStatesChanged();
}

void CEditer::adoptDocument(const QString& path, TextEncoding encoding, LineEnding lineEnding) {
    // The time goes with the path: an outside change is judged against this file's.
    fileTime_ = ReadFileTime(path);
    path_ = path;
    encoding_ = encoding;
    lineEnding_ = lineEnding;
    emit documentChanged();
}

bool CEditer::maySetTextAside() {
    if (!isModified())
        return true;
    MessageRequest request;
    request.id = kMessageSaveChanges;
    request.buttons = MessageButtons::YesNoCancel;
    request.icon = MessageIcon::Question;
    request.defaultButton = MessageAnswer::Yes;
    request.topmost = true;
    request.parent = window();
    switch (ShowMessage(request)) {
    case MessageAnswer::Yes:
        return save();
    case MessageAnswer::No:
        return true;
    default:
        return false;
    }
}

bool CEditer::openPath(const QString& path, bool askAboutChanges) {
    switch (ExaminePath(path)) {
    case PathKind::Missing:
        ShowPathMessage(kMessageCannotAccess, path, window());
        return false;
    case PathKind::Folder:
        ShowPathMessage(kMessageIsFolder, path, window());
        return false;
    case PathKind::File:
        break;
    }
    if (askAboutChanges && !maySetTextAside())
        return false;
    TextEncoding encoding = TextEncoding::AutoDetect;
    LineEnding lineEnding = LineEnding::CrLf;
    if (!loadDocument(path, encoding, lineEnding))
        return false;
    adoptDocument(path, encoding, lineEnding);
    record({RecordedAction::Open, path});
    return true;
}

bool CEditer::browse(BrowseRequest& request) {
    ApplyBrowseSettings(request, store_);
    const bool chosen =
        browseDialog_ ? browseDialog_(request, window()) : RunBrowseDialog(request, window());
    if (!chosen)
        return false;
    StoreBrowseSettings(request, store_);
    filterIndex_ = request.filterIndex;
    lastFolder_ = request.folder;
    return true;
}

bool CEditer::openWithDialog() {
    BrowseRequest request;
    request.title = LoadString(kOpenTitle);
    request.filter = LoadString(kFileFilter);
    request.filterIndex = filterIndex_;
    request.flags = browse_flag::FileMustExist | browse_flag::PathMustExist;
    request.options = browse_option::ShowOptionRow;
    request.optionList = LoadString(kLoadEncodingChoices);
    request.optionIndex = 0; // "自動判定"
    request.folder = lastFolder_;
    if (!browse(request))
        return false;

    const int choice = request.optionIndex;
    TextEncoding encoding = choice >= 0 && choice < static_cast<int>(std::size(kLoadEncodingList))
                                ? kLoadEncodingList[choice]
                                : TextEncoding::AutoDetect;
    const QString path = request.path();
    if (!maySetTextAside())
        return false;
    LineEnding lineEnding = LineEnding::CrLf;
    if (!loadDocument(path, encoding, lineEnding))
        return false;
    adoptDocument(path, encoding, lineEnding);
    emit fileUsed(path);
    record({RecordedAction::Open, path});
    return true;
}

bool CEditer::saveDocument(const QString& path, TextEncoding encoding, LineEnding lineEnding) {
    const std::u16string text = EditorText(*document_);
    if (!SaveDocumentFile(path, text, encoding, lineEnding, store_.read(setting::JIS_KATAKANA_MODE),
                          window()))
        return false;
    document_->setModified(false);
    fileTime_ = ReadFileTime(path);
    return true;
}

bool CEditer::save() {
    if (path_.isEmpty())
        return saveAs();
    if (!saveDocument(path_, encoding_, lineEnding_))
        return false;
    record({RecordedAction::Save, QString(), QString(), 1});
    return true;
}

bool CEditer::saveAs() {
    BrowseRequest request;
    request.title = LoadString(kSaveTitle);
    request.filter = LoadString(kFileFilter);
    request.filterIndex = filterIndex_;
    request.flags = browse_flag::OverwritePrompt | browse_flag::PathMustExist;
    request.options =
        browse_option::Saving | browse_option::ShowOptionRow | browse_option::AppendTypeExtension;
    request.optionList = LoadString(kSaveEncodingChoices);
    request.optionIndex = SaveListPosition(encoding_);
    request.lineEndingList = kLineEndingChoices;
    request.lineEndingIndex = static_cast<int>(lineEnding_);
    if (path_.isEmpty()) {
        request.folder = lastFolder_;
    } else {
        const QFileInfo current(path_);
        request.folder = current.absolutePath();
        request.name = current.fileName();
    }
    if (!browse(request))
        return false;

    const int choice = request.optionIndex;
    const TextEncoding encoding =
        choice >= 0 && choice < static_cast<int>(std::size(kSaveEncodingList))
            ? kSaveEncodingList[choice]
            : encoding_;
    const int lineChoice = request.lineEndingIndex;
    const LineEnding lineEnding = lineChoice >= 0 && lineChoice <= static_cast<int>(LineEnding::Lf)
                                      ? static_cast<LineEnding>(lineChoice)
                                      : lineEnding_;
    return saveAsPath(request.path(), encoding, lineEnding);
}

bool CEditer::saveAsPath(const QString& path, TextEncoding encoding, LineEnding lineEnding) {
    if (!saveDocument(path, encoding, lineEnding))
        return false;
    openDocuments_.RegisterOpenDocument(path);
    adoptDocument(path, encoding, lineEnding);
    record({RecordedAction::Save, path});
    return true;
}

bool CEditer::newDocument(bool askAboutChanges, const QString& path) {
    if (askAboutChanges && !maySetTextAside())
        return false;
    replaceText(std::u16string_view());
    openDocuments_.UnregisterOpenDocument();
    adoptDocument(path, TextEncoding::ShiftJis, LineEnding::CrLf);
    record({RecordedAction::NewFile});
    return true;
}

void CEditer::showFileInformation() {
    const std::optional<FileInfoChoice> choice =
        RunFileInfoDialog(path_, encoding_, lineEnding_, window());
    if (!choice || (choice->encoding == encoding_ && choice->lineEnding == lineEnding_))
        return;
    // Nothing is converted now: the choice is what the next save writes.
    encoding_ = choice->encoding;
    lineEnding_ = choice->lineEnding;
    document_->setModified(true);
    emit documentChanged();
    MessageRequest request;
    request.id = kMessageSavedWithNewCodes;
    request.icon = MessageIcon::Information;
    request.parent = window();
    ShowMessage(request);
}

void CEditer::checkExternalChange() {
    if (path_.isEmpty())
        return;
    // A time that could not be read before counts as the earliest of all.
    const std::optional<FileTime> now = ReadFileTime(path_);
    if (!now || (fileTime_ && *now <= *fileTime_))
        return;
    // Recorded before asking: the question's box takes the activation away and gives it back,
    // and whatever the answer, this change has been offered.
    fileTime_ = now;
    MessageRequest request;
    request.id = kMessageChangedOutside;
    request.arguments = {path_};
    request.buttons = MessageButtons::YesNo;
    request.icon = MessageIcon::Question;
    request.parent = window();
    if (ShowMessage(request) != MessageAnswer::Yes)
        return;
    // The text is read as it was before, in the document's code set; changes made here give
    // way to the file's, without the question about saving them.
    TextEncoding encoding = encoding_;
    LineEnding lineEnding = lineEnding_;
    if (loadDocument(path_, encoding, lineEnding, false))
        adoptDocument(path_, encoding, lineEnding); // the line ending found in the new text
}

} // namespace korvel
