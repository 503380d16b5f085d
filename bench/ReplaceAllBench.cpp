// Replace all over a 10 MiB text holding 100,000 matches: the search engine's pass over the
// text (minding case and ignoring it), and the whole command in the editor's view, against
// QString::replace on the same text. The view's figure includes putting the new text into the
// document, which QString::replace does not do.

#include "editor/CEditer.h"
#include "editor/EditorText.h"
#include "editor/TextSearch.h"
#include "messages/MessageService.h"
#include "settings/SettingsStore.h"

#include <QApplication>
#include <QString>
#include <QTemporaryDir>
#include <QTextDocument>
#include <benchmark/benchmark.h>

namespace korvel::bench {
namespace {

constexpr std::size_t kTextUnits = 5 << 20; // 10 MiB of UTF-16
constexpr int kMatches = 100'000;
const std::u16string kNeedle = u"検索語";
const std::u16string kReplacement = u"置換した語";

// Japanese lines with CR LF, the needle spread evenly through them.
const std::u16string& Text() {
    static const std::u16string text = [] {
        const std::u16string line = u"吾輩は猫である。名前はまだ無い。Ｎｏ ｎａｍｅ yet.\r\n";
        const std::size_t gap = kTextUnits / kMatches - kNeedle.size();
        std::u16string made;
        made.reserve(kTextUnits + line.size());
        for (int match = 0; match < kMatches; ++match) {
            for (std::size_t filled = 0; filled < gap; filled += line.size())
                made.append(line, 0, std::min(line.size(), gap - filled));
            made += kNeedle;
        }
        return made;
    }();
    return text;
}

void SetBytes(benchmark::State& state) {
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(Text().size() * sizeof(char16_t)));
}

void BM_ReplaceEveryMatch(benchmark::State& state) {
    const bool ignoreCase = state.range(0) != 0;
    for (auto _ : state) {
        const std::u16string& text = Text();
        const ReplacedRange replaced =
            ignoreCase ? ReplaceEveryMatch(text, FoldCase(text), FoldCase(kNeedle), kReplacement)
                       : ReplaceEveryMatch(text, text, kNeedle, kReplacement);
        if (replaced.count != kMatches)
            state.SkipWithError("wrong match count");
        benchmark::DoNotOptimize(replaced.replacement.data());
    }
    SetBytes(state);
}
BENCHMARK(BM_ReplaceEveryMatch)
    ->ArgName("ignore_case")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond);

void BM_QStringReplace(benchmark::State& state) {
    const QString text = QString::fromStdU16String(Text());
    const QString needle = QString::fromStdU16String(kNeedle);
    const QString replacement = QString::fromStdU16String(kReplacement);
    const Qt::CaseSensitivity sensitivity =
        state.range(0) != 0 ? Qt::CaseInsensitive : Qt::CaseSensitive;
    for (auto _ : state) {
        QString copy = text;
        copy.replace(needle, replacement, sensitivity);
        benchmark::DoNotOptimize(copy.constData());
    }
    SetBytes(state);
}
BENCHMARK(BM_QStringReplace)->ArgName("ignore_case")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

class SilentMessages : public MessageService {
public:
    MessageAnswer show(const MessageRequest& request) override {
        return EscapeAnswer(request.buttons);
    }
};

// The command as the user runs it: the text in the view, the new text back in the document.
void BM_ViewReplaceAll(benchmark::State& state) {
    SilentMessages messages;
    MessageService::install(&messages);
    QTemporaryDir dir;
    SettingsStore store(dir.filePath(QStringLiteral("settings.ini")));
    CEditer view(store);
    view.resize(800, 600);
    view.show();
    const QString needle = QString::fromStdU16String(kNeedle);
    const QString replacement = QString::fromStdU16String(kReplacement);
    for (auto _ : state) {
        state.PauseTiming();
        SetEditorText(*view.document(), Text());
        state.ResumeTiming();
        view.replaceAll(needle, replacement, false);
    }
    SetBytes(state);
    MessageService::install(nullptr);
}
BENCHMARK(BM_ViewReplaceAll)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace
} // namespace korvel::bench

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
