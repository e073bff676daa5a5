#include "dialogs/select_only.h"

#include <gtest/gtest.h>

namespace tavrix::dialogs {
namespace {

TEST(SelectOnly, TakesOneStatementThatReads) {
    for (const char16_t* sql : {
             u"SELECT * FROM dok_fak",
             u";with x as (select 1 a), y as (select 2 b) select * from x, y;;",
             u"select 1 union all select 2 except (select 3)",
             u"select a, (select max(b) from t) from u where c in (select d from v) and "
             u"'delete'=\"x\"",
             u"select [update], \"into\", N'it''s; exec' from [a]]b] -- drop table t\n where x=1",
             u"/* a /* delete */ b */ select case when a=1 then 2 else 3 end from t",
             u"select a from t order by a offset 5 rows fetch next 10 rows only",
             u"select * from a inner merge join b on a.i=b.i option (merge union)",
             u"select 1e5, 0x1F, 1.5, updated, deleted_at, @@version from t with (nolock)",
         }) {
        const auto refusal = refusal_of(sql);
        EXPECT_FALSE(refusal) << base::to_utf8(sql) << ": " << base::to_utf8(refusal->words);
    }
}

TEST(SelectOnly, RefusesWhatDoesMoreAndShowsTheWord) {
    // The part that is to blame stands between bars.
    for (const base::Text marked : {
             u"|delete| from t",
             u"select 1 |delete| t",
             u"select 1|;|select 2",
             u"select 1 |select| 2",
             u"select a |into| b from t",
             u"with x as (select 1 a) |delete| x",
             u"with x as (select 1 a) select a from x |select| 2",
             u"|exec| sp_who",
             u"|(|select 1)",
             u"select * from |openrowset|('x','delete t')",
             u"select * from |OpenQuery|(s,'delete t')",
             u"select |next| value for numery",
             u"select * from t with (|tablockx|)",
             u"select 1 |waitfor| delay '1:0'",
             u"select 1 |commit|",
             u"select '''' |update| t set a=1",
             u"select 1 /* -- */ |drop| table t -- */",
             u"select 1 --\n|truncate| table t",
             u"select |1d|rop table t",
             u"select |1e|into t from u",
             u"select |0xdel|ete t",
             u"select £|into| t from u",
             u"with x as (select 1 a) select max(a) |select| 2",
             u"select 1\u00A0|drop|\u3000table t",
             u"select 1 |'|delete t",
             u"select 1 |/*| /* */ delete t",
             u"select 1 --|\r|delete t",
             u"select 1 |\uFF44|elete t",
             u"select 1 |{|call p}",
             u"select 1 |)|",
             u"select 1 |merge| t using u on 1=1",
             u"||",
             u"||-- tylko komentarz",
         }) {
        const std::size_t begin = marked.find(u'|');
        const std::size_t end = marked.find(u'|', begin + 1);
        const auto refusal = refusal_of(base::remove_characters(marked, u"|"));
        ASSERT_TRUE(refusal) << base::to_utf8(marked);
        EXPECT_EQ(refusal->position, begin) << base::to_utf8(marked);
        EXPECT_EQ(refusal->length, end - begin - 1) << base::to_utf8(marked);
    }
    EXPECT_EQ(refusal_of(u"select 1\r\n  update t")->words,
              u"Słowo UPDATE (wiersz 2, znak 3): tu można tylko czytać (SELECT).");
}

}  // namespace
}  // namespace tavrix::dialogs
