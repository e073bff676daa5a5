#include "cli/mail_output.h"

namespace tavrix::cli {

std::vector<std::string> files_of(const mail::CMessage& message) {
    std::vector<std::string> files;
    for (const base::Text& file : base::split(message.Files(), u';')) {
        if (!file.empty()) files.push_back(base::to_utf8(file));
    }
    return files;
}

}  // namespace tavrix::cli
