#pragma once

#include <memory>
#include <string>

#include "frame/settings.h"
#include "ksef/ksef_comm.h"

namespace tavrix::cli {

/// The native adapters, made once for a run. Settings come from the file that $TAVRIX_SETTINGS
/// names.
class PortsBundle {
  public:
    PortsBundle();
    /// What KseF_comm needs; valid as long as this object.
    ksef::KsefPorts for_ksef();
    ports::CodePage& code_page() { return *code_page_; }
    ports::Crypto& crypto() { return *crypto_; }
    ports::DataFiles& files() { return *files_; }

  private:
    frame::Settings settings_;
    std::unique_ptr<ports::Crypto> crypto_;
    std::unique_ptr<ports::Clock> clock_;
    std::unique_ptr<ports::Xml> xml_;
    std::unique_ptr<ports::CodePage> code_page_;
    std::unique_ptr<ports::DataFiles> files_;
};

/// The number of an environment that the command line names: prod, demo or test, or the number.
std::int32_t environment_number(const std::string& name);

/// A file's bytes. Throws CLI::ValidationError when it cannot be read.
base::Bytes read_file(const std::string& path);

/// The token from --token, from --token-file or from $TAVRIX_TOKEN, which other users of the
/// machine do not see in the list of processes. Throws CLI::RequiredError when there is none.
base::SecretText token_from(const std::string& token, const std::string& token_file);

}  // namespace tavrix::cli
