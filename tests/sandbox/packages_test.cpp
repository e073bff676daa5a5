// Packages of invoices: what is looked at when, and what a client then reads.
#include <filesystem>

#include "sandbox/basics/crypto.h"
#include "tests/sandbox/fixture.h"
#include "tests/sandbox/packed.h"
#include "tests/support/scratch_folder.h"

namespace tavrix::sandbox::testing {
namespace {

using namespace std::chrono_literals;

std::string numbered(int number) {
    return SampleInvoice{.number = "P/" + std::to_string(number)}.xml();
}

class PackagesTest : public SandboxTest {
  protected:
    void SetUp() override { client().sign_in(seller_nip); }
    Json session() { return client().get(session_path()).json(); }
    Json invoices(const std::string& which = "") {
        return client().get(session_path() + "/invoices" + which).json().at("invoices");
    }
};

TEST_F(PackagesTest, EachInvoiceIsJudgedByItselfHoweverThePackageIsMade) {
    const std::pair<Packing, std::size_t> ways[] = {
        {Packing::zip, 1}, {Packing::zip, 3}, {Packing::tar_gz, 2}};
    for (const auto& [packing, parts] : ways) {
        start();
        SetUp();
        const Files files = {{"folder/", ""},
                             {"folder/a.xml", numbered(1)},
                             {std::string(124, 'b') + ".xml", numbered(2)},
                             {"żółw.xml", numbered(1) + "\n"},
                             {"large.xml", std::string(3'000'001, ' ')},
                             {"c.zip", packed({{"nested.xml", numbered(3)}})}};
        Json body = client().package_body(packed(files, packing), parts);
        if (packing == Packing::tar_gz) body["batchFile"]["compressionType"] = "TarGz";
        EXPECT_EQ(client().send_package(body).status, 204);
        const Json status = session();
        EXPECT_EQ(status.at("status").at("code"), 200) << status;
        EXPECT_EQ(status.at("invoiceCount"), 5);
        EXPECT_EQ(status.at("failedInvoiceCount"), 3);
        const Json list = invoices();
        constexpr int codes[] = {200, 200, 440, 430, 450};
        ASSERT_EQ(list.size(), std::size(codes));
        for (std::size_t i = 0; i < list.size(); ++i) {
            EXPECT_EQ(list[i].at("status").at("code"), codes[i]) << list[i];
            EXPECT_EQ(list[i].at("invoiceFileName"), files[i + 1].first);
            EXPECT_EQ(list[i].at("invoiceHash"), sha256_base64(files[i + 1].second));
        }
        EXPECT_EQ(list[2].at("status").at("extensions").at("originalKsefNumber"),
                  list[0].at("ksefNumber"));
        EXPECT_EQ(invoices("/failed").size(), 3u);
        const Reply upo = client().download(status.at("upo").at("pages")[0].at("downloadUrl"));
        EXPECT_NE(upo.body.find("<CalkowitaLiczbaDokumentow>2<"), std::string::npos);
        EXPECT_EQ(client()
                      .get("/sessions?sessionType=Batch&statuses=Succeeded")
                      .json()
                      .at("sessions")[0]
                      .at("totalInvoiceCount"),
                  5);
    }
}

TEST_F(PackagesTest, WhatCannotBeUnpackedFailsAsAWholeAndListsNoInvoice) {
    Files many;
    for (int i = 0; i <= 10'000; ++i) many.emplace_back(std::to_string(i), "");
    const std::string good = packed({{"a.xml", numbered(1)}, {"b.xml", numbered(2)}});
    std::string bad_sum = good;
    bad_sum[bad_sum.find("a.xml") + 60] ^= 1;
    const auto named = [](const std::string& name) { return packed({{name, numbered(1)}}); };
    struct Case {
        int code;
        const char* why;
        std::string archive;
        const char* compression = "Zip";
    };
    const Case cases[] = {
        {430, "no archive", "<Faktura/>"},
        {430, "cut", good.substr(0, good.size() - 30)},
        {430, "another compression", good, "TarGz"},
        {430, "a wrong sum", bad_sum},
        {430, "encrypted", packed({{"a.xml", numbered(1)}}, Packing::encrypted_zip)},
        {430, "a link", packed({{"a.xml", ""}}, Packing::linked_tar_gz), "TarGz"},
        {430, "leads out", named("x/../../a.xml")},
        {430, "leads out on Windows", named("..\\a.xml")},
        {430, "too long a name", named(std::string(129, 'a'))},
        {430, "twice", packed({{"a.xml", numbered(1)}, {"a.xml", numbered(2)}})},
        {430, "a bomb", packed({{"a.xml", std::string(100'000'001, ' ')}})},
        {420, "too many", packed(many)},
        {440, "nothing", packed({{"folder/", ""}})},
    };
    for (const Case& it : cases) {
        Json body = client().package_body(it.archive);
        body["batchFile"]["compressionType"] = it.compression;
        EXPECT_EQ(client().send_package(body).status, 204);
        Json status = session();
        for (int i = 0; i < 500 && status.at("status").at("code") == 150; ++i) {
            std::this_thread::sleep_for(10ms);
            status = session();
        }
        EXPECT_EQ(status.at("status").at("code"), it.code) << it.why << status;
        EXPECT_FALSE(status.contains("invoiceCount")) << it.why;
        EXPECT_EQ(invoices().size(), 0u) << it.why;
    }
}

TEST_F(PackagesTest, WhatWasDeclaredWronglyShowsOnceTheSessionIsClosed) {
    const std::string archive = packed({{"a.xml", numbered(1)}});
    struct Case {
        int code;
        const char* path;
        Json value;
    };
    const Json other = sha256_base64("other"), key = client().open_body(std::string(31, 'k'));
    const Case cases[] = {
        {405, "batchFile.fileParts[0].fileHash", other},
        {430, "batchFile.fileHash", other},
        {430, "batchFile.fileSize", archive.size() + 1},
        {415, "encryption.encryptedSymmetricKey", key.at("encryption").at("encryptedSymmetricKey")},
    };
    for (const Case& it : cases) {
        Json body = client().package_body(archive);
        set_at_path(body, it.path, it.value);
        EXPECT_EQ(client().send_package(body).status, 204);
        EXPECT_EQ(session().at("status").at("code"), it.code) << it.path;
    }
    Json odd = client().package_body(archive);
    client().parts = {std::string(17, 'x')};
    odd["batchFile"]["fileParts"][0] = {
        {"ordinalNumber", 1}, {"fileSize", 17}, {"fileHash", sha256_base64(client().parts[0])}};
    client().send_package(odd);
    EXPECT_EQ(session().at("status").at("code"), 435);
    EXPECT_EQ(
        client().send_package(client().package_body(packed({{"a.xml", "<Faktura/>"}}))).status,
        204);
    EXPECT_EQ(session().at("status").at("code"), 445);
    EXPECT_EQ(invoices().size(), 1u);
}

TEST_F(PackagesTest, StorageTakesAnythingInTimeAndClosingComparesSizes) {
    const Json body = client().package_body(packed({{"a.xml", numbered(1)}}), 2);
    const auto close_code = [&] {
        return client().post("/sessions/batch/" + client().session + "/close").exception_code();
    };
    client().open_package(body);
    const std::vector<std::string> urls = client().part_urls, parts = client().parts;
    ASSERT_EQ(urls.size(), 2u);
    EXPECT_EQ(close_code(), 21205);
    const httplib::Headers blob = {{"x-ms-blob-type", "BlockBlob"}};
    httplib::Headers signed_in = blob;
    signed_in.emplace("Authorization", "Bearer " + client().bearer);
    EXPECT_EQ(client().put(urls[0], "x", signed_in).status, 401);
    EXPECT_EQ(client().put(urls[0], "x", {}).status, 400);
    EXPECT_EQ(client().put(urls[0].substr(0, urls[0].find('?')), "x").status, 403);
    const std::size_t digit = urls[0].find("/1?") + 1;
    EXPECT_EQ(client().put(std::string(urls[0]).replace(digit, 1, "2"), "x").status, 403);
    EXPECT_EQ(client().put(urls[0], "anything").status, 201);
    EXPECT_EQ(client().put(urls[1], parts[1]).status, 201);
    EXPECT_EQ(close_code(), 21157);
    EXPECT_EQ(client().put(urls[0], parts[0]).status, 201) << "again: replaced";
    sandbox().advance(40min);
    EXPECT_EQ(client().put(urls[0], parts[0]).status, 403) << "twenty minutes for each part";
    client().sign_in(seller_nip);
    EXPECT_EQ(close_code(), 0);
    EXPECT_EQ(close_code(), 21180);
    EXPECT_EQ(session().at("status").at("code"), 200);

    // Too late, once asked for and once forgotten.
    for (const auto wait : {std::chrono::minutes(20), std::chrono::minutes(12h)}) {
        client().open_package(client().package_body("archive"));
        sandbox().advance(wait);
        client().sign_in(seller_nip);
        EXPECT_EQ(close_code(), 21208);
        EXPECT_EQ(close_code(), 21208);
        EXPECT_EQ(session().at("status").at("details"), Json::array({"Przekroczono czas wysyłki"}));
    }
    EXPECT_EQ(
        client().get("/sessions?sessionType=Batch&statuses=Cancelled").json().at("sessions").size(),
        2u);
}

TEST(PackagesOverARestart, AreGoneOnWithAndTakeNoInvoiceTwice) {
    const test::ScratchFolder folder;
    const auto run = [&] {
        Options options;
        options.data_folder = folder.path();
        return std::make_unique<RunningSandbox>(
            options, open_sqlite_store(folder.path() / "sandbox.sqlite"));
    };
    constexpr int count = 2000;
    Files files;
    for (int i = 0; i < count; ++i) files.emplace_back(std::to_string(i) + ".xml", numbered(i));
    auto sandbox = run();
    Client first(sandbox->port());
    first.sign_in(seller_nip);
    first.open_package(first.package_body(packed(files), 2));
    first.put(first.part_urls[0], first.parts[0]);
    const auto restarted = [&] {
        sandbox.reset();
        sandbox = run();
        Client again(sandbox->port());
        again.bearer = first.bearer;
        again.session = first.session;
        return again;
    };
    const std::string url = first.part_urls[1];
    Client second = restarted();
    EXPECT_EQ(second.put(url, first.parts[1]).status, 201);
    EXPECT_EQ(second.post("/sessions/batch/" + first.session + "/close").status, 204);
    const auto state = [&](Client& client) {
        return client.get("/sessions/" + first.session).json();
    };
    Client third = restarted();
    EXPECT_EQ(state(third).at("status").at("code"), 150) << "not all of it takes one request";
    Client fourth = restarted();
    for (int i = 0; i < 3000 && state(fourth).at("status").at("code") == 150; ++i)
        std::this_thread::sleep_for(10ms);
    EXPECT_EQ(state(fourth).value("successfulInvoiceCount", 0), count) << state(fourth);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path() / "packages"));
}

}  // namespace
}  // namespace tavrix::sandbox::testing
