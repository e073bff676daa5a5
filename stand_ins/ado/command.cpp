#include "stand_ins/ado/command.h"

#include "com/dispatch_object.h"
#include "com/guid.h"
#include "com/signature.h"

namespace tavrix::ado {
namespace {

using com::by_reference;
using com::by_value;
using com::method;
using com::property;
using com::read_only;

constexpr base::TextView command_source = u"ADODB.Command";

constexpr auto parameters_members =
    com::members(method<&Parameters::append>(1, u"Append", u"Dodaje wartość.", by_value(u"Object")),
                 read_only<&Parameters::count>(2, u"Count", u"Liczba wartości."));

constexpr auto command_members = com::members(
    property<&Command::active_connection, &Command::set_active_connection>(1, u"ActiveConnection",
                                                                           u"Połączenie."),
    property<&Command::text, &Command::set_text>(2, u"CommandText", u"Polecenie SQL."),
    property<&Command::type, &Command::set_type>(3, u"CommandType", u"1 polecenie SQL."),
    property<&Command::timeout, &Command::set_timeout>(4, u"CommandTimeout",
                                                       u"Sekundy; bez znaczenia."),
    read_only<&Command::parameters>(5, u"Parameters", u"Wartości w kolejności znaków zapytania."),
    method<&Command::create_parameter>(6, u"CreateParameter", u"Nowa wartość.", by_value(u"Name"),
                                       by_value(u"Type"), by_value(u"Direction"), by_value(u"Size"),
                                       by_value(u"Value")),
    method<&Command::execute>(7, u"Execute", u"Wykonuje polecenie, które nie daje wierszy.",
                              by_reference(u"RecordsAffected"), by_value(u"Parameters"),
                              by_value(u"Options")));

constexpr com::ClassTable parameter_class = {
    .class_id = GUID{},
    .interface_id = com::guid("9A0B7C1E-52F3-4D0A-A6A5-0E3C7D4C9B63"),
    .name = u"Parameter",
    .help = u"Wartość polecenia",
    .members = {},
};

constexpr com::ClassTable parameters_class = {
    .class_id = GUID{},
    .interface_id = com::guid("C4D1F6A8-3E27-4A59-8B7D-1F20A9E6D074"),
    .name = u"Parameters",
    .help = u"Wartości polecenia",
    .members = parameters_members,
};

// Whether a parameter of the type takes the value as it is; ADO itself would convert or refuse it.
bool fits(std::int32_t type, const ports::Value& value) {
    if (std::holds_alternative<std::monostate>(value)) return true;
    switch (type) {
        case data_type::integer:
            return std::holds_alternative<std::int64_t>(value);
        case data_type::double_number:
            return std::holds_alternative<double>(value);
        case data_type::boolean:
            return std::holds_alternative<bool>(value);
        case data_type::date:
            return std::holds_alternative<base::DateTime>(value);
        case data_type::long_binary:
            return std::holds_alternative<base::Bytes>(value);
        default:
            return std::holds_alternative<base::Text>(value);
    }
}

bool is_text(std::int32_t type) {
    return type == data_type::text || type == data_type::long_text ||
           type == data_type::ansi_text || type == data_type::long_ansi;
}

}  // namespace

void Parameters::append(const windows::ComPointer<IDispatch>& object) {
    const auto parameter = com::DispatchObject::target_of<Parameter>(object.get(), parameter_class);
    if (!parameter || !fits(parameter->type, parameter->value)) {
        raise(AdoError::wrong_type, command_source);
    }
    if (is_text(parameter->type)) {
        if (parameter->size <= 0) raise(AdoError::bad_parameter, command_source);
        const auto* text = std::get_if<base::Text>(&parameter->value);
        if (text != nullptr && text->size() > static_cast<std::size_t>(parameter->size)) {
            raise(AdoError::wrong_type, command_source);
        }
    }
    values_.push_back(parameter->value);
}

windows::ComPointer<IDispatch> Command::active_connection() const {
    if (!connection_) return {};
    return com::make_object(connection_class, connection_);
}

void Command::set_active_connection(const windows::ComPointer<IDispatch>& connection) {
    connection_ = com::DispatchObject::target_of<Connection>(connection.get(), connection_class);
    if (!connection_) raise(AdoError::invalid_argument, command_source);
}

windows::ComPointer<IDispatch> Command::parameters() const {
    return com::make_object(parameters_class, parameters_);
}

windows::ComPointer<IDispatch> Command::create_parameter(const std::optional<base::Text>& name,
                                                         const std::optional<std::int32_t>& type,
                                                         const std::optional<std::int32_t>&,
                                                         const std::optional<std::int32_t>& size,
                                                         const std::optional<ports::Value>& value) {
    return com::make_object(
        parameter_class,
        std::make_shared<Parameter>(Parameter{name.value_or(base::Text()), type.value_or(0),
                                              size.value_or(0), value.value_or(ports::Value())}));
}

void Command::execute(std::optional<std::int32_t>& records_affected,
                      const std::optional<windows::Variant>&, const std::optional<std::int32_t>&) {
    if (!connection_) raise(AdoError::invalid_connection, command_source);
    const auto& database = connection_->database(AdoError::invalid_connection);
    connection_->recorded([&] {
        connection_->require_free();
        connection_->meet_trouble(command_source);
        const std::int64_t count = database->execute(text_, parameters_->values());
        records_affected = connection_->habits().row_count == RowCount::none
                               ? -1
                               : static_cast<std::int32_t>(count);
    });
}

constexpr com::ClassTable command_class = {
    .class_id = com::guid("5D3F6B21-7C84-4E0E-9A52-B8D90E1F4C37"),
    .interface_id = com::guid("E81A2D94-6F0B-4B7C-8C15-3A7E5F90D2B6"),
    .name = u"Command",
    .help = u"Tavrix: polecenie ADO dla pliku SQLite (do prób)",
    .members = command_members,
};

windows::ComPointer<IDispatch> create_command() {
    return com::make_object(command_class, std::make_shared<Command>());
}

}  // namespace tavrix::ado
