#include "com/classes/frame_composition.h"

#include "com/classes/compose.h"
#include "com/classes/installed_settings.h"
#include "com/forms/forms.h"
#include "frame/library_state.h"
#include "ports/windows/ansi_code_page.h"
#include "ports/windows/ansi_registry.h"
#include "ports/windows/desktop_shell.h"
#include "ports/windows/user_locale.h"
#include "ports/windows/windows_clock.h"
#include "ports/windows/windows_files.h"

namespace tavrix::com {
namespace {

frame::LibraryState& library_state() {
    static frame::LibraryState state;
    return state;
}

struct ComposedCInfo {
    std::unique_ptr<frame::AboutWindow> about_window = make_about_window();
    std::unique_ptr<mail::MessageWindow> message_window = make_message_window();
    windows::WindowsClock clock;
    windows::UserLocale locale;
    windows::AnsiRegistry registry;
    windows::AnsiCodePage code_page;
    windows::WindowsFiles files;
    windows::DesktopShell shell;
    frame::CInfo object{{*about_window,
                         *message_window,
                         clock,
                         locale,
                         {registry, code_page, files, shell},
                         library_state().hand_over,
                         &load_installed_settings}};
};

struct ComposedRejestr {
    windows::AnsiRegistry registry;
    windows::AnsiCodePage code_page;
    frame::Rejestr object{registry, code_page};
};

}  // namespace

std::shared_ptr<frame::CInfo> compose_cinfo() {
    return compose<ComposedCInfo>();
}

std::shared_ptr<frame::Rejestr> compose_rejestr() {
    return compose<ComposedRejestr>();
}

}  // namespace tavrix::com
