#include <cstdio>
#include <iostream>
#include <map>
#include <memory>

#include "cli/answer.h"
#include "cli/command.h"
#include "cli/ksef_options.h"
#include "cli/open_database.h"
#include "cli/ports_bundle.h"
#include "console/console.h"
#include "ksef/client.h"

namespace tavrix::cli {
namespace {

using base::Text;

struct PullOptions {
    std::string nip;
    TokenSource token;
    std::string environment = "test";
    std::string database_file;
    std::string subject = "Subject2";
    std::int32_t product_group = 0;
    bool json = false;
};

/// How the service answered.
struct Answers {
    int last_page = 0;                     ///< the status of the list's last page
    std::map<std::string, int> documents;  ///< the last status of each, by its KSeF number
};

/// Notes the answers, and shows on stderr, where a person looks at it, how many pages and documents
/// have come.
class WatchingHttp final : public ports::Http {
  public:
    WatchingHttp(std::unique_ptr<ports::Http> http, Answers& answers, bool talks)
        : http_(std::move(http)), answers_(answers), talks_(talks) {}
    ~WatchingHttp() override {
        if (talks_ && pages_ > 0) std::fputc('\n', stderr);
    }
    ports::HttpReply send(const ports::HttpRequest& request) override {
        ports::HttpReply reply = http_->send(request);
        const std::string_view url = request.url.view();
        if (url.find("/invoices/query/metadata") != std::string_view::npos) {
            ++pages_;
            answers_.last_page = reply.status;
        }
        if (url.find("/invoices/ksef/") != std::string_view::npos) {
            if (reply.status == 200) ++documents_;
            answers_.documents[std::string(url.substr(url.rfind('/') + 1))] = reply.status;
        }
        if (talks_ && pages_ > 0) {
            std::fprintf(stderr, "\rStrony listy: %d, pobrane faktury: %d", pages_, documents_);
        }
        return reply;
    }
    ports::AddressKind kind_of(std::string_view url) const override { return http_->kind_of(url); }

  private:
    std::unique_ptr<ports::Http> http_;
    Answers& answers_;
    bool talks_;
    int pages_ = 0;
    int documents_ = 0;
};

std::int64_t count(ports::Database& database, const char16_t* condition) {
    const auto rows =
        database.open(u"select count(*) as n from DOK_ZDJECIA where " + Text(condition));
    return std::stoll(base::to_utf8(ports::text_of(rows->field(u"n"))));
}

// Whether each invoice without a document was asked for, and is one that the service does not give
// out: the walk has come to its end, and the next one will find no more.
bool only_unavailable_missing(ports::Database& database, const Answers& answers,
                              const Text& result) {
    if (answers.last_page != 200 || result.starts_with(u"Nieznany błąd")) return false;
    const auto rows = database.open(
        u"select ksefNumber from DOK_ZDJECIA where ksefNumber<>'' and (dane is null or dane='')");
    for (; !rows->at_end(); rows->move_next()) {
        const std::string number = base::to_utf8(ports::text_of(rows->field(u"ksefNumber")));
        const auto answer = answers.documents.find(ksef::path_segment(number));
        if (answer == answers.documents.end()) return false;
        if (answer->second != 400 && answer->second != 406) return false;
    }
    return true;
}

void report(const Text& result, bool is_done, const Json& counts, bool as_json) {
    if (as_json) {
        Json answer{{"result", base::to_utf8(result)}, {"complete", is_done}};
        answer.update(counts);
        print(answer);
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
    const auto opened = open_database(options.database_file);
    ports::Database& database = *opened;
    ksef::KsefPorts ports = bundle.for_ksef();
    Answers answers;
    const bool talks = !options.json && console::is_error_output_watched();
    ports.make_http = [make = ports.make_http, &answers, talks] {
        return std::make_unique<WatchingHttp>(make(), answers, talks);
    };
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
    // The first is what the library says when everything was answered.
    const bool is_done =
        result == u"kod bładu:200" ||
        (ports.settings.skip_unavailable && only_unavailable_missing(database, answers, result));
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
    add_nip_option(*command, options->nip);
    add_token_options(*command, options->token);
    add_environment_option(*command, options->environment);
    add_database_option(*command, options->database_file);
    command
        ->add_option("--subject", options->subject,
                     "Kim jest firma: Subject1 sprzedawcą, Subject2 nabywcą, Subject3 podmiotem "
                     "trzecim, SubjectAuthorized upoważnionym")
        ->check(CLI::IsMember({"Subject1", "Subject2", "Subject3", "SubjectAuthorized"}))
        ->capture_default_str();
    command->add_option("--group", options->product_group, "Wartość kolumny in_id_grprod")
        ->capture_default_str();
    add_json_option(*command, options->json);
    command->callback([options, &exit_code] { exit_code = run(*options); });
}

}  // namespace tavrix::cli
