#include "SampleFiles.h"

#include <QByteArray>
#include <QFile>
#include <cstdio>

namespace korvel::bench {

qint64 WriteSampleFile(const QString& sampleFolder, SampleForm form, qint64 bytes,
                       const QString& path) {
    const bool shiftJis = form == SampleForm::ShiftJisCrLf;
    QFile sampleFile(sampleFolder + (shiftJis ? QStringLiteral("/shift_jis.txt")
                                              : QStringLiteral("/shift_jis-utf8.txt")));
    if (!sampleFile.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(sampleFile.fileName()));
        return -1;
    }
    QByteArray sample = sampleFile.readAll();
    // No Shift_JIS trail byte is 0x0A, so the bytes can be changed without decoding them.
    if (shiftJis)
        sample.replace("\n", "\r\n");
    if (sample.isEmpty() || sample.size() > bytes) {
        std::fprintf(stderr, "%s is empty or longer than %lld bytes\n",
                     qPrintable(sampleFile.fileName()), static_cast<long long>(bytes));
        return -1;
    }
    const QByteArray text = sample.repeated(bytes / sample.size());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size()) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
        return -1;
    }
    return text.size();
}

} // namespace korvel::bench
