// The chart window, from a host's grid to the clipboard, a file and a printer.

#include <filesystem>
#include <fstream>
#include <set>

#include "com/forms/chart_output.h"
#include "com/forms/identifiers.h"
#include "tests/com/form_content.h"
#include "tests/com/form_layout.h"
#include "tests/com/form_user.h"
#include "tests/com/late_grid.h"
// Needs what they include.
#include <commctrl.h>

namespace tavrix::test {
namespace {

class ChartForm : public testing::Test {
  protected:
    FormUser user;
    const ComPointer<IDispatch> info = create(u"Tavrix.CInfo");
    const ComPointer<LateGrid> grid = ComPointer<LateGrid>::adopt(
        new LateGrid({{u"Miesiąc", u"Kwota"}, {u"maj", u"1 000,50"}, {u"czerwiec", u"-2"}}));

    void chart(const ComPointer<IDispatch>& object, bool full_screen = false) {
        VARIANT_BOOL whole = full_screen ? VARIANT_TRUE : VARIANT_FALSE;
        Variant numbers[] = {Variant(std::int32_t{1}), Variant(std::int32_t{0}),
                             Variant(std::int32_t{0}), Variant(std::int32_t{0})};
        Variant words[] = {Variant(u""), Variant(u"Sprzedaż & koszty")};
        Variant its_grid{object};
        EXPECT_EQ(
            answer(info, u"Wykres",
                   {by_reference(&whole, VT_BOOL), by_reference(its_grid), by_reference(numbers[0]),
                    by_reference(words[0]), by_reference(numbers[1]), by_reference(numbers[2]),
                    by_reference(numbers[3]), by_reference(words[1]), u"słupkowy", u"",
                    std::int16_t{7}}),
            "empty");
    }
};

int CALLBACK note_brush(HDC, HANDLETABLE*, const ENHMETARECORD* record, int, LPARAM colours) {
    if (record->iType == EMR_CREATEBRUSHINDIRECT) {
        reinterpret_cast<std::set<COLORREF>*>(colours)->insert(
            reinterpret_cast<const EMRCREATEBRUSHINDIRECT*>(record)->lb.lbColor);
    } else if (record->iType == EMR_SELECTOBJECT) {
        constexpr DWORD stock_object = 0x80000000;
        EXPECT_NE(reinterpret_cast<const EMRSELECTOBJECT*>(record)->ihObject,
                  stock_object | DC_BRUSH)
            << "its colour is not recorded";
    }
    return TRUE;
}

base::Text clipboard_text() {
    OpenClipboard(nullptr);
    const HANDLE memory = GetClipboardData(CF_UNICODETEXT);
    const base::Text text =
        windows::text_from_wide(static_cast<const wchar_t*>(GlobalLock(memory)));
    GlobalUnlock(memory);
    EXPECT_NE(GetClipboardData(CF_DIB), nullptr);
    ENHMETAHEADER header{};
    const auto metafile = static_cast<HENHMETAFILE>(GetClipboardData(CF_ENHMETAFILE));
    GetEnhMetaFileHeader(metafile, sizeof header, &header);
    std::set<COLORREF> colours;
    EnumEnhMetaFile(nullptr, metafile, &note_brush, &colours, nullptr);
    EXPECT_TRUE(colours.contains(0xB27200)) << "the bars";
    EXPECT_GT(header.nRecords, 20u);
    EXPECT_GT(header.rclFrame.right, 5000) << "five centimetres at least";
    CloseClipboard();
    return text;
}

TEST_F(ChartForm, ShowsTheHostsGridAndGivesItsNumbersAway) {
    const auto host_grid = ComPointer<IDispatch>(grid.get());
    const auto look = [&](HWND form) {
        EXPECT_EQ(text_of(form), u"Sprzedaż & koszty");
        expect_texts(form, {{TAVRIX_CHART_PICTURE,
                             u"Wykres słupkowy, wiersze: 2. Kwota: od -2 do 1\u00A0000,5."}});
        expect_readable_layout(form);
        EXPECT_EQ(grid->lookups, 7) << "each name once; TextMatrix was asked for six times";
        chart(host_grid);
        EXPECT_EQ(grid->lookups, 7) << "a second call reads nothing";
        EXPECT_EQ(open_forms(), std::vector<HWND>{form});
    };
    const auto look_at_table = [](HWND form) {
        const HWND list = GetDlgItem(form, TAVRIX_CHART_NUMBERS);
        EXPECT_TRUE(IsWindowVisible(list));
        EXPECT_EQ(GetFocus(), list);
        wchar_t cell[20] = {};
        LVITEMW item{};
        item.iSubItem = 1;
        item.pszText = cell;
        item.cchTextMax = 20;
        SendMessageW(list, LVM_GETITEMTEXTW, 1, reinterpret_cast<LPARAM>(&item));
        EXPECT_EQ(windows::text_from_wide(cell), u"-2");
    };
    user.use([&] { chart(host_grid); },
             {look, press_with_alt(L't'), look_at_table, press_with_alt(L'k'),
              [](HWND) {
                  EXPECT_EQ(clipboard_text(),
                            u"Miesiąc\tKwota\r\nmaj\t1 000,50\r\nczerwiec\t-2\r\n");
              },
              press_with_alt(L'w'), press(VK_ESCAPE)});
    user.use([&] { chart(host_grid, true); }, {[](HWND form) {
                                                   EXPECT_TRUE(IsZoomed(form));
                                                   PostMessageW(form, WM_SYSCOMMAND, SC_RESTORE, 0);
                                               },
                                               [](HWND form) {
                                                   EXPECT_FALSE(IsZoomed(form));
                                                   SetWindowPos(form, nullptr, 0, 0, 1, 1,
                                                                SWP_NOMOVE);
                                               },
                                               expect_readable_layout, click_cross()});
}

TEST_F(ChartForm, TellsWhyAGridCannotBeShown) {
    const auto no_grid = [](HWND form) {
        EXPECT_TRUE(text_of(GetDlgItem(form, TAVRIX_CHART_PICTURE))
                        .starts_with(u"Nie można odczytać tabeli programu: "));
        EXPECT_FALSE(IsWindowEnabled(GetDlgItem(form, TAVRIX_CHART_COPY)));
    };
    user.use([&] { chart(info); }, {no_grid, press(VK_ESCAPE)});
    user.use([&] { chart({}); }, {no_grid, press(VK_RETURN)});
}

TEST_F(ChartForm, BecomesAFileOrSaysWhyNot) {
    const dialogs::Chart shop = chart_of_a_shop(dialogs::ChartKind::pie);
    LOGFONTW face{};
    const com::ChartToSend sent{shop, face, 6000, 4500, 180};
    const base::Text path = beside_program(u"wykres żółty.png");
    com::save_chart(sent, path);
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    std::string bytes(std::istreambuf_iterator<char>(file), {});
    file.close();
    EXPECT_EQ(bytes.substr(12, 12), std::string("IHDR\0\0\3\x20\0\0\2\x58", 12)) << "800 x 600";
    std::filesystem::remove(std::filesystem::path(path));
    const std::filesystem::path folder(path);
    std::filesystem::create_directory(folder);
    const std::function<void()> impossible[] = {
        [&] { com::save_chart(sent, path); }, [&] { com::save_chart(sent, u"Q:\\nowhere\\x.png"); },
        [&] { com::print_chart(sent, u"Drukarka, której nie ma"); }};
    for (const auto& send : impossible) {
        EXPECT_THROW(send(), base::AutomationError) << &send - impossible;
    }
    std::filesystem::remove(folder);
    for (const auto& beside : std::filesystem::directory_iterator(folder.parent_path())) {
        EXPECT_FALSE(beside.path().u16string().starts_with(path)) << "nothing unfinished stays";
    }
}

}  // namespace
}  // namespace tavrix::test
