#include "editor/CEditer.h"

#include "editor/EditControl.h"
#include "editor/EditorText.h"
#include "editor/ScreenRows.h"
#include "editor/ViewFonts.h"
#include "messages/MessageService.h"
#include "settings/SettingColor.h"
#include "settings/SettingsStore.h"
#include "widgets/HoldGesture.h"

#include <QApplication>
#include <QClipboard>
#include <QFontMetrics>
#include <QMouseEvent>
#include <QPointingDevice>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextDocument>

namespace korvel {

namespace {

// The input limit of both controls, and the sizes at which the watch speaks up. A line break
// counts as two characters in all three.
constexpr qsizetype kTextLimit = 0x10000;
constexpr qsizetype kLimitReached = 65535;
constexpr qsizetype kLimitNear = 65280;
constexpr int kSizeWatchInterval = 30000;
// Rapid size changes (an on-screen keyboard sliding in and out) cause one layout.
constexpr int kLayoutDelay = 300;

constexpr int kMessageLimitReached = 40009;
constexpr int kMessageLimitNear = 40010;

// Presses of a finger or pen start the hold gesture; a mouse has its right button for that, and
// a desktop user holding the left button still must not get a menu.
bool StartsHold(const QMouseEvent* event) {
    return event->button() == Qt::LeftButton &&
           event->pointingDevice()->type() != QInputDevice::DeviceType::Mouse;
}

} // namespace

CEditer::CEditer(SettingsStore& store, QWidget* parent)
    : QWidget(parent), store_(store), wrapping_(new EditControl(this)),
      nonWrapping_(new EditControl(this)), document_(CreateEditorDocument(this)),
      emptyDocument_(CreateEditorDocument(this)), openDocuments_(store) {
    wrapping_->setObjectName(QStringLiteral("wrappingControl"));
    nonWrapping_->setObjectName(QStringLiteral("nonWrappingControl"));
    wrapping_->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    nonWrapping_->setLineWrapMode(QPlainTextEdit::NoWrap);
    holdWrapping_ = new HoldGesture(wrapping_->viewport());
    holdNonWrapping_ = new HoldGesture(nonWrapping_->viewport());
    setUpControl(wrapping_);
    setUpControl(nonWrapping_);

    connect(document_, &QTextDocument::modificationChanged, this, &CEditer::modificationChanged);
    connect(document_, &QTextDocument::undoAvailable, this, &CEditer::commandStatesChanged);
    connect(QApplication::clipboard(), &QClipboard::dataChanged, this,
            &CEditer::commandStatesChanged);

    makeFonts();
    setFontSlot(store_.read(setting::FONT_SIZE));
    applyColours();
    lastFolder_ = store_.read(setting::LAST_OPEN_FOLDER);
    filterIndex_ = store_.read(setting::FILTER_INDEX);
    wordWrap_ = store_.read(setting::EDIT_AUTO_ARRANGE) != 0;
    applyHoldDelay();

    EditControl* active = activeControl();
    EditControl* hidden = active == wrapping_ ? nonWrapping_ : wrapping_;
    active->setDocument(document_);
    hidden->setDocument(emptyDocument_);
    hidden->hide();
    active->show();

    sizeWatch_.setInterval(kSizeWatchInterval);
    connect(&sizeWatch_, &QTimer::timeout, this, &CEditer::checkTextSize);
    sizeWatch_.start();
    deferredLayout_.setSingleShot(true);
    deferredLayout_.setInterval(kLayoutDelay);
    connect(&deferredLayout_, &QTimer::timeout, this, &CEditer::layOutControls);

    setFocusProxy(active);
}

CEditer::~CEditer() {
    writeSettings();
    openDocuments_.UnregisterOpenDocument();
}

void CEditer::setUpControl(EditControl* control) {
    control->setTextLimit(kTextLimit);
    control->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(control, &QWidget::customContextMenuRequested, this, &CEditer::contextMenuRequested);
    connect(control, &QPlainTextEdit::selectionChanged, this, &CEditer::commandStatesChanged);
    HoldGesture* hold = control == wrapping_ ? holdWrapping_ : holdNonWrapping_;
    connect(hold, &HoldGesture::recognised, this, [this, control](QPoint position) {
        emit contextMenuRequested(control->viewport()->mapTo(control, position));
    });
    control->viewport()->installEventFilter(this);
}

EditControl* CEditer::activeControl() const {
    return wordWrap_ ? wrapping_ : nonWrapping_;
}

void CEditer::makeFonts() {
    const int dotsPerInch = logicalDpiY();
    for (int slot = 0; slot < static_cast<int>(fonts_.size()); ++slot)
        fonts_[static_cast<size_t>(slot)] = SlotFont(store_, slot, wrapping_->font(), dotsPerInch);
}

void CEditer::setFontSlot(int slot) {
    if (slot < 0 || slot >= static_cast<int>(fonts_.size()))
        return;
    fontSlot_ = slot;
    applyFontAndTabs();
    emit commandStatesChanged();
}

void CEditer::applyFontAndTabs() {
    EditControl* active = activeControl();
    const int topLine = firstVisibleLine(active);
    const QTextCursor selection = active->textCursor();
    const QFont& font = fonts_[static_cast<size_t>(fontSlot_)];
    const qreal tabStop = QFontMetricsF(font).averageCharWidth() * store_.read(setting::TAB_SIZE);
    for (EditControl* control : {wrapping_, nonWrapping_}) {
        control->setFont(font);
        control->setTabStopDistance(tabStop);
    }
    // The text is drawn with its document's font and tab stop. A control hands them to the
    // document it holds only when they change, and not to a document it is given later, so
    // the document (which moves between the controls) gets them itself.
    document_->setDefaultFont(font);
    QTextOption option = document_->defaultTextOption();
    option.setTabStopDistance(tabStop);
    document_->setDefaultTextOption(option);
    active->setTextCursor(selection);
    scrollToLine(active, topLine);
}

void CEditer::applyColours() {
    const QColor text = ColorFromSetting(store_.read(setting::COLOR_TEXT));
    const QColor background = ColorFromSetting(store_.read(setting::COLOR_BACKGROUND));
    for (EditControl* control : {wrapping_, nonWrapping_}) {
        QPalette palette = control->palette();
        for (QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
            palette.setColor(group, QPalette::Text, text);
            palette.setColor(group, QPalette::Base, background);
        }
        control->setPalette(palette);
    }
}

void CEditer::applyHoldDelay() {
    const int holdDelay = HoldGesture::DelayFor(store_.read(setting::LONG_DELAY) != 0);
    holdWrapping_->setDelay(holdDelay);
    holdNonWrapping_->setDelay(holdDelay);
}

void CEditer::reapplySettings() {
    applyColours();
    makeFonts();
    applyFontAndTabs();
    applyHoldDelay();
}

void CEditer::toggleWordWrap() {
    EditControl* source = activeControl();
    EditControl* target = source == wrapping_ ? nonWrapping_ : wrapping_;

    // The row to keep in its place on screen: the caret's, or the top one when the caret is
    // off screen. Rows are what the user sees, so a wrapped line counts each of its rows.
    const QTextCursor selection = source->textCursor();
    const bool caretWasOnScreen = caretOnScreen(source);
    const int keptPosition = caretWasOnScreen ? selection.position()
                                              : source->cursorForPosition(QPoint(0, 0)).position();
    const int rowFromTop = caretWasOnScreen ? RowOnScreen(source, keptPosition) : 0;

    // The document itself moves, with its modified state and its undo history.
    source->setDocument(emptyDocument_);
    target->setDocument(document_);
    wordWrap_ = !wordWrap_;
    target->show();
    source->hide();
    layOutControls();
    target->setTextCursor(selection);
    ScrollRowTo(target, keptPosition, rowFromTop);
    if (caretWasOnScreen && !caretOnScreen(target))
        target->ensureCursorVisible();
    setFocusProxy(target);
    if (hasFocus() || source->hasFocus() || isVisible())
        target->setFocus();
    emit commandStatesChanged();
}

int CEditer::firstVisibleLine(const EditControl* control) const {
    return control->cursorForPosition(QPoint(0, 0)).blockNumber();
}

void CEditer::scrollToLine(EditControl* control, int line) {
    const QTextBlock block = control->document()->findBlockByNumber(line);
    if (!block.isValid())
        return;
    control->verticalScrollBar()->setValue(block.firstLineNumber());
}

bool CEditer::caretOnScreen(const EditControl* control) const {
    const int row = RowOnScreen(control, control->textCursor().position());
    return row >= 0 && row <= RowsOnScreen(control) - 1;
}

bool CEditer::canUndo() const {
    return document_->isUndoAvailable();
}

bool CEditer::hasSelection() const {
    return activeControl()->textCursor().hasSelection();
}

bool CEditer::canPaste() const {
    return activeControl()->canPaste();
}

void CEditer::undo() {
    activeControl()->undo();
}

void CEditer::copy() {
    activeControl()->copy();
    record({RecordedAction::Copy});
}

void CEditer::cut() {
    activeControl()->cut();
    record({RecordedAction::Cut});
}

void CEditer::paste() {
    activeControl()->paste();
    record({RecordedAction::Paste});
}

void CEditer::selectAll() {
    activeControl()->selectAll();
    record({RecordedAction::SelectAll});
}

void CEditer::checkTextSize() {
    // A box still waiting for its OK must not be joined by another one from the next round.
    if (warningShown_)
        return;
    const qsizetype length = EditorTextLength(*document_);
    int message = 0;
    if (length >= kLimitReached)
        message = kMessageLimitReached;
    else if (length > kLimitNear)
        message = kMessageLimitNear;
    if (message == 0)
        return;
    warningShown_ = true;
    MessageRequest request;
    request.id = message;
    request.icon = MessageIcon::Warning;
    request.parent = window();
    ShowMessage(request);
    warningShown_ = false;
}

bool CEditer::isModified() const {
    return document_->isModified();
}

void CEditer::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    deferredLayout_.start();
}

void CEditer::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    layOutControls();
}

bool CEditer::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::MouseButtonPress) {
        const auto* press = static_cast<QMouseEvent*>(event);
        if (StartsHold(press)) {
            HoldGesture* hold = watched == wrapping_->viewport() ? holdWrapping_ : holdNonWrapping_;
            hold->watch(press->position().toPoint());
        }
    }
    return QWidget::eventFilter(watched, event);
}

void CEditer::layOutControls() {
    deferredLayout_.stop();
    for (EditControl* control : {wrapping_, nonWrapping_})
        control->setGeometry(rect());
}

void CEditer::writeSettings() {
    store_.write(setting::FONT_SIZE, fontSlot_);
    store_.write(setting::FILTER_INDEX, filterIndex_);
    store_.write(setting::LAST_OPEN_FOLDER, lastFolder_);
    store_.write(setting::EDIT_AUTO_ARRANGE, wordWrap_ ? 1 : 0);
}

} // namespace korvel
