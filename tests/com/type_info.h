#pragma once

#include "tests/com/late_host.h"

namespace tavrix::test {

/// What the type library says of a type, as long as this lives.
struct TypeAttributes {
    explicit TypeAttributes(ITypeInfo* of);
    ~TypeAttributes();
    TypeAttributes(const TypeAttributes&) = delete;
    TypeAttributes& operator=(const TypeAttributes&) = delete;
    const TYPEATTR* operator->() const noexcept { return attributes; }

    ITypeInfo* info;
    TYPEATTR* attributes = nullptr;
};

/// What the type library says of one function; a property that is read and written has two.
struct Function {
    Function(ITypeInfo* of, UINT index);
    ~Function();
    Function(const Function&) = delete;
    Function& operator=(const Function&) = delete;
    const FUNCDESC* operator->() const noexcept { return description; }

    /// The function's own name, then those of its arguments.
    std::vector<base::Text> names() const;
    /// VT_BYREF added for a pointer, VT_ARRAY for a safe array.
    VARTYPE argument(int index) const;
    VARTYPE result() const;
    /// False for what every interface has from IUnknown and IDispatch.
    bool is_own() const;

    ITypeInfo* info;
    FUNCDESC* description = nullptr;
};

/// The interface that an object says it has; the test fails when it says nothing.
ComPointer<ITypeInfo> type_info(const ComPointer<IDispatch>& object);

base::Text name_of(ITypeInfo* info);
/// The help of a type or of one of its members.
base::Text help_of(ITypeInfo* info, MEMBERID member = MEMBERID_NIL);

}  // namespace tavrix::test
