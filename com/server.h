#pragma once

#include <span>

#include "com/class_table.h"

namespace tavrix::com {

/// A class that hosts may create, and how.
struct CreatableClass {
    const ClassTable& table;
    /// Throws base::AutomationError when what the class needs cannot be set up.
    windows::ComPointer<IDispatch> (*create)();
};

/// What one DLL offers. ProgIDs are `library`.`class` and, naming the version,
/// `library`.`class`.`version_major`.
struct Server {
    base::TextView library;
    int version_major;
    std::span<const CreatableClass> classes;
    GUID type_library_id{};
    /// Stands in for a component of Windows and must never take that one's place on a real system.
    bool only_under_wine = false;
};

/// Each DLL that is built on this folder defines its own.
const Server& server() noexcept;

}  // namespace tavrix::com
