#include "com/class_factory.h"

#include "com/error_bridge.h"

namespace tavrix::com {

HRESULT ClassFactory::CreateInstance(IUnknown* outer, REFIID id, void** object) noexcept {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    stay_loaded();
    try {
        return creatable_.create()->QueryInterface(id, object);
    } catch (...) {
        return report_current_exception(creatable_.table.name);
    }
}

HRESULT ClassFactory::LockServer(BOOL lock) noexcept {
    lock_module(lock != FALSE);
    return S_OK;
}

}  // namespace tavrix::com
