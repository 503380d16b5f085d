#include "browser/BrowseRequest.h"

#include "browser/FileListing.h"
#include "settings/SettingsStore.h"

namespace korvel {
namespace {

// STR_ZOOM_METHOD: 0 none, 1 a single tap on empty space, 2 a double tap.
constexpr int kZoomBySingleTap = 1;
constexpr int kZoomByDoubleTap = 2;

} // namespace

QString BrowseRequest::path(qsizetype index) const {
    if (index < 0 || index >= names.size())
        return {};
    return folder + names[index];
}

void ApplyBrowseSettings(BrowseRequest& request, const SettingsStore& store) {
    std::uint32_t options =
        request.options & ~(list_option::SingleTapOpensFolder | list_option::ShowFolders |
                            browse_option::EnlargeBySingleTap | browse_option::EnlargeByDoubleTap);
    if (store.read(setting::SELECT_BY_SINGLE_TAP) != 0)
        options |= list_option::SingleTapOpensFolder;
    if (store.read(setting::SHOW_FOLDER_ON_FILE_LIST) != 0)
        options |= list_option::ShowFolders;
    if (store.read(setting::SELECTABLE_CODE_SET) == 0)
        options &= ~browse_option::ShowOptionRow;
    switch (store.read(setting::STR_ZOOM_METHOD)) {
    case kZoomBySingleTap:
        options |= browse_option::EnlargeBySingleTap;
        break;
    case kZoomByDoubleTap:
        options |= browse_option::EnlargeByDoubleTap;
        break;
    default:
        break;
    }
    request.options = options;
    request.listStyle = store.read(setting::FILE_LIST_STYLE);
    request.longHoldDelay = store.read(setting::LONG_DELAY) != 0;
}

void StoreBrowseSettings(const BrowseRequest& request, SettingsStore& store) {
    store.write(setting::SHOW_FOLDER_ON_FILE_LIST, request.showFolders ? 1 : 0);
    store.write(setting::FILE_LIST_STYLE, request.listStyle);
}

} // namespace korvel
