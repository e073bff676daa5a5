#pragma once

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <regex>

#include "ksef/ksef_comm.h"
#include "ports/native/adapters.h"
#include "ports/portable/curl_http.h"
#include "ports/portable/openssl_crypto.h"
#include "tests/support/fake_clock.h"
#include "tests/support/host_database.h"
#include "tests/support/sandbox.h"

namespace tavrix::ksef {

/// Sends the demonstration's invoice over real HTTP to a real sandbox, with a clock that never
/// waits.
class SendFixture : public testing::Test {
  protected:
    using Row = std::map<std::string, std::string>;

    static void SetUpTestSuite() { sandbox = std::make_unique<test::Sandbox>(); }
    static void TearDownTestSuite() { sandbox.reset(); }

    void SetUp() override {
        connection_settings.proxy = "direct";
        connection_settings.no_progress_timeout = std::chrono::seconds(20);
        settings.service.test = base::from_utf8(sandbox->origin());
        begin_anew();
    }

    /// Nothing was sent yet, and the document is of today.
    void begin_anew(const std::string& issue_date = "2026-11-21") {
        sandbox->reset();
        clock.slept = {};
        connection = test::make_host_database(issue_date);
    }

    KsefPorts ports() { return ports_with(*crypto, clock, *files); }
    KsefPorts ports_with(ports::Crypto& with_crypto, ports::Clock& with_clock,
                         ports::DataFiles& with_files) {
        return {make_http,  with_crypto, with_clock,  *locale,        *xml,
                *code_page, with_files,  *text_files, *xml_documents, settings};
    }

    std::string send() {
        KseF_comm client(ports());
        ports::SqliteDatabase database(connection);
        return send_with(client, database);
    }

    std::string send_with(KseF_comm& client, ports::Database& database) {
        return base::to_utf8(
            client.SendInvoiceToKSeF(database, u"5265877635", base::SecretText(token), invoice,
                                     u"FA (3)", u"1-0E", u"FA", environment, table, document_id));
    }

    std::string send_with_fault(const char* step, test::Json fault) {
        begin_anew();
        fault["step"] = step;
        sandbox->fault(fault);
        return send();
    }

    /// The rows of a query: fields with a "|" between, rows with a blank, "K" for a KSeF number.
    std::string rows(const char16_t* sql) {
        static const std::regex number("[0-9]{10}-[0-9]{8}-[0-9A-F]{12}-[0-9A-F]{2}");
        std::string text;
        for (const auto rows = connection->open_recordset(sql); !rows->at_end();
             rows->move_next()) {
            if (!text.empty()) text += ' ';
            for (std::size_t i = 0; i < rows->columns().size(); ++i) {
                text += (i == 0 ? "" : "|") + base::to_utf8(ports::text_of(rows->field_at(i)));
            }
        }
        return std::regex_replace(text, number, "K");
    }

    /// The document's row; dates as text.
    Row row() {
        const auto rows = connection->open_recordset(u"select * from dok_fak where ddout_id=1001");
        Row values;
        for (const ports::SqliteColumn& column : rows->columns()) {
            values[base::to_utf8(column.name)] =
                base::to_utf8(ports::text_of(rows->field(column.name)));
        }
        return values;
    }

    /// What the service was asked for, in order.
    std::vector<std::string> steps() {
        std::vector<std::string> steps;
        const test::Json state = sandbox->state();
        for (const test::Json& request : state.at("requests")) {
            if (!request.at("path").get<std::string>().starts_with("/sandbox/"))
                steps.push_back(request.at("step"));
        }
        return steps;
    }

    /// Either all that an accepted invoice leaves stands there, or nothing at all; and the host is
    /// told what is missing.
    void expect_whole_or_untouched(const std::string& result, const std::string& where) {
        const Row document = row();
        const bool accepted = document.at("status_ksef") == "200";
        for (const char* column : {"numer_ksef", "NumerRef_ksef", "HashFaktury", "StatusStr_ksef",
                                   "Export_Opis_bledu_ksef", "DATA_OPERACJI"}) {
            EXPECT_EQ(accepted, !document.at(column).empty()) << where << ' ' << column;
        }
        const bool whole = accepted && !document.at("UPO_ksef").empty();
        EXPECT_TRUE(whole || !result.empty()) << where;
    }

    static inline std::unique_ptr<test::Sandbox> sandbox;
    Settings settings;
    ports::ConnectionSettings connection_settings;
    ports::HttpFactory make_http = [this] { return ports::make_curl_http(connection_settings); };
    std::unique_ptr<ports::Crypto> crypto = ports::make_openssl_crypto();
    test::FakeClock clock;
    std::unique_ptr<ports::Locale> locale = ports::make_native_locale();
    std::unique_ptr<ports::Xml> xml = ports::make_native_xml();
    std::unique_ptr<ports::CodePage> code_page = ports::make_native_code_page();
    std::unique_ptr<ports::DataFiles> files = ports::make_native_files({});
    std::unique_ptr<ports::TextFiles> text_files = ports::make_native_text_files({});
    std::unique_ptr<ports::XmlDocuments> xml_documents = ports::make_native_xml_documents();
    std::shared_ptr<ports::SqliteConnection> connection;
    base::Text token = u"20261121-EC-0000000001-0000000002-AB|nip-5265877635|0123456789abcdef";
    base::Text invoice = test::demonstration_invoice();
    base::Text table = u"dok_fak";
    std::int32_t document_id = 1001;
    std::int32_t environment = 2;
};

}  // namespace tavrix::ksef
