#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "cli/command.h"
#include "cli/ksef_options.h"
#include "cli/ports_bundle.h"
#include "ports/portable/sqlite_database.h"

namespace tavrix::cli {
namespace {

using base::Text;
using Json = nlohmann::ordered_json;

struct PullOptions {
    std::string nip;
    TokenSource token;
    std::string environment = "test";
    std::string database_file;
    std::string subject = "Subject2";
    std::int32_t product_group = 0;
    bool json = false;
};

/// Shows on stderr, where a person looks at it, how many pages and documents have come.
class TalkingHttp final : public ports::Http {
  public:
    explicit TalkingHttp(std::unique_ptr<ports::Http> http) : http_(std::move(http)) {}
    ~TalkingHttp() override {
        if (pages_ > 0) std::fputc('\n', stderr);
    }
    ports::HttpReply send(const ports::HttpRequest& request) override {
        ports::HttpReply reply = http_->send(request);
        const std::string_view url = request.url.view();
        if (url.find("/invoices/query/metadata") != std::string_view::npos) ++pages_;
        if (url.find("/invoices/ksef/") != std::string_view::npos && reply.status == 200) {
            ++documents_;
        }
        if (pages_ > 0) {
            std::fprintf(stderr, "\rStrony listy: %d, pobrane faktury: %d", pages_, documents_);
        }
        return reply;
    }
    ports::AddressKind kind_of(std::string_view url) const override { return http_->kind_of(url); }

  private:
    std::unique_ptr<ports::Http> http_;
    int pages_ = 0;
    int documents_ = 0;
};

std::int64_t count(ports::Database& database, const char16_t* condition) {
    const auto rows =
        database.open(u"select count(*) as n from DOK_ZDJECIA where " + Text(condition));
    return std::stoll(base::to_utf8(ports::text_of(rows->field(u"n"))));
}

void report(const Text& result, bool is_done, const Json& counts, bool as_json) {
    if (as_json) {
        Json answer{{"result", base::to_utf8(result)}, {"complete", is_done}};
        answer.update(counts);
        std::cout << answer.dump(2) << '\n';
        return;
    }
    if (!is_done) std::cout << "Niepowodzenie: " << base::to_utf8(result) << '\n';
    std::cout << "Nowe faktury: " << counts["recorded"]
              << ", pobrane dokumenty: " << counts["fetched"]
              << ", jeszcze bez dokumentu: " << counts["missing"] << '\n';
}

ExitCode run(const PullOptions& options) {
    PortsBundle bundle;
    const base::SecretText token = token_from(options.token);
    ports::SqliteDatabase database(ports::SqliteConnection::open(options.database_file));
    ksef::KsefPorts ports = bundle.for_ksef();
    if (!options.json && isatty(STDERR_FILENO) != 0) {
        ports.make_http = [make = ports.make_http] {
            return std::make_unique<TalkingHttp>(make());
        };
    }
    constexpr const char16_t* with_document = u"dane<>''";
    const std::int64_t recorded = count(database, u"1=1");
    const std::int64_t fetched = count(database, with_document);
    Text result;
    {
        ksef::KseF_comm client(ports);
        result = client.GetFaktury(database, base::from_utf8(options.nip), token,
                                   options.product_group, environment_number(options.environment),
                                   base::from_utf8(options.subject));
    }
    const std::int64_t recorded_now = count(database, u"1=1");
    const std::int64_t fetched_now = count(database, with_document);
    // What the library says when everything was answered.
    const bool is_done = result == u"kod bładu:200";
    report(result, is_done,
           {{"recorded", recorded_now - recorded},
            {"fetched", fetched_now - fetched},
            {"missing", recorded_now - fetched_now}},
           options.json);
    return is_done ? exit_done : exit_failed;
}

}  // namespace

void add_pull_command(CLI::App& app, int& exit_code) {
    auto options = std::make_shared<PullOptions>();
    CLI::App* command = app.add_subcommand(
        "pull", "Pobiera faktury z ostatnich sześćdziesięciu dni do tabeli DOK_ZDJECIA");
    command->add_option("--nip", options->nip, "NIP firmy, ten sam co w tokenie")->required();
    add_token_options(*command, options->token);
    add_environment_option(*command, options->environment);
    command->add_option("--db", options->database_file, "Plik bazy SQLite")->required();
    command
        ->add_option("--subject", options->subject,
                     "Kim jest firma: Subject1 sprzedawcą, Subject2 nabywcą, Subject3 podmiotem "
                     "trzecim, SubjectAuthorized upoważnionym")
        ->check(CLI::IsMember({"Subject1", "Subject2", "Subject3", "SubjectAuthorized"}))
        ->capture_default_str();
    command->add_option("--group", options->product_group, "Wartość kolumny in_id_grprod")
        ->capture_default_str();
    command->add_flag("--json", options->json, "Wynik jako JSON (dla programów)");
    command->callback([options, &exit_code] { exit_code = run(*options); });
}

}  // namespace tavrix::cli
