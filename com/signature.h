#pragma once

#include <algorithm>
#include <concepts>
#include <tuple>
#include <utility>

#include "com/class_table.h"
#include "com/parameter.h"

namespace tavrix::com {

/// A member of the portable class `Class`, so that a table cannot mix two classes.
template <typename Class>
struct MemberOf {
    Member member;
};

/// An argument's name and how it is declared.
struct ArgumentName {
    base::TextView name;
    bool by_reference;
};
consteval ArgumentName by_value(base::TextView name) {
    return {name, false};
}
consteval ArgumentName by_reference(base::TextView name) {
    return {name, true};
}

namespace detail {

template <typename T>
struct Signature;

template <typename R, typename C, typename... P>
struct Signature<R (C::*)(P...)> {
    using Result = R;
    using Class = C;
    static constexpr std::size_t count = sizeof...(P);

    template <auto Method>
    static windows::Variant call(void* target, const CallArguments& arguments) {
        return call_with<Method>(target, arguments, std::index_sequence_for<P...>());
    }

    static constexpr std::array<ArgumentRow, max_arguments> describe(
        const std::array<ArgumentName, sizeof...(P)>& names) {
        static_assert(sizeof...(P) <= max_arguments);
        std::array<ArgumentRow, max_arguments> rows{};
        std::size_t i = 0;
        ((rows[i] = {names[i].name, Parameter<P>::type, names[i].by_reference,
                     Parameter<P>::optional},
          check_reference<P>(names[i]), ++i),
         ...);
        return rows;
    }
    static constexpr std::size_t required =
        (std::size_t{0} + ... + (Parameter<P>::optional ? std::size_t{0} : std::size_t{1}));

  private:
    template <typename Parameter_>
    static constexpr void check_reference(const ArgumentName& name) {
        if (Parameter<Parameter_>::writes && !name.by_reference) {
            throw "a parameter that the method may change is declared by reference";
        }
    }

    template <auto Method, std::size_t... I>
    static windows::Variant call_with(void* target, [[maybe_unused]] const CallArguments& arguments,
                                      std::index_sequence<I...>) {
        // Filled one after the other, so that the first argument that will not do is the one
        // reported.
        std::tuple<std::optional<Parameter<P>>...> parameters;
        (std::get<I>(parameters).emplace(arguments.incoming(I)), ...);
        C& object = *static_cast<C*>(target);
        const auto write_back = [&] { (std::get<I>(parameters)->write_back(), ...); };
        windows::Variant result;
        try {
            if constexpr (std::is_void_v<R>) {
                (object.*Method)(std::get<I>(parameters)->get()...);
            } else {
                result = Codec<std::remove_cvref_t<R>>::write(
                    (object.*Method)(std::get<I>(parameters)->get()...));
            }
        } catch (...) {
            // What a method did to the host's variables before it failed stays done; why it failed
            // matters more than a variable that does not take its value.
            try {
                write_back();
            } catch (...) {
            }
            throw;
        }
        write_back();
        return result;
    }
};

template <typename R, typename C, typename... P>
struct Signature<R (C::*)(P...) const> : Signature<R (C::*)(P...)> {};
template <typename R, typename C, typename... P>
struct Signature<R (C::*)(P...) noexcept> : Signature<R (C::*)(P...)> {};
template <typename R, typename C, typename... P>
struct Signature<R (C::*)(P...) const noexcept> : Signature<R (C::*)(P...)> {};

template <typename R>
constexpr VARTYPE result_type() {
    if constexpr (std::is_void_v<R>) {
        return VT_EMPTY;
    } else {
        return Codec<std::remove_cvref_t<R>>::type;
    }
}

template <typename R>
constexpr base::TextView result_class() {
    if constexpr (requires { Codec<std::remove_cvref_t<R>>::class_name; }) {
        return Codec<std::remove_cvref_t<R>>::class_name;
    } else {
        return {};
    }
}

template <auto Method>
constexpr Member describe(DISPID id, base::TextView name, base::TextView help,
                          const auto&... argument_names) {
    using S = Signature<decltype(Method)>;
    static_assert(sizeof...(argument_names) == S::count, "every argument has a name");
    Member member;
    member.id = id;
    member.name = name;
    member.help = help;
    member.arguments = S::describe({argument_names...});
    member.argument_count = S::count;
    member.required_count = S::required;
    member.result = result_type<typename S::Result>();
    member.result_class = result_class<typename S::Result>();
    return member;
}

}  // namespace detail

/// A method of the class, its argument and result types taken from the signature.
template <auto Method>
consteval auto method(DISPID id, base::TextView name, base::TextView help,
                      const std::same_as<ArgumentName> auto&... arguments) {
    using S = detail::Signature<decltype(Method)>;
    MemberOf<typename S::Class> row{detail::describe<Method>(id, name, help, arguments...)};
    row.member.method = &S::template call<Method>;
    return row;
}

/// An event of the listener that `Listener` is a method of: what is raised, not called. Declare an
/// array by reference: VB6 knows no other.
template <auto Listener>
consteval auto event(DISPID id, base::TextView name, base::TextView help,
                     const std::same_as<ArgumentName> auto&... arguments) {
    using S = detail::Signature<decltype(Listener)>;
    static_assert(std::is_void_v<typename S::Result>, "handlers answer through their arguments");
    return MemberOf<typename S::Class>{detail::describe<Listener>(id, name, help, arguments...)};
}

/// A property that is only read.
template <auto Get>
consteval auto read_only(DISPID id, base::TextView name, base::TextView help,
                         const std::same_as<ArgumentName> auto&... arguments) {
    using S = detail::Signature<decltype(Get)>;
    MemberOf<typename S::Class> row{detail::describe<Get>(id, name, help, arguments...)};
    row.member.get = &S::template call<Get>;
    return row;
}

/// A property that is read with `Get` and written with `Let`, which takes the new value behind the
/// arguments.
template <auto Get, auto Let>
consteval auto property(DISPID id, base::TextView name, base::TextView help,
                        const std::same_as<ArgumentName> auto&... arguments) {
    using S = detail::Signature<decltype(Let)>;
    static_assert(S::count == sizeof...(arguments) + 1, "one new value behind the arguments");
    auto row = read_only<Get>(id, name, help, arguments...);
    row.member.let = &S::template call<Let>;
    row.member.let_type = row.member.result;
    return row;
}

/// The member is there for hosts that bind to it; its work is still to be done.
template <typename Class>
consteval MemberOf<Class> pending(MemberOf<Class> row) {
    row.member.pending = true;
    return row;
}

/// True when two of the names are one to hosts, who may write them in any letter case.
template <typename Row>
constexpr bool has_twins(std::span<const Row> rows) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
        for (std::size_t k = i + 1; k < rows.size(); ++k) {
            if (base::equal_case_blind(rows[i].name, rows[k].name)) return true;
        }
    }
    return false;
}

/// The members of one class in the order of their DISPIDs, which are hence unique.
template <typename Class, std::same_as<MemberOf<Class>>... More>
consteval auto members(const MemberOf<Class>& first, const More&... more) {
    const std::array<Member, 1 + sizeof...(More)> rows{first.member, more.member...};
    for (std::size_t i = 1; i < rows.size(); ++i) {
        if (rows[i].id <= rows[i - 1].id) throw "DISPIDs ascend";
    }
    if (has_twins(std::span<const Member>(rows))) throw "names are unique";
    for (const Member& row : rows) {
        if (has_twins(std::span(row.arguments).first(row.argument_count))) {
            throw "an argument's name is unique in its member";
        }
    }
    return rows;
}

/// The row of that name, found when it is compiled.
template <std::size_t count>
consteval const Member* row_of(const std::array<Member, count>& rows, base::TextView name) {
    for (const Member& row : rows) {
        if (base::TextView(row.name) == name) return &row;
    }
    throw "no member of that name";
}

}  // namespace tavrix::com
