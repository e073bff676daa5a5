// SendBach: what crosses the wire, what is written, and what goes wrong.

#include <sys/resource.h>

#include <csignal>

#include "ksef/batch_manifest.h"
#include "ksef/split_file.h"
#include "tests/ksef/batch_fixture.h"
#include "tests/support/failing.h"

namespace tavrix::ksef {
namespace {

using test::Json;
const std::string cut_upload = session_failed + "wyysłka pliku:sessions/batch:STATUS:0";

class Batch : public BatchFixture {
  protected:
    std::string digest(std::string_view bytes) {
        return base::base64_encode(crypto->sha256(base::bytes_of(bytes)));
    }
};

TEST_F(Batch, AnnouncesTheArchiveAndUploadsItEncryptedAsOnePart) {
    for (const std::size_t bytes : {std::size_t{0}, std::size_t{15}, std::size_t{16},
                                    std::size_t{131'072}, std::size_t{1'000'000}}) {
        SCOPED_TRACE(bytes);
        begin_anew();
        make_package(bytes);
        Storage storage;
        Json elsewhere = value_at("partUploadRequests[0].url", storage.url());
        elsewhere["step"] = "sessions/batch";
        sandbox->fault(elsewhere);
        send_package();
        const Json opening = sandbox->requests("sessions/batch").at(0).at("body");
        Json expected;
        expected["formCode"] = {
            {"systemCode", "FA (3)"}, {"schemaVersion", "1-0E"}, {"value", "FA"}};
        expected["batchFile"] = {{"fileSize", bytes}, {"fileHash", digest(content)}};
        Json part = opening.at("batchFile").at("fileParts").at(0);
        EXPECT_EQ(part.at("fileSize"), bytes / 16 * 16 + 16);
        // The service takes no empty package.
        ASSERT_EQ(storage.arrived.size(), bytes == 0 ? 0u : 1u);
        if (bytes > 0) {
            const auto& [head, body] = storage.arrived[0];
            EXPECT_TRUE(head.starts_with("PUT /part/0?sig=%2F HTTP/1.1\r\n")) << head;
            for (const char* header : {"\r\nx-ms-blob-type: BlockBlob\r\n",
                                       "\r\nContent-Type: application/octet-stream\r\n"}) {
                EXPECT_NE(head.find(header), std::string::npos) << head;
            }
            EXPECT_EQ(head.find("Authorization"), std::string::npos) << head;
            part = {{"ordinalNumber", 1}, {"fileSize", body.size()}, {"fileHash", digest(body)}};
        }
        expected["batchFile"]["fileParts"] = Json::array({part});
        expected["encryption"] = opening.at("encryption");
        expected["offlineMode"] = false;
        EXPECT_EQ(opening.dump(), expected.dump()) << "in this order";
    }
}

TEST_F(Batch, TroubleAtEachStepHasItsTextAndItsRow) {
    const char* const keys = "security/public-key-certificates";
    const char* const open = "sessions/batch";
    const char* const put = "storage/batch-parts";
    const char* const close = "sessions/batch/close";
    const std::string wysylka = session_failed + "wyysłka pliku:sessions/batch:STATUS:";
    const std::string not_closed = session_failed + "sessions/online/close:STATUS:timeout";
    struct Trouble {
        const char* step;
        Json fault;
        std::string text;
        std::size_t rows;
    };
    const Trouble troubles[] = {
        {"auth/challenge", kind("drop"), session_failed + "auth/challenge:STATUS:0", 0},
        {"auth/status", wrong_token, session_failed + "{*", 0},
        {"auth/token/redeem", status(500), session_failed + "auth/token/redeem:STATUS:500", 0},
        {keys, value_at("[1].usage", Json::array({"Other"})),
         session_failed + "Load RSA Public Key failed: *", 0},
        {open, status(400, "{\"e\":1}"), session_failed + "{\"e\":1}", 0},
        {open, status(503), session_failed + "sessions/batch:STATUS:timeout", 0},
        {open, status(200), session_failed + "sessions/batch:STATUS:timeout", 0},
        {open, kind("drop"), session_failed + "sessions/batch:STATUS:timeout", 0},
        {open, without("referenceNumber"), session_failed + unknown, 0},
        {open, without("partUploadRequests"), wysylka + "0", 0},
        {open, value_at("partUploadRequests[0].url", "file:///etc/passwd"), wysylka + "0", 0},
        {open, value_at("partUploadRequests[0].method", "PUT / HTTP/1.1\r\nX: 1\r\n"),
         session_failed + unknown, 0},
        {put, status(200), wysylka + "200", 0},
        {put, status(403, "<Error/>"), wysylka + "403", 0},
        {put, kind("drop"), wysylka + "0", 0},
        {close, status(400, "{\"e\":2}"), session_failed + "{\"e\":2}", 1},
        {close, status(200), not_closed, 1},
        {close, kind("drop"), not_closed, 1},
        {close, harmless, "", 1},
    };
    for (const auto& [step, fault, text, rows] : troubles) {
        const std::string where = std::string(step) + " " + fault.dump();
        begin_anew();
        Json trouble = fault;
        trouble["step"] = step;
        sandbox->fault(trouble);
        expect_text(send_package(), text, where);
        EXPECT_EQ(recorded().size(), rows) << where;
        EXPECT_LE(sandbox->requests(open).size(), 1u) << where;
        EXPECT_EQ(sandbox->requests(close).size(), rows) << where;
    }
}

TEST_F(Batch, TokenAndFileAreLookedAtBeforeTheyCost) {
    std::filesystem::remove(file());
    EXPECT_EQ(send_package(), session_failed + unknown);
    EXPECT_TRUE(sandbox->requests("sessions/batch").empty());
    begin_anew();
    token = u"bez kresek";
    EXPECT_EQ(send_package(), "Błędny token :bez kresek");
    token = u"R|nic|s";
    EXPECT_EQ(send_package(), "Nieznany Błąd");
    EXPECT_TRUE(steps().empty());
}

// Nothing whole may arrive of a package that is no longer the one that was announced.
TEST_F(Batch, PackageThatChangesOnTheWayIsNotSent) {
    const auto changes = std::to_array<std::pair<const char*, std::function<void()>>>({
        {"shorter", [&] { std::filesystem::resize_file(file(), 999'999); }},
        {"another", [&] { std::ofstream(file()) << std::string(1'000'000, 'x'); }},
        {"longer", [&] { std::filesystem::resize_file(file(), 1'000'001); }},
    });
    for (const auto& [what, change] : changes) {
        begin_anew();
        make_package(1'000'000);
        // The second client is the upload's.
        make_http = [&, clients = 0]() mutable {
            if (++clients == 2) change();
            return ports::make_curl_http(connection_settings);
        };
        // What was announced still stands at the beginning of what has grown.
        const bool is_still_whole = std::string_view(what) == "longer";
        EXPECT_EQ(send_package(), is_still_whole ? "" : session_failed + unknown) << what;
        EXPECT_EQ(recorded().size(), is_still_whole ? 1u : 0u) << what;
    }
}

TEST_F(Batch, UploadThatIsCutIsNone) {
    make_package(20'000'000);
    for (const int percent : {1, 50, 99}) {
        begin_anew();
        Storage storage;
        storage.percent_taken = percent;
        Json elsewhere = value_at("partUploadRequests[0].url", storage.url());
        elsewhere["step"] = "sessions/batch";
        sandbox->fault(elsewhere);
        EXPECT_EQ(send_package(), cut_upload) << percent;
        EXPECT_TRUE(recorded().empty()) << percent;
    }
}

TEST_F(Batch, WhateverFailsOnThisMachineIsATextAndNoHalfOutcome) {
    test::FailingAt failing;
    test::FailingCrypto crypto_port(*crypto, failing);
    test::FailingFiles files_port(*files, failing);
    make_package(200'000);
    const int calls = test::fail_each_call(failing, test::out_of_space, [&](int call) {
        begin_anew();
        ports::SqliteDatabase real(connection);
        test::FailingDatabase database(real, failing);
        const std::string result = send_package_with(
            {make_http, crypto_port, clock, *xml, *code_page, files_port, settings}, database);
        EXPECT_EQ(result.empty(), !failing.struck()) << call;
        EXPECT_EQ(recorded().size(), failing.struck() ? 0u : 1u) << call << ' ' << result;
    });
    EXPECT_GT(calls, 20);
}

TEST_F(Batch, NotesTheDocumentsOfAPackageThatHasAManifest) {
    const std::vector<ManifestEntry> made = {{"", "a.xml", "h1", u"dok_fak", 1001},
                                             {"", "ż\"b.xml", "h2", u"", 0}};
    std::ofstream(file() + ".manifest.jsonl") << write_manifest(made) << "{\"half";
    KsefPorts with = ports();
    with.settings_folder = base::from_utf8(folder.path().string() + "/");
    ports::SqliteDatabase database(connection);
    ASSERT_EQ(send_package_with(with, database), "");
    const base::Bytes noted =
        ports::read_whole(*files, with.settings_folder + base::Text(sent_packages), 1'000'000);
    std::vector<ManifestEntry> expected = made;
    for (ManifestEntry& entry : expected) entry.session = recorded().at(0);
    EXPECT_EQ(read_manifest(base::chars_of(noted)), expected);
}

class Split : public BatchFixture {
  protected:
    std::string pieces() {
        std::string names;
        for (const auto& entry : std::filesystem::directory_iterator(into))
            names += entry.path().filename().string() + ' ';
        return names;
    }
    std::string split() {
        return base::to_utf8(KseF_comm(ports()).PodzielPlik(path(), base::from_utf8(into)));
    }
    void make_sparse(std::uint64_t bytes) {
        std::ofstream(file()).close();
        std::filesystem::resize_file(file(), bytes);
    }

    test::ScratchFolder target;
    std::string into = target.path().string();
};

TEST_F(Split, CutsAtAHundredMillionBytes) {
    const std::pair<std::uint64_t, std::vector<std::uint64_t>> sizes[] = {
        {0, {}},
        {100'000'000, {100'000'000}},
        {200'000'001, {100'000'000, 100'000'000, 1}},
    };
    for (const auto& [bytes, expected] : sizes) {
        make_sparse(bytes);
        std::string paths;
        const std::string result = split();
        for (std::size_t i = 0; i < expected.size(); ++i) {
            const std::string name = "paczka.zip.00" + std::to_string(i + 1);
            paths += (i == 0 ? "" : ";") + into + "\\" + name;
            EXPECT_EQ(std::filesystem::file_size(into + "/" + name), expected[i]);
        }
        EXPECT_EQ(result, paths);
    }
}

TEST_F(Split, AFullDiskLeavesNoPieceBehind) {
    make_sparse(150'000'000);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto ignored = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit full{70'000'000, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &full);
    EXPECT_EQ(split(), "");
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, ignored);
    EXPECT_EQ(pieces(), "") << "the first piece was too large";

    test::FailingAt failing;
    test::FailingFiles files_port(*files, failing);
    failing.arm(1'000'000, test::out_of_space);
    const auto split_failing = [&] {
        return split_file(files_port, path(), base::from_utf8(into));
    };
    EXPECT_EQ(split_failing().size(), 2u);
    for (const char* piece : {"/paczka.zip.001", "/paczka.zip.002"})
        std::filesystem::remove(into + piece);
    // What keeps the second piece, behind everything else that is done for 382 and 191 buffers.
    failing.arm(2 + (1 + 2 * 382 + 1) + (1 + 2 * 191 + 1), test::out_of_space);
    EXPECT_THROW(split_failing(), base::AutomationError);
    EXPECT_EQ(pieces(), "") << "the first one was whole";
}

}  // namespace
}  // namespace tavrix::ksef
