#pragma once

#include <QString>

namespace korvel::bench {

// Where Python's codec tests keep their Japanese sample texts (Debian's libpython3.11-testsuite):
// shift_jis.txt and the same text in UTF-8, shift_jis-utf8.txt.
inline constexpr char kDefaultSampleFolder[] = "/usr/lib/python3.11/test/cjkencodings";

// The forms the benchmark files take: Shift_JIS as Windows writes it, UTF-8 as Linux does.
enum class SampleForm { ShiftJisCrLf, Utf8Lf };

// Writes the sample text of sampleFolder, repeated whole up to at most bytes, to path. Returns
// the size written, or -1 (with the reason on stderr) when the sample cannot be read or the file
// not written.
qint64 WriteSampleFile(const QString& sampleFolder, SampleForm form, qint64 bytes,
                       const QString& path);

} // namespace korvel::bench
