#include "com/dispatch_object.h"

#include "com/call_arguments.h"
#include "com/default_member.h"
#include "com/error_bridge.h"
#include "com/type_library.h"
#include "windows/bstr.h"

namespace tavrix::com {
namespace {

base::TextView name_of(const OLECHAR* name) {
    return reinterpret_cast<const char16_t*>(name);
}

// What a member does under the flags of a call; null when it is not to be used so. A method is not
// a property, but script hosts read properties with the flag of methods, or with both.
Call select(const Member& member, WORD flags) noexcept {
    if ((flags & DISPATCH_PROPERTYPUT) != 0) return member.let;
    if ((flags & DISPATCH_PROPERTYPUTREF) != 0) {
        const bool holds_object = member.let_type == VT_DISPATCH || member.let_type == VT_VARIANT;
        return holds_object ? member.let : nullptr;
    }
    if ((flags & DISPATCH_METHOD) != 0 && member.method != nullptr) return member.method;
    return (flags & (DISPATCH_PROPERTYGET | DISPATCH_METHOD)) != 0 ? member.get : nullptr;
}

// An interface that the objects of this very copy of the code know and nobody else: its number is
// made anew in each process. Through a proxy every registered interface answers, and another copy's
// objects answer to the same registered ones; what stands behind either is laid out otherwise.
const GUID& own_objects_id() noexcept {
    static const GUID id = [] {
        GUID made{};
        CoCreateGuid(&made);
        return made;
    }();
    return id;
}

}  // namespace

DispatchObject::DispatchObject(const ClassTable& table, std::shared_ptr<void> target,
                               std::shared_ptr<EventSinks> sinks) noexcept
    : table_(table), target_(std::move(target)) {
    if (sinks) point_.emplace(*this, std::move(sinks));
}

HRESULT DispatchObject::QueryInterface(REFIID id, void** object) noexcept {
    if (object == nullptr) return E_POINTER;
    if (id == table_.interface_id) return Unknown::QueryInterface(IID_IDispatch, object);
    if (id == own_objects_id()) {
        *object = this;
        AddRef();
        return S_OK;
    }
    if (id == IID_IProvideClassInfo) {
        *object = static_cast<IProvideClassInfo*>(this);
        AddRef();
        return S_OK;
    }
    if (!point_ && (id == IID_IProvideClassInfo2 || id == IID_IConnectionPointContainer)) {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    return Unknown::QueryInterface(id, object);
}

std::shared_ptr<void> DispatchObject::find_target(IDispatch* object,
                                                  const ClassTable& table) noexcept {
    void* found = nullptr;
    if (object == nullptr || FAILED(object->QueryInterface(own_objects_id(), &found))) {
        return nullptr;
    }
    auto* const own = static_cast<DispatchObject*>(found);
    const auto reference = windows::ComPointer<IDispatch>::adopt(own);
    return &own->table_ == &table ? own->target_ : nullptr;
}

HRESULT DispatchObject::GetTypeInfoCount(UINT* count) noexcept {
    if (count == nullptr) return E_POINTER;
    *count = has_type_library() ? 1 : 0;
    return S_OK;
}

HRESULT DispatchObject::GetTypeInfo(UINT index, LCID, ITypeInfo** info) noexcept {
    if (info == nullptr) return E_POINTER;
    *info = index == 0 ? type_info_of(table_.interface_id).release() : nullptr;
    return *info != nullptr ? S_OK : DISP_E_BADINDEX;
}

HRESULT DispatchObject::GetClassInfo(ITypeInfo** info) noexcept {
    if (info == nullptr) return E_POINTER;
    *info = type_info_of(table_.class_id).release();
    return *info != nullptr ? S_OK : TYPE_E_ELEMENTNOTFOUND;
}

HRESULT DispatchObject::GetGUID(DWORD kind, GUID* id) noexcept {
    if (id == nullptr) return E_POINTER;
    const bool known = point_ && kind == GUIDKIND_DEFAULT_SOURCE_DISP_IID;
    *id = known ? point_->events_id() : GUID_NULL;
    return known ? S_OK : E_INVALIDARG;
}

HRESULT DispatchObject::EnumConnectionPoints(IEnumConnectionPoints** points) noexcept {
    if (points == nullptr) return E_POINTER;
    *points = nullptr;
    try {
        *points = enumerate(*point_).release();
        return S_OK;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

HRESULT DispatchObject::FindConnectionPoint(REFIID id, IConnectionPoint** point) noexcept {
    if (point == nullptr) return E_POINTER;
    *point = nullptr;
    if (id != point_->events_id()) return CONNECT_E_NOCONNECTION;
    *point = windows::ComPointer<IConnectionPoint>(&*point_).release();
    return S_OK;
}

HRESULT DispatchObject::GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID,
                                      DISPID* ids) noexcept {
    if (reserved != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
    if (names == nullptr || ids == nullptr || count == 0) return E_INVALIDARG;
    const Member* member = find_member(table_, name_of(names[0]));
    ids[0] = member != nullptr ? member->id : DISPID_UNKNOWN;
    HRESULT outcome = member != nullptr ? S_OK : DISP_E_UNKNOWNNAME;
    for (UINT i = 1; i < count; ++i) {
        ids[i] = member != nullptr ? find_argument(*member, name_of(names[i])) : DISPID_UNKNOWN;
        if (ids[i] == DISPID_UNKNOWN) outcome = DISP_E_UNKNOWNNAME;
    }
    return outcome;
}

HRESULT DispatchObject::Invoke(DISPID id, REFIID reserved, LCID locale, WORD flags,
                               DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* information,
                               UINT* argument_index) noexcept {
    if (reserved != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
    if (parameters == nullptr) return E_INVALIDARG;
    // A call may end with the host giving up its last reference.
    const windows::ComPointer<IDispatch> alive(this);
    try {
        const Member* member = find_member(table_, id);
        if (member == nullptr) return DISP_E_MEMBERNOTFOUND;
        if (goes_to_default_member(*member, flags, *parameters)) {
            return invoke_default_member(*this, *member, locale, flags, *parameters, result,
                                         information, argument_index);
        }
        const Call call = select(*member, flags);
        if (call == nullptr) return DISP_E_MEMBERNOTFOUND;
        const CallArguments arguments(*member, *parameters, locale, (flags & put_flags) != 0);
        windows::Variant value = call(target_.get(), arguments);
        if (result != nullptr) *result = value.release();
        return S_OK;
    } catch (...) {
        return report_current_exception(table_.name, information, argument_index);
    }
}

HRESULT DispatchObject::InterfaceSupportsErrorInfo(REFIID id) noexcept {
    return id == IID_IDispatch || id == table_.interface_id ? S_OK : S_FALSE;
}

}  // namespace tavrix::com
