#pragma once

#include <fstream>

#include "base/base64.h"
#include "ksef/batch_package.h"
#include "tests/ksef/send_faults.h"
#include "tests/ports/loopback_server.h"
#include "tests/support/scratch_folder.h"

namespace tavrix::ksef {

/// A storage that takes the parts of packages and is not the sandbox's: it keeps what arrived,
/// closes after a share of a part, or answers with another status.
class Storage {
  public:
    struct Arrived {
        std::string head;
        std::string body;
    };

    std::string url(std::size_t part = 0) const {
        return "http://" + base::to_utf8(server_.address()) + "/part/" + std::to_string(part) +
               "?sig=%2F" + expiry;
    }

    std::vector<Arrived> arrived;
    std::vector<int> statuses;  ///< of the next answers, 201 behind their end
    int percent_taken = 100;
    std::string expiry;

  private:
    void serve(test::Peer& peer) {
        Arrived part;
        while (part.head.find("\r\n\r\n") == std::string::npos) {
            const std::string some = peer.read_some();
            if (some.empty()) return;
            part.head += some;
        }
        const std::size_t end = part.head.find("\r\n\r\n") + 4;
        part.body = part.head.substr(end);
        part.head.resize(end);
        const std::string announced = "Content-Length: ";
        const std::size_t bytes =
            std::stoul(part.head.substr(part.head.find(announced) + announced.size()));
        const std::size_t wanted = bytes * static_cast<std::size_t>(percent_taken) / 100;
        while (part.body.size() < wanted) {
            const std::string some = peer.read_some();
            if (some.empty()) break;
            part.body += some;
        }
        const bool is_whole = part.body.size() >= bytes;
        arrived.push_back(std::move(part));
        if (!is_whole) return peer.reset();
        int status = 201;
        if (!statuses.empty()) {
            status = statuses.front();
            statuses.erase(statuses.begin());
        }
        peer.write("HTTP/1.1 " + std::to_string(status) +
                   " X\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    }

    test::LoopbackServer server_{[this](test::Peer& peer) { serve(peer); }};
};

/// Packages sent over real HTTP to a real sandbox.
class BatchFixture : public SendFixture {
  protected:
    void SetUp() override {
        SendFixture::SetUp();
        make_package(1'000'000);
    }

    void make_package(std::size_t bytes) {
        content.resize(bytes);
        for (std::size_t i = 0; i < bytes; ++i)
            content[i] = static_cast<char>(i * 2654435761u >> 24);
        std::ofstream(file(), std::ios::binary) << content;
    }
    std::string file() const { return (folder.path() / "paczka.zip").string(); }
    base::Text path() const { return base::from_utf8(file()); }

    std::string send_package() {
        ports::SqliteDatabase database(connection);
        return send_package_with(ports(), database);
    }
    std::string send_package_with(KsefPorts with, ports::Database& database) {
        return base::to_utf8(KseF_comm(std::move(with))
                                 .SendBach(database, path(), u"FA (3)", u"1-0E", u"FA",
                                           base::SecretText(token), u"", environment));
    }

    std::vector<std::string> recorded() {
        std::vector<std::string> references;
        const auto rows = connection->open_recordset(u"select RefNumber from Ksef_sesje");
        for (; !rows->at_end(); rows->move_next())
            references.push_back(base::to_utf8(ports::text_of(rows->field(u"RefNumber"))));
        return references;
    }

    test::ScratchFolder folder;
    std::string content;
};

}  // namespace tavrix::ksef
