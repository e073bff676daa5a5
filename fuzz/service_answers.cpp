// One whole sending of an invoice, to a server whose answers are the input: "STATUS BODY" for each
// request, with a line
// "---" between them. The cryptography is left out, it never sees more than a key's text.
#include <cstdlib>

#include "base/error.h"
#include "fuzz/fuzz_target.h"
#include "ksef/ksef_comm.h"
#include "ksef/rows/columns.h"
#include "ports/native/adapters.h"
#include "ports/portable/sqlite_database.h"
#include "tests/support/fake_clock.h"

using namespace tavrix;

namespace {

class Answers final : public ports::Http {
  public:
    explicit Answers(std::string_view script) : rest_(script) {}

    ports::HttpReply send(const ports::HttpRequest&) override {
        ports::HttpReply reply;
        if (rest_.empty()) return reply;
        const std::size_t end = rest_.find("\n---\n");
        const std::string answer(rest_.substr(0, end));
        rest_ = end == std::string_view::npos ? std::string_view() : rest_.substr(end + 5);
        reply.completed = true;
        reply.status = std::atoi(answer.substr(0, 3).c_str());
        if (answer.size() > 4) reply.body += std::string_view(answer).substr(4);
        return reply;
    }

    ports::AddressKind kind_of(std::string_view url) const override {
        return url.starts_with("https://") ? ports::AddressKind::https
                                           : ports::AddressKind::refused;
    }

  private:
    std::string_view rest_;
};

struct Key final : ports::PublicKey {
    std::string pem() const override { return "key"; }
};

struct NoCrypto final : ports::Crypto {
    void fill_random(std::span<std::uint8_t>) override {}
    base::Bytes sha256(base::ByteView) override { return base::Bytes(32); }
    base::Bytes aes_256_cbc_encrypt(base::ByteView, base::ByteView, base::ByteView) override {
        return base::Bytes(16);
    }
    std::unique_ptr<ports::Sha256> begin_sha256() override { return nullptr; }
    std::unique_ptr<ports::AesEncryption> begin_aes_256_cbc(base::ByteView,
                                                            base::ByteView) override {
        return nullptr;
    }
    std::unique_ptr<ports::PublicKey> key_of_certificate(std::string_view) override {
        return std::make_unique<Key>();
    }
    std::unique_ptr<ports::PublicKey> load_public_key(std::string_view) override {
        return std::make_unique<Key>();
    }
    base::Bytes rsa_oaep_sha256_encrypt(const ports::PublicKey&, base::ByteView) override {
        return base::Bytes(256);
    }
    std::unique_ptr<ports::PrivateKey> load_private_key(std::string_view,
                                                        std::string_view) override {
        return nullptr;
    }
    base::Bytes ecdsa_sha256_sign(const ports::PrivateKey&, base::ByteView) override { return {}; }
    base::Bytes rsa_pss_sha256_sign(const ports::PrivateKey&, base::ByteView) override {
        return {};
    }
};

std::shared_ptr<ports::SqliteConnection> one_document() {
    static const auto connection = [] {
        auto opened = ports::SqliteConnection::open(":memory:", true);
        std::string columns = "ddout_id integer primary key";
        for (const ksef::Column& column : ksef::document_columns) {
            columns += ", " + base::to_utf8(column.name) + " text";
        }
        opened->execute_script("create table dok_fak (" + columns + ")");
        return opened;
    }();
    connection->execute_script(
        "delete from dok_fak; insert into dok_fak (ddout_id, ddout_data_wyst) values (1, "
        "'2026-11-21')");
    return connection;
}

}  // namespace

std::vector<std::string> fuzz::seeds() {
    const std::string sign_in =
        R"(200 {"challenge":"20261121-CR-1","timestamp":"2026-11-21T10:15:30.1234567+00:00"})"
        "\n---\n"
        R"(200 [{"certificate":"TUlJ","usage":["KsefTokenEncryption"]},)"
        R"({"certificate":"TUlJ","usage":["SymmetricKeyEncryption"]}])"
        "\n---\n"
        R"(202 {"referenceNumber":"20261121-AU-1","authenticationToken":{"token":"ey.a.b"}})"
        "\n---\n"
        R"(200 {"status":{"code":200,"description":"Uwierzytelnianie zakończone sukcesem"}})"
        "\n---\n"
        R"(200 {"accessToken":{"token":"ey.c.d"},"refreshToken":{"token":"ey.e.f"}})"
        "\n---\n";
    const std::string send = R"(201 {"referenceNumber":"20261121-SO-1"})"
                             "\n---\n"
                             R"(200 {"status":{"code":100,"description":"Sesja otwarta"}})"
                             "\n---\n"
                             R"(202 {"referenceNumber":"20261121-EE-1"})"
                             "\n---\n";
    const auto judged = [](const std::string& status) {
        return R"(200 {"invoices":[{"ordinalNumber":1,"referenceNumber":"20261121-EE-1",)"
               R"("ksefNumber":"5265877635-20261121-1","invoiceHash":"AAAA","status":)" +
               status + "}]}\n---\n";
    };
    const std::string closed =
        "204 \n---\n"
        R"(200 {"status":{"code":200},"invoiceCount":1,)"
        R"("successfulInvoiceCount":1,"failedInvoiceCount":null})"
        "\n---\n";
    return {
        sign_in + send + judged(R"({"code":200,"description":"Sukces"})") + closed +
            R"(200 {"ksefNumber":"5265877635-20261121-1","upoDownloadUrl":"https://x.example/u"})" +
            "\n---\n200 <UPO/>",
        sign_in + send + judged(R"({"code":150,"description":"Trwa przetwarzanie"})") +
            judged(R"({"code":440,"description":"Duplikat","extensions":)"
                   R"({"originalKsefNumber":"1","originalSessionReferenceNumber":"2"}})") +
            closed,
    };
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view script(reinterpret_cast<const char*>(data), size);
    static const auto xml = ports::make_native_xml();
    static const auto locale = ports::make_native_locale();
    static const auto code_page = ports::make_native_code_page();
    static const auto files = ports::make_native_files({});
    static const auto text_files = ports::make_native_text_files({});
    static const auto xml_documents = ports::make_native_xml_documents();
    static const ksef::Settings settings;
    test::FakeClock clock;
    NoCrypto crypto;
    const auto connection = one_document();
    ports::SqliteDatabase database(connection);
    ksef::KseF_comm client({[&] { return std::make_unique<Answers>(script); }, crypto, clock,
                            *locale, *xml, *code_page, *files, *text_files, *xml_documents,
                            settings});
    // Raises nothing, ends, and leaves the row whole or untouched.
    client.SendInvoiceToKSeF(database, u"5265877635", base::SecretText(u"R|nip-5265877635|s"),
                             u"<Faktura/>", u"FA (3)", u"1-0E", u"FA", 2, u"dok_fak", 1);
    const auto row = connection->open_recordset(u"select * from dok_fak");
    const bool accepted = ports::text_of(row->field(u"status_ksef")) == u"200";
    if (accepted != (ports::text_of(row->field(u"Export_Opis_bledu_ksef")) == u"OK.")) std::abort();
    return 0;
}
