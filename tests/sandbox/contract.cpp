#include "tests/sandbox/contract.h"

#include <fstream>
#include <regex>

#include "sandbox/basics/clock.h"
#include "sandbox/basics/crypto.h"

namespace tavrix::sandbox::testing {
namespace {

bool has_type(const Json& value, const std::string& type) {
    if (type == "string") return value.is_string();
    if (type == "integer") return value.is_number_integer();
    if (type == "number") return value.is_number();
    if (type == "boolean") return value.is_boolean();
    if (type == "array") return value.is_array();
    return type == "object" && value.is_object();
}

}  // namespace

Contract::Contract(const std::string& folder)
    : document_(Json::parse(std::ifstream(folder + "/open-api.json"))) {}

/// Follows references and merges what `allOf` combines.
Json Contract::resolve(const Json& schema) const {
    if (schema.contains("$ref"))
        return resolve(
            document_.at(Json::json_pointer(schema["$ref"].get<std::string>().substr(1))));
    if (!schema.contains("allOf")) return schema;
    Json merged = Json::object();
    for (const Json& part : schema["allOf"]) merged.update(resolve(part));
    for (const auto& [name, value] : schema.items())
        if (name != "allOf") merged[name] = value;
    return merged;
}

std::vector<std::string> Contract::judge(const std::string& method, const std::string& path,
                                         int status, const std::string& content_type,
                                         const Json& body) const {
    const Json::json_pointer answers =
        Json::json_pointer("/paths") / path / method / "responses" / std::to_string(status);
    if (!document_.contains(answers))
        return {method + " " + path + " never answers " + std::to_string(status)};
    const Json& answer = document_.at(answers);
    if (!answer.contains("content")) return {};
    const std::string type = content_type.substr(0, content_type.find(';'));
    if (!answer["content"].contains(type)) return {"unexpected content type " + content_type};
    std::vector<std::string> problems;
    walk(answer["content"][type].at("schema"), body, "", problems);
    return problems;
}

std::vector<std::string> Contract::judge_request(const std::string& method, const std::string& path,
                                                 const Json& body) const {
    const Json::json_pointer request = Json::json_pointer("/paths") / path / method /
                                       "requestBody" / "content" / "application/json";
    if (!document_.contains(request)) return {method + " " + path + " takes no body"};
    std::vector<std::string> problems;
    walk(document_.at(request).at("schema"), body, "", problems);
    return problems;
}

void Contract::walk(const Json& unresolved, const Json& value, const std::string& where,
                    std::vector<std::string>& problems) const {
    const Json schema = resolve(unresolved);
    // The service leaves members out rather than sending null, so null is wrong even where it is
    // allowed.
    if (!has_type(value, schema.at("type"))) {
        problems.push_back(where + ": not of type " + schema.at("type").get<std::string>());
        return;
    }
    if (schema.contains("enum") &&
        std::find(schema["enum"].begin(), schema["enum"].end(), value) == schema["enum"].end())
        problems.push_back(where + ": not one of the values");
    if (value.is_number() && schema.contains("minimum") && value < schema["minimum"])
        problems.push_back(where + ": too small");
    if (value.is_string()) walk_text(schema, value, where, problems);
    if (value.is_object()) walk_object(schema, value, where, problems);
    if (value.is_array())
        for (std::size_t i = 0; i < value.size(); ++i)
            walk(schema.at("items"), value[i], where + "[" + std::to_string(i) + "]", problems);
}

void Contract::walk_object(const Json& schema, const Json& value, const std::string& where,
                           std::vector<std::string>& problems) const {
    if (!schema.contains("properties")) return;
    const Json& properties = schema["properties"];
    for (const Json& name : schema.value("required", Json::array()))
        if (!value.contains(name.get<std::string>()))
            problems.push_back(where + "." + name.get<std::string>() + ": missing");
    std::ptrdiff_t last_place = 0;
    for (const auto& [name, member] : value.items()) {
        const auto property = properties.find(name);
        if (property == properties.end()) {
            problems.push_back(where + "." + name + ": unknown");
            continue;
        }
        const std::ptrdiff_t place = std::distance(properties.begin(), property);
        if (place < last_place) problems.push_back(where + "." + name + ": out of order");
        last_place = place;
        walk(*property, member, where + "." + name, problems);
    }
}

void Contract::walk_text(const Json& schema, const std::string& value, const std::string& where,
                         std::vector<std::string>& problems) const {
    if (value.size() < schema.value("minLength", std::size_t(0)) ||
        value.size() > 4 * schema.value("maxLength", std::size_t(1'000'000)))
        problems.push_back(where + ": wrong length");
    if (schema.contains("pattern") &&
        !std::regex_search(value, std::regex(schema["pattern"].get<std::string>())))
        problems.push_back(where + ": does not match its pattern");
    const std::string format = schema.value("format", "");
    if (format == "date-time" && (value.size() < 20 || !parse_instant(value)))
        problems.push_back(where + ": no date and time");
    if (format == "date" && (value.size() != 10 || !parse_instant(value)))
        problems.push_back(where + ": no date");
    if (format == "byte" && !base64_decode(value)) problems.push_back(where + ": no Base64");
}

}  // namespace tavrix::sandbox::testing
