#include "com/classes/installed_settings.h"

#include "com/module.h"
#include "frame/settings_file.h"
#include "windows/bstr.h"
// Needs what they include.
#include <shlobj.h>

namespace tavrix::com {

base::Text installed_folder() {
    const base::Text path = module_path();
    return path.substr(0, path.find_last_of(u'\\') + 1);
}

base::Text user_folder() {
    wchar_t path[MAX_PATH];
    const HRESULT found = SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA | CSIDL_FLAG_CREATE,
                                           nullptr, SHGFP_TYPE_CURRENT, path);
    return found == S_OK ? windows::text_from_wide(path) + u'\\' : base::Text();
}

frame::Settings load_installed_settings() {
    return frame::load_settings(base::to_utf8(installed_folder()) + "Tavrix.json");
}

void SettingsOnDemand::read() {
    if (known_) return;
    settings_ = load_installed_settings();
    known_ = true;
}

}  // namespace tavrix::com
