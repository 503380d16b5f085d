#pragma once

// The pieces of the macro language that the checker reads and the writer must write back in a
// form the checker reads the same way: tokens, escapes and the reader's line length.

#include <QLatin1StringView>
#include <QString>
#include <QStringView>
#include <cstdint>
#include <optional>

namespace korvel::macro {

// The checker reads a file through a buffer of this many characters, one of them the
// terminator: a longer line arrives in pieces.
inline constexpr qsizetype kLineBufferChars = 1024;

inline bool IsBlank(QChar c) {
    return c == u' ' || c == u'\t';
}

// Keywords, key names and options ignore case; only ASCII letters fold, as they did on the
// device.
bool IsWord(QStringView text, QLatin1StringView word);
bool StartsWithWord(QStringView text, QLatin1StringView word);

// The keyword arguments of SELECT, UNSELECT and ENABLEWINDOW and the values they stand for.
struct MacroChoice {
    QLatin1StringView word;
    std::int32_t value;
};
inline constexpr MacroChoice kSelectChoices[] = {{QLatin1StringView("ALL"), 0},
                                                 {QLatin1StringView("LINE"), 1},
                                                 {QLatin1StringView("LEFT"), 2},
                                                 {QLatin1StringView("RIGHT"), 3}};
inline constexpr MacroChoice kUnselectChoices[] = {{QLatin1StringView("HEAD"), 1},
                                                   {QLatin1StringView("TAIL"), 0}};
inline constexpr MacroChoice kEnableWindowChoices[] = {{QLatin1StringView("TRUE"), 1},
                                                       {QLatin1StringView("FALSE"), 0}};

struct MacroToken {
    QString text;
    bool unbalanced = false; // a quoted text without its closing quote; one was supplied
};

// Cuts one line's argument text into tokens: a quoted text with its quotes, a "+", or a run up
// to a blank, tab, double quote or "+". Blanks before each token are skipped.
class TokenReader {
public:
    explicit TokenReader(QStringView line) : line_(line) {}

    std::optional<MacroToken> Next();
    // What is left from the next token on; empty when nothing but blanks is left.
    QStringView Rest();
    qsizetype Position() const { return pos_; }
    void Rewind(qsizetype position) { pos_ = position; }
    void Finish() { pos_ = line_.size(); }

private:
    QStringView line_;
    qsizetype pos_ = 0;
};

// A quoted argument's text: the opening quote dropped, then a closing one, then the escapes
// \\, \", \n and \t decoded; any other backslash stays.
QString DecodeMacroText(QStringView token);
// The reverse for FIND and REPLACE, in quotes; a CR LF closes the text and opens the next one,
// which is how REPLACE's two texts are written.
QString EscapeMacroText(QStringView text);
// A path of OPEN or SAVE: the quotes dropped, the backslashes kept.
QStringView WithoutQuotes(QStringView token);

// The decimal value at the start of text, as the C library reads it (blanks, a sign, digits);
// out-of-range values stop at the limits of 32 bits.
std::int32_t DecimalValue(QStringView text);

} // namespace korvel::macro
