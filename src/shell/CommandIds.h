#pragma once

// The command ids of the menus and accelerators. They are part of the program's interface:
// macros and the recorded command stream name commands by these numbers.
namespace korvel::command {

inline constexpr int Find = 32773;
inline constexpr int Replace = 57641;
inline constexpr int FileNew = 57600;
inline constexpr int FileOpen = 57601;
inline constexpr int FileSave = 57603;
inline constexpr int FileSaveAs = 57604;
inline constexpr int FileProperties = 32772;
inline constexpr int AppExit = 57665;
inline constexpr int EditUndo = 57643;
inline constexpr int EditCut = 57635;
inline constexpr int EditCopy = 57634;
inline constexpr int EditPaste = 57637;
inline constexpr int Jump = 32774;
inline constexpr int EditSelectAll = 57642;
inline constexpr int FontSlot1 = 32900; // to 32903 for "フォント４"
inline constexpr int WordWrap = 59397;
inline constexpr int MacroRecord = 32782;
inline constexpr int MacroStopRecording = 32781; // shares Ctrl+Shift+R and never gets it
inline constexpr int MacroPlay = 32783;
inline constexpr int MacroLoad = 32780;
inline constexpr int MacroSave = 32784;
inline constexpr int Settings = 32788;
inline constexpr int HelpTopics = 57670;
inline constexpr int About = 57664;
inline constexpr int RecentFile1 = 57616; // to 57631; the list shows four
inline constexpr int PopUpMainMenu = 32824;
inline constexpr int FindBackward = 32828;
inline constexpr int FindForward = 32829;
inline constexpr int ReplaceNext = 32830;
inline constexpr int HideBar = 32831;
inline constexpr int IgnoreCase = 32832;
inline constexpr int NextPane = 57680;
inline constexpr int PreviousPane = 57681;

} // namespace korvel::command
