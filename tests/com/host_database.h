#pragma once

#include "ports/portable/sqlite_database.h"
#include "tests/com/late_host.h"

namespace tavrix::test {

/// A host's database file with three documents, gone with its scope.
class HostDatabase {
  public:
    HostDatabase();
    ~HostDatabase();
    HostDatabase(const HostDatabase&) = delete;
    HostDatabase& operator=(const HostDatabase&) = delete;

    const base::Text& path() const { return path_; }
    /// What the file itself holds, past every recordset.
    ports::Value stored(base::TextView column, int id, base::TextView table = u"dok_fak");
    /// SQLite's own statements.
    void run(const std::string& script) { file_->execute_script(script); }

  private:
    base::Text path_;
    std::shared_ptr<ports::SqliteConnection> file_;
};

}  // namespace tavrix::test
