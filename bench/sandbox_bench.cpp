// Programs of the sandbox beside each other: how soon 200 clients get their first answer, requests
// and invoices per second, and memory. Usage: sandbox_bench PROGRAM...
#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <latch>
#include <thread>

#include "tests/sandbox/client.h"
#include "tests/sandbox/sample_invoice.h"

namespace {

using namespace tavrix::sandbox::testing;
using Time = std::chrono::steady_clock;

double ms_since(Time::time_point begin) {
    return std::chrono::duration<double, std::milli>(Time::now() - begin).count();
}

class Program {
  public:
    Program(const std::string& program, const std::string& arguments)
        : pipe_(popen(
              ("echo $$; exec " + program + " --port 0 --quiet --log-size 1 " + arguments).c_str(),
              "r")) {
        pid_ = std::stoi(read_line());
        const std::string greeting = read_line();
        port_ = std::stoi(greeting.substr(greeting.rfind(':') + 1));
    }
    ~Program() {
        kill(pid_, SIGTERM);
        pclose(pipe_);
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    int port() const { return port_; }
    /// \param name VmRSS, or VmHWM for the most there has been.
    long memory_kib(const std::string& name) const {
        std::ifstream status("/proc/" + std::to_string(pid_) + "/status");
        for (std::string line; std::getline(status, line);)
            if (line.starts_with(name)) return std::stol(line.substr(name.size() + 1));
        return 0;
    }

    /// Processor time so far; unlike the clock it does not suffer from what else the computer does.
    double processor_us() const {
        std::ifstream stat("/proc/" + std::to_string(pid_) + "/stat");
        std::string word;
        for (int field = 1; field < 14; ++field) stat >> word;
        double user = 0, system = 0;
        stat >> user >> system;
        return (user + system) * 1e6 / double(sysconf(_SC_CLK_TCK));
    }

  private:
    std::string read_line() {
        std::string line;
        for (int c = 0; (c = std::fgetc(pipe_)) != EOF && c != '\n';) line += static_cast<char>(c);
        return line;
    }

    std::FILE* pipe_;
    pid_t pid_ = 0;
    int port_ = 0;
};

/// A connection that costs the measuring side as little as can be.
class Wire {
  public:
    explicit Wire(int port) : socket_(socket(AF_INET, SOCK_STREAM, 0)) {
        const timeval patience{5, 0};
        const int yes = 1;
        setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        setsockopt(socket_, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
        setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address);
    }
    ~Wire() { close(socket_); }
    Wire(const Wire&) = delete;
    Wire& operator=(const Wire&) = delete;

    bool send(const std::string& text) {
        std::size_t at = 0;
        while (at < text.size()) {
            const auto count = ::send(socket_, text.data() + at, text.size() - at, MSG_NOSIGNAL);
            if (count <= 0) return false;
            at += static_cast<std::size_t>(count);
        }
        return true;
    }
    /// The status of the answer once it is whole; 0 when there is none within five seconds.
    int ask(const std::string& request) {
        std::string answer;
        std::size_t whole = std::string::npos;
        if (!send(request)) return 0;
        while (answer.size() < whole) {
            char buffer[16 * 1024];
            const auto count = recv(socket_, buffer, sizeof buffer, 0);
            if (count <= 0) return 0;
            answer.append(buffer, static_cast<std::size_t>(count));
            const std::size_t end = answer.find("\r\n\r\n");
            const std::size_t length = answer.find("Content-Length: ");
            if (end != std::string::npos && length != std::string::npos)
                whole = end + 4 + std::stoul(answer.substr(length + 16));
        }
        return std::stoi(answer.substr(9, 3));
    }

  private:
    int socket_;
};

const std::string certificates =
    "GET /v2/security/public-key-certificates HTTP/1.1\r\nHost: localhost\r\n";

void first_answers(const std::string& program, bool keep_alive) {
    const Program sandbox(program, "");
    constexpr int clients = 200;
    std::vector<double> times(clients);
    std::atomic<int> answered = 0;
    std::latch together(clients), finished(clients);
    std::vector<std::thread> threads;
    for (int i = 0; i < clients; ++i)
        threads.emplace_back([&, i] {
            together.arrive_and_wait();
            const auto begin = Time::now();
            {
                Wire wire(sandbox.port());
                const std::string end = keep_alive ? "\r\n" : "Connection: close\r\n\r\n";
                if (wire.ask(certificates + end) == 200) ++answered;
                times[static_cast<std::size_t>(i)] = ms_since(begin);
                if (keep_alive) finished.arrive_and_wait();
            }
        });
    for (std::thread& thread : threads) thread.join();
    std::sort(times.begin(), times.end());
    std::printf(
        "  200 clients %s keep-alive: %d answered, first answer %.0f ms median, %.0f most\n",
        keep_alive ? "with" : "without", answered.load(), times[clients / 2], times.back());
}

/// Requests of four clients at once. \param request_of gives the n-th request.
template <typename RequestOf>
void rate(const Program& sandbox, const char* what, int requests, int status,
          const RequestOf& request_of) {
    std::atomic<int> next = 0, wrong = 0;
    std::vector<std::thread> threads;
    const double processor_before = sandbox.processor_us();
    const auto begin = Time::now();
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            Wire wire(sandbox.port());
            for (int n = 0; (n = next++) < requests;)
                if (wire.ask(request_of(n)) != status) ++wrong;
        });
    for (std::thread& thread : threads) thread.join();
    std::printf("  %.0f %s/s, %.0f us of processor time each, %d failed\n",
                requests / ms_since(begin) * 1000, what,
                (sandbox.processor_us() - processor_before) / requests, wrong.load());
}

void invoices(const std::string& program, const std::string& arguments, const char* what) {
    const Program sandbox(program, arguments);
    Client client(sandbox.port());
    client.sign_in(seller_nip);
    client.open_session();
    constexpr int count = 4000;
    std::vector<std::string> requests;
    for (int n = 0; n < count; ++n) {
        const SampleInvoice invoice{.number = "FV/" + std::to_string(n),
                                    .issue_date = "2026-01-02"};
        const std::string body = tavrix::sandbox::dump(client.invoice_body(invoice.xml()));
        requests.push_back("POST /v2/sessions/online/" + client.session +
                           "/invoices HTTP/1.1\r\nHost: localhost\r\nContent-Type: "
                           "application/json\r\nAuthorization: Bearer " +
                           client.bearer + "\r\nContent-Length: " + std::to_string(body.size()) +
                           "\r\n\r\n" + body);
    }
    const long before = sandbox.memory_kib("VmRSS:");
    rate(sandbox, what, count, 202,
         [&](int n) -> const std::string& { return requests[std::size_t(n)]; });
    std::printf("  %.1f KiB of memory for each of the %s\n",
                double(sandbox.memory_kib("VmRSS:") - before) / count, what);
}

void endless_header(const std::string& program) {
    const Program sandbox(program, "");
    const long before = sandbox.memory_kib("VmHWM:");
    Wire wire(sandbox.port());
    const std::string piece(1024 * 1024, 'x');
    bool taken = wire.send(certificates + "X-Endless: ");
    int sent = 0;
    while (taken && sent < 300) {
        taken = wire.send(piece);
        if (taken) ++sent;
    }
    std::printf("  300 MiB of one header: %d MiB taken, %+ld KiB of memory\n", sent,
                sandbox.memory_kib("VmHWM:") - before);
}

}  // namespace

int main(int count, char** arguments) {
    for (int i = 1; i < count; ++i) {
        const std::string program = arguments[i];
        std::printf("%s\n", program.c_str());
        first_answers(program, true);
        first_answers(program, false);
        {
            const Program sandbox(program, "");
            const std::string request = certificates + "\r\n";
            rate(sandbox, "certificates", 60'000, 200,
                 [&](int) -> const std::string& { return request; });
        }
        invoices(program, "", "invoices in memory");
        const std::filesystem::path folder =
            std::filesystem::temp_directory_path() / ("sandbox-bench-" + std::to_string(getpid()));
        invoices(program, "--data " + folder.string(), "invoices with --data");
        std::filesystem::remove_all(folder);
        endless_header(program);
    }
}
