// The outcome of packages, read by the position of what the service lists.

#include "tests/ksef/scripted_exchange.h"

namespace tavrix::ksef {
namespace {

const std::string failed_upo = "Nieznany błąd pobierania upo";
const std::string list = "/api/v2/sessions?pageSize=1000&sessionType=Batch&statuses=";
const Answer nobody{200, R"({"sessions":[]})"};

std::string sessions(const std::string& entries, const std::string& token = "") {
    return R"({"continuationToken":")" + token + R"(","sessions":[)" + entries + "]}";
}
std::string session(const std::string& reference, const std::string& document) {
    return R"({"referenceNumber":")" + reference + R"(","number":")" + document + R"("})";
}
std::string invoices(const std::string& entries) {
    return R"({"invoices":[)" + entries + "]}";
}
std::string entry(const std::string& reference, const std::string& number) {
    return R"({"ordinalNumber":1,"r":")" + reference + R"(","k":")" + number + R"("})";
}

class Reconciliation : public ScriptedExchange {
  protected:
    /// A pass each; the accepted package S1 is document A with the reference R1, and so on.
    void begin() {
        begin_anew();
        connection->execute_script(
            "delete from dok_fak; insert into dok_fak (ddout_id,ddout_numer,NumerRef_ksef,"
            "numer_ksef) values (1,'A','R1','old'),(2,'B','R2','old'),(3,'C','R3','old')");
        script = {
            {list + "Succeeded", {{200, sessions(session("S1", "A") + "," + session("S2", "B"))}}},
            {list + "Failed", {nobody}},
            {list + "Cancelled", {nobody}},
            {"/api/v2/sessions/S1/invoices", {{200, invoices(entry("R1", "K1"))}}},
            {"/api/v2/sessions/S2/invoices", {{200, invoices(entry("R2", "K2"))}}},
            {"/api/v2/sessions/S3/invoices", {{200, invoices(entry("R3", "K3"))}}}};
        asked.clear();
    }
    std::string get_upo() {
        KseF_comm client(ports());
        ports::SqliteDatabase database(connection);
        return base::to_utf8(
            client.GetUpo(database, u"5265877635", base::SecretText(token), false));
    }
    std::string documents() {
        return rows(
            u"select ddout_numer,numer_ksef,status_ksef,Export_Opis_bledu_ksef from dok_fak");
    }
};

TEST_F(Reconciliation, EachPassLeavesItsOutcomeAndTheLastOneStays) {
    begin();
    script[list + "Failed"] = {{200, sessions(session("S2", "B"), "t=+/&")}};
    script[list + "Failed&x-continuation-token=t=+/&"] = {{503, ""}, {401, "{}"}, nobody};
    script[list + "Cancelled"] = {{200, sessions(session("S3", "C"))}};
    EXPECT_EQ(get_upo(), "");
    EXPECT_EQ(documents(), "A|K1|201|OK. B||500|Failed C||500|Canseled");
    EXPECT_EQ(asked, (std::vector<std::string>{
                         list + "Succeeded", "/api/v2/sessions/S1/invoices",
                         "/api/v2/sessions/S2/invoices", list + "Failed",
                         "/api/v2/sessions/S2/invoices", list + "Failed&x-continuation-token=t=+/&",
                         list + "Failed&x-continuation-token=t=+/&",
                         list + "Failed&x-continuation-token=t=+/&", list + "Cancelled",
                         "/api/v2/sessions/S3/invoices"}));
    EXPECT_EQ(clock.slept.count(), 0) << "nothing is waited for";
    EXPECT_EQ(rows(u"select DATA_OPERACJI from dok_fak where ddout_id=3"), "2026-11-21 12:30:15");
}

// What goes wrong at which path, the text, and the rows.
TEST_F(Reconciliation, FaultsHaveTheirTextAndLeaveWhatWasWritten) {
    const std::string succeeded = list + "Succeeded";
    const std::string of_s1 = "/api/v2/sessions/S1/invoices";
    const std::string of_s2 = "/api/v2/sessions/S2/invoices";
    const std::string untouched = "A|old|| B|old|| C|old||";
    const std::string first = "A|K1|201|OK. B|old|| C|old||";
    const std::string second = "A|old|| B|K2|201|OK. C|old||";
    const std::string both = "A|K1|201|OK. B|K2|201|OK. C|old||";
    const std::string again = sessions(session("S1", "A"), "T");
    const std::tuple<std::string, Answer, std::string, std::string> faults[] = {
        {succeeded, {0, ""}, failed_upo, untouched},
        {succeeded, {200, "<html>"}, failed_upo, untouched},
        {succeeded, {200, "{}"}, failed_upo, untouched},
        {succeeded, {200, sessions(R"({"r":"S1"},7,null,[],{"r":"S1","d":null})")}, "", untouched},
        // Today's service: the second member is the status.
        {succeeded, {200, sessions(R"({"r":"S1","status":{"code":200}})")}, "", untouched},
        {succeeded,
         {200, sessions(session("S1", "A'") + "," + session("S2", "B"))},
         failed_upo,
         untouched},
        {of_s1, {500, ""}, "", second},
        {of_s1, {0, ""}, failed_upo, untouched},
        {of_s2, {0, ""}, failed_upo, first},
        {of_s2, {200, R"({"invoices":[)"}, failed_upo, first},
        {of_s2, {200, "{}"}, failed_upo, first},
        {of_s2, {200, invoices("")}, "", first},
        {of_s1,
         {200, invoices(R"({"n":1},{"n":1,"r":"R1"},{"n":1,"r":null,"k":"K"},"R1",1)")},
         "",
         second},
        {of_s1, {200, invoices(entry("R9", "K9") + "," + entry("R1", "K1"))}, "", both},
        {of_s1, {200, invoices(entry("R1", "K1") + "," + entry("R1", "K9"))}, "", both},
        {of_s1,
         {200, invoices(R"({"n":1,"r":"R1","k":17.50})")},
         "",
         "A|17.50|201|OK. B|K2|201|OK. C|old||"},
    };
    for (const auto& [path, answer, text, expected] : faults) {
        begin();
        script[path] = {answer};
        EXPECT_EQ(get_upo(), text) << path << answer.body;
        EXPECT_EQ(documents(), expected) << path << answer.body;
    }
    begin();
    script[succeeded] = {{200, again}};
    script[succeeded + "&x-continuation-token=T"] = {{200, again}};
    EXPECT_EQ(get_upo(), "") << "a list that does not look at the token";
    EXPECT_EQ(documents(), first);

    begin();
    connection->execute_script(
        "create trigger t before update on dok_fak when new.ddout_id=2 "
        "begin select raise(abort,'locked'); end");
    EXPECT_EQ(get_upo(), failed_upo);
    EXPECT_EQ(documents(), first);
    token = u"no token";
    EXPECT_EQ(get_upo(), "Błędny token :no token");
}

}  // namespace
}  // namespace tavrix::ksef
