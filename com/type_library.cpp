#include "com/type_library.h"

#include <list>
#include <map>
#include <vector>

#include "com/module.h"
#include "windows/failure.h"

namespace tavrix::com {
namespace {

using windows::check;
using windows::ComPointer;
using windows::wide;

constexpr base::TextView source = u"type library";
constexpr LCID polish = MAKELCID(MAKELANGID(LANG_POLISH, SUBLANG_DEFAULT), SORT_DEFAULT);
constexpr SYSKIND this_system = sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32;

// The interface's functions point into these, hence the list: it never moves its elements.
using Types = std::list<TYPEDESC>;

OLECHAR* mutable_text(const base::Text& text) {
    return const_cast<OLECHAR*>(wide(text));
}

TYPEDESC type_of(VARTYPE type, Types& pointed_to) {
    TYPEDESC description{};
    description.vt = type == VT_EMPTY ? VARTYPE{VT_VOID} : type;
    if ((type & VT_ARRAY) != 0) {
        pointed_to.push_back(type_of(static_cast<VARTYPE>(type & ~VT_ARRAY), pointed_to));
        description.vt = VT_SAFEARRAY;
        description.lptdesc = &pointed_to.back();
    }
    return description;
}

TYPEDESC argument_type(const ArgumentRow& argument, Types& pointed_to) {
    const TYPEDESC type = type_of(argument.type, pointed_to);
    if (!argument.by_reference) return type;
    pointed_to.push_back(type);
    TYPEDESC reference{};
    reference.vt = VT_PTR;
    reference.lptdesc = &pointed_to.back();
    return reference;
}

/// The interfaces of the library by the names of their classes: a member may give an object of any
/// of them, whichever was written first.
using Interfaces = std::map<base::TextView, ComPointer<ICreateTypeInfo>>;

USHORT argument_flags(const ArgumentRow& argument) {
    USHORT flags = PARAMFLAG_FIN;
    if (argument.by_reference) flags |= PARAMFLAG_FOUT;
    if (argument.optional) flags |= PARAMFLAG_FOPT;
    return flags;
}

HREFTYPE refer_to(ICreateTypeInfo& from, ITypeInfo* to) {
    HREFTYPE reference = 0;
    check(from.AddRefTypeInfo(to, &reference), source);
    return reference;
}

class InterfaceWriter {
  public:
    InterfaceWriter(ICreateTypeInfo& info, const Member& member, const Interfaces& interfaces)
        : info_(info), member_(member), interfaces_(interfaces) {}

    /// Adds the member as one function, or a property as two; gives the next free index.
    UINT add(UINT index) {
        const bool is_event =
            member_.method == nullptr && member_.get == nullptr && member_.let == nullptr;
        if (member_.method != nullptr || is_event)
            add_function(index++, INVOKE_FUNC, member_.result);
        if (member_.get != nullptr) add_function(index++, INVOKE_PROPERTYGET, member_.result);
        if (member_.let != nullptr) add_function(index++, INVOKE_PROPERTYPUT, VT_EMPTY);
        return index;
    }

  private:
    void add_function(UINT index, INVOKEKIND kind, VARTYPE result) {
        Types types;
        std::vector<ELEMDESC> parameters;
        base::Text name(member_.name);
        std::vector<base::Text> argument_names;
        for (std::size_t i = 0; i < member_.argument_count; ++i) {
            const ArgumentRow& argument = member_.arguments[i];
            ELEMDESC& parameter = parameters.emplace_back();
            parameter.tdesc = argument_type(argument, types);
            parameter.paramdesc.wParamFlags = argument_flags(argument);
            argument_names.emplace_back(argument.name);
        }
        if (kind == INVOKE_PROPERTYPUT) {
            // The new value has no name.
            ELEMDESC& value = parameters.emplace_back();
            value.tdesc = type_of(member_.let_type, types);
            value.paramdesc.wParamFlags = PARAMFLAG_FIN;
        }

        FUNCDESC function{};
        function.memid = member_.id;
        function.lprgelemdescParam = parameters.data();
        function.funckind = FUNC_DISPATCH;
        function.invkind = kind;
        function.callconv = CC_STDCALL;
        function.cParams = static_cast<SHORT>(parameters.size());
        function.elemdescFunc.tdesc = result == VT_DISPATCH && !member_.result_class.empty()
                                          ? reference_to(member_.result_class, types)
                                          : type_of(result, types);
        check(info_.AddFuncDesc(index, &function), source);

        std::vector<LPOLESTR> names{mutable_text(name)};
        for (const base::Text& argument : argument_names) names.push_back(mutable_text(argument));
        check(info_.SetFuncAndParamNames(index, names.data(), static_cast<UINT>(names.size())),
              member_.name);
        base::Text help(member_.help);
        if (!help.empty()) check(info_.SetFuncDocString(index, mutable_text(help)), source);
    }

    // A pointer to the class's interface: compilers that know the library take it for the class.
    TYPEDESC reference_to(base::TextView class_name, Types& pointed_to) {
        const auto found = interfaces_.find(class_name);
        if (found == interfaces_.end()) check(TYPE_E_ELEMENTNOTFOUND, class_name);
        TYPEDESC& target = pointed_to.emplace_back();
        target.vt = VT_USERDEFINED;
        target.hreftype = refer_to(info_, found->second.query<ITypeInfo>().get());
        TYPEDESC reference{};
        reference.vt = VT_PTR;
        reference.lptdesc = &target;
        return reference;
    }

    ICreateTypeInfo& info_;
    const Member& member_;
    const Interfaces& interfaces_;
};

ComPointer<ICreateTypeInfo> create_type(ICreateTypeLib2& library, const base::Text& name,
                                        TYPEKIND kind, const GUID& id, UINT flags,
                                        base::TextView help) {
    ComPointer<ICreateTypeInfo> info;
    check(library.CreateTypeInfo(mutable_text(name), kind, info.out()), name);
    check(info->SetGuid(id), name);
    check(info->SetTypeFlags(flags), name);
    base::Text text(help);
    if (!text.empty()) check(info->SetDocString(mutable_text(text)), name);
    return info;
}

ComPointer<ITypeInfo> dispatch_type() {
    ComPointer<ITypeLib> standard;
    check(LoadTypeLibEx(L"stdole2.tlb", REGKIND_NONE, standard.out()), u"stdole2.tlb");
    ComPointer<ITypeInfo> dispatch;
    check(standard->GetTypeInfoOfGuid(IID_IDispatch, dispatch.out()), u"stdole2.tlb");
    return dispatch;
}

// Hosts' compilers take a name that an extensible interface lacks for one that is found at run
// time; ours is all there, so they may refuse it.
ComPointer<ICreateTypeInfo> create_interface(ICreateTypeLib2& library, const base::Text& name,
                                             const GUID& id, base::TextView help) {
    return create_type(library, name, TKIND_DISPATCH, id,
                       TYPEFLAG_FDISPATCHABLE | TYPEFLAG_FNONEXTENSIBLE, help);
}

ComPointer<ITypeInfo> fill_interface(const ComPointer<ICreateTypeInfo>& info,
                                     std::span<const Member> members, const Interfaces& interfaces,
                                     ITypeInfo* dispatch) {
    check(info->AddImplType(0, refer_to(*info.get(), dispatch)), source);
    UINT index = 0;
    for (const Member& member : members) {
        index = InterfaceWriter(*info.get(), member, interfaces).add(index);
    }
    check(info->LayOut(), source);
    return info.query<ITypeInfo>();
}

void add_class(ICreateTypeLib2& library, const ClassTable& table, const Interfaces& interfaces,
               ITypeInfo* dispatch) {
    const base::Text name(table.name);
    const auto members =
        fill_interface(interfaces.at(table.name), table.members, interfaces, dispatch);
    ComPointer<ITypeInfo> events;
    if (table.events != nullptr) {
        events = fill_interface(create_interface(library, event_interface_name(table),
                                                 table.events->interface_id, table.events->help),
                                table.events->members, interfaces, dispatch);
    }

    const auto creatable =
        create_type(library, name, TKIND_COCLASS, table.class_id, TYPEFLAG_FCANCREATE, table.help);
    check(creatable->AddImplType(0, refer_to(*creatable.get(), members.get())), name);
    check(creatable->SetImplTypeFlags(0, IMPLTYPEFLAG_FDEFAULT), name);
    if (events) {
        check(creatable->AddImplType(1, refer_to(*creatable.get(), events.get())), name);
        check(creatable->SetImplTypeFlags(1, IMPLTYPEFLAG_FDEFAULT | IMPLTYPEFLAG_FSOURCE), name);
    }
    check(creatable->LayOut(), name);
}

}  // namespace

void write_type_library(const Server& server, const base::Text& path) {
    ComPointer<ICreateTypeLib2> library;
    check(CreateTypeLib2(this_system, wide(path), library.out()), path);
    base::Text name(server.library);
    check(library->SetGuid(server.type_library_id), source);
    check(library->SetLcid(polish), source);
    check(library->SetVersion(static_cast<WORD>(server.version_major), 0), source);
    check(library->SetName(mutable_text(name)), source);
    check(library->SetDocString(mutable_text(name)), source);
    const ComPointer<ITypeInfo> dispatch = dispatch_type();
    Interfaces interfaces;
    for (const CreatableClass& creatable : server.classes) {
        const ClassTable& table = creatable.table;
        interfaces[table.name] =
            create_interface(*library.get(), interface_name(table), table.interface_id, table.help);
    }
    for (const CreatableClass& creatable : server.classes) {
        add_class(*library.get(), creatable.table, interfaces, dispatch.get());
    }
    check(library->SaveAllChanges(), path);
}

bool has_type_library() noexcept {
    return FindResourceW(module_handle(), MAKEINTRESOURCEW(1), L"TYPELIB") != nullptr;
}

ComPointer<ITypeInfo> type_info_of(const GUID& id) noexcept {
    ComPointer<ITypeInfo> info;
    if (!has_type_library()) return info;
    try {
        ComPointer<ITypeLib> library;
        if (SUCCEEDED(LoadTypeLibEx(wide(module_path()), REGKIND_NONE, library.out()))) {
            library->GetTypeInfoOfGuid(id, info.out());
        }
    } catch (const std::bad_alloc&) {
        // Nothing to describe the object with; it works without.
    }
    return info;
}

}  // namespace tavrix::com
