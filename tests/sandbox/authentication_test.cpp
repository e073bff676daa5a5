// Signing in with a token, and everything that can be wrong with it.
#include "tests/sandbox/fixture.h"

namespace tavrix::sandbox::testing {
namespace {

using namespace std::chrono_literals;

class AuthenticationTest : public SandboxTest {
  protected:
    /// Status of a sign-in that was accepted for processing.
    Json status_after(const Reply& accepted) {
        EXPECT_EQ(accepted.status, 202) << accepted.body;
        client().bearer = client().authentication_token;
        return client().get("/auth/" + client().authentication_reference).json().at("status");
    }
    Reply send_token(const Json& challenge, const std::string& certificate = "") {
        return client().send_token(token_of(seller_nip), seller_nip, challenge, certificate);
    }
    Json make_token(const char* permission, const std::string& description = "Token") {
        return client()
            .post("/tokens", {{"permissions", {permission}}, {"description", description}})
            .json();
    }
    Json tokens(const std::string& query = "") {
        return client().get("/tokens?" + query).json().value("tokens", Json());
    }
    int refresh() {
        client().bearer = client().refresh_token;
        const Reply reply = client().post("/auth/token/refresh");
        if (reply.status == 200) client().bearer = reply.json().at("accessToken").at("token");
        return reply.status;
    }
};

TEST_F(AuthenticationTest, WrongTokensEndInStatus450WithTheReason) {
    const std::string good = token_of(seller_nip), wrong = "Nieprawidłowy token",
                      late = "Nieprawidłowy czas tokena";
    start([&](Options& it) { it.tokens = {good}; });
    const std::tuple<std::string, const char*, int, std::string> cases[] = {
        {good, buyer_nip, 0, wrong},
        {good + "b", seller_nip, 0, wrong},
        {good, seller_nip, 1, late},
    };
    for (const auto& [token, nip, clock_error_ms, reason] : cases) {
        Json challenge = client().challenge();
        challenge["timestampMs"] = challenge["timestampMs"].get<std::int64_t>() + clock_error_ms;
        const Json status = status_after(client().send_token(token, nip, challenge));
        EXPECT_EQ(status.at("code"), 450) << token;
        EXPECT_EQ(status.at("details")[0], reason) << token;
    }
    EXPECT_EQ(Client(sandbox().port(), "/api/v2").sign_in(seller_nip).status, 200);

    start();  // without a list any token of the right shape is good
    const std::string unit = "20261001-EC-220B0CE000-E228129563-96|internalid-5265877635-12345|abc";
    EXPECT_EQ(client().sign_in(seller_nip, unit).status, 200);
    EXPECT_EQ(client().sign_in(buyer_nip, unit).status, 400);
    EXPECT_EQ(client().sign_in(seller_nip, "own|nip-5265877635|").status, 400);
}

TEST_F(AuthenticationTest, AChallengeServesOnceAndTenMinutes) {
    const Json used = client().challenge();
    EXPECT_EQ(status_after(send_token(used)).at("code"), 200);
    EXPECT_EQ(send_token(used).exception_code(), 21111);

    Json last_moment = client().challenge();
    const Json late = client().challenge();
    sandbox().advance(10min);
    EXPECT_EQ(status_after(send_token(last_moment)).at("code"), 200);
    sandbox().advance(1ms);
    EXPECT_EQ(status_after(send_token(late)).at("code"), 450);
    const std::string text = last_moment.at("challenge");
    for (const auto& [changed, code] :
         {std::pair(text.substr(1), 21405), {text + "0", 21405}, {text.substr(1) + "x", 21111}}) {
        last_moment["challenge"] = changed;
        EXPECT_EQ(send_token(last_moment).exception_code(), code) << changed;
    }

    start([](Options& it) { it.time.fraction_digits = 0; });
    const Json coarse = client().challenge();
    const std::string shown = coarse.at("timestamp");
    EXPECT_EQ(coarse.at("timestampMs"), unix_ms(*parse_instant(shown))) << "as few digits in both";
}

TEST_F(AuthenticationTest, AnAccessTokenServesOnlyTheAddressesItWasAskedFor) {
    const std::tuple<const char*, Json, int> cases[] = {
        {"ip4Addresses", {"10.0.0.1", "127.0.0.1"}, 200},
        {"ip4Ranges", {"127.0.0.0-127.0.0.1"}, 200},
        {"ip4Ranges", {"127.0.0.2-127.0.0.9"}, 403},
        {"ip4Masks", {"127.255.255.255/8"}, 200},
        {"ip4Masks", {"127.0.0.2/31", "0.0.0.0/32"}, 403},
        {"ip4Masks", {"1.2.3.4/0"}, 200},
        {"ip4Addresses", {"127.0.0.01"}, 400},
        {"ip4Addresses", Json(std::vector<std::string>(11, "127.0.0.1")), 400},
        {"ip4Ranges", {"127.0.0.9-127.0.0.2"}, 400},
        {"ip4Masks", {"127.0.0.0/33"}, 400},
        {"ip4Addresses", {"127.0.0.2"}, 403},
    };
    for (const auto& [kind, value, status] : cases) {
        client().policy = {{"allowedIps", {{kind, value}}}};
        // Signing in is not limited itself, but refuses what is no address.
        const Reply entry = client().sign_in(seller_nip);
        EXPECT_EQ(entry.status == 200 ? list_sessions().status : entry.status, status)
            << kind << value;
    }
    const Json refusal = list_sessions().json();
    EXPECT_EQ(refusal.at("reasonCode"), "ip-not-allowed");
    EXPECT_EQ(refusal.at("security").at("clientIp"), "127.0.0.1");
}

TEST_F(AuthenticationTest, WaitingIsCountedInPollsAndInTime) {
    start([](Options& it) { it.authentication = {.delay_ms = 500, .polls = 2}; });
    EXPECT_EQ(client().sign_in(seller_nip).exception_code(), 21301) << "the first poll";
    const std::string path = "/auth/" + client().authentication_reference;
    for (int poll = 2; poll <= 3; ++poll)
        EXPECT_EQ(client().get(path).json().at("status").at("code"), 100) << "too early";
    sandbox().advance(500ms);
    EXPECT_EQ(client().get(path).json().at("status").at("code"), 200);
    EXPECT_EQ(client().post("/auth/token/redeem").status, 200);
}

TEST_F(AuthenticationTest, EachStepWantsItsOwnToken) {
    client().sign_in(seller_nip);
    const std::string status = "/auth/" + client().authentication_reference,
                      access = client().access_token;
    const std::tuple<const char*, std::string, int, int, int> cases[] = {
        {"tampered", access.substr(0, access.size() - 2) + "xx", 401, 401, 401},
        {"authentication", client().authentication_token, 200, 401, 401},
        {"access", access, 401, 200, 401},
        {"refresh", client().refresh_token, 401, 401, 200},
    };
    for (const auto& [what, bearer, status_code, list_code, refresh_code] : cases) {
        client().bearer = bearer;
        EXPECT_EQ(client().get(status).status, status_code) << what;
        EXPECT_EQ(list_sessions().status, list_code) << what;
        EXPECT_EQ(client().post("/auth/token/refresh").status, refresh_code) << what;
    }
}

TEST_F(AuthenticationTest, AnAccessTokenLastsAQuarterAndIsRefreshedUntilRevoked) {
    client().sign_in(seller_nip);
    sandbox().advance(15min - 2s);
    EXPECT_EQ(list_sessions().status, 200);
    sandbox().advance(2s);
    EXPECT_EQ(list_sessions().status, 401);
    EXPECT_EQ(refresh(), 200);
    EXPECT_EQ(client().remove("/auth/sessions/current").status, 204);
    EXPECT_EQ(list_sessions().status, 200) << "access tokens live on until they expire";
    EXPECT_EQ(refresh(), 400);
}

TEST_F(AuthenticationTest, TokensAreFoundByStatusDescriptionAndAuthor) {
    client().sign_in(seller_nip);
    std::string longest;
    for (int i = 0; i < 256; ++i) longest += "ź";
    const Json revoked = make_token("InvoiceRead", "Żółte, do ODCZYTU");
    client().remove("/tokens/" + revoked.at("referenceNumber").get<std::string>());
    sandbox().advance(1s);
    make_token("InvoiceRead", longest);
    for (const std::string& wrong : {longest + "z", std::string("żółć")})
        EXPECT_FALSE(make_token("InvoiceRead", wrong).contains("token")) << wrong;
    const std::pair<const char*, int> cases[] = {
        {"", 2},
        {"status=Revoked&status=Active", 2},
        {"description=%C5%BB%C3%93%C5%81TE", 1},
        {"description=odczytu&status=Active", 0},
        {"authorIdentifier=526&authorIdentifierType=Nip", 2},
        {"authorIdentifier=735", 0},
        {"authorIdentifierType=Pesel", 0},
    };
    for (const auto& [query, count] : cases) EXPECT_EQ(tokens(query).size(), count) << query;
    EXPECT_EQ(tokens()[0].at("description"), longest) << "the newest first";
    for (const char* wrong : {"status=active", "description=od", "authorIdentifierType=nip"})
        EXPECT_TRUE(tokens(wrong).is_null()) << wrong;
}

TEST_F(AuthenticationTest, ATokenGrantsWhatItHoldsUntilItIsRevoked) {
    client().sign_in(seller_nip);
    const Json writer = make_token("InvoiceWrite"), reader = make_token("CredentialsRead"),
               manager = make_token("CredentialsManage");
    const auto revoke = [&](const Json& token) {
        return client().remove("/tokens/" + token.at("referenceNumber").get<std::string>()).status;
    };
    client().sign_in(seller_nip, writer.at("token"));
    EXPECT_EQ(client().get("/invoices/ksef/any").status, 403) << "it grants writing only";
    ASSERT_EQ(tokens().size(), 1u);
    EXPECT_EQ(tokens()[0].at("referenceNumber"), writer.at("referenceNumber"));
    EXPECT_EQ(revoke(reader), 403);
    client().sign_in(seller_nip, reader.at("token"));
    EXPECT_EQ(tokens().size(), 3u);
    EXPECT_EQ(revoke(writer), 403);
    EXPECT_EQ(revoke(reader), 204) << "its own";
    client().sign_in(seller_nip, manager.at("token"));
    EXPECT_EQ(tokens().size(), 3u);
    EXPECT_EQ(revoke(writer), 204);
    const Json status =
        status_after(client().send_token(writer.at("token"), seller_nip, client().challenge()));
    EXPECT_EQ(status.at("details")[0], "Token unieważniony");
}

TEST_F(AuthenticationTest, SignInsAreListedNewestFirstAndOneCanEndAnother) {
    Client first = client_of(seller_nip);
    sandbox().advance(1s);
    client().sign_in(seller_nip);
    const auto listed = [&] { return client().get("/auth/sessions").json().at("items"); };
    ASSERT_EQ(listed().size(), 2u);
    EXPECT_EQ(listed()[0].at("isCurrent"), true);
    EXPECT_EQ(listed()[1].at("referenceNumber"), first.authentication_reference);
    EXPECT_EQ(client().remove("/auth/sessions/" + first.authentication_reference).status, 204);
    EXPECT_EQ(listed().size(), 1u) << "only active ones";
    first.bearer = first.refresh_token;
    EXPECT_EQ(first.post("/auth/token/refresh").status, 400);
}

TEST_F(AuthenticationTest, ARotatedKeyStillServes) {
    const std::string old_one = client().certificate("KsefTokenEncryption");
    control().post("/sandbox/keys/rotate", {{"usage", "KsefTokenEncryption"}});
    const std::string new_one = client().certificate("KsefTokenEncryption");
    ASSERT_NE(new_one, old_one);
    for (const std::string& certificate : {old_one, new_one})
        EXPECT_EQ(status_after(send_token(client().challenge(), certificate)).at("code"), 200);
}

}  // namespace
}  // namespace tavrix::sandbox::testing
