#pragma once

#include "browser/BrowseRequest.h"
#include "codec/CodecTypes.h"
#include "document/FileTime.h"
#include "document/OpenDocuments.h"
#include "editor/RecordedCommand.h"
#include "editor/SearchEngine.h"

#include <QFont>
#include <QPoint>
#include <QTimer>
#include <QWidget>
#include <array>
#include <functional>

class QTextDocument;

namespace korvel {

class EditControl;
class HoldGesture;
class SettingsStore;

// The editor view: two edit controls, one wrapping and one not, of which exactly one is shown
// and holds the text; the document's path, code set and line ending; the Edit commands, the
// display settings and the load and save commands.
class CEditer : public QWidget {
    Q_OBJECT
public:
    // The view reads its settings from store now and writes its own back when it is destroyed.
    explicit CEditer(SettingsStore& store, QWidget* parent = nullptr);
    ~CEditer() override;

    // The control that is shown and holds the text.
    EditControl* activeControl() const;
    EditControl* wrappingControl() const { return wrapping_; }
    EditControl* nonWrappingControl() const { return nonWrapping_; }
    QTextDocument* document() const { return document_; }

    // "右で折り返す": moves the text to the other control, keeping the selection, the line at
    // the top and the modified state.
    bool wordWrap() const { return wordWrap_; }
    void toggleWordWrap();

    // The current font slot, 0 to 3. Slots outside that range are ignored.
    int fontSlot() const { return fontSlot_; }
    void setFontSlot(int slot);
    const QFont& slotFont(int slot) const { return fonts_.at(static_cast<size_t>(slot)); }

    // Reads the colours, the tab width, the fonts and the hold time again (after the settings
    // pages close).
    void reapplySettings();

    // The Edit commands and their enable rules.
    bool canUndo() const;
    bool hasSelection() const;
    bool canPaste() const;
    void undo();
    void copy();
    void cut();
    void paste();
    void selectAll();

    // The text-size watch, run every 30 seconds: warns near and past the input limit.
    void checkTextSize();

    // The document.
    const QString& path() const { return path_; }
    TextEncoding encoding() const { return encoding_; }
    LineEnding lineEnding() const { return lineEnding_; }
    bool isModified() const;
    // The Open and Save dialogs' remembered file type and folder.
    int filterIndex() const { return filterIndex_; }
    const QString& lastFolder() const { return lastFolder_; }

    // Reads path into the view. encoding carries the request in (AutoDetect, GarbledMail or a
    // code set) and the code set used out; lineEnding receives the file's line ending. Every
    // failure has told the user when this returns false, and the view is unchanged.
    // checkOpenElsewhere warns when another instance has the file open.
    bool loadDocument(const QString& path, TextEncoding& encoding, LineEnding& lineEnding,
                      bool checkOpenElsewhere = true);
    // Opens a path given from outside (command line, another start, macros): checks the path,
    // asks about unsaved changes (unless told not to), detects the code set.
    bool openPath(const QString& path, bool askAboutChanges = true);
    // "開く...": the Open dialog, then as openPath with the chosen code set.
    bool openWithDialog();
    // Writes the text to path; on success the text counts as saved.
    bool saveDocument(const QString& path, TextEncoding encoding, LineEnding lineEnding);
    // "上書き保存": to the document's own file, or through "Save As" for a new text.
    bool save();
    // "名前を付けて保存...": the Save dialog with its code set and line-ending choices.
    bool saveAs();
    // Saves under path, which becomes the document's file.
    bool saveAsPath(const QString& path, TextEncoding encoding, LineEnding lineEnding);
    // "新規作成": asks about unsaved changes (unless told not to), then empties the view. A
    // path names the file the new text will be saved to.
    bool newDocument(bool askAboutChanges = true, const QString& path = {});
    // "プロパティ...": the file information dialog, whose code set and line ending the next
    // save uses.
    void showFileInformation();
    // Offers to load the file again when another program has written it since it was loaded or
    // saved here; each change is offered once.
    void checkExternalChange();
    // The question before unsaved changes are dropped. True when the caller may go on: the
    // text was saved, the user chose not to save, or nothing needed saving.
    bool maySetTextAside();

    // Find, replace and jump on the active control. Positions and lengths count a line break
    // as two characters.
    bool find(const QString& text, bool towardsStart, bool ignoreCase, FindMode mode);
    bool replaceAll(const QString& text, const QString& replacement, bool ignoreCase);
    bool replaceOne(const QString& text, const QString& replacement, bool ignoreCase);
    // The selection's text, a line break as CR LF.
    QString selectedText() const;
    // Lines are the file's lines, counted from 0, however they wrap on screen.
    int caretLine() const;
    int lineCount() const;
    // Puts the caret at the start of line, which stands 3 rows below the top.
    void goToLine(int line);
    // "ジャンプ...": asks for a line and goes there.
    void jump();

    // Caret and selection moves within the file's lines, for the macro commands.
    enum class LinePart { Whole, BeforeCaret, AfterCaret };
    // Selects the caret's line without its line break, or its part before or after the caret.
    void selectLinePart(LinePart part);
    // Ends the selection with the caret at its start or at its end.
    void collapseSelection(bool atStart);
    void goToTextStart();
    void goToTextEnd();
    // The start of the first row on screen.
    void goToFirstVisibleLine();
    // Moves the caret by lines from its line, stopping at the first and the last.
    void goToLineRelative(int offset);
    // Puts text (CR LF between lines) in place of the selection as typing does.
    void typeText(const QString& text);

    // The macro recorder's seam: the finds and replaces that the user starts pass through
    // record() to the recorder, when there is one.
    using Recorder = std::function<void(const RecordedCommand&)>;
    void setRecorder(Recorder recorder) { recorder_ = std::move(recorder); }
    void record(const RecordedCommand& command);

    // The dialog through which Open and Save As choose a file; tests put their own here.
    using BrowseDialog = std::function<bool(BrowseRequest& request, QWidget* parent)>;
    void setBrowseDialog(BrowseDialog dialog) { browseDialog_ = std::move(dialog); }

signals:
    // The path, code set or line ending of the document changed (load, save as, new).
    void documentChanged();
    // The modified state changed.
    void modificationChanged(bool modified);
    // A file was opened or saved under a name through the dialogs: it goes on the
    // recently-used list.
    void fileUsed(const QString& path);
    // Something that the Edit commands' enable rules look at changed.
    void commandStatesChanged();
    // The user asked for the context menu at position (in the coordinates of the active
    // control): right click, Menu key, or press and hold.
    void contextMenuRequested(QPoint position);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void setUpControl(EditControl* control);
    void makeFonts();
    void applyFontAndTabs();
    void applyColours();
    void applyHoldDelay();
    void layOutControls();
    bool caretOnScreen(const EditControl* control) const;
    int firstVisibleLine(const EditControl* control) const;
    void scrollToLine(EditControl* control, int line);
    void writeSettings();
    void replaceText(std::u16string_view text);
    void adoptDocument(const QString& path, TextEncoding encoding, LineEnding lineEnding);
    bool browse(BrowseRequest& request);

    SettingsStore& store_;
    EditControl* wrapping_;
    EditControl* nonWrapping_;
    QTextDocument* document_;
    // What the hidden control shows: the text is never in both controls.
    QTextDocument* emptyDocument_;
    bool wordWrap_ = true;
    int filterIndex_ = 1;
    QString lastFolder_;
    int fontSlot_ = 1;
    std::array<QFont, 4> fonts_;
    QTimer sizeWatch_;
    QTimer deferredLayout_;
    bool warningShown_ = false;
    HoldGesture* holdWrapping_;
    HoldGesture* holdNonWrapping_;

    QString path_;
    TextEncoding encoding_ = TextEncoding::ShiftJis;
    LineEnding lineEnding_ = LineEnding::CrLf;
    BrowseDialog browseDialog_;
    Recorder recorder_;
    OpenDocuments openDocuments_;
    // The file's time after the last load or save; nothing when it could not be read.
    std::optional<FileTime> fileTime_;
};

} // namespace korvel
