#include "com/class_table.h"

namespace tavrix::com {

base::Text interface_name(const ClassTable& table) {
    return base::Text(u"_").append(table.name);
}

base::Text event_interface_name(const ClassTable& table) {
    return base::Text(u"__").append(table.name);
}

const Member* find_member(const ClassTable& table, base::TextView name) noexcept {
    for (const Member& member : table.members) {
        if (base::equal_case_blind(member.name, name)) return &member;
    }
    return nullptr;
}

const Member* find_member(const ClassTable& table, DISPID id) noexcept {
    for (const Member& member : table.members) {
        if (member.id == id) return &member;
    }
    return nullptr;
}

DISPID find_argument(const Member& member, base::TextView name) noexcept {
    for (std::size_t i = 0; i < member.argument_count; ++i) {
        if (base::equal_case_blind(member.arguments[i].name, name)) return static_cast<DISPID>(i);
    }
    return DISPID_UNKNOWN;
}

}  // namespace tavrix::com
