#include "ports/windows/ado_row.h"

#include "base/error.h"
#include "base/value.h"
#include "ports/windows/ado_constants.h"
#include "windows/failure.h"
#include "windows/variant_value.h"

namespace tavrix::windows {
namespace {

// Numbers of the ADO type library.
constexpr std::int32_t input = 1;             // adParamInput
constexpr std::int32_t double_type = 5;       // adDouble
constexpr std::int32_t integer_type = 3;      // adInteger
constexpr std::int32_t boolean_type = 11;     // adBoolean
constexpr std::int32_t time_type = 135;       // adDBTimeStamp
constexpr std::int32_t text_type = 202;       // adVarWChar
constexpr std::int32_t long_text_type = 203;  // adLongVarWChar
constexpr std::int32_t binary_type = 205;     // adLongVarBinary

constexpr std::size_t longest_text = 4000;  // of an nvarchar that is not long

// The value of one of ADO's dynamic properties; null where the provider has no such property.
base::Value property_of(const LateBound& object, base::TextView name) {
    try {
        return value_of(object.object(u"Properties").object(u"Item", name).get(u"Value").get());
    } catch (const base::AutomationError&) {
        return {};
    }
}

std::int32_t count_of(const LateBound& collection) {
    const base::Value count = value_of(collection.get(u"Count").get());
    const auto* number = std::get_if<std::int64_t>(&count);
    return number == nullptr ? 0 : static_cast<std::int32_t>(*number);
}

// Decimals and currencies travel as texts with a decimal point: as numbers they would want the
// column's precision and scale, and the server reads such a text alike under every setting.
Variant as_text(const VARIANT& value) {
    Variant text;
    check(VariantChangeTypeEx(text.address(), const_cast<VARIANT*>(&value), LOCALE_INVARIANT,
                              VARIANT_NOUSEROVERRIDE, VT_BSTR),
          u"ADODB.Parameter");
    return text;
}

std::int32_t type_of(const VARIANT& value) {
    switch (value.vt) {
        case VT_BOOL:
            return boolean_type;
        case VT_UI1:
        case VT_I2:
        case VT_I4:
            return integer_type;
        case VT_R4:
        case VT_R8:
            return double_type;
        case VT_DATE:
            return time_type;
        case VT_ARRAY | VT_UI1:
            return binary_type;
        case VT_BSTR:
            return view_of(value.bstrVal).size() > longest_text ? long_text_type : text_type;
        default:
            return text_type;
    }
}

LateBound make_parameter(const LateBound& command, const VARIANT& assigned) {
    const std::int32_t type = type_of(assigned);
    const bool is_text = type == text_type || type == long_text_type;
    const Variant value = is_text && assigned.vt != VT_NULL && assigned.vt != VT_EMPTY
                              ? as_text(assigned)
                              : Variant::copy_of(assigned);
    std::size_t size = 1;
    if (value.type() == VT_BSTR) size = std::max(size, view_of(value.get().bstrVal).size());
    if (type == binary_type) size = std::max(size, element_count(value.get().parray));
    return LateBound(
        object_of(command
                      .call(u"CreateParameter", u"", type, input, static_cast<std::int32_t>(size),
                            Variant::copy_of(value.get()))
                      .get()));
}

}  // namespace

bool finds_rows_by_key(const LateBound& recordset,
                       const std::optional<ports::tsql::SingleRow>& row) {
    // Key columns that the query does not name, which the provider then reads beside the others.
    const base::Value hidden = property_of(recordset, u"Hidden Columns");
    if (const auto* number = std::get_if<std::int64_t>(&hidden); number != nullptr && *number > 0)
        return true;
    const LateBound fields = recordset.object(u"Fields");
    const std::int32_t count = count_of(fields);
    std::int32_t keys = 0;
    bool own = !row;
    for (std::int32_t i = 0; i < count; ++i) {
        const LateBound field = fields.object(u"Item", i);
        if (property_of(field, u"KEYCOLUMN") != base::Value(true)) continue;
        ++keys;
        const base::Value name = value_of(field.get(u"Name").get());
        const auto* text = std::get_if<base::Text>(&name);
        own = own || (text != nullptr && base::equal_case_blind(*text, row->column));
    }
    // All of them is what a provider says that knows of no key.
    return own && keys > 0 && keys < count;
}

void update_row(const LateBound& connection, const ports::tsql::SingleRow& row,
                const std::vector<AssignedField>& fields) {
    const LateBound command = LateBound::create(u"ADODB.Command");
    command.put_reference(u"ActiveConnection", connection);
    command.put(u"CommandTimeout", connection.get(u"CommandTimeout"));
    base::Text assignments;
    for (const AssignedField& field : fields) {
        if (!assignments.empty()) assignments += u',';
        assignments += u'[' + base::replace_all(field.name, u"]", u"]]") + u"]=?";
    }
    command.put(u"CommandType", command_text);
    command.put(u"CommandText",
                u"update " + row.table + u" set " + assignments + u" where " + row.condition);
    const LateBound parameters = command.object(u"Parameters");
    for (const AssignedField& field : fields) {
        const LateBound parameter = make_parameter(command, field.value.get());
        parameters.call(u"Append", ComPointer<IDispatch>(parameter.dispatch()));
    }
    command.call(u"Execute", Variant::missing(), Variant::missing(), command_text | no_records);
}

}  // namespace tavrix::windows
