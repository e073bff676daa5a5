#pragma once

#include <map>
#include <vector>

#include "ksef/batch_manifest.h"
#include "ksef/json.h"
#include "ksef/ports.h"

namespace tavrix::ksef {

/// A session that has come to its end, as the service lists it.
struct FinishedSession {
    std::string reference;
    int code = 0;         ///< 0 where the service names none
    std::string changed;  ///< the moment of the last change, as the service writes it
};

/// What reconciliation keeps from run to run, so that each begins where the last one ended, however
/// early that was: the newest change up to which every session was looked at, and those of them
/// that have to be looked at again. It stands beside the settings, or where that cannot be written
/// in the user's own folder. Without either, or with a file that cannot be read, it has seen
/// nothing.
class ReconciliationMemory {
  public:
    /// `whose` tells apart whose sessions are listed and whose documents are written.
    ReconciliationMemory(const KsefPorts& ports, std::string whose);

    /// From when on sessions have to be listed: the day before the newest change, because a list
    /// may lack what has just happened. "" for all of them.
    std::string changed_from() const;
    /// Whether the session was looked at since it changed, and nothing was left out.
    bool is_done(const FinishedSession& session) const;
    /// Sessions are told of in the order of their changes.
    void done(const FinishedSession& session);
    void left_out(const FinishedSession& session);
    const std::map<std::string, FinishedSession>& left_out() const { return left_out_; }
    /// A memory that cannot be written costs the next run its time, and nothing else.
    void keep();

  private:
    void recall(const Json& kept);
    Json entry() const;

    const KsefPorts& ports_;
    std::string whose_;
    std::string newest_;
    std::map<std::string, std::string> done_;  // changes of sessions since changed_from
    std::map<std::string, FinishedSession> left_out_;
};

/// An invoice as it was noted when its package was sent.
struct NotedInvoice {
    ManifestEntry entry;
    bool was_sent_again = false;  ///< its document went into another package later
};

struct NotedPackages {
    std::map<std::string, std::vector<NotedInvoice>> by_session;
    bool is_whole = true;  ///< false when notes are there that could not be read
};

/// What was noted of the invoices in these packages when they were sent.
NotedPackages noted_of(const KsefPorts& ports, const std::vector<std::string>& sessions);

/// Adds to the notes, beside the settings or in the user's own folder. Throws base::AutomationError
/// when neither can be written.
void note_packages(const KsefPorts& ports, const std::vector<ManifestEntry>& entries);

}  // namespace tavrix::ksef
