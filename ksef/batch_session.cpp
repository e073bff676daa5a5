#include "ksef/batch_session.h"

#include <limits>

#include "base/error.h"
#include "ksef/batch_manifest.h"
#include "ksef/batch_package.h"
#include "ksef/exchange.h"
#include "ksef/reconciliation_memory.h"

namespace tavrix::ksef {
namespace {

using base::Text;
using ports::HttpReply;

// The invoices of a package, 10 000 at most, in some 250 bytes each.
constexpr std::size_t longest_manifest_bytes = 8 << 20;

class BatchSession : Exchange {
  public:
    BatchSession(KsefPorts& ports, Client& client, ports::Database& database)
        : Exchange(ports, client, u"Nieznany błąd"), database_(database) {}

    Text run(const Text& path, const FormCode& form) {
        return outcome_of([&] {
            if (!make_key()) return;
            package_ = measure_package(ports_.files, ports_.crypto, path, session_key_, whole);
            if (open_session(form) && upload()) {
                record_batch_session(ports_, database_, path, reference_);
                close();
            }
        });
    }

  private:
    static constexpr auto whole = std::numeric_limits<std::uint64_t>::max();

    bool make_key() {
        Text failure = make_session_key(ports_.crypto, client_, session_key_);
        return failure.empty() || fail(std::move(failure));
    }

    // A session opened twice because an answer was lost would stay open until it is cancelled.
    bool open_session(const FormCode& form) {
        const HttpReply reply =
            client_.post_once("/api/v2/sessions/batch", opening_of(package_, form, session_key_));
        if (!answered(reply, 201))
            return fail(failure_text(reply, u"sessions/batch:STATUS:", u"timeout"));
        const Json answer = parse_json(reply.body.view());
        reference_ = utf8_at(answer, "referenceNumber");
        method_ = utf8_at(answer, "partUploadRequests[0].method");
        url_ = base::SecretUtf8(utf8_at(answer, "partUploadRequests[0].url"));
        // Without its reference the session could never be closed.
        return !reference_.empty();
    }

    // The headers that the answer names are not used: the storage has always taken these.
    bool upload() {
        PartSource source(ports_.files, ports_.crypto, package_, package_.parts.front(),
                          session_key_);
        const auto begin = ports_.clock.steady_now();
        const HttpReply reply = client_.upload(
            method_, url_.view(),
            {{"x-ms-blob-type", "BlockBlob"}, {"Content-Type", "application/octet-stream"}},
            source);
        client_.put_off_end(ports_.clock.steady_now() - begin);
        if (answered(reply, 201)) return true;
        return fail(u"wyysłka pliku:sessions/batch:STATUS:" + base::to_decimal(reply.status));
    }

    // Sent again by itself the request would be refused for a session that is closed.
    void close() {
        const HttpReply reply = client_.post_once(
            "/api/v2/sessions/batch/" + path_segment(reference_) + "/close", Body::object());
        if (answered(reply, 204)) {
            result_.clear();
        } else {
            fail(failure_text(reply, u"sessions/online/close:STATUS:", u"timeout"));
        }
    }

    ports::Database& database_;
    SessionKey session_key_;
    Package package_;
    std::string reference_;
    std::string method_;
    base::SecretUtf8 url_;
};

}  // namespace

Text send_in_batch_session(KsefPorts& ports, Client& client, ports::Database& database,
                           const Text& path, const FormCode& form) {
    return BatchSession(ports, client, database).run(path, form);
}

void record_batch_session(KsefPorts& ports, ports::Database& database, const Text& path,
                          const std::string& reference) {
    // An apostrophe in an answer must not become part of the statement.
    const Text value = base::replace_all(base::from_utf8(reference), u"'", u"''");
    database.execute(u"insert into Ksef_sesje (RefNumber) values('" + value + u"')");
    note_sent_package(ports, path, reference);
}

void note_sent_package(KsefPorts& ports, const Text& path, const std::string& reference) {
    try {
        const Text manifest = path + Text(manifest_suffix);
        const bool nowhere = ports.settings_folder.empty() && ports.user_folder.empty();
        if (nowhere || !ports.files.is_file(manifest)) return;
        std::vector<ManifestEntry> entries = read_manifest(
            base::chars_of(ports::read_whole(ports.files, manifest, longest_manifest_bytes)));
        for (ManifestEntry& entry : entries) entry.session = reference;
        note_packages(ports, entries);
    } catch (const base::AutomationError&) {
        // The package is sent, which counts for more.
    }
}

}  // namespace tavrix::ksef
