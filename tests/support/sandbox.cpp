#include "tests/support/sandbox.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>

#include "ports/portable/curl_http.h"

extern char** environ;

namespace tavrix::test {
namespace {

std::string read_line(int descriptor) {
    std::string line;
    for (char c = 0; read(descriptor, &c, 1) == 1 && c != '\n';) line += c;
    return line;
}

}  // namespace

Sandbox::Sandbox(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {TAVRIX_SANDBOX_PROGRAM, "--port", "0", "--quiet"});
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);

    int ends[2];
    if (pipe(ends) != 0) throw std::runtime_error("pipe");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, ends[0]);
    posix_spawn_file_actions_addclose(&actions, ends[1]);
    const int failure = posix_spawn(&pid_, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    const std::string line = failure == 0 ? read_line(ends[0]) : "";
    close(ends[0]);

    constexpr std::string_view greeting = "listening on ";
    if (!line.starts_with(greeting)) throw std::runtime_error("the sandbox did not start: " + line);
    origin_ = line.substr(greeting.size());
    if (const std::size_t blank = origin_.find(' '); blank != std::string::npos)
        origin_.erase(blank);

    ports::ConnectionSettings settings;
    settings.proxy = "direct";
    http_ = ports::make_curl_http(settings);
}

Sandbox::~Sandbox() {
    if (pid_ <= 0) return;
    kill(pid_, SIGTERM);
    waitpid(pid_, nullptr, 0);
}

std::string Sandbox::call(const std::string& method, const std::string& path,
                          const std::string& body) {
    const ports::HttpReply reply = http_->send(
        {method, base::SecretUtf8(origin_ + path), body, {{"Content-Type", "application/json"}}});
    std::string text(reply.body.view());
    if (!reply.completed || reply.status >= 300) {
        throw std::runtime_error("sandbox " + path + ": " + reply.error + text);
    }
    return text;
}

void Sandbox::fault(const Json& fault) {
    call("POST", "/sandbox/faults", fault.dump());
}

void Sandbox::reset() {
    call("POST", "/sandbox/reset");
}

Json Sandbox::state() {
    return Json::parse(call("GET", "/sandbox/state"));
}

std::vector<Json> Sandbox::requests(const std::string& step) {
    std::vector<Json> found;
    Json everything = state();
    for (Json& request : everything.at("requests")) {
        if (request.at("step") == step) found.push_back(std::move(request));
    }
    return found;
}

}  // namespace tavrix::test
