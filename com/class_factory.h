#pragma once

#include "com/server.h"
#include "com/unknown.h"

namespace tavrix::com {

/// Creates the objects of one class; knows no aggregation.
class ClassFactory final : public Unknown<IClassFactory> {
  public:
    explicit ClassFactory(const CreatableClass& creatable) noexcept : creatable_(creatable) {}

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID id,
                                             void** object) noexcept override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) noexcept override;

  private:
    const CreatableClass& creatable_;
};

}  // namespace tavrix::com
