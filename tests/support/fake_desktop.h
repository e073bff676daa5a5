#pragma once

#include <set>
#include <vector>

#include "base/error.h"
#include "ports/files.h"
#include "ports/shell.h"

namespace tavrix::test {

/// A desktop and its disk; remembers in `done` what happened, in order. Its one environment
/// variable is %Tools%.
class FakeDesktop final : public ports::Shell, public ports::Files {
  public:
    std::set<base::Text> files;
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
        return base::replace_all(text, u"%Tools%", u"E:\\Tools");
    }
    void show_message(base::TextView text, std::int32_t help) override {
        message_help = help;
        done.push_back(u"message " + base::Text(text));
    }
};

}  // namespace tavrix::test
