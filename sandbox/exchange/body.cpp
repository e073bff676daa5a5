#include "sandbox/exchange/body.h"

#include "sandbox/basics/crypto.h"

namespace tavrix::sandbox {
namespace {

std::string quoted(const char* name) {
    return std::string("'") + name + "'";
}

const Json& required(const Json& body, const char* name) {
    const Json* value = given(body, name);
    if (value == nullptr) throw invalid_input("Pole " + quoted(name) + " jest wymagane.");
    return *value;
}

}  // namespace

Refusal wrong_format(const char* name) {
    return invalid_input("Pole " + quoted(name) + " ma nieprawidłowy format.");
}

Refusal unknown_value(const char* name) {
    return invalid_input("Pole " + quoted(name) + " ma niedozwoloną wartość.");
}

const Json* given(const Json& body, const char* name) {
    const auto found = body.find(name);
    return found == body.end() || found->is_null() ? nullptr : &*found;
}

Json read_body(const Request& request) {
    auto body = read_json(request.body);
    if (!body || !body->is_object())
        throw invalid_input("Treść żądania nie jest poprawnym obiektem JSON.");
    return std::move(*body);
}

const Json& required_object(const Json& body, const char* name) {
    const Json& value = required(body, name);
    if (!value.is_object()) throw wrong_format(name);
    return value;
}

std::string required_text(const Json& body, const char* name) {
    const Json& value = required(body, name);
    if (!value.is_string()) throw wrong_format(name);
    if (value.get_ref<const std::string&>().empty())
        throw invalid_input("Pole " + quoted(name) + " jest wymagane.");
    return value.get<std::string>();
}

std::string optional_text(const Json& body, const char* name) {
    const Json* value = given(body, name);
    if (value == nullptr) return {};
    if (!value->is_string()) throw wrong_format(name);
    return value->get<std::string>();
}

bool optional_flag(const Json& body, const char* name) {
    const Json* value = given(body, name);
    if (value == nullptr) return false;
    if (!value->is_boolean()) throw wrong_format(name);
    return value->get<bool>();
}

std::int64_t required_count(const Json& body, const char* name) {
    const Json& value = required(body, name);
    const auto count = whole_number(value);
    if (!count) throw wrong_format(name);
    if (*count < 1) throw invalid_input("Pole " + quoted(name) + " musi być większe od zera.");
    return *count;
}

std::string required_bytes(const Json& body, const char* name) {
    const Json& value = required(body, name);
    if (!value.is_string()) throw wrong_format(name);
    auto bytes = base64_decode(value.get_ref<const std::string&>());
    if (!bytes || bytes->empty()) throw wrong_format(name);
    return std::move(*bytes);
}

std::string required_hash(const Json& body, const char* name) {
    if (required_bytes(body, name).size() != 32) throw wrong_format(name);
    return body[name].get<std::string>();
}

std::vector<std::string> text_list(const Json& body, const char* name) {
    const Json& value = required(body, name);
    if (!value.is_array()) throw wrong_format(name);
    std::vector<std::string> texts;
    for (const Json& item : value) {
        if (!item.is_string()) throw wrong_format(name);
        texts.push_back(item.get<std::string>());
    }
    return texts;
}

}  // namespace tavrix::sandbox
