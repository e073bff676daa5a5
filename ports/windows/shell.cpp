#include "ports/windows/adapters.h"

// The shell's header counts on the others being there.
// clang-format off
#include "windows/automation.h"
#include <shellapi.h>
// clang-format on

#include <set>

#include "windows/desktop.h"
#include "windows/failure.h"
#include "windows/handles.h"
#include "windows/late_bound.h"

namespace tavrix::ports {
namespace {

using windows::LateBound;
using windows::object_of;
using windows::wide;

/// Paints windows of the caller's thread. One that is as invalid after its painting as before would
/// be asked again for ever: it is taken for painted and asked once more at the end.
class Painting {
  public:
    Painting() = default;
    ~Painting() {
        for (HWND window : unpainted_) InvalidateRect(window, nullptr, FALSE);
    }
    Painting(const Painting&) = delete;
    Painting& operator=(const Painting&) = delete;

    void paint(const MSG& message) {
        DispatchMessageW(&message);
        if (!GetUpdateRect(message.hwnd, nullptr, FALSE)) return;
        ValidateRect(message.hwnd, nullptr);
        unpainted_.insert(message.hwnd);
    }

  private:
    std::set<HWND> unpainted_;
};

bool has_ended(HANDLE process) {
    return WaitForSingleObject(process, 0) != WAIT_TIMEOUT;
}

// Waits for `process` while the host's windows go on being painted: the caller's thread is the
// user interface's.
void wait_for(HANDLE process) {
    Painting painting;
    for (;;) {
        const DWORD woken_by =
            MsgWaitForMultipleObjects(1, &process, FALSE, INFINITE, QS_PAINT | QS_SENDMESSAGE);
        if (woken_by != WAIT_OBJECT_0 + 1) return;
        MSG message;
        while (!has_ended(process) &&
               PeekMessageW(&message, nullptr, WM_PAINT, WM_PAINT, PM_REMOVE)) {
            painting.paint(message);
        }
    }
}

class DesktopShell final : public Shell {
  public:
    void invoke_verb(base::TextView folder, base::TextView item, base::TextView verb) override;
    bool run_and_wait(base::TextView command_line, bool hidden) override;
    bool start(base::TextView path) override;
    base::Text expand(base::TextView text) override;
    void show_message(base::TextView text, std::int32_t help_context) override;
};

void DesktopShell::invoke_verb(base::TextView folder, base::TextView item, base::TextView verb) {
    const LateBound shell = LateBound::create(u"Shell.Application");
    const LateBound opened(object_of(shell.call(u"NameSpace", folder).get()));
    const LateBound found(object_of(opened.call(u"ParseName", item).get()));
    found.call(u"InvokeVerb", verb);
}

bool DesktopShell::run_and_wait(base::TextView command_line, bool hidden) {
    base::Text command(command_line);
    STARTUPINFOW start{};
    start.cb = sizeof start;
    if (hidden) {
        start.dwFlags = STARTF_USESHOWWINDOW;
        start.wShowWindow = SW_HIDE;
    }
    PROCESS_INFORMATION started{};
    // The function may write into the command line.
    if (!CreateProcessW(nullptr, reinterpret_cast<wchar_t*>(command.data()), nullptr, nullptr,
                        FALSE, 0, nullptr, nullptr, &start, &started)) {
        return false;
    }
    const windows::KernelHandle process(started.hProcess);
    const windows::KernelHandle thread(started.hThread);
    wait_for(process.get());
    return true;
}

bool DesktopShell::start(base::TextView path) {
    const base::Text program(path);
    // Unlike a command line, a path is taken whole: no other program can stand at its first space.
    SHELLEXECUTEINFOW execute{};
    execute.cbSize = sizeof execute;
    execute.fMask = SEE_MASK_FLAG_NO_UI;
    execute.hwnd = GetActiveWindow();
    execute.lpFile = wide(program);
    execute.nShow = SW_SHOWNORMAL;
    return ShellExecuteExW(&execute) != FALSE;
}

base::Text DesktopShell::expand(base::TextView text) {
    const base::Text original(text);
    const DWORD size = ExpandEnvironmentStringsW(wide(original), nullptr, 0);
    base::Text expanded(size, u'\0');
    const DWORD written = ExpandEnvironmentStringsW(
        wide(original), reinterpret_cast<wchar_t*>(expanded.data()), size);
    if (written == 0 || written > size) return original;
    expanded.resize(written - 1);
    return expanded;
}

void DesktopShell::show_message(base::TextView text, std::int32_t help_context) {
    // Nobody would ever press the button.
    if (!windows::desktop_is_seen()) return;
    const base::Text shown(text);
    MSGBOXPARAMSW box{};
    box.cbSize = sizeof box;
    box.hwndOwner = GetActiveWindow();
    box.lpszText = wide(shown);
    box.lpszCaption = L"Tavrix";
    // Without an owner nothing else would keep the user out of the host's windows.
    box.dwStyle = box.hwndOwner != nullptr ? MB_OK : MB_OK | MB_TASKMODAL;
    box.dwContextHelpId = static_cast<DWORD_PTR>(help_context);
    MessageBoxIndirectW(&box);
}

}  // namespace

std::unique_ptr<Shell> make_windows_shell() {
    return std::make_unique<DesktopShell>();
}

}  // namespace tavrix::ports
