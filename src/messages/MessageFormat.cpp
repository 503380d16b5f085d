#include "messages/MessageFormat.h"

#include <algorithm>

namespace korvel {
namespace {

// Widths come from our own texts; the cap only keeps a broken one from eating memory.
constexpr qsizetype kMaxWidth = 1000;

bool IsAsciiDigit(QChar c) {
    return c >= u'0' && c <= u'9';
}

QString Padded(QString value, qsizetype width, bool zeros) {
    if (value.size() >= width)
        return value;
    const qsizetype missing = width - value.size();
    if (!zeros)
        return QString(missing, u' ') + value;
    // Zeros go between a sign and the digits: "-05", as printf writes it.
    const qsizetype digits = value.startsWith(u'-') || value.startsWith(u'+') ? 1 : 0;
    value.insert(digits, QString(missing, u'0'));
    return value;
}

} // namespace

QString FormatMessage(QStringView format, const QStringList& arguments) {
    QString result;
    result.reserve(format.size());
    qsizetype nextArgument = 0;
    for (qsizetype i = 0; i < format.size(); ++i) {
        if (format[i] != u'%') {
            result += format[i];
            continue;
        }
        if (i + 1 < format.size() && format[i + 1] == u'%') {
            result += u'%';
            ++i;
            continue;
        }
        qsizetype end = i + 1;
        const bool zeros = end < format.size() && format[end] == u'0';
        if (zeros)
            ++end;
        qsizetype width = 0;
        for (; end < format.size() && IsAsciiDigit(format[end]); ++end)
            width = std::min(width * 10 + format[end].digitValue(), kMaxWidth);
        const bool known = end < format.size() && (format[end] == u's' || format[end] == u'd');
        if (!known || nextArgument >= arguments.size()) {
            result += u'%';
            continue;
        }
        result += Padded(arguments[nextArgument++], width, zeros && format[end] == u'd');
        i = end;
    }
    return result;
}

} // namespace korvel
