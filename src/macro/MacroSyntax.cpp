#include "macro/MacroSyntax.h"

#include <limits>

namespace korvel::macro {
namespace {

QChar AsciiUpper(QChar c) {
    return c >= u'a' && c <= u'z' ? QChar(c.unicode() - (u'a' - u'A')) : c;
}

bool IsSeparator(QChar c) {
    return IsBlank(c) || c == u'"' || c == u'+';
}

bool IsEscaped(QChar c) {
    return c == u'n' || c == u't' || c == u'"' || c == u'\\';
}

} // namespace

bool IsWord(QStringView text, QLatin1StringView word) {
    return text.size() == word.size() && StartsWithWord(text, word);
}

bool StartsWithWord(QStringView text, QLatin1StringView word) {
    if (text.size() < word.size())
        return false;
    for (qsizetype i = 0; i < word.size(); ++i) {
        if (AsciiUpper(text[i]) != QLatin1Char(word[i]))
            return false;
    }
    return true;
}

std::optional<MacroToken> TokenReader::Next() {
    Rest();
    if (pos_ >= line_.size())
        return std::nullopt;
    const qsizetype start = pos_;
    if (line_[start] == u'"') {
        for (qsizetype i = start + 1; i < line_.size(); ++i) {
            if (line_[i] == u'\\' && i + 1 < line_.size() && IsEscaped(line_[i + 1])) {
                ++i;
            } else if (line_[i] == u'"') {
                pos_ = i + 1;
                return MacroToken{line_.sliced(start, pos_ - start).toString(), false};
            }
        }
        pos_ = line_.size();
        return MacroToken{line_.sliced(start).toString() + u'"', true};
    }
    if (line_[start] == u'+') {
        ++pos_;
        return MacroToken{QStringLiteral("+"), false};
    }
    while (pos_ < line_.size() && !IsSeparator(line_[pos_]))
        ++pos_;
    return MacroToken{line_.sliced(start, pos_ - start).toString(), false};
}

QStringView TokenReader::Rest() {
    while (pos_ < line_.size() && IsBlank(line_[pos_]))
        ++pos_;
    return line_.sliced(pos_);
}

QString DecodeMacroText(QStringView token) {
    QStringView text = token;
    if (text.startsWith(u'"')) {
        text = text.sliced(1);
        if (text.endsWith(u'"'))
            text.chop(1);
    }
    QString decoded;
    decoded.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c != u'\\' || i + 1 == text.size()) {
            decoded += c;
            continue;
        }
        switch (text[i + 1].unicode()) {
        case u'\\':
        case u'"':
            decoded += text[++i];
            break;
        case u'n':
            decoded += u'\n';
            ++i;
            break;
        case u't':
            decoded += u'\t';
            ++i;
            break;
        default:
            decoded += c;
        }
    }
    return decoded;
}

QString EscapeMacroText(QStringView text) {
    QString escaped(1, u'"');
    escaped.reserve(text.size() + 2);
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c == u'\\' || c == u'"') {
            escaped += u'\\';
            escaped += c;
        } else if (c == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') {
            escaped += QLatin1StringView("\" \"");
            ++i;
        } else if (c == u'\n') {
            escaped += QLatin1StringView("\\n");
        } else if (c == u'\t') {
            escaped += QLatin1StringView("\\t");
        } else {
            escaped += c;
        }
    }
    return escaped + u'"';
}

QStringView WithoutQuotes(QStringView token) {
    if (!token.startsWith(u'"'))
        return token;
    token = token.sliced(1);
    return token.endsWith(u'"') ? token.chopped(1) : token;
}

std::int32_t DecimalValue(QStringView text) {
    qsizetype i = 0;
    while (i < text.size() && (IsBlank(text[i]) || (text[i] >= u'\n' && text[i] <= u'\r')))
        ++i;
    const bool negative = i < text.size() && text[i] == u'-';
    if (i < text.size() && (text[i] == u'-' || text[i] == u'+'))
        ++i;
    constexpr std::int64_t kLimit = std::int64_t(std::numeric_limits<std::int32_t>::max()) + 1;
    std::int64_t value = 0;
    for (; i < text.size() && text[i] >= u'0' && text[i] <= u'9'; ++i)
        value = std::min(value * 10 + (text[i].unicode() - u'0'), kLimit);
    if (negative)
        return std::int32_t(-value);
    return std::int32_t(std::min(value, kLimit - 1));
}

} // namespace korvel::macro
