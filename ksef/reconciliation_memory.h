#pragma once

#include <map>
#include <vector>

#include "ksef/batch_manifest.h"
#include "ksef/client.h"

namespace tavrix::ksef {

/// What reconciliation keeps from run to run beside the settings: for each service and company the
/// newest change of a session that it has seen. Without a folder for it, or with a file that cannot
/// be read, it has seen nothing.
class ReconciliationMemory {
  public:
    ReconciliationMemory(const KsefPorts& ports, const Client& client,
                         const base::Text& tax_number);

    /// From when on sessions have to be looked at: the day before the newest change, because a list
    /// may lack what has just happened. "" for all of them.
    std::string changed_from() const;
    /// A moment as the service writes it.
    void saw(const std::string& changed);
    /// Throws base::AutomationError when it cannot be written; what was kept before then stays.
    void keep();

  private:
    const KsefPorts& ports_;
    base::Text path_;
    std::string key_;
    Json kept_ = Json::object();
    std::string newest_;
};

/// What was noted of the invoices in these packages when they were sent, by session.
std::map<std::string, std::vector<ManifestEntry>> noted_of(
    const KsefPorts& ports, const std::vector<std::string>& sessions);

}  // namespace tavrix::ksef
