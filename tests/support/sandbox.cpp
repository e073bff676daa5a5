#include "tests/support/sandbox.h"

#include <csignal>
#include <stdexcept>

#include "ports/portable/curl_http.h"

namespace tavrix::test {
namespace {

std::string read_line(std::FILE* pipe) {
    std::string line;
    for (int c = 0; (c = std::fgetc(pipe)) != EOF && c != '\n';) line += static_cast<char>(c);
    return line;
}

}  // namespace

Sandbox::Sandbox(const std::string& arguments) {
    // The program takes the shell's place, and with it the number that the shell says. It ends with
    // the test also when that dies: whoever reads the test's output would wait for it otherwise.
    pipe_ = popen(
        ("echo $$; exec setpriv --pdeathsig TERM " TAVRIX_SANDBOX_PROGRAM " --port 0 --quiet " +
         arguments)
            .c_str(),
        "r");
    if (pipe_ == nullptr) throw std::runtime_error("popen");
    pid_ = std::stoi(read_line(pipe_));
    const std::string line = read_line(pipe_);
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
    kill(pid_, SIGTERM);
    pclose(pipe_);
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

void Sandbox::advance(std::chrono::milliseconds duration) {
    call("POST", "/sandbox/clock", Json{{"advance_ms", duration.count()}}.dump());
}

Json Sandbox::state() {
    Json state;
    for (int page = 0; state.is_null() || state.at("hasMore"); ++page) {
        Json next =
            Json::parse(call("GET", "/sandbox/state?pageSize=1000&page=" + std::to_string(page)));
        for (const char* list : {"authentications", "sessions", "invoices", "requests"}) {
            if (state.is_null()) break;
            next[list].insert(next[list].begin(), state[list].begin(), state[list].end());
        }
        state = std::move(next);
    }
    return state;
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
