#pragma once

#include <memory>
#include <optional>

#include "com/connection_point.h"
#include "windows/com_pointer.h"

namespace tavrix::com {

/// A portable object as hosts see it: IDispatch over its class's table. The one place where C++
/// exceptions become automation errors. Only a class with events has a connection point, and says
/// through IProvideClassInfo2 what it connects.
class DispatchObject final
    : public Unknown<IDispatch, ISupportErrorInfo, IProvideClassInfo2, IConnectionPointContainer> {
  public:
    /// `sinks` are those that the target raises its events to; null for a class without.
    DispatchObject(const ClassTable& table, std::shared_ptr<void> target,
                   std::shared_ptr<EventSinks> sinks) noexcept;

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
    HRESULT STDMETHODCALLTYPE GetGUID(DWORD kind, GUID* id) noexcept override;
    HRESULT STDMETHODCALLTYPE
    EnumConnectionPoints(IEnumConnectionPoints** points) noexcept override;
    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID id,
                                                  IConnectionPoint** point) noexcept override;

    /// The portable object behind `object`; empty when it is not one of the class `table` of this
    /// very DLL, or stands in another apartment, where only its proxy can be called.
    template <typename Class>
    static std::shared_ptr<Class> target_of(IDispatch* object, const ClassTable& table) noexcept {
        return std::static_pointer_cast<Class>(find_target(object, table));
    }

  private:
    static std::shared_ptr<void> find_target(IDispatch* object, const ClassTable& table) noexcept;

    const ClassTable& table_;
    std::shared_ptr<void> target_;
    std::optional<ConnectionPoint> point_;
};

/// `target` behind its class's table. `table` lives as long as the DLL; the caller makes sure that
/// it names the target's own class, and that the target raises its events to `sinks`.
inline windows::ComPointer<IDispatch> make_object(const ClassTable& table,
                                                  std::shared_ptr<void> target,
                                                  std::shared_ptr<EventSinks> sinks = nullptr) {
    return windows::ComPointer<IDispatch>::adopt(
        new DispatchObject(table, std::move(target), std::move(sinks)));
}

}  // namespace tavrix::com
