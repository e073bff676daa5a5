#pragma once

#include <map>
#include <set>
#include <vector>

#include "base/error.h"
#include "ports/files.h"
#include "ports/shell.h"

namespace tavrix::test {

/// A desktop and its disk; remembers in `done` what happened, in order.
class FakeDesktop final : public ports::Shell, public ports::Files {
  public:
    std::set<base::Text> files;
    /// Values of environment variables, by "%NAME%".
    std::map<base::Text, base::Text> environment;
    std::vector<base::Text> done;
    /// The help number of the last message.
    std::int32_t message_help = 0;
    bool can_start = true;

    bool is_file(base::TextView path) override { return files.contains(base::Text(path)); }
    void copy(base::TextView from, base::TextView to) override {
        done.push_back(u"copy " + base::Text(from));
        files.insert(base::Text(to));
    }
    void append(base::TextView path, base::ByteView) override {
        done.push_back(u"append " + base::Text(path));
    }
    void invoke_verb(base::TextView folder, base::TextView item, base::TextView verb) override {
        done.push_back(base::Text(verb) + u" " + base::Text(folder) + u" " + base::Text(item));
        throw base::AutomationError(base::ErrorNumber::component_failed, u"", u"no such verb");
    }
    bool run_and_wait(base::TextView command_line, bool hidden) override {
        done.push_back((hidden ? u"run hidden " : u"run ") + base::Text(command_line));
        return can_start;
    }
    bool start(base::TextView path) override {
        done.push_back(u"start " + base::Text(path));
        return can_start;
    }
    base::Text expand(base::TextView text) override {
        base::Text expanded(text);
        for (const auto& [name, value] : environment) {
            expanded = base::replace_all(expanded, name, value);
        }
        return expanded;
    }
    void show_message(base::TextView text, std::int32_t help) override {
        message_help = help;
        done.push_back(u"message " + base::Text(text));
    }
};

}  // namespace tavrix::test
