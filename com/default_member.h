#pragma once

#include "com/class_table.h"
#include "windows/automation.h"

namespace tavrix::com {

/// How a property gets a value or an object.
inline constexpr WORD put_flags = DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF;

// A host writes `recordset("name") = 1` and means recordset.Fields.Item("name").Value = 1:
// arguments or a new value that a member giving an object does not take belong to that object's own
// default member.

bool goes_to_default_member(const Member& member, WORD flags,
                            const DISPPARAMS& parameters) noexcept;

/// Reads the object that `member` of `object` gives and passes the rest of the call to its default
/// member.
HRESULT invoke_default_member(IDispatch& object, const Member& member, LCID locale, WORD flags,
                              const DISPPARAMS& parameters, VARIANT* result, EXCEPINFO* information,
                              UINT* argument_index);

}  // namespace tavrix::com
