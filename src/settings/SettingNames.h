#pragma once

#include <array>

namespace korvel {

// An integer setting: its value name in the SETTINGS group, the value a reader gets when the
// stored one is missing, unreadable or outside its range, and that range. Callers read and
// write through these descriptors, so a name always travels with its own default and bounds,
// and no arithmetic ever sees a value the settings pages could not have written.
struct IntSetting {
    const char* name;
    int defaultValue;
    int minimum;
    int maximum;
};

inline constexpr int kLargestColor = 0x00FFFFFF; // 0x00BBGGRR

// Where a string setting's default comes from.
enum class StringDefault {
    Text,            // defaultText as it stands
    DocumentsFolder, // the user's documents folder, ending in one "/"
};

struct StringSetting {
    const char* name;
    const char16_t* defaultText;
    StringDefault defaultKind = StringDefault::Text;
};

// The groups of the store. "Recent File List" holds File1..File4; "OpenDocs" holds one value
// per running instance (process id -> path).
inline constexpr char kSettingsGroup[] = "SETTINGS";
inline constexpr char kRecentFileListGroup[] = "Recent File List";
inline constexpr char kOpenDocsGroup[] = "OpenDocs";

// Every value of the SETTINGS group. Colours are 0x00BBGGRR.
namespace setting {

inline constexpr IntSetting COLOR_TEXT{"COLOR_TEXT", 0x00000000, 0, kLargestColor};
inline constexpr IntSetting COLOR_BACKGROUND{"COLOR_BACKGROUND", 0x00FFFFFF, 0, kLargestColor};

inline constexpr IntSetting CUSTOM_COLOR_COUNT{"CUSTOM_COLOR_COUNT", 0, 0, 5};
inline constexpr IntSetting CUSTOM_COLOR1{"CUSTOM_COLOR1", 0x00FFFFFF, 0, kLargestColor};
inline constexpr IntSetting CUSTOM_COLOR2{"CUSTOM_COLOR2", 0x00FFFFFF, 0, kLargestColor};
inline constexpr IntSetting CUSTOM_COLOR3{"CUSTOM_COLOR3", 0x00FFFFFF, 0, kLargestColor};
inline constexpr IntSetting CUSTOM_COLOR4{"CUSTOM_COLOR4", 0x00FFFFFF, 0, kLargestColor};
inline constexpr IntSetting CUSTOM_COLOR5{"CUSTOM_COLOR5", 0x00FFFFFF, 0, kLargestColor};
inline constexpr std::array<IntSetting, 5> kCustomColors{
    CUSTOM_COLOR1, CUSTOM_COLOR2, CUSTOM_COLOR3, CUSTOM_COLOR4, CUSTOM_COLOR5};

inline constexpr char16_t kDefaultFontFace[] = u"ＭＳ ゴシック";

inline constexpr StringSetting FONT1_NAME{"FONT1_NAME", kDefaultFontFace};
inline constexpr StringSetting FONT2_NAME{"FONT2_NAME", kDefaultFontFace};
inline constexpr StringSetting FONT3_NAME{"FONT3_NAME", kDefaultFontFace};
inline constexpr StringSetting FONT4_NAME{"FONT4_NAME", kDefaultFontFace};
inline constexpr IntSetting FONT1_SIZE{"FONT1_SIZE", 7, 1, 144};
inline constexpr IntSetting FONT2_SIZE{"FONT2_SIZE", 9, 1, 144};
inline constexpr IntSetting FONT3_SIZE{"FONT3_SIZE", 12, 1, 144};
inline constexpr IntSetting FONT4_SIZE{"FONT4_SIZE", 18, 1, 144};
inline constexpr IntSetting FONT1_BOLD{"FONT1_BOLD", 0, 0, 1};
inline constexpr IntSetting FONT2_BOLD{"FONT2_BOLD", 0, 0, 1};
inline constexpr IntSetting FONT3_BOLD{"FONT3_BOLD", 0, 0, 1};
inline constexpr IntSetting FONT4_BOLD{"FONT4_BOLD", 0, 0, 1};
inline constexpr IntSetting FONT1_ITALIC{"FONT1_ITALIC", 0, 0, 1};
inline constexpr IntSetting FONT2_ITALIC{"FONT2_ITALIC", 0, 0, 1};
inline constexpr IntSetting FONT3_ITALIC{"FONT3_ITALIC", 0, 0, 1};
inline constexpr IntSetting FONT4_ITALIC{"FONT4_ITALIC", 0, 0, 1};

// The four values of one font slot ("フォント１" .. "フォント４").
struct FontSlotSettings {
    StringSetting name;
    IntSetting size;
    IntSetting bold;
    IntSetting italic;
};
inline constexpr std::array<FontSlotSettings, 4> kFontSlots{{
    {FONT1_NAME, FONT1_SIZE, FONT1_BOLD, FONT1_ITALIC},
    {FONT2_NAME, FONT2_SIZE, FONT2_BOLD, FONT2_ITALIC},
    {FONT3_NAME, FONT3_SIZE, FONT3_BOLD, FONT3_ITALIC},
    {FONT4_NAME, FONT4_SIZE, FONT4_BOLD, FONT4_ITALIC},
}};

// The current font slot counted from 0: the default 1 selects "フォント２".
inline constexpr IntSetting FONT_SIZE{"FONT_SIZE", 1, 0, 3};
inline constexpr IntSetting TAB_SIZE{"TAB_SIZE", 8, 1, 80};
inline constexpr IntSetting SELECTABLE_CODE_SET{"SELECTABLE_CODE_SET", 1, 0, 1};
inline constexpr IntSetting JIS_KATAKANA_MODE{"JIS_KATAKANA_MODE", 0, 0, 1};
inline constexpr IntSetting EDIT_AUTO_ARRANGE{"EDIT_AUTO_ARRANGE", 1, 0, 1};
inline constexpr IntSetting FILTER_INDEX{"FILTER_INDEX", 1, 0, 0xFFFF};
inline constexpr StringSetting LAST_OPEN_FOLDER{"LAST_OPEN_FOLDER", u"",
                                                StringDefault::DocumentsFolder};
inline constexpr StringSetting MRU_FOLDER{"MRU_FOLDER", u"", StringDefault::DocumentsFolder};
// Misspelt in the stored format; renaming it would lose every user's start-up macro choice.
inline constexpr IntSetting LOAD_DAFAULT_MACRO{"LOAD_DAFAULT_MACRO", 0, 0, 1};
inline constexpr StringSetting DEFAULT_MACRO_FILE_NAME{"DEFAULT_MACRO_FILE_NAME", u""};
inline constexpr IntSetting LONG_DELAY{"LONG_DELAY", 1, 0, 1};
inline constexpr IntSetting SELECT_BY_SINGLE_TAP{"SELECT_BY_SINGLE_TAP", 1, 0, 1};
inline constexpr IntSetting STR_ZOOM_METHOD{"STR_ZOOM_METHOD", 1, 0, 2};
inline constexpr IntSetting SHOW_FOLDER_ON_FILE_LIST{"SHOW_FOLDER_ON_FILE_LIST", 0, 0, 1};
inline constexpr IntSetting FILE_LIST_STYLE{"FILE_LIST_STYLE", 1, 1, 3};

} // namespace setting
} // namespace korvel
