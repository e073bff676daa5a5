// Judging bodies by the published interface (OpenAPI 3).
#pragma once

#include <string>
#include <vector>

#include "sandbox/basics/json.h"

namespace tavrix::sandbox::testing {

class Contract {
  public:
    /// Reads open-api.json of a folder.
    explicit Contract(const std::string& folder);

    /// What is wrong with an answer's body: missing, unknown or misplaced members, wrong types,
    /// values outside their bounds. Empty when it agrees. \param path as the interface writes it,
    /// with `{...}`.
    std::vector<std::string> judge(const std::string& method, const std::string& path, int status,
                                   const std::string& content_type, const Json& body) const;

    /// The same of a request's body.
    std::vector<std::string> judge_request(const std::string& method, const std::string& path,
                                           const Json& body) const;

  private:
    Json document_;
};

}  // namespace tavrix::sandbox::testing
