#pragma once

#include "com/server.h"

namespace tavrix::com {

/// Writes what the classes' tables say as a type library (SYS_WIN32 or SYS_WIN64): a dispatch
/// interface `_Class` and a creatable class for each, and an interface `__Class` for the events of
/// those that raise any. Its locale is Polish, so that names keep
/// their Polish letters. Throws base::AutomationError.
void write_type_library(const Server& server, const base::Text& path);

/// True when the DLL carries its type library as a resource.
bool has_type_library() noexcept;

/// The description of an interface or class out of that resource; empty when there is none.
windows::ComPointer<ITypeInfo> type_info_of(const GUID& id) noexcept;

}  // namespace tavrix::com
