#include "ports/portable/openssl_lifetime.h"
#include "windows/automation.h"

// `process_ends` is set when the whole process goes: the system takes everything back then, and
// other threads may have been stopped in the middle of anything.
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID process_ends) {
    if (reason == DLL_PROCESS_DETACH && process_ends == nullptr) tavrix::ports::release_openssl();
    return TRUE;
}
