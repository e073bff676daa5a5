#include "com/forms/browser_dialog.h"

#include <algorithm>

#include "com/forms/child_controls.h"
#include "com/forms/form_text.h"
#include "com/forms/forms.h"
#include "com/forms/identifiers.h"
#include "dialogs/shown_text.h"

namespace tavrix::com {
namespace {

constexpr UINT_PTR query_timer = 1;
constexpr UINT between_looks_ms = 50;
constexpr int most_columns = 512;

FormPlace browser_place;

class BrowserOnDesktop final : public dialogs::BrowserWindow {
  public:
    std::optional<std::size_t> show(dialogs::BrowserSession& session) noexcept override {
        BrowserDialog dialog(session);
        dialog.show_in(browser_place);
        return dialog.chosen();
    }
};

wchar_t* list_text(base::Text& text) noexcept {
    return reinterpret_cast<wchar_t*>(text.data());
}

void add_list_column(HWND list, int index, base::Text title, int width_px) noexcept {
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_SUBITEM;
    column.pszText = list_text(title);
    column.cx = width_px;
    column.iSubItem = index;
    SendMessageW(list, LVM_INSERTCOLUMNW, static_cast<WPARAM>(index),
                 reinterpret_cast<LPARAM>(&column));
}

void select_list_item(HWND list, int index) noexcept {
    LVITEMW item{};
    item.stateMask = item.state = LVIS_SELECTED | LVIS_FOCUSED;
    SendMessageW(list, LVM_SETITEMSTATE, static_cast<WPARAM>(index),
                 reinterpret_cast<LPARAM>(&item));
}

int list_text_width(HWND list, base::Text text) noexcept {
    return static_cast<int>(
        SendMessageW(list, LVM_GETSTRINGWIDTHW, 0, reinterpret_cast<LPARAM>(list_text(text))));
}

}  // namespace

std::unique_ptr<dialogs::BrowserWindow> make_browser_window() {
    return std::make_unique<BrowserOnDesktop>();
}

// Lists are no controls that every process knows.
BrowserDialog::BrowserDialog(dialogs::BrowserSession& session) noexcept
    : Dialog(TAVRIX_BROWSER_FORM), session_(session) {
    INITCOMMONCONTROLSEX wanted{};
    wanted.dwSize = sizeof wanted;
    wanted.dwICC = ICC_LISTVIEW_CLASSES;
    InitCommonControlsEx(&wanted);
}

void BrowserDialog::on_open() {
    constexpr LPARAM looks = LVS_EX_FULLROWSELECT | LVS_EX_GRIDLINES | LVS_EX_LABELTIP;
    for (const int list : {TAVRIX_BROWSER_DATABASES, TAVRIX_BROWSER_ROWS}) {
        SendMessageW(control(list), LVM_SETEXTENDEDLISTVIEWSTYLE, looks, looks);
    }
    // The user's own text may be as long as the server takes it.
    SendMessageW(control(TAVRIX_BROWSER_QUERY), EM_SETLIMITTEXT, 0, 0);
    fill_databases();
    set_text(TAVRIX_BROWSER_QUERY, dialogs::with_edit_line_ends(session_.query()));
    show_result();
    // Not the form's own size: where the screen has no room for it, it is smaller already.
    const SIZE laid_out = pixels(TAVRIX_BROWSER_WIDTH, TAVRIX_BROWSER_HEIGHT);
    const dialogs::FormSize first = {static_cast<double>(laid_out.cx),
                                     static_cast<double>(laid_out.cy)};
    if (session_.page_rows() > 0) focus(TAVRIX_BROWSER_ROWS);
    resize_.emplace(first, dialogs::FormSize{first.width / 2, first.height / 2},
                    child_controls(window()));
}

void BrowserDialog::fill_databases() {
    const HWND list = control(TAVRIX_BROWSER_DATABASES);
    add_list_column(list, 0, u"Baza danych", 0);
    add_list_column(list, 1, u"Serwer", 0);
    int index = 0;
    for (const dialogs::ListedDatabase& database : session_.databases()) {
        base::Text name = database.name.empty() ? base::Text(u"(domyślna)") : database.name;
        base::Text server = database.server;
        LVITEMW item{};
        item.mask = LVIF_TEXT;
        item.iItem = index;
        item.pszText = list_text(name);
        SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
        item.iSubItem = 1;
        item.pszText = list_text(server);
        SendMessageW(list, LVM_SETITEMTEXTW, static_cast<WPARAM>(index++),
                     reinterpret_cast<LPARAM>(&item));
    }
    if (index > 0) return select_list_item(list, 0);
    for (const int button : {IDOK, TAVRIX_BROWSER_CONNECT, TAVRIX_BROWSER_RUN}) {
        EnableWindow(control(button), FALSE);
    }
}

void BrowserDialog::on_command(int id, int notification) {
    if (notification != BN_CLICKED) return;
    switch (id) {
        case IDOK:
            return choose();
        case IDCANCEL:
            // A running query ends first, and its end is shown; who asks again does not wait.
            if (!session_.stop()) return close();
            return show_status();
        case TAVRIX_BROWSER_CONNECT:
            return connect();
        case TAVRIX_BROWSER_RUN:
            return run_query();
        case TAVRIX_BROWSER_NEXT:
            return turn_page(true);
        case TAVRIX_BROWSER_PREVIOUS:
            return turn_page(false);
        default:
            return;
    }
}

// A box of several lines would keep Ctrl+Enter for itself and close the form on Esc.
bool BrowserDialog::on_key(UINT key) {
    if (key == VK_ESCAPE) {
        on_command(IDCANCEL, BN_CLICKED);
        return true;
    }
    if (key != VK_RETURN) return false;
    if (only_control_is_down()) {
        if (IsWindowEnabled(control(TAVRIX_BROWSER_RUN))) run_query();
        return true;
    }
    // It presses the default button from wherever it is; among the rows nobody means that.
    const int focused = GetDlgCtrlID(GetFocus());
    return focused == TAVRIX_BROWSER_ROWS || focused == TAVRIX_BROWSER_ROW_TEXT ||
           focused == TAVRIX_BROWSER_STATUS;
}

std::optional<INT_PTR> BrowserDialog::on_message(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
        case WM_TIMER:
            if (wparam != query_timer) return std::nullopt;
            work_on();
            return 0;
        case WM_NOTIFY:
            return on_notify(*reinterpret_cast<const NMHDR*>(lparam));
        default:
            return std::nullopt;
    }
}

std::optional<INT_PTR> BrowserDialog::on_notify(const NMHDR& about) {
    if (about.idFrom == TAVRIX_BROWSER_DATABASES && about.code == NM_DBLCLK) {
        choose();
        return 0;
    }
    if (about.idFrom != TAVRIX_BROWSER_ROWS) return std::nullopt;
    switch (about.code) {
        case LVN_GETDISPINFOW:
            give_cell(const_cast<NMLVDISPINFOW&>(reinterpret_cast<const NMLVDISPINFOW&>(about)));
            return 0;
        case LVN_ITEMCHANGED: {
            const auto& change = reinterpret_cast<const NMLISTVIEW&>(about);
            if ((change.uNewState & LVIS_SELECTED) != 0) show_row(change.iItem);
            return 0;
        }
        case NM_CUSTOMDRAW:
            return draw_cell(reinterpret_cast<const NMLVCUSTOMDRAW&>(about));
        default:
            return std::nullopt;
    }
}

void BrowserDialog::give_cell(NMLVDISPINFOW& asked) const {
    if ((asked.item.mask & LVIF_TEXT) == 0 || asked.item.cchTextMax <= 0) return;
    const base::Text text = session_
                                .cell(static_cast<std::size_t>(asked.item.iItem),
                                      static_cast<std::size_t>(asked.item.iSubItem))
                                .value_or(u"NULL");
    const std::size_t length =
        std::min(text.size(), static_cast<std::size_t>(asked.item.cchTextMax) - 1);
    std::copy_n(text.data(), length, asked.item.pszText);
    asked.item.pszText[length] = L'\0';
}

// Null is no text: grey.
INT_PTR BrowserDialog::draw_cell(const NMLVCUSTOMDRAW& drawing) const {
    if (drawing.nmcd.dwDrawStage == CDDS_PREPAINT) return CDRF_NOTIFYITEMDRAW;
    if (drawing.nmcd.dwDrawStage == CDDS_ITEMPREPAINT) return CDRF_NOTIFYSUBITEMDRAW;
    if (drawing.nmcd.dwDrawStage != (CDDS_ITEMPREPAINT | CDDS_SUBITEM)) return CDRF_DODEFAULT;
    const bool is_null =
        !session_.cell(drawing.nmcd.dwItemSpec, static_cast<std::size_t>(drawing.iSubItem));
    const_cast<NMLVCUSTOMDRAW&>(drawing).clrText =
        GetSysColor(is_null ? COLOR_GRAYTEXT : COLOR_WINDOWTEXT);
    return CDRF_DODEFAULT;
}

std::size_t BrowserDialog::selected_database() const noexcept {
    return static_cast<std::size_t>(SendMessageW(control(TAVRIX_BROWSER_DATABASES), LVM_GETNEXTITEM,
                                                 static_cast<WPARAM>(-1), LVNI_SELECTED));
}

void BrowserDialog::choose() {
    const std::size_t database = selected_database();
    if (!session_.has_database(database)) return show_status();
    chosen_ = database;
    close();
}

void BrowserDialog::connect() {
    session_.connect(selected_database());
    SetTimer(window(), query_timer, between_looks_ms, nullptr);
    show_result();
}

void BrowserDialog::run_query() {
    const HWND box = control(TAVRIX_BROWSER_QUERY);
    const auto refusal = session_.run(selected_database(), text_of_control(box));
    if (refusal) {
        // Marks the whole text.
        focus(TAVRIX_BROWSER_QUERY);
        SendMessageW(box, EM_SETSEL, refusal->position, refusal->position + refusal->length);
        SendMessageW(box, EM_SCROLLCARET, 0, 0);
        return show_status();
    }
    SetTimer(window(), query_timer, between_looks_ms, nullptr);
    show_result();
}

void BrowserDialog::work_on() {
    if (session_.go_on()) show_result();
    if (!session_.is_busy()) KillTimer(window(), query_timer);
}

void BrowserDialog::turn_page(bool forward) {
    if (forward) {
        session_.show_next_page();
    } else {
        session_.show_previous_page();
    }
    show_page();
}

void BrowserDialog::show_status() {
    set_text(TAVRIX_BROWSER_STATUS, dialogs::with_edit_line_ends(session_.status()));
    set_text(IDCANCEL, session_.can_stop() ? u"Prz&erwij" : u"&Zamknij");
}

void BrowserDialog::show_result() {
    show_status();
    const HWND list = control(TAVRIX_BROWSER_ROWS);
    SendMessageW(list, LVM_SETITEMCOUNT, 0, 0);
    while (SendMessageW(list, LVM_DELETECOLUMN, 0, 0) != FALSE) {
    }
    if (!session_.is_busy()) {
        const auto count =
            std::min(static_cast<int>(session_.result().columns.size()), most_columns);
        for (int i = 0; i < count; ++i) {
            const auto column = static_cast<std::size_t>(i);
            add_list_column(list, i, session_.column_title(column), column_width(column));
        }
    }
    show_page();
}

void BrowserDialog::show_page() {
    const HWND list = control(TAVRIX_BROWSER_ROWS);
    const std::size_t rows = session_.is_busy() ? 0 : session_.page_rows();
    SendMessageW(list, LVM_SETITEMCOUNT, rows, 0);
    set_text(TAVRIX_BROWSER_PAGE, rows > 0 ? session_.page_text() : base::Text());
    set_text(TAVRIX_BROWSER_ROW_TEXT, u"");
    const std::pair<int, bool> buttons[] = {
        {TAVRIX_BROWSER_PREVIOUS, rows > 0 && session_.has_previous_page()},
        {TAVRIX_BROWSER_NEXT, rows > 0 && session_.has_next_page()}};
    for (const auto& [button, enabled] : buttons) {
        // A button that cannot be pressed any more must not keep the keyboard.
        if (!enabled && GetFocus() == control(button)) focus(TAVRIX_BROWSER_ROWS);
        EnableWindow(control(button), enabled ? TRUE : FALSE);
    }
    if (rows == 0) return;
    select_list_item(list, 0);
    SendMessageW(list, LVM_ENSUREVISIBLE, 0, FALSE);
    InvalidateRect(list, nullptr, TRUE);
}

void BrowserDialog::show_row(int row) {
    set_text(TAVRIX_BROWSER_ROW_TEXT,
             dialogs::with_edit_line_ends(session_.whole_row(static_cast<std::size_t>(row))));
}

// As wide as its title and first rows, within reason.
int BrowserDialog::column_width(std::size_t column) const {
    constexpr std::size_t rows_looked_at = 30;
    constexpr int widest_in_letters = 40;
    const HWND list = control(TAVRIX_BROWSER_ROWS);
    const int letter_px = list_text_width(list, u"0");
    int width_px = list_text_width(list, session_.column_title(column));
    for (std::size_t row = 0; row < std::min(session_.page_rows(), rows_looked_at); ++row) {
        width_px =
            std::max(width_px, list_text_width(list, session_.cell(row, column).value_or(u"NULL")));
    }
    return std::min(width_px, widest_in_letters * letter_px) + 3 * letter_px;
}

void BrowserDialog::fit_database_columns() noexcept {
    const HWND list = control(TAVRIX_BROWSER_DATABASES);
    RECT room{};
    GetClientRect(list, &room);
    const int width_px = static_cast<int>(room.right);
    SendMessageW(list, LVM_SETCOLUMNWIDTH, 0, width_px / 2);
    SendMessageW(list, LVM_SETCOLUMNWIDTH, 1, width_px - width_px / 2);
}

void BrowserDialog::on_size(int width_px, int height_px) {
    if (!resize_) return;
    const dialogs::FormSize size = {static_cast<double>(width_px), static_cast<double>(height_px)};
    // Would show a form that nobody is to see yet.
    const bool seen = IsWindowVisible(window()) != FALSE;
    if (seen) SendMessageW(window(), WM_SETREDRAW, FALSE, 0);
    resize_->fit(size);
    fit_database_columns();
    if (!seen) return;
    SendMessageW(window(), WM_SETREDRAW, TRUE, 0);
    RedrawWindow(window(), nullptr, nullptr,
                 RDW_ERASE | RDW_FRAME | RDW_INVALIDATE | RDW_ALLCHILDREN);
}

}  // namespace tavrix::com
