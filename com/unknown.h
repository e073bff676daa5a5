#pragma once

#include <atomic>
#include <tuple>

#include "com/module.h"
#include "windows/automation.h"

namespace tavrix::com {

// The system's interfaces have no virtual destructor: objects end in Release and nowhere else.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// Reference counting and QueryInterface for a class that implements `Interfaces`, the first of
/// which is its identity. A new object has one reference, its creator's; it keeps the DLL loaded
/// while it lives.
template <typename... Interfaces>
class Unknown : public Interfaces... {
  public:
    Unknown(const Unknown&) = delete;
    Unknown& operator=(const Unknown&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) noexcept override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (id == IID_IUnknown) {
            using Identity = std::tuple_element_t<0, std::tuple<Interfaces...>>;
            *object = static_cast<Identity*>(this);
        } else {
            ((id == __uuidof(Interfaces) ? (*object = static_cast<Interfaces*>(this), true)
                                         : false) ||
             ...);
        }
        if (*object == nullptr) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() noexcept override {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }

  protected:
    Unknown() noexcept = default;
    virtual ~Unknown() = default;

  private:
    std::atomic<ULONG> references_ = 1;
    ModuleReference module_;
};

#pragma GCC diagnostic pop

}  // namespace tavrix::com
