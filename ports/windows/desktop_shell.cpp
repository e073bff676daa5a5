#include "ports/windows/desktop_shell.h"

#include "ports/windows/failure.h"
#include "ports/windows/late_bound.h"
#include "ports/windows/owned.h"

namespace tavrix::windows {
namespace {

struct KernelHandleTraits {
    using Handle = HANDLE;
    static void free(HANDLE handle) noexcept { CloseHandle(handle); }
};
using KernelHandle = Owned<KernelHandleTraits>;

// Waits for `process` while the host's windows go on being painted: the caller's thread is the
// user interface's.
void wait_for(HANDLE process) {
    for (;;) {
        const DWORD woken_by =
            MsgWaitForMultipleObjects(1, &process, FALSE, INFINITE, QS_PAINT | QS_SENDMESSAGE);
        if (woken_by != WAIT_OBJECT_0 + 1) return;
        MSG message;
        while (PeekMessageW(&message, nullptr, WM_PAINT, WM_PAINT, PM_REMOVE)) {
            DispatchMessageW(&message);
        }
    }
}

}  // namespace

bool DesktopShell::file_exists(base::TextView path) {
    const DWORD attributes = GetFileAttributesW(wide(base::Text(path)));
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

void DesktopShell::copy_file(base::TextView from, base::TextView to) {
    if (!CopyFileW(wide(base::Text(from)), wide(base::Text(to)), FALSE)) {
        throw_failure(HRESULT_FROM_WIN32(GetLastError()), u"CopyFile");
    }
}

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
    const KernelHandle process(started.hProcess);
    const KernelHandle thread(started.hThread);
    wait_for(process.get());
    return true;
}

void DesktopShell::show_message(base::TextView text, std::int32_t help_context) {
    const base::Text shown(text);
    MSGBOXPARAMSW box{};
    box.cbSize = sizeof box;
    box.lpszText = wide(shown);
    box.lpszCaption = L"Tavrix";
    box.dwStyle = MB_OK;
    box.dwContextHelpId = static_cast<DWORD_PTR>(help_context);
    MessageBoxIndirectW(&box);
}

}  // namespace tavrix::windows
