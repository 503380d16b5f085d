#pragma once

// The file side of loading and saving: reads and writes whole documents and tells the user, by
// message box, about every failure. No widgets are needed; the parent only places the boxes.

#include "codec/CodecBlock.h"
#include "codec/CodecTypes.h"

#include <QByteArray>
#include <QString>
#include <optional>
#include <string_view>

class QWidget;

namespace korvel {

// What a path leads to, links followed. A path that cannot be examined is Missing.
enum class PathKind { Missing, Folder, File };
PathKind ExaminePath(const QString& path);

// A loaded file's text and what was found. The text may view into the file's bytes or into
// the decoded storage, so both live as long as this does; a move keeps them where they are.
struct LoadedDocument {
    TextEncoding encoding = TextEncoding::ShiftJis; // ShiftJis to Unicode
    LineEnding lineEnding = LineEnding::CrLf;       // CrLf, Cr or Lf
    std::u16string_view text; // CR LF breaks; lone CR or LF of the file's other kind kept as is

    QByteArray fileBytes;
    CodecBlock storage;
};

// Reads the whole file and converts it. requested is AutoDetect, GarbledMail or a code set.
// On failure the user has been told and nothing is returned. parent may be null.
std::optional<LoadedDocument> LoadDocumentFile(const QString& path, TextEncoding requested,
                                               QWidget* parent);

// Writes text (UTF-16, CR LF breaks) to path in the code set (ShiftJis to Unicode) and line
// ending, mark first where the code set has one; a link is followed and stays a link. The file
// gets the complete new bytes or stays exactly as it was, and keeps its mode, owner and group
// (FileReplacement.h). On failure or refusal the user has been told and the answer is false.
bool SaveDocumentFile(const QString& path, std::u16string_view text, TextEncoding encoding,
                      LineEnding lineEnding, int jisKatakanaMode, QWidget* parent);

} // namespace korvel
