#pragma once

#include <fstream>
#include <iterator>
#include <map>

#include "mail/cmessage.h"
#include "ports/native/adapters.h"
#include "tests/support/fake_clock.h"
#include "tests/support/scratch_folder.h"

namespace tavrix::test {

/// Messages read into a folder that holds nothing else.
class ReadingBench {
  public:
    /// Lines as they travel.
    static std::string sent(std::string_view lines) {
        std::string out;
        for (const char c : lines) out += c == '\n' ? "\r\n" : std::string(1, c);
        return out;
    }
    mail::CMessage message() {
        return mail::CMessage(
            {*store_, clock, *code_page, trace_, system, [this] { return profile; }});
    }
    base::Text folder() const { return base::from_utf8((scratch_.path() / "in").string()) + u"\\"; }
    std::string below(const std::string& name) const {
        return (scratch_.path() / "in" / name).string();
    }
    /// Every file of the whole scratch folder, and what it holds.
    std::map<std::string, std::string> files() const {
        std::map<std::string, std::string> found;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(scratch_.path())) {
            if (!entry.is_regular_file()) continue;
            std::ifstream file(entry.path(), std::ios::binary);
            found[entry.path().lexically_relative(scratch_.path())] = {
                std::istreambuf_iterator<char>(file), {}};
        }
        return found;
    }

    FakeClock clock;
    base::Profile profile = base::Profile::classic;
    ports::SystemVersion system;
    std::unique_ptr<ports::CodePage> code_page = ports::make_native_code_page();

  private:
    ScratchFolder scratch_;
    std::unique_ptr<ports::FileStore> store_ = ports::make_native_file_store("");
    ports::NoTrace trace_;
};

}  // namespace tavrix::test
