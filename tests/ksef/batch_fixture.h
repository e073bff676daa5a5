#pragma once

#include <fstream>

#include "base/base64.h"
#include "ksef/batch_package.h"
#include "tests/ksef/send_faults.h"
#include "tests/ports/loopback_server.h"
#include "tests/support/scratch_folder.h"

namespace tavrix::ksef {

/// A storage that is not the sandbox's: it keeps what arrived of each part, and may close before a
/// part is whole.
class Storage {
  public:
    explicit Storage(int percent_taken = 100) : percent_taken_(percent_taken) {}
    std::string url(const std::string& query = "") const {
        return "http://" + base::to_utf8(server_.address()) + "/part?sig=%2F" + query;
    }
    std::vector<std::string> heads;
    std::vector<std::string> bodies;

  private:
    void serve(test::Peer& peer) {
        std::string request;
        std::size_t end = 0;
        while ((end = request.find("\r\n\r\n")) == std::string::npos) {
            const std::string some = peer.read_some();
            if (some.empty()) return;
            request += some;
        }
        const std::size_t announced = request.find("Content-Length: ") + 16;
        const std::size_t bytes = std::stoul(request.substr(announced));
        std::string body = request.substr(end + 4);
        while (body.size() < bytes * percent_taken_ / 100) body += peer.read_some();
        if (body.size() < bytes) return peer.reset();
        heads.push_back(request.substr(0, end + 2));
        bodies.push_back(std::move(body));
        peer.write("HTTP/1.1 201 X\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    }

    std::size_t percent_taken_;
    test::LoopbackServer server_{[this](test::Peer& peer) { serve(peer); }};
};

/// Packages sent over real HTTP to a real sandbox.
class BatchFixture : public SendFixture {
  protected:
    void begin(std::size_t bytes, std::string step = {}, test::Json fault = harmless) {
        begin_anew();
        content.resize(bytes);
        for (std::size_t i = 0; i < bytes; ++i)
            content[i] = static_cast<char>(i * 2654435761u >> 24);
        std::ofstream(file, std::ios::binary) << content;
        if (!step.empty()) add_fault(step, fault);
    }
    void add_fault(const std::string& step, test::Json fault) {
        fault["step"] = step;
        sandbox->fault(fault);
    }
    std::string send_package(KsefPorts with, ports::Database& database) {
        return base::to_utf8(KseF_comm(std::move(with))
                                 .SendBach(database, path, u"FA (3)", u"1-0E", u"FA",
                                           base::SecretText(token), u"", environment));
    }
    std::string send_package() {
        ports::SqliteDatabase database(connection);
        return send_package(ports(), database);
    }
    std::size_t rows() {
        return connection->open_recordset(u"select RefNumber from Ksef_sesje")->row_count();
    }

    test::ScratchFolder folder;
    std::string file = (folder.path() / "paczka.zip").string();
    base::Text path = base::from_utf8(file);
    std::string content;
};

}  // namespace tavrix::ksef
