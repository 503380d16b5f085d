// The settings store on any bytes as its INI file: every setting reads without a crash or
// undefined behaviour, and every integer the program then works with lies in its range.

#include "FuzzCheck.h"
#include "settings/SettingsStore.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QTemporaryDir>
#include <cstddef>
#include <cstdint>

namespace {

using korvel::fuzz::Require;
namespace setting = korvel::setting;

constexpr korvel::IntSetting kIntSettings[] = {
    setting::COLOR_TEXT,
    setting::COLOR_BACKGROUND,
    setting::CUSTOM_COLOR_COUNT,
    setting::CUSTOM_COLOR1,
    setting::CUSTOM_COLOR2,
    setting::CUSTOM_COLOR3,
    setting::CUSTOM_COLOR4,
    setting::CUSTOM_COLOR5,
    setting::FONT1_SIZE,
    setting::FONT2_SIZE,
    setting::FONT3_SIZE,
    setting::FONT4_SIZE,
    setting::FONT1_BOLD,
    setting::FONT2_BOLD,
    setting::FONT3_BOLD,
    setting::FONT4_BOLD,
    setting::FONT1_ITALIC,
    setting::FONT2_ITALIC,
    setting::FONT3_ITALIC,
    setting::FONT4_ITALIC,
    setting::FONT_SIZE,
    setting::TAB_SIZE,
    setting::SELECTABLE_CODE_SET,
    setting::JIS_KATAKANA_MODE,
    setting::EDIT_AUTO_ARRANGE,
    setting::FILTER_INDEX,
    setting::LOAD_DAFAULT_MACRO,
    setting::LONG_DELAY,
    setting::SELECT_BY_SINGLE_TAP,
    setting::STR_ZOOM_METHOD,
    setting::SHOW_FOLDER_ON_FILE_LIST,
    setting::FILE_LIST_STYLE,
};

constexpr korvel::StringSetting kStringSettings[] = {
    setting::FONT1_NAME,
    setting::FONT2_NAME,
    setting::FONT3_NAME,
    setting::FONT4_NAME,
    setting::LAST_OPEN_FOLDER,
    setting::MRU_FOLDER,
    setting::DEFAULT_MACRO_FILE_NAME,
};

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
    for (const korvel::IntSetting& setting : kIntSettings) {
        const int value = store.read(setting);
        Require(value >= setting.minimum && value <= setting.maximum,
                "an integer setting reads inside its range");
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
