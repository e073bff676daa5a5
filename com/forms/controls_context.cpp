#include "com/forms/controls_context.h"

#include "com/forms/identifiers.h"
#include "com/module.h"
#include "windows/bstr.h"

namespace tavrix::com {
namespace {

HANDLE make_context() noexcept {
    try {
        const base::Text path = module_path();
        ACTCTXW wanted{};
        wanted.cbSize = sizeof wanted;
        wanted.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
        wanted.lpSource = windows::wide(path);
        wanted.hModule = module_handle();
        wanted.lpResourceName = MAKEINTRESOURCEW(TAVRIX_CONTROLS_MANIFEST);
        return CreateActCtxW(&wanted);
    } catch (...) {
        return INVALID_HANDLE_VALUE;
    }
}

}  // namespace

ControlsContext::ControlsContext() noexcept : context_(make_context()) {
    active_ = context_ != INVALID_HANDLE_VALUE && ActivateActCtx(context_, &cookie_);
}

ControlsContext::~ControlsContext() {
    if (active_) DeactivateActCtx(0, cookie_);
    if (context_ != INVALID_HANDLE_VALUE) ReleaseActCtx(context_);
}

}  // namespace tavrix::com
