#include "com/forms/chart_dialog.h"

// Needs what that includes.
#include <commdlg.h>

#include <algorithm>
#include <cwchar>

#include "base/error.h"
#include "com/forms/form_text.h"
#include "com/forms/forms.h"
#include "com/forms/identifiers.h"
#include "windows/bstr.h"

namespace tavrix::com {
namespace {

constexpr int chart_buttons[] = {TAVRIX_CHART_TABLE, TAVRIX_CHART_COPY, TAVRIX_CHART_SAVE,
                                 TAVRIX_CHART_PRINT, IDCANCEL};
// In dialog units.
constexpr int form_margin = 7;
constexpr int button_distance = 4;
constexpr int number_width = 70;

// The template's own widths and the form's margins, in the user's font.
RECT place_in_form(HWND form, HWND control) noexcept {
    RECT place{};
    GetWindowRect(control, &place);
    MapWindowPoints(nullptr, form, reinterpret_cast<POINT*>(&place), 2);
    return place;
}

bool has_high_contrast() noexcept {
    HIGHCONTRASTW contrast{};
    contrast.cbSize = sizeof contrast;
    return SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof contrast, &contrast, 0) &&
           (contrast.dwFlags & HCF_HIGHCONTRASTON) != 0;
}

/// What a file of the chart is called until the user names it.
base::Text file_name_of(const dialogs::Chart& chart) {
    constexpr std::size_t longest_name = 80;
    base::Text name = base::remove_characters(chart.title, u"\\/:*?\"<>|\t\r\n");
    name = base::Text(base::trim(name.substr(0, longest_name)));
    return (name.empty() ? u"wykres" : name) + u".png";
}

/// Empty when the user has changed his mind.
base::Text ask_for_path(HWND owner, const dialogs::Chart& chart) {
    constexpr std::size_t longest_path = 4096;
    base::Text path = file_name_of(chart);
    path.resize(longest_path);
    OPENFILENAMEW asked{};
    asked.lStructSize = sizeof asked;
    asked.hwndOwner = owner;
    asked.lpstrFilter = L"Obraz PNG (*.png)\0*.png\0";
    asked.lpstrFile = reinterpret_cast<wchar_t*>(path.data());
    asked.nMaxFile = longest_path;
    asked.lpstrTitle = L"Zapisywanie wykresu";
    asked.lpstrDefExt = L"png";
    // The current folder is the host's.
    asked.Flags =
        OFN_EXPLORER | OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
    if (!GetSaveFileNameW(&asked)) return {};
    return windows::text_from_wide(asked.lpstrFile);
}

class ChartOnDesktop final : public dialogs::ChartWindow {
  public:
    explicit ChartOnDesktop(PrinterChooser choose_printer)
        : choose_printer_(std::move(choose_printer)) {}

    bool show(const std::function<dialogs::Chart()>& read) noexcept override {
        static FormPlace place;
        const TakenPlace taken(place);
        if (!taken) return false;
        try {
            // The host's code runs here, and may call again.
            return ChartDialog(read(), choose_printer_).show_at(taken);
        } catch (...) {
            return false;
        }
    }

  private:
    PrinterChooser choose_printer_;
};

}  // namespace

std::unique_ptr<dialogs::ChartWindow> make_chart_window(PrinterChooser choose_printer) {
    return std::make_unique<ChartOnDesktop>(std::move(choose_printer));
}

ChartDialog::ChartDialog(dialogs::Chart chart, const PrinterChooser& choose_printer)
    : Dialog(TAVRIX_CHART_FORM),
      choose_printer_(choose_printer),
      chart_(std::move(chart)),
      table_(chart_table(chart_.data)) {
    INITCOMMONCONTROLSEX wanted{};
    wanted.dwSize = sizeof wanted;
    wanted.dwICC = ICC_LISTVIEW_CLASSES;
    InitCommonControlsEx(&wanted);
}

void ChartDialog::on_open() {
    if (!base::trim(chart_.title).empty()) {
        SetWindowTextW(window(), windows::wide(chart_.title));
    }
    // What a screen reader says of the picture.
    set_text(TAVRIX_CHART_PICTURE, chart_in_words(chart_));
    make_columns();
    show_table(false);
    if (chart_.data.failure.empty()) {
        // Or the button that closes would have its frame beside the one with the focus.
        focus(TAVRIX_CHART_TABLE);
    } else {
        for (const int id : chart_buttons) EnableWindow(control(id), id == IDCANCEL);
    }
    // After the form is there, so that it knows the size to come back to.
    if (chart_.full_screen) PostMessageW(window(), WM_SYSCOMMAND, SC_MAXIMIZE, 0);
}

void ChartDialog::read_font() {
    const auto font = reinterpret_cast<HFONT>(SendMessageW(window(), WM_GETFONT, 0, 0));
    if (font == font_) return;
    font_ = font;
    GetObjectW(font, sizeof face_, &face_);
    const ControlDevice device(window());
    dots_per_inch_ = GetDeviceCaps(device.get(), LOGPIXELSY);
    TEXTMETRICW metrics{};
    GetTextMetricsW(device.get(), &metrics);
    em_twips_ = static_cast<double>(metrics.tmHeight - metrics.tmInternalLeading) * twips_per_inch /
                dots_per_inch_;
    shown_.reset();
}

void ChartDialog::make_columns() {
    const HWND list = control(TAVRIX_CHART_NUMBERS);
    ListView_SetExtendedListViewStyle(list, LVS_EX_FULLROWSELECT | LVS_EX_GRIDLINES);
    for (std::size_t i = 0; i < table_[0].size(); ++i) {
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_FMT;
        // The first column of a list is always on the left.
        column.fmt = i == 0 ? LVCFMT_LEFT : LVCFMT_RIGHT;
        column.cx = static_cast<int>(pixels(i == 0 ? 120 : number_width, 0).cx);
        column.pszText = const_cast<wchar_t*>(windows::wide(table_[0][i]));
        SendMessageW(list, LVM_INSERTCOLUMNW, i, reinterpret_cast<LPARAM>(&column));
    }
    ListView_SetItemCount(list, static_cast<int>(table_.size() - 1));
    // Where the arrow keys begin.
    ListView_SetItemState(list, 0, LVIS_FOCUSED, LVIS_FOCUSED);
}

void ChartDialog::show_table(bool shown) {
    const HWND list = control(TAVRIX_CHART_NUMBERS);
    // What is hidden loses the focus to nobody.
    if (!shown && GetFocus() == list) focus(TAVRIX_CHART_TABLE);
    ShowWindow(list, shown ? SW_SHOWNA : SW_HIDE);
    ShowWindow(control(TAVRIX_CHART_PICTURE), shown ? SW_HIDE : SW_SHOWNA);
    set_text(TAVRIX_CHART_TABLE, shown ? u"&Wykres" : u"&Tabela");
    if (shown) focus(TAVRIX_CHART_NUMBERS);
}

void ChartDialog::on_command(int id, int notification) {
    if (notification != BN_CLICKED) return;
    switch (id) {
        case TAVRIX_CHART_TABLE:
            return show_table(!IsWindowVisible(control(TAVRIX_CHART_NUMBERS)));
        case TAVRIX_CHART_COPY:
            return copy();
        case TAVRIX_CHART_SAVE:
            return save();
        case TAVRIX_CHART_PRINT:
            return print();
        case IDCANCEL:
            return close();
        default:
            return;
    }
}

bool ChartDialog::on_key(UINT key) {
    if (key != 'C' || !only_control_is_down() || !chart_.data.failure.empty()) return false;
    copy();
    return true;
}

std::optional<INT_PTR> ChartDialog::on_message(UINT message, WPARAM, LPARAM lparam) {
    switch (message) {
        case WM_DRAWITEM:
            paint(*reinterpret_cast<const DRAWITEMSTRUCT*>(lparam));
            return TRUE;
        case WM_NOTIFY: {
            auto& header = *reinterpret_cast<NMHDR*>(lparam);
            if (header.idFrom != TAVRIX_CHART_NUMBERS || header.code != LVN_GETDISPINFOW) return {};
            tell_cell(reinterpret_cast<NMLVDISPINFOW&>(header));
            return 0;
        }
        case WM_SYSCOLORCHANGE:
        case WM_THEMECHANGED:
            shown_.reset();
            InvalidateRect(control(TAVRIX_CHART_PICTURE), nullptr, FALSE);
            return {};
        default:
            return {};
    }
}

void ChartDialog::tell_cell(NMLVDISPINFOW& asked) const {
    if ((asked.item.mask & LVIF_TEXT) == 0 || asked.item.cchTextMax <= 0) return;
    const auto row = static_cast<std::size_t>(asked.item.iItem) + 1;
    const auto column = static_cast<std::size_t>(asked.item.iSubItem);
    const base::TextView text = row < table_.size() && column < table_[row].size()
                                    ? base::TextView(table_[row][column])
                                    : base::TextView();
    const std::size_t size =
        std::min(text.size(), static_cast<std::size_t>(asked.item.cchTextMax - 1));
    std::wmemcpy(asked.item.pszText, windows::wide(text.data()), size);
    asked.item.pszText[size] = L'\0';
}

// The buttons keep their sizes and stand on the right, below everything else.
void ChartDialog::on_size(int width_px, int height_px) {
    const SIZE margin = pixels(form_margin, form_margin);
    const int distance = static_cast<int>(pixels(button_distance, 0).cx);
    int left = width_px - static_cast<int>(margin.cx);
    int top = height_px;
    for (const int id :
         {IDCANCEL, TAVRIX_CHART_PRINT, TAVRIX_CHART_SAVE, TAVRIX_CHART_COPY, TAVRIX_CHART_TABLE}) {
        const RECT place = place_in_form(window(), control(id));
        left -= static_cast<int>(place.right - place.left);
        top = height_px - static_cast<int>(margin.cy + place.bottom - place.top);
        SetWindowPos(control(id), nullptr, left, top, 0, 0,
                     SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
        left -= distance;
    }
    for (const int id : {TAVRIX_CHART_PICTURE, TAVRIX_CHART_NUMBERS}) {
        SetWindowPos(control(id), nullptr, static_cast<int>(margin.cx), static_cast<int>(margin.cy),
                     width_px - 2 * static_cast<int>(margin.cx),
                     std::max(0, top - 2 * static_cast<int>(margin.cy)),
                     SWP_NOZORDER | SWP_NOACTIVATE);
    }
    fill_width();
    // A window that comes to another screen gets another font.
    read_font();
    InvalidateRect(control(TAVRIX_CHART_PICTURE), nullptr, FALSE);
}

/// The table's last column ends where the table does.
void ChartDialog::fill_width() {
    const HWND list = control(TAVRIX_CHART_NUMBERS);
    const int last = static_cast<int>(table_[0].size()) - 1;
    RECT inside{};
    GetClientRect(list, &inside);
    int left = static_cast<int>(inside.right);
    for (int column = 0; column < last; ++column) left -= ListView_GetColumnWidth(list, column);
    ListView_SetColumnWidth(list, last,
                            std::max(left, static_cast<int>(pixels(number_width, 0).cx)));
}

SIZE ChartDialog::smallest_size() const noexcept {
    return pixels(300, 180);
}

drawing::Picture ChartDialog::picture_of(SIZE size_px) const {
    const windows::MemoryDevice measuring(CreateCompatibleDC(nullptr));
    const TwipsDevice in_twips(measuring.get(), dots_per_inch_, dots_per_inch_);
    GdiText text(measuring.get(), face_);
    dialogs::ChartLook look;
    look.width_twips = static_cast<std::int32_t>(size_px.cx) * twips_per_inch / dots_per_inch_;
    look.height_twips = static_cast<std::int32_t>(size_px.cy) * twips_per_inch / dots_per_inch_;
    look.pixel_twips = static_cast<double>(twips_per_inch) / dots_per_inch_;
    look.em_twips = em_twips_;
    look.ink = GetSysColor(COLOR_WINDOWTEXT);
    look.paper = GetSysColor(COLOR_WINDOW);
    look.in_colour = !has_high_contrast();
    look.text_width = [&](base::TextView words, double em_twips, bool bold) {
        return text.width_of(words, em_twips, bold);
    };
    return draw_chart(chart_, look);
}

void ChartDialog::paint(const DRAWITEMSTRUCT& item) {
    const SIZE size = {item.rcItem.right - item.rcItem.left, item.rcItem.bottom - item.rcItem.top};
    if (size.cx <= 0 || size.cy <= 0) return;
    if (size.cx != shown_size_.cx || size.cy != shown_size_.cy) shown_.reset();
    if (!shown_) {
        shown_ = std::make_unique<PictureBitmap>(picture_of(size), face_, dots_per_inch_);
        shown_size_ = size;
    }
    BitBlt(item.hDC, item.rcItem.left, item.rcItem.top, size.cx, size.cy, shown_->device(), 0, 0,
           SRCCOPY);
}

ChartToSend ChartDialog::to_send() const {
    RECT place{};
    GetClientRect(control(TAVRIX_CHART_PICTURE), &place);
    return {chart_, face_, static_cast<std::int32_t>(place.right) * twips_per_inch / dots_per_inch_,
            static_cast<std::int32_t>(place.bottom) * twips_per_inch / dots_per_inch_, em_twips_};
}

template <typename Action>
void ChartDialog::guarded(const char16_t* failed, Action action) {
    try {
        action();
    } catch (const base::AutomationError& error) {
        say(base::Text(failed) + u" " + error.description());
    } catch (const std::bad_alloc&) {
        say(base::Text(failed) + u" Brakuje pamięci.");
    }
}

void ChartDialog::copy() {
    guarded(u"Nie można skopiować wykresu.", [&] {
        if (!copy_chart(to_send(), window())) say(u"Schowek jest zajęty przez inny program.");
    });
}

void ChartDialog::save() {
    guarded(u"Nie można zapisać wykresu.", [&] {
        const base::Text path = ask_for_path(window(), chart_);
        if (!path.empty()) save_chart(to_send(), path);
    });
}

void ChartDialog::print() {
    guarded(u"Nie można wydrukować wykresu.", [&] {
        if (const auto name = choose_printer_()) print_chart(to_send(), *name);
    });
}

void ChartDialog::say(const base::Text& text) {
    MessageBoxW(window(), windows::wide(text), L"Wykres", MB_OK | MB_ICONWARNING);
}

}  // namespace tavrix::com
