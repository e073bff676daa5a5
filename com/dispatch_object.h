#pragma once

#include <memory>

#include "com/class_table.h"
#include "com/unknown.h"
#include "ports/windows/com_pointer.h"

namespace tavrix::com {

/// A portable object as hosts see it: IDispatch over its class's table. The one place where C++
/// exceptions become automation errors.
class DispatchObject final : public Unknown<IDispatch, ISupportErrorInfo, IProvideClassInfo> {
  public:
    DispatchObject(const ClassTable& table, std::shared_ptr<void> target) noexcept
        : table_(table), target_(std::move(target)) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) noexcept override;
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) noexcept override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale,
                                          ITypeInfo** info) noexcept override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count,
                                            LCID locale, DISPID* ids) noexcept override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID reserved, LCID locale, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result,
                                     EXCEPINFO* information,
                                     UINT* argument_index) noexcept override;
    HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID id) noexcept override;

    HRESULT STDMETHODCALLTYPE GetClassInfo(ITypeInfo** info) noexcept override;

    /// The portable object behind `object`; empty when it is not one of the class `table` of this
    /// DLL.
    template <typename Class>
    static std::shared_ptr<Class> target_of(IDispatch* object, const ClassTable& table) noexcept {
        return std::static_pointer_cast<Class>(find_target(object, table));
    }

  private:
    static std::shared_ptr<void> find_target(IDispatch* object, const ClassTable& table) noexcept;

    const ClassTable& table_;
    std::shared_ptr<void> target_;
};

/// `target` behind its class's table. `table` lives as long as the DLL; the caller makes sure that
/// it names the target's own class.
inline windows::ComPointer<IDispatch> make_object(const ClassTable& table,
                                                  std::shared_ptr<void> target) {
    return windows::ComPointer<IDispatch>::adopt(new DispatchObject(table, std::move(target)));
}

}  // namespace tavrix::com
