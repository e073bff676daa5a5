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

/// The status of a session once its package has been dealt with.
Json outcome(Client& client) {
    Json status;
    for (int i = 0; i < 3000; ++i) {
        status = client.get("/sessions/" + client.session).json();
        if (status.at("status").at("code") != 150) break;
        std::this_thread::sleep_for(10ms);
    }
    return status;
}

class PackagesTest : public SandboxTest {
  protected:
    void SetUp() override { client().sign_in(seller_nip); }
    Json invoices() { return client().get(session_path() + "/invoices").json().at("invoices"); }
};

TEST_F(PackagesTest, EachInvoiceIsJudgedByItselfHoweverThePackageIsMade) {
    const std::pair<Packing, std::size_t> ways[] = {{Packing::zip, 1}, {Packing::tar_gz, 3}};
    for (const auto& [packing, parts] : ways) {
        start();
        SetUp();
        const std::pair<int, std::pair<std::string, std::string>> files[] = {
            {0, {"folder/", ""}},
            {200, {"folder/a.xml", numbered(1)}},
            {200, {std::string(124, 'b') + ".xml", numbered(2)}},
            {440, {"żółw.xml", numbered(1) + "\n"}},
            {430, {"large.xml", std::string(3'000'001, ' ')}},
            {450, {"c.zip", packed({{"nested.xml", numbered(3)}})}}};
        Files contents;
        for (const auto& file : files) contents.push_back(file.second);
        Json body = client().package_body(packed(contents, packing), parts);
        if (packing == Packing::tar_gz) body["batchFile"]["compressionType"] = "TarGz";
        client().send_package(body);
        EXPECT_EQ(outcome(client()).at("status").at("code"), 200);
        const Json list = invoices();
        ASSERT_EQ(list.size(), 5u);
        for (std::size_t i = 0; i < list.size(); ++i) {
            const auto& [code, file] = files[i + 1];
            EXPECT_EQ(list[i].at("status").at("code"), code) << list[i];
            EXPECT_EQ(list[i].at("invoiceFileName"), file.first);
            EXPECT_EQ(list[i].at("invoiceHash"), sha256_base64(file.second));
        }
    }
}

TEST_F(PackagesTest, WhatCannotBeUnpackedFailsAsAWholeAndListsNoInvoice) {
    Files many;
    for (int i = 0; i <= 10'000; ++i) many.emplace_back(std::to_string(i), "");
    Files folders = {{"a.xml", numbered(1)}};
    for (int i = 0; i <= 5'000; ++i) folders.emplace_back(std::to_string(i) + "/", "");
    const auto named = [](const std::string& name) { return packed({{name, numbered(1)}}); };
    const std::string good = named("a.xml");
    std::string bad_sum = good;
    bad_sum[bad_sum.find("a.xml") + 60] ^= 1;
    const Json other = sha256_base64("other");
    client().package_body("sets the vector that the next line needs");
    const Json short_key = client().open_body(std::string(31, 'k'));
    struct Case {
        int code;
        std::string archive;
        const char* path = "batchFile.compressionType";
        Json value = "Zip";
    };
    const Case cases[] = {
        {405, good, "batchFile.fileParts[0].fileHash", other},
        {415, good, "encryption.encryptedSymmetricKey",
         short_key["encryption"]["encryptedSymmetricKey"]},
        {430, good, "batchFile.fileHash", other},
        {430, good, "batchFile.fileSize", good.size() + 1},
        {430, good, "batchFile.compressionType", "TarGz"},
        {430, good.substr(0, good.size() - 30)},
        {430, bad_sum},
        {430, packed({{"a.xml", numbered(1)}}, Packing::encrypted_zip)},
        {430, named("x/../../a.xml")},
        {430, named("..\\a.xml")},
        {430, named(std::string(129, 'a'))},
        {430, packed({{"a.xml", numbered(1)}, {"a.xml", numbered(2)}})},
        {430, packed({{"bomb.xml", std::string(100'000'001, ' ')}})},
        {430, packed(folders)},
        {420, packed(many)},
        {440, packed({})},
        {440, packed({{"folder/", ""}})},
    };
    for (const Case& it : cases) {
        Json body = client().package_body(it.archive);
        set_at_path(body, it.path, it.value);
        client().send_package(body);
        const Json status = outcome(client());
        const auto which = &it - cases;
        EXPECT_EQ(status.at("status").at("code"), it.code) << which << status;
        EXPECT_FALSE(status.contains("invoiceCount")) << which;
        EXPECT_EQ(invoices().size(), 0u) << which;
    }
    EXPECT_NE(control().get("/sesja/" + client().session).body.find("Nie przesłano faktur"),
              std::string::npos)
        << "the page says why";
    Json odd = client().package_body(good);
    client().parts = {std::string(17, 'x')};
    odd["batchFile"]["fileParts"][0]["fileSize"] = 17;
    odd["batchFile"]["fileParts"][0]["fileHash"] = sha256_base64(client().parts[0]);
    client().send_package(odd);
    EXPECT_EQ(outcome(client()).at("status").at("code"), 435);
}

TEST_F(PackagesTest, StorageTakesAnythingFromWhoHasTheAddressInTime) {
    client().open_package(client().package_body(packed({{"a.xml", numbered(1)}}), 2));
    const std::string url = client().part_urls.at(0);
    std::string other = url;
    other[other.find("/1?") + 1] = '2';
    const httplib::Headers signed_in = {{"x-ms-blob-type", "BlockBlob"},
                                        {"Authorization", "Bearer " + client().bearer}};
    EXPECT_EQ(client().put(url, "x", signed_in).status, 401);
    EXPECT_EQ(client().put(url, "x", {}).status, 400);
    EXPECT_EQ(client().put(url, "x", {{"x-ms-blob-type", "PageBlob"}}).status, 400);
    EXPECT_EQ(client().put(other, "x").status, 403);
    for (const std::string& content : {std::string("anything"), client().parts[0]})
        EXPECT_EQ(client().put(url, content).status, 201);
    client().put(client().part_urls[1], client().parts[1]);
    sandbox().advance(40min);
    EXPECT_EQ(client().put(url, "x").status, 403) << "twenty minutes for each part";
    client().sign_in(seller_nip);
    client().post("/sessions/batch/" + client().session + "/close");
    EXPECT_EQ(outcome(client()).at("status").at("code"), 200) << "what was put last counts";
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
    first.send_package(first.package_body(packed(files), 2));
    const auto code = [&](Client& it) {
        return it.get("/sessions/" + first.session).json().at("status").at("code");
    };
    EXPECT_EQ(code(first), 150) << "not all of it takes one request";
    sandbox.reset();
    sandbox = run();
    Client again(sandbox->port());
    again.bearer = first.bearer;
    again.session = first.session;
    const Json status = outcome(again);
    EXPECT_EQ(status.at("invoiceCount"), count);
    EXPECT_EQ(status.at("successfulInvoiceCount"), count);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path() / "packages"));
}

}  // namespace
}  // namespace tavrix::sandbox::testing
