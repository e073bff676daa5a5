// GetFaktury over lists of purchase invoices, half of which the host has: rows per second,
// statements for each entry, and whether the time for an entry stays the same as the list grows.
// GetFaktury_xml over 1000 rows: requests for each and connections.
#include <cstdio>
#include <ctime>
#include <set>

#include "bench/ksef_host.h"

namespace {

using namespace tavrix;

const std::string metadata = "/invoices/query/metadata";
constexpr int page_size = 250;

std::string entry(int number) {
    const std::string n = std::to_string(1'000'000 + number);
    return R"({"ksefNumber":"5265877635-20261121-)" + n + R"(","invoiceNumber":"FV/)" + n +
           R"(","issueDate":"2026-11-20","invoicingDate":"2026-11-21T08:00:00+00:00",)"
           R"("acquisitionDate":"2026-11-21T08:00:00+00:00",)"
           R"("permanentStorageDate":"2026-11-21T08:15:30.1234567+00:00","seller":{"nip":")" +
           std::to_string(1'000'000'000 + number % 50) +
           R"(","name":"Sprzedawca"},"buyer":{"identifier":{"type":"Nip","value":"5265877635"}},)"
           R"("netAmount":1234.50,"grossAmount":1518.44,"vatAmount":283.94,"currency":"PLN",)"
           R"("invoicingMode":"Online","invoiceType":"Vat","formCode":{"systemCode":"FA 3",)"
           R"("schemaVersion":"1-0E","value":"FA"},"isSelfInvoicing":false,)"
           R"("hasAttachment":false,"invoiceHash":"UtQp9Gpc51y+u3xApZjIjgkpZ01js+J8KflSPW8WzIE="})";
}

/// Answers the lists itself, a few microseconds each; the rest goes to the sandbox.
class ListingHttp final : public ports::Http {
  public:
    ListingHttp(std::unique_ptr<ports::Http> real, const int& entries)
        : real_(std::move(real)), entries_(entries) {}
    ports::HttpReply send(const ports::HttpRequest& request) override {
        const std::string_view url = request.url.view();
        if (url.find(metadata) == std::string_view::npos) return real_->send(request);
        const std::size_t offset = url.find("pageOffset=") + 11;
        const int first = std::stoi(std::string(url.substr(offset))) * page_size;
        const int last = std::min(first + page_size, entries_);
        std::string body =
            R"({"hasMore":)" + std::string(last < entries_ ? "true" : "false") + R"(,"invoices":[)";
        for (int i = first; i < last; ++i) body += (i == first ? "" : ",") + entry(i);
        return {true, 200, base::SecretUtf8(body + "]}"), {}, {}};
    }
    ports::AddressKind kind_of(std::string_view url) const override { return real_->kind_of(url); }

  private:
    std::unique_ptr<ports::Http> real_;
    const int& entries_;
};

class CountingDatabase final : public ports::Database {
  public:
    explicit CountingDatabase(std::shared_ptr<ports::SqliteConnection> connection)
        : database_(std::move(connection)) {}
    std::unique_ptr<ports::Recordset> open(base::TextView sql) override {
        ++statements;
        return database_.open(sql);
    }
    void execute(base::TextView sql) override { database_.execute(sql); }
    base::Text name() override { return database_.name(); }
    int statements = 0;

  private:
    ports::SqliteDatabase database_;
};

class Bench {
  public:
    void list(int entries) {
        const auto connection = make_host(entries / 2);
        // Documents are another matter: the service has none here.
        host_.sandbox.reset();
        entries_ = entries;
        CountingDatabase database(connection);
        const double ms = milliseconds([&] { call(database); });
        std::printf(
            "download, list of %5d, half known: %6.0f new rows/s, %.1f statements and "
            "%.1f us per entry\n",
            entries, entries / 2 / ms * 1e3, static_cast<double>(database.statements) / entries,
            ms * 1e3 / entries);
    }

    void documents(int rows) {
        const auto connection = make_host(rows);
        host_.sandbox.reset();
        host_.sandbox.fault({{"step", "invoices/ksef"},
                             {"kind", "status"},
                             {"status", 200},
                             {"body", test::demonstration_invoice_file()},
                             {"count", -1}});
        connection->execute_script("update DOK_ZDJECIA set dane=null");
        entries_ = 0;
        CountingDatabase database(connection);
        const double ms = milliseconds([&] { call(database); });
        std::set<int> connections;
        const auto requests = host_.sandbox.requests("invoices/ksef");
        for (const test::Json& request : requests)
            connections.insert(request.at("connection").get<int>());
        std::printf(
            "download, %d documents: %.3f requests and %.1f statements per row, %zu "
            "connection(s), %.2f ms per row\n",
            rows, static_cast<double>(requests.size()) / rows,
            static_cast<double>(database.statements) / rows, connections.size(), ms / rows);
    }

  private:
    // A host that has looked through `known` invoices before, with the index that such a table has.
    std::shared_ptr<ports::SqliteConnection> make_host(int known) {
        auto connection = test::make_host_database("2026-11-21");
        connection->execute_script(
            "create index by_number on DOK_ZDJECIA (ksefNumber); begin; with recursive n(i) as "
            "(select 0 union all select i+1 from n where i<49) insert into kontrahenci "
            "(kartotekakh,"
            "konh_activ,konh_nip) select 'KD'||i, 1, 1000000000+i from n; with recursive n(i) as "
            "(select 0 union all select i+1 from n where i<" +
            std::to_string(known - 1) +
            ") insert into DOK_ZDJECIA (ksefNumber,dok_rodz_id,ZDJECIE_kierunek,ksefniezgodnyidwew,"
            "dane) select '5265877635-20261121-'||(1000000+i), 20, 'ksef_IN', 0, '<F/>' from n; "
            "commit");
        return connection;
    }

    void call(ports::Database& database) {
        ksef::KseF_comm client(host_.ports(
            [this] { return std::make_unique<ListingHttp>(host_.make_http(), entries_); }));
        client.GetFaktury(database, u"5265877635", base::SecretText(u"R|nip-5265877635|s"), 1, 2,
                          u"");
    }

    // Of this process's own processor time: the clock would measure what else the machine does.
    template <typename Work>
    static double milliseconds(Work work) {
        const std::clock_t begin = std::clock();
        work();
        return static_cast<double>(std::clock() - begin) * 1e3 / CLOCKS_PER_SEC;
    }

    bench::KsefHost host_;
    int entries_ = 0;
};

}  // namespace

int main() {
    Bench bench;
    for (const int entries : {1'000, 3'000, 10'000}) bench.list(entries);
    bench.documents(1'000);
}
