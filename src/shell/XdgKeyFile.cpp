#include "shell/XdgKeyFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace korvel {
namespace {

// The group a header line opens, or nothing for any other line.
std::optional<QStringView> GroupOf(QStringView line) {
    const QStringView trimmed = line.trimmed();
    if (trimmed.size() < 2 || !trimmed.startsWith(u'[') || !trimmed.endsWith(u']'))
        return std::nullopt;
    return trimmed.mid(1, trimmed.size() - 2);
}

bool IsKeyLine(QStringView line, QStringView key) {
    const qsizetype equals = line.indexOf(u'=');
    return equals > 0 && line.left(equals).trimmed() == key;
}

// A comment or blank line belongs to whatever follows it, not to the group above.
bool IsEntryLine(QStringView line) {
    const QStringView trimmed = line.trimmed();
    return !trimmed.isEmpty() && !trimmed.startsWith(u'#');
}

QString Unescaped(QStringView raw) {
    QString text;
    text.reserve(raw.size());
    for (qsizetype i = 0; i < raw.size(); ++i) {
        if (raw[i] != u'\\' || i + 1 == raw.size()) {
            text += raw[i];
            continue;
        }
        const QChar next = raw[++i];
        if (next == u's')
            text += u' ';
        else if (next == u'n')
            text += u'\n';
        else if (next == u't')
            text += u'\t';
        else if (next == u'r')
            text += u'\r';
        else if (next == u'\\')
            text += u'\\';
        else // not an escape of key files: kept as written
            text += QString(u'\\') + next;
    }
    return text;
}

QString Escaped(const QString& text) {
    QString raw;
    raw.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c == u'\\')
            raw += u"\\\\";
        else if (c == u'\n')
            raw += u"\\n";
        else if (c == u'\t')
            raw += u"\\t";
        else if (c == u'\r')
            raw += u"\\r";
        else if (c == u' ' && i == 0) // a leading blank would be trimmed away by readers
            raw += u"\\s";
        else
            raw += c;
    }
    return raw;
}

} // namespace

bool XdgKeyFile::read(const QString& path) {
    lines_.clear();
    QFile file(path);
    if (!file.exists())
        return true;
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QString text = QString::fromUtf8(file.readAll());
    if (file.error() != QFileDevice::NoError)
        return false;
    lines_ = text.split(u'\n');
    if (!lines_.isEmpty() && lines_.last().isEmpty())
        lines_.removeLast(); // the final line break; write() puts it back
    return true;
}

bool XdgKeyFile::write(const QString& path) const {
    if (!QDir().mkpath(QFileInfo(path).absolutePath()))
        return false;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    for (const QString& line : lines_) {
        file.write(line.toUtf8());
        file.write("\n");
    }
    return file.commit();
}

std::optional<QString> XdgKeyFile::value(QStringView group, QStringView key) const {
    const qsizetype index = findKey(group, key);
    if (index < 0)
        return std::nullopt;
    const QString& line = lines_[index];
    return Unescaped(QStringView(line).mid(line.indexOf(u'=') + 1).trimmed());
}

void XdgKeyFile::setValue(QStringView group, QStringView key, const QString& value) {
    const QString line = key.toString() + u'=' + Escaped(value);
    const qsizetype index = findKey(group, key);
    if (index >= 0) {
        lines_[index] = line;
        return;
    }
    const qsizetype end = groupEnd(group);
    if (end >= 0) {
        lines_.insert(end, line);
        return;
    }
    if (!lines_.isEmpty() && !lines_.last().trimmed().isEmpty())
        lines_.append(QString());
    lines_.append(u'[' + group.toString() + u']');
    lines_.append(line);
}

void XdgKeyFile::removeKey(QStringView group, QStringView key) {
    const qsizetype index = findKey(group, key);
    if (index >= 0)
        lines_.removeAt(index);
}

qsizetype XdgKeyFile::findKey(QStringView group, QStringView key) const {
    bool inGroup = false;
    for (qsizetype i = 0; i < lines_.size(); ++i) {
        if (const auto header = GroupOf(lines_[i])) {
            inGroup = *header == group;
            continue;
        }
        if (inGroup && IsKeyLine(lines_[i], key))
            return i;
    }
    return -1;
}

qsizetype XdgKeyFile::groupEnd(QStringView group) const {
    qsizetype end = -1;
    bool inGroup = false;
    for (qsizetype i = 0; i < lines_.size(); ++i) {
        if (const auto header = GroupOf(lines_[i])) {
            inGroup = *header == group;
            if (inGroup)
                end = i + 1;
            continue;
        }
        if (inGroup && IsEntryLine(lines_[i]))
            end = i + 1;
    }
    return end;
}

} // namespace korvel
