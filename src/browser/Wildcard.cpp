#include "browser/Wildcard.h"

#include <vector>

namespace korvel {
namespace {

bool SameLetter(QChar a, QChar b) {
    return a == b || a.toCaseFolded() == b.toCaseFolded();
}

// Iterative matching with one backtrack point: linear in practice, and no recursion however
// many stars a typed pattern holds.
bool MatchesOne(QStringView name, QStringView pattern) {
    qsizetype n = 0;
    qsizetype p = 0;
    qsizetype starAt = -1;
    qsizetype resumeAt = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == u'*') {
            starAt = p++;
            resumeAt = n;
        } else if (p < pattern.size() && (pattern[p] == u'?' || SameLetter(pattern[p], name[n]))) {
            ++p;
            ++n;
        } else if (starAt >= 0) {
            p = starAt + 1;
            n = ++resumeAt;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == u'*')
        ++p;
    return p == pattern.size();
}

std::vector<QStringView> PatternParts(QStringView patterns) {
    std::vector<QStringView> parts;
    for (QStringView part : patterns.tokenize(u';', Qt::SkipEmptyParts)) {
        part = part.trimmed();
        if (!part.isEmpty())
            parts.push_back(part);
    }
    return parts;
}

// The extension a "*.ext" pattern names, dot included; empty for anything else.
QString ExtensionOfPattern(QStringView pattern) {
    if (!pattern.startsWith(u"*.") || pattern.size() == 2)
        return {};
    const QStringView extension = pattern.sliced(1);
    if (HasWildcard(extension) || extension.lastIndexOf(u'.') != 0)
        return {};
    return extension.toString();
}

} // namespace

bool HasWildcard(QStringView text) {
    return text.contains(u'*') || text.contains(u'?');
}

bool MatchesWildcard(QStringView name, QStringView patterns) {
    for (QStringView pattern : PatternParts(patterns)) {
        if (MatchesOne(name, pattern))
            return true;
        if (pattern.endsWith(u".*") && !name.contains(u'.') && MatchesOne(name, pattern.chopped(2)))
            return true;
    }
    return false;
}

QStringList ExtensionFilterOf(QStringView patterns) {
    QStringList filter;
    for (QStringView pattern : PatternParts(patterns)) {
        if (pattern == u"*" || pattern == u"*.*")
            return {};
        const QString extension = ExtensionOfPattern(pattern);
        if (!extension.isEmpty() && !filter.contains(extension, Qt::CaseInsensitive))
            filter.append(extension);
    }
    return filter;
}

QString DefaultExtensionOf(QStringView patterns) {
    const std::vector<QStringView> parts = PatternParts(patterns);
    return parts.empty() ? QString() : ExtensionOfPattern(parts.front());
}

} // namespace korvel
