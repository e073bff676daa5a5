#include "tests/sandbox/contract.h"

#include <fstream>
#include <regex>

#include "sandbox/basics/clock.h"
#include "sandbox/basics/crypto.h"

namespace tavrix::sandbox::testing {
namespace {

/// Walks a value and its schema side by side.
class Judgement {
  public:
    explicit Judgement(const Json& document) : document_(document) {}

    std::vector<std::string> of(const Json& schema, const Json& value) {
        walk(schema, value, "");
        return problems_;
    }

  private:
    /// Follows references and merges what `allOf` combines.
    Json resolve(const Json& schema) const {
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

    void walk(const Json& unresolved, const Json& value, const std::string& where) {
        const Json schema = resolve(unresolved);
        // The service leaves members out rather than sending null, so null is wrong even where it
        // is allowed.
        const std::string type = schema.at("type");
        if (type == "integer" ? !value.is_number_integer() : type != value.type_name()) {
            problems_.push_back(where + ": not of type " + type);
            return;
        }
        const Json values = schema.value("enum", Json::array({value}));
        if (std::find(values.begin(), values.end(), value) == values.end())
            problems_.push_back(where + ": not one of the values");
        if (value.is_number() && schema.contains("minimum") && value < schema["minimum"])
            problems_.push_back(where + ": too small");
        if (value.is_string()) walk_text(schema, value, where);
        if (value.is_object() && schema.contains("properties")) walk_object(schema, value, where);
        if (value.is_array())
            for (std::size_t i = 0; i < value.size(); ++i)
                walk(schema.at("items"), value[i], where + "[" + std::to_string(i) + "]");
    }

    void walk_object(const Json& schema, const Json& value, const std::string& where) {
        const Json& properties = schema["properties"];
        for (const Json& name : schema.value("required", Json::array()))
            if (!value.contains(name.get<std::string>()))
                problems_.push_back(where + "." + name.get<std::string>() + ": missing");
        std::ptrdiff_t last_place = 0;
        for (const auto& [name, member] : value.items()) {
            const auto property = properties.find(name);
            if (property == properties.end()) {
                problems_.push_back(where + "." + name + ": unknown");
                continue;
            }
            const std::ptrdiff_t place = std::distance(properties.begin(), property);
            if (place < last_place) problems_.push_back(where + "." + name + ": out of order");
            last_place = place;
            walk(*property, member, where + "." + name);
        }
    }

    void walk_text(const Json& schema, const std::string& value, const std::string& where) {
        if (value.size() < schema.value("minLength", std::size_t(0)) ||
            value.size() > 4 * schema.value("maxLength", std::size_t(1'000'000)))
            problems_.push_back(where + ": wrong length");
        if (schema.contains("pattern") &&
            !std::regex_search(value, std::regex(schema["pattern"].get<std::string>())))
            problems_.push_back(where + ": does not match its pattern");
        const std::string format = schema.value("format", "");
        if (format == "date-time" && (value.size() < 20 || !parse_instant(value)))
            problems_.push_back(where + ": no date and time");
        if (format == "date" && (value.size() != 10 || !parse_instant(value)))
            problems_.push_back(where + ": no date");
        if (format == "byte" && !base64_decode(value)) problems_.push_back(where + ": no Base64");
    }

    const Json& document_;
    std::vector<std::string> problems_;
};

}  // namespace

Contract::Contract(const std::string& folder)
    : document_(Json::parse(std::ifstream(folder + "/open-api.json"))) {}

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
    return Judgement(document_).of(answer["content"][type].at("schema"), body);
}

std::vector<std::string> Contract::judge_request(const std::string& method, const std::string& path,
                                                 const Json& body) const {
    const Json::json_pointer request = Json::json_pointer("/paths") / path / method /
                                       "requestBody" / "content" / "application/json";
    if (!document_.contains(request)) return {method + " " + path + " takes no body"};
    return Judgement(document_).of(document_.at(request).at("schema"), body);
}

}  // namespace tavrix::sandbox::testing
