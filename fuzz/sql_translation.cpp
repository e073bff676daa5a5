#include <sqlite3.h>

#include <cstdlib>

#include "base/error.h"
#include "fuzz/fuzz_target.h"
#include "ports/portable/tsql/single_row.h"
#include "ports/portable/tsql/translate.h"

using namespace tavrix;

std::vector<std::string> fuzz::seeds() {
    return {
        "select top 1 numer_ksef,ddout_data_wyst from dok_fak where ddout_id=1001",
        "select distinct top (3) a from dbo.[t x] with (nolock) order by a desc;",
        "select isnull(substring(a,1,3),'x''y')+left(b,2) from t where charindex('-',c)>0 and "
        "d>=getdate()",
        "select k.a from k left join p on k.id=p.id where replace(k.nip,'-','')='5265877635' and a "
        "in "
        "(select top 1 b from c)",
        "update t set a=N'Zażółć', b=len(c)+1 where id in (1,2,3)",
        "insert into t (a,b) values ('x',null)",
        "delete from t where a like '%x_' and not (b is null or c<>1.5)",
    };
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view sql(reinterpret_cast<const char*>(data), size);
    ports::tsql::single_row_of(base::from_utf8(sql));
    try {
        const std::string translated = ports::tsql::translate(sql).sql;
        // One statement in, one statement out, whatever stands in its texts.
        static sqlite3* const database = [] {
            sqlite3* opened = nullptr;
            sqlite3_open(":memory:", &opened);
            return opened;
        }();
        sqlite3_stmt* statement = nullptr;
        const char* rest = nullptr;
        const int status = sqlite3_prepare_v2(
            database, translated.c_str(), static_cast<int>(translated.size()), &statement, &rest);
        if (status == SQLITE_OK && rest != translated.c_str() + translated.size()) std::abort();
        sqlite3_finalize(statement);
    } catch (const base::AutomationError&) {
        // Refused, with the place.
    }
    return 0;
}
