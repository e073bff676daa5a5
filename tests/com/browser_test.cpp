// The query browser as a user meets it, over the development ADO provider.

#include "com/codec.h"
#include "com/forms/forms.h"
#include "com/forms/identifiers.h"
#include "dialogs/browser_session.h"
#include "ports/windows/adapters.h"
#include "tests/com/form_layout.h"
#include "tests/com/form_user.h"
#include "tests/com/host_database.h"
#include "windows/bstr.h"
// Needs what they include.
#include <commctrl.h>

namespace tavrix::test {
namespace {

base::Text list_cell(HWND form, int list, int row, int column) {
    base::Text text(300, u'\0');
    LVITEMW item{};
    item.iSubItem = column;
    item.cchTextMax = static_cast<int>(text.size());
    item.pszText = reinterpret_cast<wchar_t*>(text.data());
    text.resize(static_cast<std::size_t>(SendDlgItemMessageW(
        form, list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item))));
    return text;
}

Step focus(int control) {
    return [control](HWND form) { SetFocus(GetDlgItem(form, control)); };
}

Step type_query(const char16_t* sql) {
    return [sql](HWND form) {
        SetDlgItemTextW(form, TAVRIX_BROWSER_QUERY, windows::wide(sql));
        SetFocus(GetDlgItem(form, TAVRIX_BROWSER_QUERY));
        BYTE keys[256]{};
        keys[VK_CONTROL] = 0x80;
        SetKeyboardState(keys);
        press(VK_RETURN)(form);
    };
}

void release_keys() {
    BYTE keys[256]{};
    SetKeyboardState(keys);
}

void deliver(HWND form) {
    MSG message;
    MsgWaitForMultipleObjects(0, nullptr, FALSE, 20, QS_ALLINPUT);
    while (PeekMessageW(&message, form, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
}

/// Until the form's timer has come a few times.
void a_while(HWND form) {
    const DWORD start = GetTickCount();
    while (GetTickCount() - start < 300) deliver(form);
}

/// Delivers messages until the status begins so.
Step wait_for(const char16_t* status) {
    return [status](HWND form) {
        const DWORD start = GetTickCount();
        while (!text_of(GetDlgItem(form, TAVRIX_BROWSER_STATUS)).starts_with(status)) {
            ASSERT_LT(GetTickCount() - start, 10'000u)
                << base::to_utf8(text_of(GetDlgItem(form, TAVRIX_BROWSER_STATUS)));
            deliver(form);
        }
        release_keys();
    };
}

class Browser : public testing::Test {
  protected:
    FormUser user;
    HostDatabase database;
    const std::unique_ptr<ports::Clock> clock = ports::make_windows_clock();
    const std::unique_ptr<dialogs::BrowserWindow> window = com::make_browser_window();

    /// The database's file, with the provider's habits.
    base::Text text(const char16_t* habits) {
        return u"Data Source=" + database.path() + u";Password=tajne;" + habits;
    }
    std::optional<std::size_t> use(const std::vector<base::Text>& connections,
                                   std::vector<Step> steps) {
        std::vector<base::SecretText> entries;
        for (const base::Text& connection : connections) {
            entries.emplace_back(base::TextView(connection));
        }
        std::optional<std::size_t> chosen;
        user.use(
            [&] {
                dialogs::BrowserSession session(dialogs::list_databases(9, entries, u"", u""),
                                                &ports::make_ado_query, *clock);
                chosen = window->show(session);
            },
            std::move(steps));
        return chosen;
    }
};

TEST_F(Browser, HostGetsTheDatabaseThatItsUserLookedIntoAndChose) {
    const auto info = create(u"Tavrix.CInfo");
    database.run(
        "with recursive n(i) as (select 10 union all select i+1 from n where i<260)"
        " insert into dok_fak (ddout_id) select i from n");
    Variant first(text(u""));
    Variant second(u"Server=s");
    Variant server(u"");
    Variant names = com::Codec<std::vector<base::Text>>::write({u"", u"magazyn", u"kadry"});
    const auto browse = [&](const char* result) {
        return [&, result] {
            EXPECT_EQ(answer(info, u"Browse",
                             {2, by_reference(names), by_reference(first), by_reference(second),
                              by_reference(server)}),
                      result);
        };
    };
    user.use(browse("bool 0"), {click_cross()});
    EXPECT_EQ(written(second.get()), "text Server=s") << "left alone";
    const auto look = [&](HWND form) {
        EXPECT_EQ(list_cell(form, TAVRIX_BROWSER_DATABASES, 1, 0), u"kadry");
        EXPECT_EQ(list_cell(form, TAVRIX_BROWSER_DATABASES, 1, 1), database.path());
        // As GetRows gives them: a decimal, a date, a truth value, null.
        for (const auto& [column, shown] :
             {std::pair{1, u"2026-11-14 10:20:30"}, {2, u"NULL"}, {3, u"12,5"}, {5, u"tak"}}) {
            EXPECT_EQ(list_cell(form, TAVRIX_BROWSER_ROWS, 0, column), shown) << column;
        }
        expect_texts(form, {{TAVRIX_BROWSER_PAGE, u"Wiersze 1–200 z 254"}});
    };
    const auto second_page = [](HWND form) {
        expect_texts(form, {{TAVRIX_BROWSER_PAGE, u"Wiersze 201–254 z 254"}});
        EXPECT_FALSE(IsWindowEnabled(GetDlgItem(form, TAVRIX_BROWSER_NEXT)));
        EXPECT_EQ(GetFocus(), GetDlgItem(form, TAVRIX_BROWSER_ROWS));
    };
    user.use(browse("bool -1"),
             {type_query(u"select * from dok_fak"), wait_for(u"Liczba wierszy: 254."), look,
              focus(TAVRIX_BROWSER_NEXT), click(TAVRIX_BROWSER_NEXT), second_page,
              // Enter among the rows chooses no database.
              press(VK_RETURN), focus(TAVRIX_BROWSER_DATABASES), press(VK_DOWN), press(VK_RETURN)});
    const base::Text expected = text(u"Server=s;Initial Catalog=kadry");
    EXPECT_EQ(written(first.get()) + written(second.get()),
              "text " + base::to_utf8(expected) + "text ");
    EXPECT_EQ(written(server.get()), "text " + base::to_utf8(database.path()));
}

TEST_F(Browser, FailuresAreToldInPolishWithTheProvidersWords) {
    const auto selected = [](HWND form) {
        DWORD begin = 0;
        DWORD end = 0;
        SendDlgItemMessageW(form, TAVRIX_BROWSER_QUERY, EM_GETSEL, reinterpret_cast<WPARAM>(&begin),
                            reinterpret_cast<LPARAM>(&end));
        EXPECT_EQ(std::pair(begin, end), std::pair(DWORD{9}, DWORD{15}));
    };
    const auto write = [&](HWND) {
        EXPECT_EQ(database.stored(u"opis", 1), ports::Value(u"Zażółć"));
    };
    EXPECT_EQ(
        use({text(u""), u"Data Source="},
            {type_query(u"select 1 delete dok_fak"), wait_for(u"Słowo DELETE"), selected, write,
             type_query(u"select * from brak"), wait_for(u"Serwer nie wykonał zapytania.\r\n"),
             click(TAVRIX_BROWSER_CONNECT), wait_for(u"Połączono z bazą na serwerze "),
             focus(TAVRIX_BROWSER_DATABASES), press(VK_DOWN), click(TAVRIX_BROWSER_CONNECT),
             wait_for(u"Nie udało się połączyć z serwerem.\r\nData Source names no file."),
             press_with_alt(L'w')}),
        1u);
}

TEST_F(Browser, StaysAliveWhileTheServerIsSilentAndCanBeClosed) {
    const auto alive = [](HWND form) {
        EXPECT_EQ(text_of(GetDlgItem(form, IDCANCEL)), u"Prz&erwij");
        expect_texts(form, {{TAVRIX_BROWSER_PAGE, u""}});
    };
    // Not the test's own file, which is open anyway.
    const base::Text file = database.path() + u"2";
    for (const char16_t* silent : {u"Silent=connect", u"Silent=query"}) {
        ASSERT_TRUE(CopyFileW(windows::wide(database.path()), windows::wide(file), FALSE));
        EXPECT_EQ(use({u"Data Source=" + file + u";" + silent},
                      {type_query(u"select 1"), wait_for(u"Wykonuję"), alive, press(VK_ESCAPE),
                       wait_for(u"Przerwano."), click(TAVRIX_BROWSER_RUN), a_while, click_cross()}),
                  std::nullopt);
        // Nobody has waited; the connection goes when it has ended.
        const bool was_open = DeleteFileW(windows::wide(file)) == FALSE;
        EXPECT_EQ(was_open, silent == base::TextView(u"Silent=query"));
        const DWORD start = GetTickCount();
        while (was_open && DeleteFileW(windows::wide(file)) == FALSE) {
            ASSERT_LT(GetTickCount() - start, 10'000u);
            deliver(nullptr);
        }
    }
}

TEST_F(Browser, EmptyListAndASecondCallChooseNothing) {
    const auto again = [this](HWND form) {
        for (const int button : {IDOK, TAVRIX_BROWSER_RUN}) {
            EXPECT_FALSE(IsWindowEnabled(GetDlgItem(form, button)));
        }
        dialogs::BrowserSession other({}, &ports::make_ado_query, *clock);
        EXPECT_EQ(window->show(other), std::nullopt);
        EXPECT_EQ(open_forms(), std::vector<HWND>{form});
    };
    EXPECT_EQ(use({}, {wait_for(u"Na liście nie ma"), again, expect_readable_layout,
                       [](HWND form) { SetWindowPos(form, nullptr, 0, 0, 1100, 900, SWP_NOMOVE); },
                       expect_readable_layout, press(VK_ESCAPE)}),
              std::nullopt);
}

}  // namespace
}  // namespace tavrix::test
