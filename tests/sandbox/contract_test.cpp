// Every operation, in success and in its errors, judged by the published interface.
#include "tests/sandbox/contract.h"

#include <set>

#include "sandbox/basics/crypto.h"
#include "sandbox/basics/text.h"
#include "sandbox/http/routes.h"
#include "tests/sandbox/fixture.h"
#include "tests/sandbox/packed.h"

namespace tavrix::sandbox::testing {
namespace {

using namespace std::chrono_literals;

const std::string unknown_reference = "20260101-XX-0000000000-0000000000-00";
const std::string unknown_ksef_number = "5265877635-20250626-010080DD2B5E-26";

/// Published errors that nothing can bring about here.
const std::set<std::string> unreachable = {
    // No person is behind a token, so none is dead; every context may have tokens.
    "21308 ",
    "26002 Informacja o aktualnym i dozwolonych typach kontekstu.",
    // An invoice that has its number is available at once.
    "21165 Faktura o numerze KSeF {ksefNumber} została przetworzona, ale nie jest jeszcze dostępna "
    "do pobrania. Spróbuj ponownie później.",
    // Ten thousand invoices take longer than the rest of these tests.
    "21155 Sesja o numerze referencyjnym {referenceNumber} osiągnęła dozwolony limit liczby faktur "
    "{invoiceLimit}.",
    // The operation that it stands beside asks for nothing that could be wrong.
    "delete /auth/sessions/current 21405 {treść błędu z walidatora}",
};

class ContractTest : public SandboxTest {
  protected:
    void SetUp() override {
        TAVRIX_NEEDS_CONTRACT();
        contract_ = std::make_unique<Contract>(TAVRIX_KSEF_CONTRACT_DIR);
    }

    using Parameters = std::vector<std::string>;

    /// Sends to a path of the interface, its `{...}` replaced in order, and judges the answer.
    Reply agree(const std::string& method, const std::string& pattern,
                const Parameters& parameters = {}, const Json& body = Json::object(),
                const std::string& query = "") {
        std::string path = pattern;
        for (const std::string& parameter : parameters)
            path.replace(path.find('{'), path.find('}') - path.find('{') + 1, parameter);
        Client& it = client();
        const Reply reply = method == "get"    ? it.get(path + query)
                            : method == "post" ? it.post(path + query, body)
                                               : it.remove(path);
        judge(method, pattern, reply);
        return reply;
    }

    void judge(const std::string& method, const std::string& pattern, const Reply& reply) {
        SeenAnswer seen{reply.status, reply.body, {}};
        for (const auto& [name, value] : reply.headers) {
            // Set by the library that carries the answers, as every server does.
            if (lower(name) == "content-type" && value.empty()) continue;
            seen.headers[lower(name)] = value;
        }
        for (const auto& problem : contract_->judge(method, pattern, seen))
            ADD_FAILURE() << method << " " << pattern << " " << problem << "\n"
                          << reply.body.substr(0, 600);
        seen_.insert(method + " " + pattern + " " + std::to_string(reply.status));
        if (reply.status != 400) return;
        for (const Json& error : errors_in(reply.json()))
            for (const PublishedError& published : contract_->errors(method, pattern))
                if (published.allows(error))
                    seen_.insert(method + " " + pattern + " " + published.name());
    }

    /// A request that is refused, in both formats; the code of the refusal.
    int refused(const std::string& method, const std::string& pattern,
                const Parameters& parameters = {}, const Json& body = Json::object(),
                const std::string& query = "") {
        client().headers["X-Error-Format"] = "problem-details";
        const Reply problem = agree(method, pattern, parameters, body, query);
        EXPECT_EQ(problem.header("Content-Type"), "application/problem+json") << pattern;
        client().headers.erase("X-Error-Format");
        const Reply plain = agree(method, pattern, parameters, body, query);
        const int code = problem.json().value(Json::json_pointer("/errors/0/code"), 0);
        EXPECT_EQ(code, plain.exception_code()) << pattern;
        return plain.exception_code();
    }

    /// An operation of the table, its path as the interface writes it.
    struct Operation {
        const Route& route;
        std::string method, path;
        /// Values of the right form that name nothing.
        Parameters unknown;
    };
    std::vector<Operation> operations() {
        std::vector<Operation> all;
        for (const Route& route : interface_routes()) {
            if (route.pattern.starts_with("storage/")) continue;
            const std::string path = contract_->path_of(route.pattern);
            Parameters unknown;
            for (std::size_t at = 0; (at = path.find('{', at)) != std::string::npos; ++at)
                unknown.push_back(path.compare(at, 6, "{ksefN") == 0 ? unknown_ksef_number
                                                                     : unknown_reference);
            all.push_back({route, lower(std::string(route.method)), path, unknown});
        }
        return all;
    }

    /// Signs in with a new token; returns what making it answered.
    Json sign_in_with(const char* permission) {
        client().sign_in(seller_nip);
        const Json body = {{"permissions", {permission}}, {"description", "Token"}};
        const Json made = client().post("/tokens", body).json();
        client().sign_in(seller_nip, made.at("token"));
        return made;
    }

    void work_a_day();
    void meet_every_error();

    std::unique_ptr<Contract> contract_;
    /// Operations with their statuses, and with the errors of their tables.
    std::set<std::string> seen_;
};

void ContractTest::work_a_day() {
    Client& it = client();
    agree("post", "/auth/challenge");
    agree("get", "/security/public-key-certificates");
    judge("post", "/auth/ksef-token",
          it.send_token(token_of(seller_nip), seller_nip, it.challenge()));
    it.bearer = it.authentication_token;
    agree("get", "/auth/{referenceNumber}", {it.authentication_reference});
    const Json tokens = agree("post", "/auth/token/redeem").json();
    it.bearer = tokens.at("refreshToken").at("token");
    agree("post", "/auth/token/refresh");
    it.bearer = tokens.at("accessToken").at("token");
    agree("get", "/auth/sessions");

    ASSERT_NE(it.open_session(), "");
    agree("post", "/sessions/online", {}, it.open_body(std::string(32, 'k')));
    SampleInvoice rich;
    rich.other_parties =
        "<Podmiot3><DaneIdentyfikacyjne><IDWew>5265877635-12345</IDWew><Nazwa>Oddział</Nazwa>"
        "</DaneIdentyfikacyjne><Rola>4</Rola></Podmiot3><PodmiotUpowazniony><DaneIdentyfikacyjne>"
        "<NIP>1111111111</NIP><Nazwa>Biuro</Nazwa></DaneIdentyfikacyjne><Adres><KodKraju>PL"
        "</KodKraju><AdresL1>Rynek 1</AdresL1></Adres><RolaPU>1</RolaPU></PodmiotUpowazniony>";
    const std::string status = "/sessions/{referenceNumber}", invoices = status + "/invoices",
                      invoice = invoices + "/{invoiceReferenceNumber}";
    agree("get", status, {it.session});
    const Reply sent = agree("post", "/sessions/online/{referenceNumber}/invoices", {it.session},
                             it.invoice_body(rich.xml()));
    it.send(rich.xml());         // a duplicate
    it.send("<Faktura>broken");  // no XML
    const Reply list = agree("get", invoices, {it.session});
    const std::string reference = sent.json().at("referenceNumber"),
                      number = list.json().at("invoices").at(0).at("ksefNumber");
    agree("get", invoices + "/failed", {it.session});
    agree("get", invoice, {it.session, reference});
    agree("get", invoice + "/upo", {it.session, reference});
    agree("get", invoices + "/ksef/{ksefNumber}/upo", {it.session, number});
    agree("post", "/sessions/online/{referenceNumber}/close", {it.session});
    const Json closed = agree("get", status, {it.session}).json();
    const std::string upo = closed.at("upo").at("pages")[0].at("referenceNumber");
    agree("get", status + "/upo/{upoReferenceNumber}", {it.session, upo});
    const std::string archive = packed({{"a.xml", SampleInvoice{.number = "P/1"}.xml()},
                                        {"b.xml", rich.xml()},
                                        {"c.xml", "<Faktura>broken"}});
    const Json package = it.package_body(archive, 2);
    agree("post", "/sessions/batch", {}, package);
    it.open_package(package);
    agree("get", status, {it.session});
    for (std::size_t i = 0; i < it.parts.size(); ++i) it.put(it.part_urls[i], it.parts[i]);
    agree("post", "/sessions/batch/{referenceNumber}/close", {it.session});
    EXPECT_EQ(agree("get", status, {it.session}).json().at("successfulInvoiceCount"), 1);
    agree("get", invoices, {it.session});
    agree("get", invoices + "/failed", {it.session});
    for (int i = 0; i < 12; ++i) it.open_session();
    for (const char* query : {"?sessionType=Online", "?sessionType=Batch"})
        agree("get", "/sessions", {}, {}, query);

    agree("get", "/invoices/ksef/{ksefNumber}", {number});
    sandbox().advance(1s);
    for (const char* type : {"PermanentStorage", "Invoicing", "Issue"}) {
        const Json range = {{"dateType", type}, {"from", "2026-11-01T00:00:00+00:00"}};
        const Reply metadata = agree("post", "/invoices/query/metadata", {},
                                     {{"subjectType", "Subject1"}, {"dateRange", range}});
        ASSERT_EQ(metadata.json().at("invoices").size(), 2u) << metadata.body;
    }
    for (const char* certificate : {"none", offline_certificate})
        control().post("/sandbox/certificates", {{"certificate", certificate}});
    const Json query = {{"type", "Offline"}, {"status", "Active"}};
    EXPECT_EQ(agree("post", "/certificates/query", {}, query).json().at("certificates").size(), 1u);
    for (const char* path : {"/rate-limits", "/limits/context", "/limits/subject"})
        agree("get", path);
    const Reply token = agree("post", "/tokens", {},
                              {{"permissions", {"InvoiceRead"}}, {"description", "Do odczytu"}});
    agree("get", "/tokens");
    const Parameters made = {token.json().at("referenceNumber")};
    agree("get", "/tokens/{referenceNumber}", made);
    agree("delete", "/tokens/{referenceNumber}", made);
    agree("delete", "/auth/sessions/{referenceNumber}", {it.authentication_reference});
    agree("delete", "/auth/sessions/current");
}

void ContractTest::meet_every_error() {
    Client& it = client();
    const Json key_id = std::string(43, 'A') + "=";
    // Signing in.
    Json attempt = {{"challenge", unknown_reference},
                    {"contextIdentifier", {{"type", "Nip"}, {"value", seller_nip}}},
                    {"encryptedToken", "AAAA"}};
    EXPECT_EQ(refused("post", "/auth/ksef-token", {}, attempt), 21111);
    attempt["publicKeyId"] = key_id;
    EXPECT_EQ(refused("post", "/auth/ksef-token", {}, attempt), 21470);
    attempt["publicKeyId"] = "AAAA";
    EXPECT_EQ(refused("post", "/auth/ksef-token", {}, attempt), 21405);

    it.sign_in(seller_nip);
    const std::string access = it.access_token;
    it.bearer = it.authentication_token;
    EXPECT_EQ(refused("post", "/auth/token/redeem"), 21301) << "a second time";
    for (const std::string& other : {unknown_reference, std::string("short")})
        EXPECT_EQ(refused("get", "/auth/{referenceNumber}", {other}), 21304);
    it.bearer = access;
    agree("delete", "/auth/sessions/current");
    it.bearer = it.refresh_token;
    EXPECT_EQ(refused("post", "/auth/token/refresh"), 21301) << "signed off";
    it.bearer = it.authentication_token;
    it.send_token("own|nip-" + std::string(buyer_nip) + "|x", seller_nip, it.challenge());
    it.bearer = it.authentication_token;
    EXPECT_EQ(refused("post", "/auth/token/redeem"), 21301) << "a wrong token";
    // The token is revoked while it is used.
    const Json dying = sign_in_with("InvoiceRead");
    Client killer = client_of(seller_nip);
    it.send_token(dying.at("token"), seller_nip, it.challenge());
    killer.remove("/tokens/" + dying.at("referenceNumber").get<std::string>());
    it.bearer = it.authentication_token;
    EXPECT_EQ(refused("post", "/auth/token/redeem"), 21301);
    it.bearer = it.refresh_token;
    EXPECT_EQ(refused("post", "/auth/token/refresh"), 21301);

    // What is unknown, malformed or of a wrong length.
    it.sign_in(seller_nip);
    for (const auto& [route, method, path, unknown] : operations()) {
        if (route.access.need != Need::access_token) continue;
        if (!unknown.empty()) {
            const Json body = it.invoice_body(SampleInvoice().xml());
            EXPECT_NE(refused(method, path, unknown, body), 0) << path;
            EXPECT_EQ(refused(method, path, Parameters(unknown.size(), "short")), 21405) << path;
        } else if (method == "post") {
            // One whose body may be empty refuses what stands beside it.
            EXPECT_EQ(refused(method, path, {}, Json::object(), "?pageSize=1"), 21405) << path;
        }
    }
    const std::pair<const char*, Parameters> lists[] = {
        {"/auth/sessions", {}},
        {"/sessions", {}},
        {"/tokens", {}},
        {"/sessions/{referenceNumber}/invoices", {it.open_session()}},
        {"/sessions/{referenceNumber}/invoices/failed", {it.session}}};
    for (const auto& [path, parameters] : lists) {
        EXPECT_EQ(refused("get", path, parameters, {}, "?sessionType=Online&pageSize=9"), 21405);
        it.headers["x-continuation-token"] = "%%%";
        EXPECT_EQ(refused("get", path, parameters, {}, "?sessionType=Online"), 21418) << path;
        it.headers.clear();
    }

    // Sessions and invoices.
    Json open = it.open_body(std::string(32, 'k'));
    open["encryption"]["publicKeyId"] = key_id;
    EXPECT_EQ(refused("post", "/sessions/online", {}, open), 21470);
    const std::string send = "/sessions/online/{referenceNumber}/invoices",
                      close = "/sessions/online/{referenceNumber}/close";
    const std::string good = SampleInvoice{.number = "FV/2"}.xml();
    it.send("<Faktura");
    const Json sent = it.invoice_body(good);
    const auto with = [&](const Json& changes) {
        Json body = sent;
        body.update(changes);
        return body;
    };
    const auto correction_of = [&](const std::string& document) {
        return with({{"offlineMode", true}, {"hashOfCorrectedInvoice", sha256_base64(document)}});
    };
    agree("post", send, {it.session}, correction_of("<Faktura"));
    const std::pair<Json, int> wrong[] = {{with({{"encryptedInvoiceSize", 1}}), 21402},
                                          {with({{"encryptedInvoiceHash", key_id}}), 21403},
                                          {correction_of("<Faktura"), 21166},
                                          {correction_of(good), 21167}};
    for (const auto& [body, code] : wrong)
        EXPECT_EQ(refused("post", send, {it.session}, body), code);
    const std::string own = it.session;
    EXPECT_EQ(refused("get", "/sessions/{referenceNumber}/upo/{upoReferenceNumber}",
                      {own, unknown_reference}),
              21178);
    agree("post", close, {own});
    EXPECT_EQ(refused("post", close, {own}), 21180);
    EXPECT_EQ(refused("post", send, {own}, sent), 21180);

    const std::string package = "/sessions/batch", finish = package + "/{referenceNumber}/close";
    Json batch = it.package_body("archive");
    const std::pair<const char*, std::pair<Json, int>> spoilt[] = {
        {"encryption.publicKeyId", {key_id, 21470}},
        {"batchFile.fileSize", {5'000'000'001, 21405}},
        {"batchFile.compressionType", {"Rar", 21405}},
        {"batchFile.fileParts", {Json::array(), 21405}},
        {"batchFile.fileParts[0].ordinalNumber", {2, 21405}},
        {"batchFile.fileParts[0].fileSize", {100'000'017, 21157}},
        {"batchFile.fileParts",
         {Json(std::vector<Json>(51, batch["batchFile"]["fileParts"][0])), 21161}}};
    for (const auto& [path_of_it, change] : spoilt) {
        Json body = batch;
        set_at_path(body, path_of_it, change.first);
        EXPECT_EQ(refused("post", package, {}, body), change.second) << path_of_it;
    }
    it.open_package(batch);
    EXPECT_EQ(refused("post", finish, {it.session}), 21205);
    it.put(it.part_urls[0], "short");
    EXPECT_EQ(refused("post", finish, {it.session}), 21157);
    it.put(it.part_urls[0], it.parts[0]);
    agree("post", finish, {it.session});
    EXPECT_EQ(refused("post", finish, {it.session}), 21180);
    for (const auto wait : {std::chrono::minutes(20), std::chrono::minutes(12h)}) {
        it.open_package(batch);
        sandbox().advance(wait);
        it.sign_in(seller_nip);
        EXPECT_EQ(refused("post", finish, {it.session}), 21208);
    }

    const Json range = {{"dateType", "PermanentStorage"},
                        {"from", "2026-11-22"},
                        {"to", "2026-11-23"},
                        {"restrictToPermanentStorageHwmDate", true}};
    EXPECT_EQ(refused("post", "/invoices/query/metadata", {},
                      {{"subjectType", "Subject1"}, {"dateRange", range}}),
              21183);
    sign_in_with("InvoiceRead");
    EXPECT_EQ(refused("post", "/tokens", {},
                      {{"permissions", {"InvoiceWrite"}}, {"description", "Zapis"}}),
              26001);

    // Nothing is known of the operation any more.
    const std::pair<std::string, const char*> forgotten[] = {
        {it.authentication_token, "/auth/token/redeem"}, {it.refresh_token, "/auth/token/refresh"}};
    control().post("/sandbox/reset");
    for (const auto& [bearer, path] : forgotten) {
        it.bearer = bearer;
        EXPECT_EQ(refused("post", path), 21304);
    }
}

TEST_F(ContractTest, EveryAnswerOfEveryOperationAgrees) {
    work_a_day();
    meet_every_error();

    client().bearer.clear();
    for (const auto& [route, method, path, unknown] : operations())
        if (route.access.need != Need::nothing) agree(method, path, unknown);
    sign_in_with("SubunitManage");
    for (const auto& [route, method, path, unknown] : operations())
        if (!route.access.permissions.empty()) agree(method, path, unknown);
    control().post("/sandbox/faults",
                   {{"step", "*"}, {"kind", "429"}, {"count", -1}, {"retry_after", 1}});
    for (const auto& [route, method, path, unknown] : operations()) refused(method, path, unknown);

    // Nothing of the table was forgotten above.
    for (const auto& [route, method, path, unknown] : operations()) {
        const std::string operation = method + " " + path + " ";
        const auto met = [&](const std::string& what) { return seen_.contains(operation + what); };
        EXPECT_TRUE(met("200") || met("201") || met("202") || met("204")) << operation;
        EXPECT_EQ(met("401"), route.access.need != Need::nothing) << operation;
        EXPECT_TRUE(met("403") || route.access.permissions.empty()) << operation;
        EXPECT_TRUE(met("429")) << operation;
        for (const PublishedError& error : contract_->errors(method, path))
            EXPECT_TRUE(met(error.name()) || unreachable.contains(error.name()) ||
                        unreachable.contains(operation + error.name()))
                << operation << error.name();
    }
}

TEST_F(ContractTest, EveryStatusThatProcessingCanFindIsPublished) {
    Client& it = client();
    const auto order = [&](const char* step, int code) {
        const Json fault = {{"step", step}, {"kind", "verdict"}, {"code", code}};
        EXPECT_EQ(control().post("/sandbox/faults", fault).status, 200);
    };
    const auto shows = [&](const char* path, const std::string& reference, int code) {
        EXPECT_EQ(agree("get", path, {reference}).json().at("status").at("code"), code);
    };
    for (int code : {415, 425, 450, 460, 470, 480, 500, 550}) {
        order("processing/authentication", code);
        it.send_token(token_of(seller_nip), seller_nip, it.challenge());
        it.bearer = it.authentication_token;
        shows("/auth/{referenceNumber}", it.authentication_reference, code);
    }
    open_as_seller();
    for (int code : {405, 410, 415, 430, 435, 450, 500, 550}) {
        order("processing/invoice", code);
        it.send(SampleInvoice().xml());
    }
    const Reply list = agree("get", "/sessions/{referenceNumber}/invoices", {it.session});
    EXPECT_EQ(list.json().at("invoices").size(), 8u);
    for (int code : {200, 415, 440, 445}) {
        it.open_session();
        order("processing/session", code);
        close();
        shows("/sessions/{referenceNumber}", it.session, code);
    }
    for (int code : {405, 415, 420, 430, 435, 440, 500}) {
        order("processing/package", code);
        it.send_package(it.package_body("archive"));
        shows("/sessions/{referenceNumber}", it.session, code);
    }
}

TEST_F(ContractTest, TheJudgeCanSayNo) {
    const auto agrees = [&](int status, const Json& body,
                            const char* type = "application/json; charset=utf-8") {
        const SeenAnswer seen{status, dump(body), {{"content-type", type}}};
        return contract_->judge("get", "/auth/{referenceNumber}", seen).empty();
    };
    client().sign_in(seller_nip);
    client().bearer = client().authentication_token;
    const Json good = client().get("/auth/" + client().authentication_reference).json(),
               error = client().get("/auth/" + unknown_reference).json();
    EXPECT_TRUE(agrees(200, good));
    EXPECT_TRUE(agrees(400, error));
    EXPECT_FALSE(agrees(201, good));
    EXPECT_FALSE(agrees(200, good, "text/json"));
    const std::string item = "exception.exceptionDetailList[0].";
    const std::pair<std::string, Json> spoilt[] = {
        {"extra", 1},
        {"startDate", "yesterday"},
        {"authenticationMethod", "Tokens"},
        {"status.code", 201},
        {"status.description", "Sukces"},
        {"refreshTokenValidUntil", nullptr},
        {item + "exceptionCode", 21305},
        {item + "exceptionDescription", "Brak"},
        {item + "details", {"Nie ma jej."}},
    };
    for (const auto& [path, value] : spoilt) {
        const bool in_error = path.starts_with(item);
        Json bad = in_error ? error : good;
        set_at_path(bad, path, value);
        EXPECT_FALSE(agrees(in_error ? 400 : 200, bad)) << path;
    }
}

}  // namespace
}  // namespace tavrix::sandbox::testing
