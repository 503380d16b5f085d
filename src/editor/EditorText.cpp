#include "editor/EditorText.h"

#include <QAbstractTextDocumentLayout>
#include <QFontMetricsF>
#include <QPainter>
#include <QPlainTextDocumentLayout>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextObjectInterface>
#include <algorithm>

namespace korvel {

namespace {

constexpr int kMarkObject = QTextFormat::UserObject + 1;
constexpr int kMarkCharacter = QTextFormat::UserProperty + 1;
constexpr char16_t kObjectCharacter = u'\uFFFC';

// Characters that would not come back as themselves if inserted as text (see the header).
bool IsMarkedCharacter(char16_t c) {
    switch (c) {
    case u'\r':
    case u'\n':
    case u'\u2028':
    case u'\u2029':
    case u'\uFDD0':
    case u'\uFDD1':
    case kObjectCharacter:
        return true;
    default:
        return false;
    }
}

QTextCharFormat MarkFormat(char16_t original) {
    QTextCharFormat format;
    format.setObjectType(kMarkObject);
    format.setProperty(kMarkCharacter, static_cast<int>(original));
    return format;
}

// Only the object type tells a mark: insertText() clears it, so text typed next to a mark is
// ordinary text even though it inherits the mark's other properties.
bool IsMark(const QTextFormat& format) {
    return format.objectType() == kMarkObject;
}

char16_t MarkCharacter(const QTextFormat& format) {
    return static_cast<char16_t>(format.intProperty(kMarkCharacter));
}

QString RawString(std::u16string_view text) {
    return QString::fromRawData(reinterpret_cast<const QChar*>(text.data()),
                                static_cast<qsizetype>(text.size()));
}

// Plain runs go in whole, CR LF pairs included (insertText makes each pair one break), so a
// text without marks is one bulk insert.
void InsertRuns(QTextCursor& cursor, std::u16string_view text) {
    const QTextCharFormat plain;
    size_t runStart = 0;
    size_t i = 0;
    while (i < text.size()) {
        const char16_t c = text[i];
        if (c == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') {
            i += 2;
            continue;
        }
        if (!IsMarkedCharacter(c)) {
            ++i;
            continue;
        }
        if (i > runStart)
            cursor.insertText(RawString(text.substr(runStart, i - runStart)), plain);
        cursor.insertText(QString(QChar(kObjectCharacter)), MarkFormat(c));
        runStart = ++i;
    }
    if (runStart < text.size())
        cursor.insertText(RawString(text.substr(runStart)), plain);
}

// Tells the character behind each U+FFFC of a document, walking its blocks and fragments
// forward so that a text full of marks is read in one pass.
class ObjectCharacters {
public:
    explicit ObjectCharacters(const QTextDocument& document) : document_(document) {}

    // position: of a U+FFFC; positions must not decrease from call to call.
    char16_t at(int position) {
        if (!block_.isValid() || position >= blockEnd_) {
            block_ = document_.findBlock(position);
            fragment_ = block_.begin();
            fragmentStart_ = block_.position();
            blockEnd_ = fragmentStart_ + block_.length();
        }
        for (; !fragment_.atEnd(); ++fragment_) {
            const QTextFragment fragment = fragment_.fragment();
            if (position < fragmentStart_ + fragment.length()) {
                const QTextCharFormat format = fragment.charFormat();
                return IsMark(format) ? MarkCharacter(format) : kObjectCharacter;
            }
            fragmentStart_ += fragment.length();
        }
        return kObjectCharacter;
    }

private:
    const QTextDocument& document_;
    QTextBlock block_;
    QTextBlock::iterator fragment_;
    int fragmentStart_ = 0;
    int blockEnd_ = 0;
};

// raw: the document's characters from position start on, as QTextDocument stores them, where
// only block separators are U+2029 (a U+2029 of the file is a mark). Most of a text goes over
// in bulk; the format is read only behind a U+FFFC.
std::u16string EditorTextOf(const QTextDocument& document, const QString& raw, int start,
                            qsizetype length) {
    std::u16string text;
    text.reserve(static_cast<size_t>(length));
    ObjectCharacters objects(document);
    const auto* chars = reinterpret_cast<const char16_t*>(raw.utf16());
    const qsizetype size = raw.size();
    qsizetype runStart = 0;
    for (qsizetype i = 0; i < size; ++i) {
        const char16_t c = chars[i];
        if (c != u'\u2029' && c != kObjectCharacter)
            continue;
        text.append(chars + runStart, static_cast<size_t>(i - runStart));
        if (c == u'\u2029')
            text.append(u"\r\n");
        else
            text.push_back(objects.at(start + static_cast<int>(i)));
        runStart = i + 1;
    }
    text.append(chars + runStart, static_cast<size_t>(size - runStart));
    return text;
}

// Draws each mark as its name in a small grey box: plain letters that every font has, and that
// no character of the text looks like. CR and LF get their control names, U+2028 and U+2029
// their abbreviations, the others their code.
class MarkPainter : public QObject, public QTextObjectInterface {
    Q_OBJECT
    Q_INTERFACES(QTextObjectInterface)
public:
    using QObject::QObject;

    QSizeF intrinsicSize(QTextDocument* document, int, const QTextFormat& format) override {
        const QFont font = TextFont(*document, format);
        const QFont small = LabelFont(font);
        const qreal width = Metrics(*document, small).horizontalAdvance(Label(format));
        return QSizeF(width + 2 * Padding(*document, small), Metrics(*document, font).ascent());
    }

    void drawObject(QPainter* painter, const QRectF& rect, QTextDocument* document, int,
                    const QTextFormat& format) override {
        painter->save();
        painter->setFont(LabelFont(TextFont(*document, format)));
        painter->setPen(QColor(Qt::gray));
        painter->drawRect(rect.adjusted(0.5, 0.5, -0.5, -0.5));
        painter->drawText(rect, Qt::AlignCenter, Label(format));
        painter->restore();
    }

private:
    static QString Label(const QTextFormat& format) {
        const char16_t original = MarkCharacter(format);
        switch (original) {
        case u'\r':
            return QStringLiteral("CR");
        case u'\n':
            return QStringLiteral("LF");
        case u'\u2028':
            return QStringLiteral("LS");
        case u'\u2029':
            return QStringLiteral("PS");
        default:
            return QString::number(original, 16).toUpper();
        }
    }

    static QFont TextFont(const QTextDocument& document, const QTextFormat& format) {
        return format.toCharFormat().font().resolve(document.defaultFont());
    }

    static QFont LabelFont(QFont font) {
        if (font.pointSizeF() > 0)
            font.setPointSizeF(font.pointSizeF() * 0.6);
        else
            font.setPixelSize(std::max(1, font.pixelSize() * 6 / 10));
        return font;
    }

    static qreal Padding(const QTextDocument& document, const QFont& labelFont) {
        return Metrics(document, labelFont).averageCharWidth() / 3;
    }

    static QFontMetricsF Metrics(const QTextDocument& document, const QFont& font) {
        QPaintDevice* device = document.documentLayout()->paintDevice();
        return device ? QFontMetricsF(font, device) : QFontMetricsF(font);
    }
};

} // namespace

QTextDocument* CreateEditorDocument(QObject* parent) {
    auto* document = new QTextDocument(parent);
    auto* layout = new QPlainTextDocumentLayout(document);
    document->setDocumentLayout(layout);
    layout->registerHandler(kMarkObject, new MarkPainter(layout));
    return document;
}

void SetEditorText(QTextDocument& document, std::u16string_view text) {
    const bool undoEnabled = document.isUndoRedoEnabled();
    document.setUndoRedoEnabled(false);
    document.clear();
    QTextCursor cursor(&document);
    InsertEditorText(cursor, text);
    document.setUndoRedoEnabled(undoEnabled);
    document.setModified(false);
}

void InsertEditorText(QTextCursor& cursor, std::u16string_view text) {
    cursor.beginEditBlock();
    cursor.removeSelectedText();
    InsertRuns(cursor, text);
    cursor.endEditBlock();
}

bool NeedsMarks(std::u16string_view text) {
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
            ++i;
        else if (IsMarkedCharacter(text[i]))
            return true;
    }
    return false;
}

std::u16string EditorText(const QTextDocument& document) {
    return EditorTextOf(document, document.toRawText(), 0, EditorTextLength(document));
}

std::u16string EditorText(const QTextCursor& selection) {
    if (!selection.hasSelection())
        return {};
    return EditorTextOf(*selection.document(), selection.selectedText(), selection.selectionStart(),
                        EditorTextLength(selection));
}

qsizetype EditorTextLength(const QTextDocument& document) {
    const qsizetype breaks = document.blockCount() - 1;
    return document.characterCount() - 1 + breaks;
}

qsizetype EditorTextLength(const QTextCursor& selection) {
    if (!selection.hasSelection())
        return 0;
    const QTextDocument& document = *selection.document();
    const int start = selection.selectionStart();
    const int end = selection.selectionEnd();
    const int breaks =
        document.findBlock(end).blockNumber() - document.findBlock(start).blockNumber();
    return end - start + breaks;
}

qsizetype DocumentPosition(const QTextDocument& document, qsizetype programPosition) {
    // The block whose program start is the last at or before the position: block b starts at
    // its document position plus the b breaks before it.
    int low = 0;
    int high = document.blockCount() - 1;
    while (low < high) {
        const int middle = low + (high - low + 1) / 2;
        if (document.findBlockByNumber(middle).position() + middle <= programPosition)
            low = middle;
        else
            high = middle - 1;
    }
    const QTextBlock block = document.findBlockByNumber(low);
    const qsizetype offset = std::max<qsizetype>(0, programPosition - block.position() - low);
    return block.position() + std::min<qsizetype>(offset, block.length() - 1);
}

qsizetype ProgramPosition(const QTextDocument& document, int documentPosition) {
    return documentPosition + document.findBlock(documentPosition).blockNumber();
}

} // namespace korvel

#include "EditorText.moc"
