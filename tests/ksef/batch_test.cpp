// SendBach and PodzielPlik: what crosses the wire, what is written, and what goes wrong.

#include <sys/resource.h>

#include <csignal>

#include "ksef/batch_manifest.h"
#include "tests/ksef/batch_fixture.h"
#include "tests/support/failing.h"

namespace tavrix::ksef {
namespace {

using test::Json;
const std::string wysylka = session_failed + "wyysłka pliku:sessions/batch:STATUS:";

using Batch = BatchFixture;

TEST_F(Batch, AnnouncesTheArchiveAndUploadsItEncryptedAsOnePart) {
    const auto digest = [&](std::string_view bytes) {
        return base::base64_encode(crypto->sha256(base::bytes_of(bytes)));
    };
    // The service takes no empty package, but is told of one.
    for (const std::size_t bytes : {0, 15, 16, 131'072, 1'000'000}) {
        Storage storage;
        begin(bytes, "sessions/batch", value_at("partUploadRequests[0].url", storage.url()));
        send_package();
        if (bytes == 0) storage.bodies.push_back(std::string(16, ' '));
        const std::string& body = storage.bodies.at(0);
        EXPECT_EQ(body.size(), bytes / 16 * 16 + 16);
        const Json opening = sandbox->requests("sessions/batch").at(0).at("body");
        const std::string expected =
            R"-({"formCode":{"systemCode":"FA (3)","schemaVersion":"1-0E","value":"FA"},)-"
            R"-("batchFile":{"fileSize":)-" +
            std::to_string(bytes) + R"-(,"fileHash":")-" + digest(content) +
            R"-(","fileParts":[{"ordinalNumber":1,"fileSize":)-" + std::to_string(body.size()) +
            R"-(,"fileHash":")-";
        EXPECT_EQ(opening.dump().substr(0, expected.size()), expected);
        EXPECT_EQ(opening.at("offlineMode"), false);
        if (bytes == 0) continue;
        EXPECT_EQ(opening.at("batchFile").at("fileParts").at(0).at("fileHash"), digest(body));
        const std::string& head = storage.heads.at(0);
        EXPECT_TRUE(head.starts_with("PUT /part?sig=%2F HTTP/1.1\r\n")) << head;
        for (const char* header :
             {"\nx-ms-blob-type: BlockBlob\r", "\nContent-Type: application/octet-stream\r"})
            EXPECT_NE(head.find(header), std::string::npos) << head;
        EXPECT_EQ(head.find("Authorization"), std::string::npos) << head;
    }
}

TEST_F(Batch, TroubleAtEachStepHasItsTextAndItsRow) {
    const char* const keys = "security/public-key-certificates";
    const char* const open = "sessions/batch";
    const char* const put = "storage/batch-parts";
    const char* const close = "sessions/batch/close";
    const std::string not_opened = session_failed + "sessions/batch:STATUS:timeout";
    const std::string not_closed = session_failed + "sessions/online/close:STATUS:timeout";
    const std::string no_key = session_failed + "Load RSA Public Key failed: *";
    const test::Troubles troubles = {
        {"auth/challenge", kind("drop"), session_failed + "auth/challenge:STATUS:0"},
        {"auth/status", wrong_token, session_failed + "{*"},
        {keys, value_at("[1].usage", Json::array({"Other"})), no_key},
        {open, status(400, "{\"e\":1}"), session_failed + "{\"e\":1}"},
        {open, status(503), not_opened},
        {open, status(200), not_opened},
        {open, kind("drop"), not_opened},
        {open, without("referenceNumber"), session_failed + unknown},
        {open, without("partUploadRequests"), wysylka + "0"},
        {open, value_at("partUploadRequests[0].url", "file:///etc/passwd"), wysylka + "0"},
        {open, value_at("partUploadRequests[0].method", "PUT\r\n"), session_failed + unknown},
        {put, status(200), wysylka + "200"},
        {put, status(403, "<Error/>"), wysylka + "403"},
        {put, kind("drop"), wysylka + "0"},
        {close, status(400, "{\"e\":2}"), session_failed + "{\"e\":2}", "1"},
        {close, status(200), not_closed, "1"},
        {close, kind("drop"), not_closed, "1"},
        {close, harmless, "", "1"},
    };
    run_through(
        *sandbox, troubles, [&] { begin(1000); },
        [&]() -> test::Outcome {
            const std::string result = send_package();
            EXPECT_LE(sandbox->requests(open).size(), 1u);
            EXPECT_EQ(sandbox->requests(close).size(), rows());
            return {result, rows() == 0 ? "" : std::to_string(rows())};
        });
    // Its invoices cannot be noted, and it is sent all the same.
    begin(1000);
    std::ofstream(file + base::to_utf8(manifest_suffix)) << R"({"file":"a.xml","ddout_id":1})";
    KsefPorts nowhere = ports();
    nowhere.settings_folder = u"/no/such/";
    ports::SqliteDatabase database(connection);
    EXPECT_EQ(send_package(nowhere, database), "");
    EXPECT_EQ(rows(), 1u);
    token = u"bez kresek";
    EXPECT_EQ(send_package(), "Błędny token :bez kresek");
    token = u"R|nic|s";
    EXPECT_EQ(send_package(), "Nieznany Błąd");
}

// Nothing whole may arrive of a package that is no longer the one that was announced.
TEST_F(Batch, PackageThatChangesOnTheWayIsNotSent) {
    const std::pair<std::function<void()>, std::string> changes[] = {
        {[&] { std::filesystem::resize_file(file, 999'999); }, session_failed + unknown},
        {[&] { std::ofstream(file) << std::string(1'000'000, 'x'); }, session_failed + unknown},
        // What was announced still stands at the beginning.
        {[&] { std::filesystem::resize_file(file, 1'000'001); }, ""},
    };
    for (const auto& [change, text] : changes) {
        begin(1'000'000);
        // The second client is the upload's.
        make_http = [&, clients = 0]() mutable {
            if (++clients == 2) change();
            return ports::make_curl_http(connection_settings);
        };
        EXPECT_EQ(send_package(), text);
        EXPECT_EQ(rows(), text.empty() ? 1u : 0u);
    }
}

TEST_F(Batch, UploadThatIsCutIsNone) {
    for (const int percent : {1, 50, 99}) {
        Storage storage(percent);
        begin(20'000'000, "sessions/batch", value_at("partUploadRequests[0].url", storage.url()));
        EXPECT_EQ(send_package(), wysylka + "0") << percent;
        EXPECT_EQ(rows(), 0u) << percent;
    }
}

TEST_F(Batch, WhateverFailsOnThisMachineIsATextAndNoHalfOutcome) {
    test::FailingAt failing;
    test::FailingCrypto crypto_port(*crypto, failing);
    test::FailingFiles files_port(*files, failing);
    test::fail_each_call(failing, test::out_of_space, [&](int call) {
        begin(200'000);
        ports::SqliteDatabase real(connection);
        test::FailingDatabase database(real, failing);
        const std::string result =
            send_package(ports_with(crypto_port, clock, files_port), database);
        EXPECT_EQ(result.empty(), !failing.struck()) << call;
        EXPECT_EQ(rows(), failing.struck() ? 0u : 1u) << call << ' ' << result;
    });
}

TEST_F(Batch, CutsAFileAtAHundredMillionBytesOrNotAtAll) {
    const test::ScratchFolder target;
    const std::string into = target.path().string();
    const auto cut = [&](ports::DataFiles& with) {
        return base::to_utf8(
            KseF_comm(ports_with(*crypto, clock, with)).PodzielPlik(path, base::from_utf8(into)));
    };
    const std::string first = into + "\\paczka.zip.001";
    const std::pair<std::uintmax_t, std::string> sizes[] = {
        {0, ""}, {100'000'000, first}, {100'000'001, first + ";" + into + "\\paczka.zip.002"}};
    begin(0);
    for (const auto& [bytes, paths] : sizes) {
        std::filesystem::resize_file(file, bytes);
        EXPECT_EQ(cut(*files), paths);
    }
    EXPECT_EQ(std::filesystem::file_size(into + "/paczka.zip.001"), 100'000'000u);
    EXPECT_EQ(std::filesystem::file_size(into + "/paczka.zip.002"), 1u);
    for (const char* piece : {"/paczka.zip.001", "/paczka.zip.002"})
        std::filesystem::remove(into + piece);

    // The disk is full in the first piece, and when the second one is to be kept, behind the calls
    // of 382 buffers and one.
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit full{70'000'000, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &full);
    EXPECT_EQ(cut(*files), "");
    setrlimit(RLIMIT_FSIZE, &limit);
    test::FailingAt failing;
    test::FailingFiles failing_files(*files, failing);
    failing.arm(2 + (1 + 2 * 382 + 1) + (1 + 2 + 1), test::out_of_space);
    EXPECT_EQ(cut(failing_files), "");
    EXPECT_TRUE(std::filesystem::is_empty(into));
}

}  // namespace
}  // namespace tavrix::ksef
