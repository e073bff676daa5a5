// Judging requests and answers by the published interface (OpenAPI 3).
#pragma once

#include <map>
#include <string>
#include <vector>

#include "sandbox/basics/json.h"

namespace tavrix::sandbox::testing {

/// An answer as it came.
struct SeenAnswer {
    int status = 0;
    std::string body;
    /// Names in lower case.
    std::map<std::string, std::string> headers;
};

/// One row of the table of errors that the interface publishes beside an operation.
struct PublishedError {
    int code = 0;
    std::string description;
    /// With `{...}` for what varies; empty when there are none.
    std::string details;

    std::string name() const { return std::to_string(code) + " " + details; }
    /// \param error in either format.
    bool allows(const Json& error) const;
};

class Contract {
  public:
    /// Reads open-api.json of a folder.
    explicit Contract(const std::string& folder);

    /// The path as the interface writes it. \param pattern of a route, with `{}` for each
    /// parameter.
    std::string path_of(std::string_view pattern) const;

    /// What is wrong with an answer: status, content type, headers; missing, unknown or misplaced
    /// members, wrong types, values outside their bounds; codes and texts that are not published.
    /// Empty when it agrees. \param path as the interface writes it, with `{...}`.
    std::vector<std::string> judge(const std::string& method, const std::string& path,
                                   const SeenAnswer& seen) const;

    /// The errors that an operation may answer 400 with.
    std::vector<PublishedError> errors(const std::string& method, const std::string& path) const;

    /// The same as judge() of a request's body.
    std::vector<std::string> judge_request(const std::string& method, const std::string& path,
                                           const Json& body) const;

  private:
    /// The texts of an error that stand in descriptions and examples.
    std::vector<std::string> judge_error(int status, const Json& reference, const Json& body) const;

    Json document_;
};

/// The errors in a body of either format.
std::vector<Json> errors_in(const Json& body);

}  // namespace tavrix::sandbox::testing
