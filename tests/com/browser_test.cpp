// The query browser as a host calls it and a user meets it, over the development ADO provider.

#include "com/codec.h"
#include "com/forms/identifiers.h"
#include "tests/com/form_layout.h"
#include "tests/com/form_user.h"
#include "tests/com/host_database.h"
#include "windows/bstr.h"

namespace tavrix::test {
namespace {

Step focus(int control) {
    return [control](HWND form) { SetFocus(GetDlgItem(form, control)); };
}

void hold_control(bool down) {
    BYTE keys[256]{};
    keys[VK_CONTROL] = down ? 0x80 : 0;
    SetKeyboardState(keys);
}

/// Types it and presses Ctrl+Enter.
Step query(const char16_t* sql) {
    return [sql](HWND form) {
        SetDlgItemTextW(form, TAVRIX_BROWSER_QUERY, windows::wide(sql));
        SetFocus(GetDlgItem(form, TAVRIX_BROWSER_QUERY));
        hold_control(true);
        press(VK_RETURN)(form);
    };
}

/// Delivers messages for so long at least, and until `is_over`.
void deliver_until(DWORD least_ms, const std::function<bool()>& is_over) {
    const DWORD start = GetTickCount();
    while (GetTickCount() - start < least_ms || !is_over()) {
        ASSERT_LT(GetTickCount() - start, 10'000u);
        MSG message;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 20, QS_ALLINPUT);
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
    }
}

Step wait_for(const char16_t* status, DWORD least_ms = 0) {
    return [=](HWND form) {
        deliver_until(least_ms, [=] {
            return text_of(GetDlgItem(form, TAVRIX_BROWSER_STATUS)).starts_with(status);
        });
        hold_control(false);
    };
}

class Browser : public testing::Test {
  protected:
    FormUser user;
    HostDatabase database;
    ComPointer<IDispatch> info = create(u"Tavrix.CInfo");
    Variant first{u"Data Source=" + database.path() + u";Password=tajne;"};
    Variant second{u"Server=s"};
    Variant server{u""};

    std::string answer_to(const std::vector<base::Text>& databases) {
        Variant names = com::Codec<std::vector<base::Text>>::write(databases);
        return answer(info, u"Browse",
                      {2, by_reference(names), by_reference(first), by_reference(second),
                       by_reference(server)});
    }
    std::string browse(const std::vector<base::Text>& databases, std::vector<Step> steps) {
        std::string result;
        user.use([&] { result = answer_to(databases); }, std::move(steps));
        return result;
    }
};

TEST_F(Browser, HostGetsTheDatabaseThatItsUserLookedIntoAndChose) {
    database.run(
        "with recursive n(i) as (select 10 union all select i+1 from n where i<260)"
        " insert into dok_fak (ddout_id) select i from n");
    // A date, null, a decimal and a truth value, as GetRows gives them.
    const auto look = [](HWND form) {
        expect_texts(form, {{TAVRIX_BROWSER_ROW_TEXT,
                             u"ddout_id: 1\r\nddout_data_wyst: 2026-11-14 10:20:30\r\nnumer_ksef: "
                             u"NULL\r\nkwota: 12,5\r\nopis: Zażółć\r\nzaplacona: tak\r\n"}});
    };
    const auto second_page = [](HWND form) {
        expect_texts(form, {{TAVRIX_BROWSER_PAGE, u"Wiersze 201–254 z 254"}});
        EXPECT_EQ(GetFocus(), GetDlgItem(form, TAVRIX_BROWSER_ROWS)) << "there is no next page";
    };
    // Enter among the rows chooses no database.
    EXPECT_EQ(browse({u"", u"magazyn", u"kadry"},
                     {query(u"select * from dok_fak"), wait_for(u"Liczba wierszy: 254."), look,
                      focus(TAVRIX_BROWSER_NEXT), click(TAVRIX_BROWSER_NEXT), second_page,
                      press(VK_RETURN), focus(TAVRIX_BROWSER_DATABASES), press(VK_DOWN),
                      press(VK_RETURN)}),
              "bool -1");
    const std::string path = base::to_utf8(database.path());
    EXPECT_EQ(written(first.get()) + written(second.get()) + written(server.get()),
              "text Data Source=" + path +
                  ";Password=tajne;Server=s;Initial Catalog=kadrytext text " + path);
}

TEST_F(Browser, FailuresAreToldInPolishWithTheProvidersWords) {
    EXPECT_EQ(
        browse({u"a", u"Data Source="},
               {query(u"select 1 delete dok_fak"), wait_for(u"Słowo DELETE"),
                query(u"select * from brak"), wait_for(u"Serwer nie wykonał zapytania.\r\n"),
                click(TAVRIX_BROWSER_CONNECT), wait_for(u"Połączono z bazą a na serwerze "),
                focus(TAVRIX_BROWSER_DATABASES), press(VK_DOWN), click(TAVRIX_BROWSER_CONNECT),
                wait_for(u"Nie udało się połączyć z serwerem.\r\nData Source names no file."),
                press_with_alt(L'w')}),
        "bool -1");
}

TEST_F(Browser, StaysAliveWhileTheServerIsSilentAndCanBeClosed) {
    // Not the test's own file, which is open anyway.
    const base::Text file = database.path() + u"2";
    const auto is_gone = [&] { return DeleteFileW(windows::wide(file)) != FALSE; };
    for (const char16_t* silent : {u"connect", u"query", u"rows"}) {
        ASSERT_TRUE(CopyFileW(windows::wide(database.path()), windows::wide(file), FALSE));
        EXPECT_EQ(browse({u"Data Source=" + file + u";Silent=" + silent},
                         {query(u"select 1"), wait_for(u"Wykonuję", 300), press(VK_ESCAPE),
                          wait_for(u"Przerwano."), click(TAVRIX_BROWSER_RUN),
                          wait_for(u"Wykonuję", 300), click_cross()}),
                  "bool 0");
        EXPECT_EQ(written(second.get()), "text Server=s") << "left alone";
        // Nobody has waited; the connection goes when it has ended.
        const bool gone = is_gone();
        EXPECT_EQ(gone, silent == base::TextView(u"connect"));
        if (!gone) deliver_until(0, is_gone);
    }
}

TEST_F(Browser, EmptyListAndASecondCallChooseNothing) {
    const auto again = [this](HWND form) {
        EXPECT_FALSE(IsWindowEnabled(GetDlgItem(form, IDOK)));
        EXPECT_EQ(answer_to({u"a"}), "bool 0");
        EXPECT_EQ(open_forms(), std::vector<HWND>{form});
    };
    const auto grow = [](HWND form) { SetWindowPos(form, nullptr, 0, 0, 1100, 900, 0); };
    EXPECT_EQ(browse({u"", u" "}, {wait_for(u"Na liście nie ma"), again, expect_readable_layout,
                                   grow, expect_readable_layout, press(VK_ESCAPE)}),
              "bool 0");
}

}  // namespace
}  // namespace tavrix::test
