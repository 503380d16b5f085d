#include "browser/FileBrowserDialog.h"

#include "browser/FileListCtrl.h"
#include "browser/FolderTree.h"
#include "browser/PopupMenus.h"
#include "browser/Shortcut.h"
#include "browser/Wildcard.h"
#include "fileops/FileClipboard.h"
#include "fileops/FileOpPrompt.h"
#include "fileops/FileSystem.h"
#include "messages/StringTable.h"
#include "settings/SettingsStore.h"
#include "widgets/HoldGesture.h"
#include "widgets/ScreenFit.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

namespace korvel {
namespace {

namespace cmd = browser_command;
namespace flag = browse_flag;
namespace option = browse_option;

constexpr int kOptionLabel = 30303;
constexpr FileOpMessage kFolderMissing{30023};
constexpr FileOpMessage kCreateQuestion{30010};
constexpr FileOpMessage kOverwriteQuestion{30013};
constexpr FileOpMessage kFolderOfSameName{30014};
constexpr FileOpMessage kUnlockQuestion{30028};
constexpr FileOpMessage kForbiddenCharacters{30503};
constexpr FileOpMessage kPickFromList{30511};
constexpr FileOpMessage kTypeAName{30512};
constexpr FileOpMessage kPickOrTypeAName{30513};

// The characters a typed name may not hold. The message lists both slashes; "/" separates
// folders here, so it is the backslash that is refused.
constexpr QStringView kForbidden = u":<>\\*?|";

// The double tap's layout switch waits this long, so that the second tap is not taken by the
// pane that appears under it.
constexpr int kLayoutDelayMs = 1000;

// The panes' shares of the splitter in each layout: tree, list.
constexpr int kShares[3][2] = {{1, 2}, {4, 1}, {1, 6}};

// Splits "a|b|c||" at every "|"; the first empty part ends the list.
QStringList SplitChoices(const QString& text) {
    QStringList parts;
    for (QStringView part : QStringView(text).split(u'|')) {
        if (part.isEmpty())
            break;
        parts.append(part.toString());
    }
    return parts;
}

// Sees the events of one dialog before the dialog and its controls do.
class HookFilter : public QObject {
public:
    HookFilter(QDialog* dialog, BrowseHook hook)
        : QObject(dialog), dialog_(dialog), hook_(std::move(hook)) {
        qApp->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        const auto* widget = qobject_cast<const QWidget*>(watched);
        if (widget != nullptr && (widget == dialog_ || dialog_->isAncestorOf(widget)))
            return hook_(watched, event);
        return false;
    }

private:
    QDialog* dialog_;
    BrowseHook hook_;
};

} // namespace

FileBrowserDialog::FileBrowserDialog(BrowseRequest& request, FileClipboard& clipboard,
                                     QWidget* parent)
    : QDialog(parent), request_(request), tree_(new FolderTree(this)),
      list_(new FileListCtrl(this)), splitter_(new QSplitter(this)),
      prompt_(new QLabel(QStringLiteral("参照"), this)), folderLine_(new QLabel(this)),
      nameBox_(new QLineEdit(this)), typeBox_(new QComboBox(this)), optionLabel_(new QLabel(this)),
      optionBox_(new QComboBox(this)),
      lineEndingLabel_(new QLabel(QStringLiteral("改行コード："), this)),
      lineEndingBox_(new QComboBox(this)) {
    setWindowTitle(request.title.isEmpty() ? QStringLiteral("ファイル名を参照") : request.title);
    if (!request.prompt.isEmpty())
        prompt_->setText(request.prompt);
    folderLine_->setTextInteractionFlags(Qt::TextSelectableByMouse);

    const int holdDelay = HoldGesture::DelayFor(request.longHoldDelay);
    tree_->setHoldDelay(holdDelay);

    FileListSwitches switches;
    switches.listingEnabled = hasFileList();
    switches.singleSelectionOnly = (request.flags & flag::AllowMultiSelect) == 0;
    switches.ownFolderNavigation = false;
    switches.resolveShortcuts = (request.flags & flag::NoDereferenceLinks) == 0;
    list_->create(request.listStyle, request.options, switches);
    list_->setClipboard(&clipboard);
    list_->setHoldDelay(holdDelay);
    if ((request.options & option::PlainIcons) == 0) {
        IconExtensions& icons = list_->iconExtensions();
        for (const char16_t* extension : {u"txt", u"ini", u"inf"})
            icons.add(IconGroup::Text, extension);
        for (const char16_t* extension : {u"jpg", u"jpeg", u"gif", u"png", u"bmp", u"2bp"})
            icons.add(IconGroup::Image, extension);
        for (const char16_t* extension : {u"htm", u"html"})
            icons.add(IconGroup::Html, extension);
        for (const char16_t* extension : {u"wav", u"mp3", u"mid", u"midi"})
            icons.add(IconGroup::Audio, extension);
    }

    splitter_->addWidget(tree_);
    splitter_->addWidget(list_);
    splitter_->setChildrenCollapsible(false);
    list_->setVisible(hasFileList());

    auto* fields = new QGridLayout;
    auto* nameLabel = new QLabel(QStringLiteral("名 前"), this);
    fields->addWidget(nameLabel, 0, 0);
    fields->addWidget(nameBox_, 0, 1);
    fields->addWidget(new QLabel(QStringLiteral("種 類"), this), 1, 0);
    fields->addWidget(typeBox_, 1, 1);
    fields->addWidget(optionLabel_, 2, 0);
    fields->addWidget(optionBox_, 2, 1);
    fields->addWidget(lineEndingLabel_, 3, 0);
    fields->addWidget(lineEndingBox_, 3, 1);
    fields->setColumnStretch(1, 1);
    nameLabel->setVisible(hasNameBox());
    nameBox_->setVisible(hasNameBox());

    auto* okButton = new QPushButton(QStringLiteral("OK"), this);
    auto* cancelButton = new QPushButton(QStringLiteral("ｷｬﾝｾﾙ"), this);
    // Enter belongs to the name box and the list, which run OK themselves: no button may take
    // it as the dialog's default.
    for (QPushButton* button : {okButton, cancelButton})
        button->setAutoDefault(false);
    connect(okButton, &QPushButton::clicked, this, &FileBrowserDialog::ok);
    connect(cancelButton, &QPushButton::clicked, this, &QDialog::reject);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(okButton);
    buttons->addWidget(cancelButton);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(prompt_);
    layout->addWidget(folderLine_);
    layout->addWidget(splitter_, 1);
    layout->addLayout(fields);
    layout->addLayout(buttons);

    setUpTypes();
    setUpOptions();

    connect(tree_, &FolderTree::currentFolderChanged, this, &FileBrowserDialog::onFolderChanged);
    connect(tree_, &FolderTree::contentsChanged, list_, &FileListCtrl::refresh);
    connect(tree_, &FolderTree::dialogCommand, this, &FileBrowserDialog::onDialogCommand);
    connect(tree_, &FolderTree::emptySpaceTapped, this, [this] { enlargeByTap(TreeEnlarged); });
    connect(tree_, &FolderTree::emptySpaceDoubleTapped, this,
            [this] { enlargeByDoubleTap(TreeEnlarged); });
    connect(list_, &FileListCtrl::folderChanged, this,
            [this](const QString& folder) { tree_->openPath(folder); });
    connect(list_, &FileListCtrl::contentsChanged, this,
            [this] { tree_->refill(tree_->currentItem()); });
    connect(list_, &FileListCtrl::dialogCommand, this, &FileBrowserDialog::onDialogCommand);
    connect(list_, &FileListCtrl::enterPressed, this, &FileBrowserDialog::ok);
    connect(list_, &FileListCtrl::rowTapped, this, &FileBrowserDialog::onRowTapped);
    connect(list_, &FileListCtrl::rowDoubleTapped, this, &FileBrowserDialog::onRowDoubleTapped);
    connect(nameBox_, &QLineEdit::returnPressed, this, &FileBrowserDialog::ok);

    nameBox_->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(nameBox_, &QWidget::customContextMenuRequested, this,
            &FileBrowserDialog::showNamePopup);
    nameHold_ = new HoldGesture(nameBox_);
    nameHold_->setDelay(holdDelay);
    connect(nameHold_, &HoldGesture::recognised, this, &FileBrowserDialog::showNamePopup);
    nameBox_->installEventFilter(this);

    layoutTimer_.setSingleShot(true);
    layoutTimer_.setInterval(kLayoutDelayMs);
    connect(&layoutTimer_, &QTimer::timeout, this, [this] { setLayoutMode(pendingMode_); });
    setLayoutMode(Normal);

    if (tree_->openPath(request.folder) != FileOpStatus::Done)
        tree_->setCurrentItem(tree_->rootItem());

    if (hasNameBox()) {
        nameBox_->setText(request.name);
        nameBox_->selectAll();
        nameBox_->setFocus();
    } else {
        tree_->setFocus();
    }

    if ((request.flags & flag::EnableHook) != 0 && request.hook)
        new HookFilter(this, request.hook);
    // The handheld's portrait screen, or as much of a smaller screen as there is.
    FitToScreen(*this, QSize(480, 640));
}

FileBrowserDialog::~FileBrowserDialog() = default;

void FileBrowserDialog::ok() {
    if (tree_->isEditing()) {
        tree_->endEdit();
        return;
    }
    const QString folder = tree_->currentFolder();
    const QString name = hasNameBox() ? nameBox_->text().trimmed() : QString();

    if (!name.isEmpty()) {
        if (!checkTypedName(folder, name))
            return;
        if (!appendTypeExtension(folder, name))
            return;
        const QString path = followShortcut(fullPath(folder, name));
        if (!validateTypedPath(path))
            return;
        const qsizetype slash = path.lastIndexOf(u'/');
        QStringList names{path.mid(slash + 1)};
        if ((request_.flags & flag::AllowMultiSelect) != 0 && !name.contains(u'/')) {
            for (int row : list_->selectedRows()) {
                const FileEntry& entry = *list_->entryOf(row);
                if (!entry.isParent() && !names.contains(entry.name, Qt::CaseInsensitive))
                    names.append(entry.name);
            }
        }
        finish(path.left(slash + 1), names);
        return;
    }

    if ((request_.options & option::SelectionIsNotAName) == 0 && !validateSelection())
        return;
    const QList<int> rows = list_->selectedRows();
    if (rows.size() == 1 && (request_.flags & flag::NoDereferenceLinks) == 0) {
        // A shortcut picked from the list stands for its target.
        const FileRow& row = *list_->rowAt(rows.front());
        if (row.target && !row.target->isFolder) {
            const QString target = row.target->path;
            const qsizetype slash = target.lastIndexOf(u'/');
            finish(target.left(slash + 1), {target.mid(slash + 1)});
            return;
        }
    }
    QStringList names;
    for (int row : rows) {
        const FileEntry& entry = *list_->entryOf(row);
        if (!entry.isParent() && !names.contains(entry.name, Qt::CaseInsensitive))
            names.append(entry.name);
    }
    finish(folder, names);
}

void FileBrowserDialog::setLayoutMode(LayoutMode mode) {
    layoutTimer_.stop();
    layoutMode_ = mode;
    applyLayout();
}

void FileBrowserDialog::applyLayout() {
    const int length =
        splitter_->orientation() == Qt::Vertical ? splitter_->height() : splitter_->width();
    const int total = qMax(length, 300);
    const int* shares = kShares[layoutMode_];
    const int tree = total * shares[0] / (shares[0] + shares[1]);
    splitter_->setSizes({tree, total - tree});
}

void FileBrowserDialog::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    // Tree above list on a portrait screen, beside it on a landscape one.
    const Qt::Orientation orientation = height() >= width() ? Qt::Vertical : Qt::Horizontal;
    if (splitter_->orientation() != orientation)
        splitter_->setOrientation(orientation);
    applyLayout();
}

bool FileBrowserDialog::eventFilter(QObject* watched, QEvent* event) {
    if (watched == nameBox_ && event->type() == QEvent::MouseButtonPress) {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() == Qt::LeftButton)
            nameHold_->watch(mouse->position().toPoint());
    }
    return QDialog::eventFilter(watched, event);
}

void FileBrowserDialog::setUpTypes() {
    const QStringList parts = SplitChoices(request_.filter);
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        typeBox_->addItem(parts[i]);
        typePatterns_.append(parts[i + 1].trimmed());
    }
    // 0, or a stored index that outlived a longer list, selects no type: every file is listed.
    const bool listed = request_.filterIndex >= 1 && request_.filterIndex <= typeBox_->count();
    typeBox_->setCurrentIndex(listed ? request_.filterIndex - 1 : -1);
    onTypeChanged();
    connect(typeBox_, &QComboBox::currentIndexChanged, this, [this] {
        onTypeChanged();
        list_->refresh();
    });
}

void FileBrowserDialog::setUpOptions() {
    const QStringList choices = SplitChoices(request_.optionList);
    const bool shown = (request_.options & option::ShowOptionRow) != 0 && !choices.isEmpty();
    if (!shown)
        request_.options &= ~option::ShowOptionRow;
    const QStringList lineEndings = SplitChoices(request_.lineEndingList);
    const bool lineEndingShown = shown && !lineEndings.isEmpty();
    optionLabel_->setVisible(shown);
    optionBox_->setVisible(shown);
    lineEndingLabel_->setVisible(lineEndingShown);
    lineEndingBox_->setVisible(lineEndingShown);
    if (!shown)
        return;
    if (lineEndingShown) {
        lineEndingBox_->addItems(lineEndings);
        lineEndingBox_->setCurrentIndex(request_.lineEndingIndex >= 0 &&
                                                request_.lineEndingIndex < lineEndings.size()
                                            ? request_.lineEndingIndex
                                            : 0);
    }
    optionLabel_->setText(request_.optionLabel.isEmpty() ? LoadString(kOptionLabel)
                                                         : request_.optionLabel);
    optionBox_->addItems(choices);
    // A stored index 0 shows the first item as well; an index past the items too.
    const int index = request_.optionIndex;
    optionBox_->setCurrentIndex(index >= 1 && index < choices.size() ? index : 0);
}

void FileBrowserDialog::onFolderChanged(const QString& folder) {
    folderLine_->setText(folder);
    if (list_->setFolder(folder))
        list_->refresh();
}

void FileBrowserDialog::onTypeChanged() {
    list_->setExtensionFilter(ExtensionFilterOf(selectedPattern()));
}

void FileBrowserDialog::onRowTapped(int row) {
    if (row < 0) {
        enlargeByTap(ListEnlarged);
        return;
    }
    if ((request_.options & list_option::SingleTapOpensFolder) != 0)
        openListRow(row);
}

void FileBrowserDialog::onRowDoubleTapped(int row) {
    if (row < 0) {
        enlargeByDoubleTap(ListEnlarged);
        return;
    }
    const FileRow* tapped = list_->rowAt(row);
    if (tapped == nullptr)
        return;
    if (tapped->entry.isFolder() || tapped->isShortcutToFolder()) {
        openListRow(row);
        return;
    }
    // Opening a file by a double tap is safe; saving over one takes the OK button. The tapped
    // row is the choice, whatever the name box held.
    if ((request_.options & option::Saving) == 0) {
        nameBox_->clear();
        ok();
    }
}

void FileBrowserDialog::onDialogCommand(int command) {
    if (command == cmd::Ok)
        ok();
    else if (command == cmd::Cancel)
        reject();
    else if (command == cmd::SelectLnk)
        acceptSelectedShortcut();
}

void FileBrowserDialog::openListRow(int row) {
    const FileRow* tapped = list_->rowAt(row);
    if (tapped == nullptr)
        return;
    if (tapped->entry.isParent())
        tree_->openPath(files::ParentFolderOf(list_->folder()));
    else if (tapped->entry.isFolder())
        tree_->openPath(list_->folder() + tapped->entry.name);
    else if (tapped->isShortcutToFolder())
        tree_->openPath(tapped->target->path);
}

void FileBrowserDialog::enlargeByTap(LayoutMode mode) {
    if ((request_.options & option::EnlargeBySingleTap) != 0)
        setLayoutMode(layoutMode_ == mode ? Normal : mode);
}

void FileBrowserDialog::enlargeByDoubleTap(LayoutMode mode) {
    if ((request_.options & option::EnlargeByDoubleTap) == 0)
        return;
    pendingMode_ = layoutMode_ == mode ? Normal : mode;
    layoutTimer_.start();
}

void FileBrowserDialog::showNamePopup(QPoint position) {
    const Menu menu =
        TextBoxPopupMenu(nameBox_->hasSelectedText(), !QApplication::clipboard()->text().isEmpty());
    switch (ExecPopupMenu(menu, nameBox_->mapToGlobal(position), this)) {
    case cmd::TextCut:
        nameBox_->cut();
        break;
    case cmd::TextCopy:
        nameBox_->copy();
        break;
    case cmd::TextPaste:
        nameBox_->paste();
        break;
    case cmd::Ok:
        ok();
        break;
    case cmd::Cancel:
        reject();
        break;
    default:
        break;
    }
}

// A pattern lists its files, a forbidden character is refused, a folder is opened: each ends
// OK with the dialog still open.
bool FileBrowserDialog::checkTypedName(const QString& folder, const QString& name) {
    if (HasWildcard(name)) {
        QString pattern = name;
        if (name.contains(u'/')) {
            const QString path = fullPath(folder, name);
            const qsizetype slash = path.lastIndexOf(u'/');
            pattern = path.mid(slash + 1);
            tree_->openPath(path.left(slash + 1));
            nameBox_->setText(pattern);
        }
        list_->refreshPattern(pattern);
        return false;
    }
    for (QChar c : name) {
        if (kForbidden.contains(c)) {
            refuseName(kForbiddenCharacters);
            return false;
        }
    }
    const QString path = followShortcut(fullPath(folder, name));
    if (QFileInfo(path).isDir()) {
        tree_->openPath(path);
        nameBox_->clear();
        return false;
    }
    return true;
}

// A name without a dot gets the selected type's extension and waits for a second OK.
bool FileBrowserDialog::appendTypeExtension(const QString& folder, const QString& name) {
    if ((request_.options & option::AppendTypeExtension) == 0 || name.contains(u'.'))
        return true;
    const QString extension = DefaultExtensionOf(selectedPattern());
    if (extension.isEmpty())
        return true;
    QString completed = name + extension;
    // A file that exists under another letter case is shown as the disk spells it.
    const QFileInfo typed(fullPath(folder, completed));
    if (!typed.exists()) {
        const QStringList entries =
            QDir(typed.absolutePath()).entryList(QDir::Files | QDir::Hidden);
        for (const QString& entry : entries) {
            if (entry.compare(typed.fileName(), Qt::CaseInsensitive) == 0) {
                completed.chop(typed.fileName().size());
                completed += entry;
                break;
            }
        }
    }
    nameBox_->setText(completed);
    focusName();
    return false;
}

bool FileBrowserDialog::validateSelection() {
    const QList<int> rows = list_->selectedRows();
    if (rows.size() == 1) {
        const FileRow& row = *list_->rowAt(rows.front());
        if (row.entry.isFolder() || row.isShortcutToFolder()) {
            openListRow(rows.front());
            return false;
        }
        return true;
    }
    if (!rows.isEmpty())
        return true;
    if (!hasNameBox() && hasFileList())
        refuseName(kPickFromList);
    else if (hasNameBox() && !hasFileList())
        refuseName(kTypeAName);
    else
        refuseName(kPickOrTypeAName);
    return false;
}

bool FileBrowserDialog::validateTypedPath(const QString& path) {
    if ((request_.flags & flag::FileMustExist) != 0 && !files::Exists(path)) {
        refuseName(fileops_message::kEntryNotFound, {path});
        return false;
    }
    if ((request_.flags & flag::PathMustExist) != 0) {
        const QString parent = files::WithoutTrailingSlash(files::ParentFolderOf(path));
        if (!QFileInfo(parent.isEmpty() ? QStringLiteral("/") : parent).isDir()) {
            refuseName(kFolderMissing, {parent});
            return false;
        }
    }
    if ((request_.options & option::Saving) != 0 && !runSaveChecks(path)) {
        focusName();
        return false;
    }
    return true;
}

bool FileBrowserDialog::runSaveChecks(const QString& path) {
    const FileOpPrompt prompt(true, this);
    switch (files::KindOf(path)) {
    case files::EntryKind::Missing:
        return (request_.flags & flag::CreatePrompt) == 0 || prompt.agrees(kCreateQuestion, {path});
    case files::EntryKind::Folder:
        prompt.tell(kFolderOfSameName, {path});
        return false;
    case files::EntryKind::File:
        break;
    }
    if (files::IsReadOnly(path) && (request_.options & option::UnlockReadOnly) != 0) {
        if (!prompt.agrees(kUnlockQuestion, {path}))
            return false;
        if (files::ClearReadOnly(path) != FileOpStatus::Done) {
            prompt.tell(fileops_message::kAttributeChangeError, {}, MessageIcon::Stop);
            return false;
        }
        return true;
    }
    return (request_.flags & flag::OverwritePrompt) == 0 ||
           prompt.agrees(kOverwriteQuestion, {path});
}

void FileBrowserDialog::finish(const QString& folder, const QStringList& names) {
    request_.folder = files::AsFolderPath(folder);
    request_.names = names;
    request_.filterIndex = typeBox_->currentIndex() + 1;
    if ((request_.options & option::ShowOptionRow) != 0)
        request_.optionIndex = optionBox_->currentIndex();
    if (lineEndingBox_->count() > 0)
        request_.lineEndingIndex = lineEndingBox_->currentIndex();
    request_.listStyle = list_->listStyle();
    request_.showFolders = (list_->options() & list_option::ShowFolders) != 0;
    accept();
}

// "選択した .lnk ファイル": the shortcut file itself, not where it leads.
void FileBrowserDialog::acceptSelectedShortcut() {
    const QList<int> rows = list_->selectedRows();
    if (rows.size() != 1)
        return;
    finish(list_->folder(), {list_->entryOf(rows.front())->name});
}

QString FileBrowserDialog::fullPath(const QString& folder, const QString& name) const {
    return QDir::cleanPath(name.startsWith(u'/') ? name : folder + name);
}

QString FileBrowserDialog::followShortcut(const QString& path) const {
    if ((request_.flags & flag::NoDereferenceLinks) != 0)
        return path;
    const std::optional<ShortcutTarget> target = ResolveShortcut(path);
    return target ? target->path : path;
}

QString FileBrowserDialog::selectedPattern() const {
    return typePatterns_.value(typeBox_->currentIndex());
}

void FileBrowserDialog::refuseName(FileOpMessage message, const QStringList& arguments) {
    FileOpPrompt(true, this).tell(message, arguments);
    focusName();
}

void FileBrowserDialog::focusName() {
    if (!hasNameBox())
        return;
    nameBox_->selectAll();
    nameBox_->setFocus();
}

bool FileBrowserDialog::hasNameBox() const {
    return (request_.options & option::NoNameBox) == 0;
}

bool FileBrowserDialog::hasFileList() const {
    return (request_.options & option::NoFileList) == 0;
}

FileClipboard& ProgramFileClipboard() {
    static FileClipboard clipboard;
    return clipboard;
}

bool RunBrowseDialog(BrowseRequest& request, QWidget* parent) {
    SettingsStore store;
    ApplyBrowseSettings(request, store);
    FileBrowserDialog dialog(request, ProgramFileClipboard(), parent);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    StoreBrowseSettings(request, store);
    return true;
}

} // namespace korvel
