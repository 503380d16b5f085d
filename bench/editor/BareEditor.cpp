#include "BareEditor.h"

#include <QFile>
#include <QPlainTextEdit>
#include <QStringDecoder>
#include <cstdio>

namespace korvel::bench {

bool OpenTheSimpleWay(QPlainTextEdit& edit, const QString& path, const char* encoding) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(path));
        return false;
    }
    QStringDecoder decoder(encoding);
    if (!decoder.isValid()) {
        std::fprintf(stderr, "Qt has no decoder for %s\n", encoding);
        return false;
    }
    const QString text = decoder(file.readAll());
    if (decoder.hasError()) {
        std::fprintf(stderr, "%s is not %s\n", qPrintable(path), encoding);
        return false;
    }
    edit.setPlainText(text);
    return true;
}

} // namespace korvel::bench
