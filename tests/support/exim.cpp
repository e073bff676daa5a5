#include "tests/support/exim.h"

#include <chrono>
#include <csignal>
#include <thread>

namespace tavrix::test {
namespace {

int number_from(std::FILE* pipe) {
    int number = 0;
    if (std::fscanf(pipe, "%d", &number) != 1) throw std::runtime_error("exim did not start");
    return number;
}

std::filesystem::path inbox(const ScratchFolder& folder, const std::string& user) {
    return folder.path() / "mail" / user / "new";
}

}  // namespace

Exim::Exim() {
    pipe_ =
        popen(("exec bash " TAVRIX_EXIM_SCRIPT " '" + folder_.path().string() + "'").c_str(), "r");
    if (pipe_ == nullptr) throw std::runtime_error("popen");
    pid_ = number_from(pipe_);
    port_ = number_from(pipe_);
    tls_port_ = number_from(pipe_);
}

Exim::~Exim() {
    kill(pid_, SIGTERM);
    pclose(pipe_);
}

std::size_t Exim::count_for(const std::string& user) const {
    std::error_code none_yet;
    std::size_t count = 0;
    for (std::filesystem::directory_iterator at(inbox(folder_, user), none_yet), end; at != end;
         ++at)
        ++count;
    return count;
}

std::string Exim::delivered_to(const std::string& user) {
    for (int tries = 0; tries < 200 && count_for(user) == 0; ++tries) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    if (count_for(user) != 1) throw std::runtime_error("not one message for " + user);
    const auto message = std::filesystem::directory_iterator(inbox(folder_, user))->path();
    const auto taken = folder_.path() / ("taken-" + user);
    std::filesystem::rename(message, taken);
    return taken;
}

}  // namespace tavrix::test
