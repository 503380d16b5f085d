// The settings store on any bytes as its INI file: every setting reads without a crash or
// undefined behaviour, and every integer the program then works with lies in its range.

#include "FuzzCheck.h"
#include "settings/SettingsStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QTemporaryDir>
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace {

using korvel::fuzz::Require;
using namespace korvel::setting;

// The font slots and custom colours are read through their own tables below.
constexpr korvel::IntSetting kIntSettings[] = {
    COLOR_TEXT,      COLOR_BACKGROUND,         CUSTOM_COLOR_COUNT, FONT_SIZE,
    TAB_SIZE,        SELECTABLE_CODE_SET,      JIS_KATAKANA_MODE,  EDIT_AUTO_ARRANGE,
    FILTER_INDEX,    LOAD_DAFAULT_MACRO,       LONG_DELAY,         SELECT_BY_SINGLE_TAP,
    STR_ZOOM_METHOD, SHOW_FOLDER_ON_FILE_LIST, FILE_LIST_STYLE};
constexpr korvel::StringSetting kStringSettings[] = {LAST_OPEN_FOLDER, MRU_FOLDER,
                                                     DEFAULT_MACRO_FILE_NAME};

// On a tmpfs when there is one: every input is a file written and read back.
const QString& Folder() {
    static const QString parent = QFileInfo(QStringLiteral("/dev/shm")).isWritable()
                                      ? QStringLiteral("/dev/shm")
                                      : QDir::tempPath();
    static const QTemporaryDir folder(parent + QStringLiteral("/korvel-settings-fuzz-XXXXXX"));
    static const QString path = folder.path();
    return path;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // A new name for every input: QSettings trusts its cache of a file whose time and size
    // have not changed, and two inputs written within one clock tick may share both.
    static unsigned long count = 0;
    const QString path = Folder() + QStringLiteral("/%1.ini").arg(++count);
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly)) {
            return 0;
        }
        file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size));
    }
    const korvel::SettingsStore store(path);
    auto requireInRange = [&](const korvel::IntSetting& setting) {
        const int value = store.read(setting);
        Require(value >= setting.minimum && value <= setting.maximum,
                "an integer setting reads inside its range");
    };
    std::ranges::for_each(kIntSettings, requireInRange);
    std::ranges::for_each(kCustomColors, requireInRange);
    for (const FontSlotSettings& slot : kFontSlots) {
        std::ranges::for_each(std::array{slot.size, slot.bold, slot.italic}, requireInRange);
        static_cast<void>(store.read(slot.name));
    }
    for (const korvel::StringSetting& setting : kStringSettings) {
        static_cast<void>(store.read(setting));
    }
    // The other groups are read by the recent-file list and the open-documents guard.
    for (const char* group : {korvel::kRecentFileListGroup, korvel::kOpenDocsGroup}) {
        const auto settings = store.openGroup(group);
        for (const QString& key : settings->childKeys()) {
            static_cast<void>(settings->value(key).toString());
        }
    }
    QFile::remove(path);
    return 0;
}
