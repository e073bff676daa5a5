#include "tests/com/host_database.h"

namespace tavrix::test {
namespace {

base::Text temporary_file() {
    wchar_t folder[MAX_PATH];
    wchar_t file[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    GetTempFileNameW(folder, L"tvx", 0, file);
    return windows::text_from_wide(file);
}

}  // namespace

HostDatabase::HostDatabase()
    : path_(temporary_file()), file_(ports::SqliteConnection::open(base::to_utf8(path_), true)) {
    file_->execute_script(R"(
        create table dok_fak (ddout_id integer primary key, ddout_data_wyst datetime,
            numer_ksef nvarchar(100), kwota decimal(18,2), opis nvarchar, zaplacona bit);
        insert into dok_fak values
            (1, '2026-11-14 10:20:30', null, 12.5, 'Zażółć', 1),
            (2, '2026-11-15', 'K-2', 3, '', 0),
            (3, null, 'K-3', null, 'trzy', null);)");
}

HostDatabase::~HostDatabase() {
    file_.reset();
    DeleteFileW(windows::wide(path_));
}

ports::Value HostDatabase::stored(base::TextView column, int id, base::TextView table) {
    const auto rows =
        file_->open_recordset(u"select " + base::Text(column) + u" from " + base::Text(table) +
                              u" where ddout_id=" + base::to_decimal(id));
    return rows->at_end() ? ports::Value(u"(no row)") : rows->field_at(0);
}

}  // namespace tavrix::test
