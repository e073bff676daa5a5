// What the client sends, judged by the published interface.
#include "tests/sandbox/contract.h"

#include <filesystem>

#include "tests/ksef/send_fixture.h"

namespace tavrix::ksef {
namespace {

using RequestContract = SendFixture;

TEST_F(RequestContract, BodiesAgreeWithThePublishedInterface) {
    if (!std::filesystem::exists(TAVRIX_KSEF_CONTRACT_DIR "/open-api.json")) {
        GTEST_SKIP() << "the published interface is not on this machine";
    }
    const sandbox::testing::Contract contract(TAVRIX_KSEF_CONTRACT_DIR);
    begin_anew("2026-11-20");
    connection->execute_script(
        "update dok_fak set NumerRef_ksef='20261120-EE-0000000000-0000000000-AA', HashFaktury='" +
        std::string(43, 'A') + "='");
    send();
    constexpr std::pair<const char*, const char*> operations[] = {
        {"auth/ksef-token", "/auth/ksef-token"},
        {"sessions/online", "/sessions/online"},
        {"sessions/online/invoices", "/sessions/online/{referenceNumber}/invoices"},
    };
    for (const auto& [step, path] : operations) {
        const auto requests = sandbox->requests(step);
        ASSERT_EQ(requests.size(), 1u) << step;
        test::Json body = requests[0].at("body");
        // Sizes travel as decimal texts, which the service reads as the numbers that its interface
        // speaks of.
        for (const char* size : {"invoiceSize", "encryptedInvoiceSize"}) {
            if (body.contains(size)) body[size] = std::stoll(body[size].get<std::string>());
        }
        for (const std::string& problem : contract.judge_request("post", path, body)) {
            ADD_FAILURE() << path << ' ' << problem << '\n' << body.dump(1).substr(0, 800);
        }
    }
    EXPECT_TRUE(sandbox->requests("sessions/online/invoices")[0].at("body").contains(
        "hashOfCorrectedInvoice"));
    EXPECT_FALSE(contract.judge_request("post", "/sessions/online", {{"formCode", 1}}).empty())
        << "the judge can say no";
}

}  // namespace
}  // namespace tavrix::ksef
