#pragma once

#include <QString>
#include <QStringList>
#include <cstdint>
#include <functional>

class QEvent;
class QObject;

namespace korvel {

class SettingsStore;

// `BrowseRequest` flags. The numbers are the customary open-file flag values, which callers
// and stored settings share.
namespace browse_flag {
inline constexpr std::uint32_t OverwritePrompt = 0x2;
inline constexpr std::uint32_t EnableHook = 0x20;
inline constexpr std::uint32_t AllowMultiSelect = 0x200;
inline constexpr std::uint32_t PathMustExist = 0x800;
inline constexpr std::uint32_t FileMustExist = 0x1000;
inline constexpr std::uint32_t CreatePrompt = 0x2000;
inline constexpr std::uint32_t NoDereferenceLinks = 0x100000;
} // namespace browse_flag

// `BrowseRequest` options: the bits the dialog tests. The same word is the file list's
// `FileListOptions`, whose own bits are in FileListing.h.
namespace browse_option {
inline constexpr std::uint32_t SelectionIsNotAName = 0x00000002;
inline constexpr std::uint32_t ShowOptionRow = 0x00000020;
inline constexpr std::uint32_t NoNameBox = 0x00000080;
inline constexpr std::uint32_t NoFileList = 0x00000400;
inline constexpr std::uint32_t Saving = 0x00020000;
inline constexpr std::uint32_t UnlockReadOnly = 0x00040000;
inline constexpr std::uint32_t AppendTypeExtension = 0x00200000;
inline constexpr std::uint32_t EnlargeByDoubleTap = 0x00800000;
inline constexpr std::uint32_t PlainIcons = 0x02000000;
inline constexpr std::uint32_t EnlargeBySingleTap = 0x08000000;
} // namespace browse_option

// Sees every event of the dialog and its controls first; true swallows the event.
using BrowseHook = std::function<bool(QObject* target, QEvent* event)>;

// What a caller hands to the browse dialog, and reads back after OK.
struct BrowseRequest {
    std::uint32_t flags = 0;
    std::uint32_t options = 0;
    // The window title; empty: "ファイル名を参照".
    QString title;
    // Pairs of description and pattern, each part followed by "|", ended by an empty part:
    // "テキスト (*.txt)|*.txt|すべてのファイル (*.*)|*.*||".
    QString filter;
    // In and out: the chosen type counted from 1; 0 = none.
    int filterIndex = 0;
    // The choices of the option row, each followed by "|", ended by an empty part.
    QString optionList;
    // The option row's label; empty: "ｵﾌﾟｼｮﾝ".
    QString optionLabel;
    // In and out: the chosen item of the option row, counted from 0.
    int optionIndex = 0;
    // A second choice row under the option row, shown with it: the line endings offered when
    // saving ("CR-LF|CR|LF||"). Empty: no such row.
    QString lineEndingList;
    // In and out: the chosen line ending, counted from 0.
    int lineEndingIndex = 0;
    // In and out: the folder to start in; on OK the folder of the result, ending in "/".
    QString folder;
    // The initial text of the name box.
    QString name;
    // The prompt line above the controls; empty: "参照".
    QString prompt;
    // In and out: the file list's style (1 details, 2 icons, 3 list).
    int listStyle = 1;
    // The tap-and-hold time: "長め" (the LONG_DELAY setting) or "普通".
    bool longHoldDelay = true;
    // Out: whether the list showed folders when OK was pressed.
    bool showFolders = false;
    // Out: the chosen names, without folder and without repeats.
    QStringList names;
    // Called with every event first when flags has EnableHook.
    BrowseHook hook;

    // The folder joined with the chosen name at index.
    QString path(qsizetype index = 0) const;
};

// Takes the display and tap settings into a request: SELECT_BY_SINGLE_TAP (a single tap opens a
// folder), SHOW_FOLDER_ON_FILE_LIST, STR_ZOOM_METHOD (enlarging by single or double tap),
// FILE_LIST_STYLE, LONG_DELAY, and SELECTABLE_CODE_SET (0 hides the option row).
void ApplyBrowseSettings(BrowseRequest& request, const SettingsStore& store);
// Keeps the list style and the show-folders choice of a request that ended with OK.
void StoreBrowseSettings(const BrowseRequest& request, SettingsStore& store);

} // namespace korvel
