#include "com/describe/reference_page.h"

#include "com/guid_text.h"

namespace tavrix::com {
namespace {

std::string type_name(VARTYPE type) {
    switch (type) {
        case VT_BSTR:
            return "String";
        case VT_I4:
            return "Long";
        case VT_I2:
            return "Integer";
        case VT_UI1:
            return "Byte";
        case VT_BOOL:
            return "Boolean";
        case VT_R8:
            return "Double";
        case VT_CY:
            return "Currency";
        case VT_DISPATCH:
            return "Object";
        case VT_VARIANT:
            return "Variant";
        default:
            return "?";
    }
}

// Arrays carry their brackets behind the argument's name, and behind a result's type.
std::string argument_text(const ArgumentRow& argument) {
    const bool array = (argument.type & VT_ARRAY) != 0;
    std::string text = argument.optional ? "Optional " : "";
    text += argument.by_reference ? "ByRef " : "ByVal ";
    text += base::to_utf8(argument.name) + (array ? "() As " : " As ");
    return text + type_name(static_cast<VARTYPE>(argument.type & ~VT_ARRAY));
}

std::string result_text(const Member& member) {
    if (!member.result_class.empty()) return " As " + base::to_utf8(member.result_class);
    const VARTYPE type = member.result;
    const bool array = (type & VT_ARRAY) != 0;
    return " As " + type_name(static_cast<VARTYPE>(type & ~VT_ARRAY)) + (array ? "()" : "");
}

std::string declaration(const Member& member) {
    std::string text;
    if (member.get != nullptr) {
        text = "Property ";
    } else if (member.method != nullptr) {
        text = member.result == VT_EMPTY ? "Sub " : "Function ";
    } else {
        text = "Event ";
    }
    text += base::to_utf8(member.name) + "(";
    for (std::size_t i = 0; i < member.argument_count; ++i) {
        if (i > 0) text += ", ";
        text += argument_text(member.arguments[i]);
    }
    text += ")";
    if (member.result != VT_EMPTY) text += result_text(member);
    if (member.get != nullptr && member.let == nullptr) text += " (read-only)";
    return text;
}

std::string row(const Member& member) {
    return "| " + std::to_string(member.id) + " | `" + declaration(member) + "` | " +
           base::to_utf8(member.help) + " | " + (member.pending ? "not yet" : "yes") + " |\n";
}

std::string class_section(const Server& server, const ClassTable& table) {
    std::string text = "\n## " + base::to_utf8(table.name) + "\n\n" + base::to_utf8(table.help) +
                       ". ProgID `" + base::to_utf8(server.library) + "." +
                       base::to_utf8(table.name) + "`, CLSID `" +
                       base::to_utf8(text_of(table.class_id)) + "`.\n\n" +
                       "| DISPID | member | what it does | works |\n|---|---|---|---|\n";
    for (const Member& member : table.members) text += row(member);
    if (table.events == nullptr) return text;
    text += "\nEvents of `" + base::to_utf8(event_interface_name(table)) + "`:\n\n" +
            "| DISPID | event | when it is raised | works |\n|---|---|---|---|\n";
    for (const Member& member : table.events->members) text += row(member);
    return text;
}

}  // namespace

std::string reference_page(const Server& server) {
    std::string text =
        "# The classes\n\n"
        "Written by the build from the same tables that answer the calls; a test compares it with "
        "them. Declarations are Visual\n"
        "Basic's; what a member does is said in Polish, as object browsers show it.\n\n"
        "A member whose column \"works\" says \"not yet\" can be bound and called: it answers with "
        "the value that it has for a\n"
        "failure, and does nothing else but what its row says.\n";
    for (const CreatableClass& creatable : server.classes) {
        text += class_section(server, creatable.table);
    }
    return text;
}

}  // namespace tavrix::com
