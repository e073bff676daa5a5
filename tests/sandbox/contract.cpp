#include "tests/sandbox/contract.h"

#include <algorithm>
#include <fstream>
#include <regex>
#include <sstream>

#include "sandbox/basics/clock.h"
#include "sandbox/basics/crypto.h"
#include "sandbox/basics/text.h"

namespace tavrix::sandbox::testing {
namespace {

/// The rows of the tables in a description, cells trimmed.
std::vector<std::vector<std::string>> table_rows(const std::string& description) {
    std::vector<std::vector<std::string>> rows;
    std::istringstream lines(description);
    for (std::string line; std::getline(lines, line);) {
        line = std::regex_replace(line, std::regex("^\\s+|\\s+$"), "");
        if (!line.starts_with("|")) continue;
        if (!line.ends_with("|")) line += "|";
        std::vector<std::string>& cells = rows.emplace_back();
        std::istringstream text(line.substr(1));
        for (std::string cell; std::getline(text, cell, '|');)
            cells.push_back(std::regex_replace(cell, std::regex("^\\s+|\\s+$"), ""));
    }
    return rows;
}

/// True when a text is a published one, in which `{...}` stands for what varies.
bool fits(const std::string& published, const std::string& text) {
    const std::string escaped =
        std::regex_replace(published, std::regex(R"([.*+?()\[\]\\^$|])"), "\\$&");
    return std::regex_match(
        text, std::regex(std::regex_replace(escaped, std::regex("\\{[^}]*\\}"), ".+")));
}

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
        if (value.is_object()) walk_table(schema, value, where);
        if (value.is_string()) walk_text(schema, value, where);
        if (value.is_object() && schema.contains("properties")) walk_object(schema, value, where);
        if (value.is_object() && schema.value("additionalProperties", Json()).contains("type"))
            for (const auto& [name, member] : value.items())
                walk(schema["additionalProperties"], member, where + "." + name);
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
        const std::size_t length = character_count(value);
        if (length < schema.value("minLength", std::size_t(0)) ||
            length > schema.value("maxLength", std::size_t(1'000'000)))
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
        if (format == "uri" && !value.starts_with("http://"))
            problems_.push_back(where + ": no URI");
    }

    /// A status whose codes and texts the description lists.
    void walk_table(const Json& schema, const Json& value, const std::string& where) {
        const std::string description = schema.value("description", "");
        if (!value.contains("code") || description.find("| Code |") == std::string::npos) return;
        const std::string code = value["code"].dump(), text = value.value("description", "");
        const std::string detail = value.value(Json::json_pointer("/details/0"), "-");
        for (const auto& row : table_rows(description))
            if (row.size() >= 3 && row[0] == code && fits(row[1], text) &&
                (row[2] == "-" || row[2] == detail))
                return;
        problems_.push_back(where + ": a status that is not published");
    }

    const Json& document_;
    std::vector<std::string> problems_;
};

}  // namespace

Contract::Contract(const std::string& folder)
    : document_(Json::parse(std::ifstream(folder + "/open-api.json"))) {}

bool PublishedError::allows(const Json& error) const {
    const bool as_problem = error.contains("code");
    const auto value = [&](const char* problem, const char* plain) {
        return error.value(as_problem ? problem : plain, Json());
    };
    if (value("code", "exceptionCode") != code ||
        value("description", "exceptionDescription") != description)
        return false;
    const Json texts = error.value("details", Json::array());
    if (details.empty()) return texts.empty();
    // What an "Informacja" says is not laid down.
    return texts.size() == 1 &&
           (details.starts_with("Informacja") || fits(details, texts[0].get<std::string>()));
}

std::vector<Json> errors_in(const Json& body) {
    const Json list =
        body.contains("errors")
            ? body["errors"]
            : body.value(Json::json_pointer("/exception/exceptionDetailList"), Json::array());
    return {list.begin(), list.end()};
}

std::string Contract::path_of(std::string_view pattern) const {
    for (const auto& [path, operations] : document_.at("paths").items())
        if (std::regex_replace(path, std::regex("\\{[^}]*\\}"), "{}") == "/" + std::string(pattern))
            return path;
    return "/" + std::string(pattern) + " is not published";
}

std::vector<PublishedError> Contract::errors(const std::string& method,
                                             const std::string& path) const {
    std::vector<PublishedError> errors;
    const Json& answer = document_.at("paths").at(path).at(method).at("responses").at("400");
    for (const auto& row : table_rows(answer.value("description", "")))
        if (const auto code = number_of<int>(row[0])) errors.push_back({*code, row[1], row[2]});
    return errors;
}

std::vector<std::string> Contract::judge(const std::string& method, const std::string& path,
                                         const SeenAnswer& seen) const {
    const Json::json_pointer answers =
        Json::json_pointer("/paths") / path / method / "responses" / std::to_string(seen.status);
    if (!document_.contains(answers))
        return {method + " " + path + " never answers " + std::to_string(seen.status)};
    const Json& answer = document_.at(answers);
    std::vector<std::string> problems;
    const Json headers = answer.value("headers", Json::object());
    for (const auto& [name, header] : headers.items())
        if (name != "X-System-Warning" && !seen.headers.contains(lower(name)))
            problems.push_back("no header " + name);

    const auto found = seen.headers.find("content-type");
    const std::string content_type = found == seen.headers.end() ? "" : found->second;
    const std::string type = content_type.substr(0, content_type.find(';'));
    if (!answer.contains("content")) {
        if (!type.empty() || !seen.body.empty()) problems.emplace_back("a body");
        return problems;
    }
    if (!answer["content"].contains(type)) {
        problems.push_back("unexpected content type " + content_type);
        return problems;
    }
    if (type == "application/xml") {
        if (content_type != "application/xml; charset=utf-8") problems.push_back(content_type);
        const auto hash = seen.headers.find("x-ms-meta-hash");
        if (hash != seen.headers.end() && hash->second != sha256_base64(seen.body))
            problems.emplace_back("the hash of another body");
        return problems;
    }
    const Json& schema = answer["content"][type].at("schema");
    const Json body = read_json(seen.body).value_or(Json());
    for (const auto& found_wrong :
         {Judgement(document_).of(schema, body), judge_error(seen.status, schema, body)})
        problems.insert(problems.end(), found_wrong.begin(), found_wrong.end());
    if (seen.status != 400) return problems;
    const auto published = errors(method, path);
    for (const Json& error : errors_in(body))
        if (std::none_of(published.begin(), published.end(),
                         [&](const PublishedError& it) { return it.allows(error); }))
            problems.push_back("an error that is not published: " + error.dump());
    if (errors_in(body).empty()) problems.emplace_back("no error");
    return problems;
}

std::vector<std::string> Contract::judge_error(int status, const Json& reference,
                                               const Json& body) const {
    std::vector<std::string> problems;
    if (status < 400 || !reference.contains("$ref")) return problems;
    const Json& schema =
        document_.at(Json::json_pointer(reference["$ref"].get<std::string>().substr(1)));
    // The descriptions of these members are their values.
    for (const char* name : {"title", "status"}) {
        const Json member = schema["properties"].value(name, Json::object());
        const std::string expected = member.value("description", "");
        if (body.contains(name) && member.value("type", "") != "object" &&
            (body[name].is_string() ? body[name].get<std::string>() : body[name].dump()) !=
                expected)
            problems.push_back(std::string(name) + " is not " + expected);
    }
    if (status == 401 && body.value("detail", "") != schema["example"]["detail"])
        problems.emplace_back("another detail");
    if (status == 429) {
        const std::string text = body.contains("detail")
                                     ? body.value("detail", "")
                                     : body.value(Json::json_pointer("/status/details/0"), "");
        if (!fits("Przekroczono limit {n} żądań na {window}. Spróbuj ponownie po {n} sekund{ach}.",
                  text))
            problems.push_back("another text: " + text);
    }
    if (status != 403) return problems;
    for (const auto& row : table_rows(schema["properties"]["reasonCode"].value("description", "")))
        if (row.size() >= 2 && row[0] == body.value("reasonCode", "") &&
            row[1] == body.value("detail", ""))
            return problems;
    problems.emplace_back("a reason that is not published");
    return problems;
}

std::vector<std::string> Contract::judge_request(const std::string& method, const std::string& path,
                                                 const Json& body) const {
    const Json::json_pointer request = Json::json_pointer("/paths") / path / method /
                                       "requestBody" / "content" / "application/json";
    if (!document_.contains(request)) return {method + " " + path + " takes no body"};
    return Judgement(document_).of(document_.at(request).at("schema"), body);
}

}  // namespace tavrix::sandbox::testing
