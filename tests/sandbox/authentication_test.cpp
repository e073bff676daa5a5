// Signing in with a token, and everything that can be wrong with it.
#include "sandbox/basics/crypto.h"
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
        const Json status =
            client().get("/auth/" + client().authentication_reference).json().at("status");
        client().bearer.clear();
        return status;
    }
};

TEST_F(AuthenticationTest, BothRootsSignIn) {
    for (const char* root : {"/v2", "/api/v2"}) {
        Client it(sandbox().port(), root);
        EXPECT_EQ(it.sign_in(seller_nip).status, 200) << root;
    }
}

TEST_F(AuthenticationTest, WrongTokensEndInStatus450WithTheReason) {
    Options options;
    options.tokens = {token_of(seller_nip)};
    start(options);
    struct Case {
        std::string token, nip;
        std::chrono::milliseconds clock_error;
        std::string reason;
    };
    const std::string good = token_of(seller_nip);
    const Case cases[] = {
        {good, buyer_nip, 0ms, "Nieprawidłowy token"},
        {good + "b", seller_nip, 0ms, "Nieprawidłowy token"},
        {"no bars", seller_nip, 0ms, "Nieprawidłowy token"},
        {"20261001-EC-0000000000-0000000000-00|nip-5265877635|abc", seller_nip, 0ms,
         "Nieprawidłowy token"},
        {good, seller_nip, 1ms, "Nieprawidłowy czas tokena"},
        {good, seller_nip, -1ms, "Nieprawidłowy czas tokena"},
    };
    for (const Case& it : cases) {
        Json challenge = client().challenge();
        challenge["timestampMs"] =
            challenge["timestampMs"].get<std::int64_t>() + it.clock_error.count();
        const Json status = status_after(client().send_token(it.token, it.nip, challenge));
        EXPECT_EQ(status.at("code"), 450) << it.token << " " << it.nip;
        EXPECT_EQ(status.at("details")[0], it.reason) << it.token << " " << it.nip;
    }
    EXPECT_EQ(client().sign_in(seller_nip).status, 200);
}

TEST_F(AuthenticationTest, AnyTokenOfTheRightShapeIsGoodWhenNoneIsNamed) {
    const std::string unit = "20261001-EC-220B0CE000-E228129563-96|internalid-5265877635-12345|abc";
    EXPECT_EQ(client().sign_in(seller_nip, "own|nip-5265877635|secret").status, 200);
    EXPECT_EQ(client().sign_in(seller_nip, unit).status, 200);
    EXPECT_EQ(client().sign_in(buyer_nip, unit).status, 400);
    EXPECT_EQ(client().sign_in(seller_nip, "|nip-5265877635|secret").status, 400);
    EXPECT_EQ(client().sign_in(seller_nip, "own|nip-5265877635|").status, 400);
}

TEST_F(AuthenticationTest, AChallengeServesOnceAndTenMinutes) {
    const Json used = client().challenge();
    EXPECT_EQ(status_after(client().send_token(token_of(seller_nip), seller_nip, used)).at("code"),
              200);
    EXPECT_EQ(client().send_token(token_of(seller_nip), seller_nip, used).exception_code(), 21111);

    const Json last_moment = client().challenge(), late = client().challenge();
    sandbox().advance(10min);
    EXPECT_EQ(
        status_after(client().send_token(token_of(seller_nip), seller_nip, last_moment)).at("code"),
        200);
    sandbox().advance(1ms);
    EXPECT_EQ(status_after(client().send_token(token_of(seller_nip), seller_nip, late)).at("code"),
              450);
}

TEST_F(AuthenticationTest, TheChallengesTwoTimesAgreeHoweverFewDigitsAreShown) {
    for (int digits : {0, 2, 7}) {
        Options options;
        options.time.fraction_digits = digits;
        start(options);
        const Json challenge = client().challenge();
        EXPECT_EQ(unix_ms(*parse_instant(challenge.at("timestamp").get<std::string>())),
                  challenge.at("timestampMs").get<std::int64_t>());
        EXPECT_EQ(client().sign_in(seller_nip).status, 200) << digits;
    }
}

TEST_F(AuthenticationTest, WaitingIsCountedInPollsOrInTime) {
    Options options;
    options.authentication.polls = 2;
    options.authentication.delay_ms = 500;
    start(options);
    client().send_token(token_of(seller_nip), seller_nip, client().challenge());
    client().bearer = client().authentication_token;
    const auto code = [&] {
        return client()
            .get("/auth/" + client().authentication_reference)
            .json()
            .at("status")
            .at("code")
            .get<int>();
    };
    EXPECT_EQ(client().post("/auth/token/redeem").exception_code(), 21301);  // the first poll
    EXPECT_EQ(code(), 100);
    EXPECT_EQ(code(), 100) << "polled enough, but too early";
    sandbox().advance(500ms);
    EXPECT_EQ(code(), 200);
    EXPECT_EQ(client().post("/auth/token/redeem").status, 200);
    EXPECT_EQ(client().post("/auth/token/redeem").exception_code(), 21301)
        << "tokens are given out once";
}

TEST_F(AuthenticationTest, EachStepWantsItsOwnToken) {
    client().sign_in(seller_nip);
    const std::string status = "/auth/" + client().authentication_reference;
    struct Case {
        const char* what;
        std::string bearer;
        int status_code, list_code, refresh_code;
    };
    const std::string tampered =
        client().access_token.substr(0, client().access_token.size() - 2) + "xx";
    const Case cases[] = {
        {"none", "", 401, 401, 401},
        {"tampered", tampered, 401, 401, 401},
        {"authentication", client().authentication_token, 200, 401, 401},
        {"access", client().access_token, 401, 200, 401},
        {"refresh", client().refresh_token, 401, 401, 200},
    };
    for (const Case& it : cases) {
        client().bearer = it.bearer;
        EXPECT_EQ(client().get(status).status, it.status_code) << it.what;
        EXPECT_EQ(client().get("/sessions?sessionType=Online").status, it.list_code) << it.what;
        EXPECT_EQ(client().post("/auth/token/refresh").status, it.refresh_code) << it.what;
    }
}

TEST_F(AuthenticationTest, AnAccessTokenLastsAQuarterAndIsRefreshedUntilRevoked) {
    client().sign_in(seller_nip);
    const auto list = [&] { return client().get("/sessions?sessionType=Online").status; };
    sandbox().advance(15min - 2s);
    EXPECT_EQ(list(), 200);
    sandbox().advance(2s);
    EXPECT_EQ(list(), 401);

    client().bearer = client().refresh_token;
    const Reply refreshed = client().post("/auth/token/refresh");
    ASSERT_EQ(refreshed.status, 200);
    client().bearer = refreshed.json().at("accessToken").at("token");
    EXPECT_EQ(list(), 200);

    EXPECT_EQ(client().get("/auth/sessions").json().at("items").size(), 1u);
    EXPECT_EQ(client().remove("/auth/sessions/current").status, 204);
    EXPECT_EQ(list(), 200) << "access tokens live on until they expire";
    EXPECT_EQ(client().get("/auth/sessions").json().at("items").size(), 0u);
    client().bearer = client().refresh_token;
    EXPECT_EQ(client().post("/auth/token/refresh").exception_code(), 21301);
}

TEST_F(AuthenticationTest, ATokenMadeHereWorksUntilItIsRevoked) {
    client().sign_in(seller_nip);
    const Json made =
        client()
            .post("/tokens", {{"permissions", {"InvoiceWrite"}}, {"description", "Sprzedaż"}})
            .json();
    const std::string reference = made.at("referenceNumber"), token = made.at("token");
    EXPECT_TRUE(token.starts_with(reference + "|nip-5265877635|"));
    EXPECT_EQ(client().sign_in(seller_nip, token).status, 200);
    EXPECT_EQ(client()
                  .post("/tokens", {{"permissions", {"InvoiceRead"}}, {"description", "Odczyt"}})
                  .exception_code(),
              26001)
        << "a token cannot grant what it does not hold";
    EXPECT_EQ(client().remove("/tokens/" + reference).status, 204);
    EXPECT_EQ(client().get("/tokens/" + reference).json().at("status"), "Revoked");
    client().bearer.clear();
    const Json status = status_after(client().send_token(token, seller_nip, client().challenge()));
    EXPECT_EQ(status.at("details")[0], "Token unieważniony");
}

TEST_F(AuthenticationTest, OldAndNewKeysBothWorkWhileTheyRotate) {
    const std::string old_certificate = client().certificate("KsefTokenEncryption");
    ASSERT_EQ(control_post("/sandbox/keys/rotate", {{"usage", "KsefTokenEncryption"}}).status, 200);
    EXPECT_EQ(client().get("/security/public-key-certificates").json().size(), 3u);
    const std::string new_certificate = client().certificate("KsefTokenEncryption");
    ASSERT_NE(new_certificate, old_certificate);
    for (const std::string& certificate : {old_certificate, new_certificate}) {
        const Json challenge = client().challenge();
        const std::string plain = token_of(seller_nip) + "|" +
                                  std::to_string(challenge.at("timestampMs").get<std::int64_t>());
        Json body = {{"challenge", challenge.at("challenge")},
                     {"contextIdentifier", {{"type", "Nip"}, {"value", seller_nip}}},
                     {"encryptedToken", encrypt_for_certificate(certificate, plain)}};
        EXPECT_EQ(client().post("/auth/ksef-token", body).status, 202);
    }
    EXPECT_EQ(state().at("authentications")[0].at("outcome").at("code"), 200);
    EXPECT_EQ(state().at("authentications")[1].at("outcome").at("code"), 200);
}

TEST_F(AuthenticationTest, AnUnknownKeyIdentifierIsRefusedAndTheChallengeKept) {
    const Json challenge = client().challenge();
    Json body = {{"challenge", challenge.at("challenge")},
                 {"contextIdentifier", {{"type", "Nip"}, {"value", seller_nip}}},
                 {"encryptedToken", base64_encode("nothing")},
                 {"publicKeyId", sha256_base64("some other key")}};
    EXPECT_EQ(client().post("/auth/ksef-token", body).exception_code(), 21470);
    EXPECT_EQ(client().send_token(token_of(seller_nip), seller_nip, challenge).status, 202);
}

}  // namespace
}  // namespace tavrix::sandbox::testing
