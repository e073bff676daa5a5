#include <gtest/gtest.h>

#include "barcode/surface/ean_cls.h"
#include "barcode/surface/ean_cls128.h"
#include "barcode/surface/ean_cls813.h"
#include "barcode/surface/qr_code.h"
#include "base/error.h"
#include "tests/support/code_page.h"
#include "tests/support/fake_desktop.h"
#include "tests/support/recording_surface.h"

namespace tavrix::barcode {
namespace {

using base::Text;
using ports::RecordingSurface;

constexpr std::int32_t huge_size = 214'748'365;  // ten times this is more than 32 bits hold
constexpr const char16_t* program_folder = u"C:\\Program Files (x86)\\Host";
constexpr const char16_t* windows_folder = u"C:\\Windows";

/// What a host has set before it calls, and what it must find again.
RecordingSurface host_surface(const char16_t* font = u"Times New Roman") {
    RecordingSurface surface(6000, 4000);
    surface.Canvas::set_font_name(font);
    surface.Canvas::set_font_size(11);
    surface.Canvas::set_font_bold(true);
    surface.Canvas::set_current_x(300);
    surface.Canvas::set_current_y(200);
    return surface;
}

void expect_font_untouched(RecordingSurface& surface, const char16_t* font = u"Times New Roman") {
    EXPECT_EQ(surface.Canvas::font_name(), font);
    EXPECT_EQ(surface.font_size(), 11);
    EXPECT_TRUE(surface.font_bold());
}

void expect_untouched(RecordingSurface& surface, const char16_t* font = u"Times New Roman") {
    expect_font_untouched(surface, font);
    EXPECT_EQ(surface.Canvas::current_x(), 300);
    EXPECT_EQ(surface.current_y(), 200);
}

template <typename Action>
void expect_error(base::ErrorNumber number, Action&& action) {
    try {
        action();
        FAIL() << "nothing was thrown";
    } catch (const base::AutomationError& error) {
        EXPECT_EQ(error.number(), number) << error.what();
    }
}

class BarcodeClasses : public testing::Test {
  protected:
    // Copying a font makes it known to nobody, as before a restart.
    test::FakeDesktop shell;
    std::unique_ptr<ports::Pictures> pictures = ports::make_native_pictures();
    std::unique_ptr<ports::CodePage> code_page = test::system_code_page();
    Drk_Wyd_Ean_cls dispatcher{{shell, shell, *pictures, *code_page}};

    void dispatch(RecordingSurface& surface, const Text& text, const Text& kind,
                  bool rotate = false, std::int32_t size = 0) {
        dispatcher.RysujEAN(surface, text, 100, 50, 1200, 1100, size, kind, false, rotate,
                            program_folder, windows_folder);
    }
};

using Ean813 = BarcodeClasses;
using Ean128 = BarcodeClasses;
using Dispatcher = BarcodeClasses;
using Rotation = BarcodeClasses;

TEST_F(Ean813, prints_the_symbol_and_measures_the_digits) {
    RecordingSurface surface = host_surface(u"code ean13");
    Drk_Wyd_Ean_cls813 symbols;
    Text digits = u"5901234123450";  // with a wrong check digit
    symbols.RysujEAN(surface, digits, 1, true);
    EXPECT_EQ(digits, u"590123412345");
    EXPECT_EQ(surface.logged(u"Print"), std::vector<Text>{u"Print 5JKLCDO*bcdefh+"});
    EXPECT_EQ(surface.logged(u"FontSize").at(2), u"FontSize 58");
    // Twelve digits of 14 modules each, 64 modules to the em of 58 points.
    EXPECT_EQ(symbols.szer(), base::Currency::from(12 * 14 * 58 * 20 / 64.0));
    EXPECT_EQ(symbols.wys(), base::Currency::from(66 * 58 * 20 / 64.0));
    expect_untouched(surface, u"code ean13");
}

TEST_F(Ean813, prints_what_is_no_number_as_it_is) {
    for (const char16_t* text : {u"ABC", u"000000123456", u"", u"  0"}) {
        RecordingSurface surface = host_surface();
        Text given = text;
        Drk_Wyd_Ean_cls813().RysujEAN(surface, given, 0, false);
        EXPECT_EQ(surface.log().size(), 1u) << base::to_utf8(text);
        EXPECT_EQ(given, text);
    }
    // A number that is no EAN prints an empty line.
    RecordingSurface surface = host_surface();
    Text given = u"123x";
    Drk_Wyd_Ean_cls813().RysujEAN(surface, given, 0, false);
    EXPECT_EQ(surface.logged(u"Print"), std::vector<Text>{u"Print"});
}

TEST_F(Ean813, a_failing_surface_gets_position_and_font_back) {
    for (const char16_t* member : {u"Print", u"TextWidth", u"FontBold", u"FontSize"}) {
        RecordingSurface surface = host_surface();
        surface.lack(member);
        Text digits = u"1234567";
        EXPECT_THROW(Drk_Wyd_Ean_cls813().RysujEAN(surface, digits, 0, false),
                     base::AutomationError);
        expect_untouched(surface);
    }
    RecordingSurface surface = host_surface();
    Text digits = u"1234567";
    expect_error(base::ErrorNumber::overflow,
                 [&] { Drk_Wyd_Ean_cls813().RysujEAN(surface, digits, huge_size, false); });
    expect_untouched(surface);
}

TEST_F(Ean128, draws_its_fixed_symbol_whatever_the_text) {
    Drk_Wyd_Ean_cls128 symbols(*code_page);
    const Text symbol = std::get<Text>(symbols.Code128_Str(u"ABC"));
    // Start B, "(12)", CODE C, five pairs, check character 31 = "?", Stop.
    EXPECT_EQ(symbol.substr(0, 6), u"Ě(12)Ç");
    EXPECT_EQ(symbol.substr(6, 5), u"[!559");
    EXPECT_EQ(symbol.back(), u'Î');
    EXPECT_EQ(std::get<Text>(symbols.Code128_Str(u"")), symbol);

    RecordingSurface surface = host_surface(u"CODE 128");
    Text text = u"Ala";
    symbols.RysujEAN(surface, text, 2, false, false);
    EXPECT_EQ(surface.logged(u"Print"), (std::vector<Text>{u"Print " + symbol, u"Print Ala"}));
    EXPECT_EQ(surface.logged(u"FontSize").front(), u"FontSize 62");
    expect_font_untouched(surface, u"CODE 128");

    RecordingSurface bare = host_surface(u"CODE 128");
    symbols.RysujEAN(bare, text, 0, true, false);
    EXPECT_EQ(bare.logged(u"Print").size(), 1u);
}

TEST_F(Ean128, turned_bars_stand_beside_the_turned_caption) {
    Drk_Wyd_Ean_cls128 symbols(*code_page);
    RecordingSurface surface = host_surface(u"CODE 128");
    Text text = u"Ala";
    symbols.RysujEAN(surface, text, 0, false, true);
    const std::vector<Text> lines = surface.logged(u"TextOut");
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_TRUE(lines[0].starts_with(u"TextOut 270 "));
    EXPECT_TRUE(lines[1].ends_with(u" Ala"));
    EXPECT_TRUE(surface.logged(u"Print").empty());
    EXPECT_EQ(surface.scale_mode(), ports::scale_twips);
    expect_font_untouched(surface, u"CODE 128");
}

TEST_F(Ean128, width_counts_the_digits_among_the_characters) {
    Drk_Wyd_Ean_cls128 symbols(*code_page);
    const Text symbol = std::get<Text>(symbols.Code128_Str(u""));
    int digits = 0;
    for (const char16_t each : symbol) {
        if (each >= u'0' && each <= u'9') digits += each - u'0';
    }
    EXPECT_EQ(symbols.Code128_GetWidth(u"x", 1), digits + 28);
    EXPECT_EQ(symbols.Code128_GetWidth(u"y", 2), 2 * (digits + 28));
    EXPECT_EQ(symbols.Code128_GetWidth(u"y", -3), -3 * (digits + 28));
    RecordingSurface surface = host_surface();
    Text text;
    expect_error(base::ErrorNumber::overflow,
                 [&] { symbols.RysujEAN(surface, text, huge_size, false, false); });
    expect_untouched(surface);
}

TEST_F(Dispatcher, draws_nothing_when_the_font_is_there) {
    for (const char16_t* kind : {u"EAN13", u"EAN128", u"EAN39", u"EAN39EX"}) {
        RecordingSurface surface = host_surface();
        dispatch(surface, u"590123412345", kind);
        EXPECT_TRUE(surface.logged(u"Print").empty()) << base::to_utf8(kind);
        expect_untouched(surface);
    }
    EXPECT_TRUE(shell.done.empty());
}

TEST_F(Dispatcher, installs_a_missing_font_and_draws_in_the_one_it_has) {
    const Text fonts = Text(windows_folder) + u"\\Fonts";
    shell.files.insert(Text(program_folder) + u"\\free3of9.ttf");
    RecordingSurface surface = host_surface();
    surface.lack_font(u"free 3 of 9");
    dispatch(surface, u"<EAN z PLU>", u"EAN39");
    EXPECT_EQ(shell.done,
              (std::vector<Text>{u"copy " + Text(program_folder) + u"\\free3of9.ttf",
                                 u"Install " + fonts + u" free3of9.ttf",
                                 u"run hidden " + Text(program_folder) + u"\\FontReg64.exe",
                                 u"message Proszę zainstalować czcionkę free 3 of 9(free3of9)"}));
    EXPECT_EQ(surface.logged(u"Print"), (std::vector<Text>{u"Print *123*", u"Print 123"}));
    EXPECT_GT(dispatcher.szer().ten_thousandths, 0);
    expect_untouched(surface);
}

TEST_F(Dispatcher, the_32_bit_registrar_elsewhere_and_no_install_without_the_file) {
    RecordingSurface surface = host_surface();
    surface.lack_font(u"X");
    EXPECT_FALSE(dispatcher.SetCzcionkę(surface, u"X", u"x", false, u"C:\\Host", windows_folder));
    EXPECT_EQ(shell.done.size(), 1u);  // the message
    shell.done.clear();
    shell.files.insert(u"C:\\Windows\\Fonts\\x.ttf");
    EXPECT_FALSE(dispatcher.SetCzcionkę(surface, u"X", u"x", true, u"C:\\Host", windows_folder));
    EXPECT_EQ(shell.done.at(1), u"run hidden C:\\Host\\FontReg32.exe");
    EXPECT_TRUE(dispatcher.SetCzcionkę(surface, u"ARIAL ce", u"", true, u"", u""));
}

TEST_F(Dispatcher, a_surface_that_lacks_a_property_never_raises) {
    for (const char16_t* member : {u"FontName", u"CurrentX", u"Print", u"FontSize", u"TextWidth"}) {
        for (const char16_t* kind : {u"QR", u"EAN13", u"EAN128", u"EAN39", u"other"}) {
            RecordingSurface surface = host_surface();
            surface.lack_font(u"code ean13");
            surface.lack_font(u"CODE 128");
            surface.lack_font(u"free 3 of 9");
            surface.lack(member);
            EXPECT_NO_THROW(dispatch(surface, u"590123412345", kind));
        }
    }
    RecordingSurface surface = host_surface();
    expect_error(base::ErrorNumber::overflow,
                 [&] { dispatch(surface, u"text", u"QR", false, huge_size); });
    expect_untouched(surface);
}

TEST_F(Dispatcher, pictures_go_into_the_rectangle) {
    RecordingSurface surface = host_surface();
    dispatch(surface, u"https://example.pl", u"QR");
    EXPECT_EQ(surface.logged(u"PaintPicture"), std::vector<Text>{u"PaintPicture 100 50 1200 1100"});
    EXPECT_EQ(surface.logged(u"CurrentX").front(), u"CurrentX 1500");
    expect_untouched(surface);
    RecordingSurface empty = host_surface();
    dispatch(empty, u"", u"QR");
    dispatch(empty, Text(3000, u'x'), u"QR");
    dispatch(empty, u"<OBR,C:\\missing.bmp>", u"QR");
    dispatch(empty, u"<OBR,", u"QR");
    EXPECT_TRUE(empty.logged(u"PaintPicture").empty());
    EXPECT_TRUE(empty.logged(u"Print").empty());
    expect_untouched(empty);
}

TEST_F(Dispatcher, other_kinds_and_turned_ean13_paint_a_turned_symbol) {
    for (const char16_t* kind : {u"EAN13", u"ean13", u"", u"qr"}) {
        RecordingSurface surface = host_surface();
        dispatch(surface, u"5901234123457", kind, true);
        EXPECT_EQ(surface.logged(u"PaintPicture").size(), 1u) << base::to_utf8(kind);
        expect_untouched(surface);
        for (const char16_t* text : {u"1234567", u"59012341234x", u"59012341234567", u"123"}) {
            RecordingSurface other = host_surface();
            dispatch(other, text, kind, true);
            EXPECT_TRUE(other.logged(u"PaintPicture").empty()) << base::to_utf8(text);
        }
    }
}

TEST_F(Dispatcher, sync_shell_says_whether_the_program_started) {
    EXPECT_TRUE(dispatcher.SyncShell(u"notepad.exe", {}, {}, false));
    shell.can_start = false;
    EXPECT_FALSE(dispatcher.SyncShell(u"none.exe", std::int64_t{5}, true, true));
    EXPECT_EQ(shell.done, (std::vector<Text>{u"run notepad.exe", u"run hidden none.exe"}));
}

/// A 4 x 3 pixel box whose pixel (x, y) has the colour 16 x + y.
void fill(ports::Canvas& surface) {
    for (std::int32_t y = 0; y < 3; ++y) {
        for (std::int32_t x = 0; x < 4; ++x) surface.set_pixel(x, y, 16 * x + y);
    }
}

TEST_F(Rotation, quarter_turn_includes_both_bounds_and_ignores_the_angle) {
    for (const std::int32_t angle : {0, 90, 180, -45}) {
        ports::Canvas source(4 * 15, 3 * 15);
        ports::Canvas destination(10 * 15, 10 * 15);
        fill(source);
        dispatcher.RotateSurface(source, destination, angle, 2, 1);
        // (x, y) comes to (2 + 3 - y, 1 + x); what lies beyond the source is not written.
        for (std::int32_t y = 0; y < 3; ++y) {
            for (std::int32_t x = 0; x < 4; ++x) {
                EXPECT_EQ(destination.pixel(2 + 3 - y, 1 + x), 16 * x + y);
            }
        }
        EXPECT_EQ(destination.pixel(2, 1), 0xFFFFFF);
        EXPECT_EQ(destination.pixel(5, 5), 0xFFFFFF);
    }
}

TEST_F(Rotation, bitmap_turns_by_quarters_only) {
    ports::Canvas source(4 * 15, 3 * 15);
    fill(source);
    Drk_Wyd_Ean_cls813 symbols;
    RecordingSurface quarter(8 * 15, 8 * 15);
    symbols.RotatePicture(source, quarter, 90);
    EXPECT_EQ(quarter.width(), 3 * 15);
    EXPECT_EQ(quarter.height(), 4 * 15);
    EXPECT_EQ(quarter.pixel(2, 0), 0);           // top left comes to the top right
    EXPECT_EQ(quarter.pixel(0, 3), 16 * 3 + 2);  // bottom right to the bottom left
    EXPECT_EQ(quarter.log().back(), u"Picture");
    RecordingSurface half(4 * 15, 3 * 15);
    symbols.RotatePicture(source, half, 180);
    EXPECT_EQ(half.pixel(3, 2), 0);
    EXPECT_EQ(half.pixel(0, 0), 16 * 3 + 2);
    RecordingSurface back(8 * 15, 8 * 15);
    symbols.RotatePicture(quarter, back, 270);
    for (std::int32_t x = 0; x < 4; ++x) EXPECT_EQ(back.pixel(x, 1), 16 * x + 1);
    RecordingSurface none(8 * 15, 8 * 15);
    symbols.RotatePicture(source, none, 45);
    EXPECT_TRUE(none.log().empty());
}

TEST_F(Rotation, bitmap_depths_and_palettes) {
    RecordingSurface source(60, 45);
    RecordingSurface destination(60, 45);
    Drk_Wyd_Ean_cls813 symbols;
    source.set_depth(4);
    try {
        symbols.RotatePicture(source, destination, 90);
        FAIL();
    } catch (const base::AutomationError& error) {
        EXPECT_EQ(static_cast<std::uint32_t>(error.number()), 0x800403E9u);
        EXPECT_EQ(error.source(), u"DDBHelper.GetBitmapPixels");
        EXPECT_EQ(error.description(), u"Invalid number of bits per pixel: 4");
    }
    source.set_depth(8);
    source.lack(u"Palette");
    try {
        symbols.RotatePicture(source, destination, 90);
        FAIL();
    } catch (const base::AutomationError& error) {
        EXPECT_EQ(error.source(), u"DDBHelper.MatchColorPalette");
        EXPECT_EQ(error.description(), u"Error matching bitmap palette");
    }
}

TEST_F(Rotation, turned_text_gives_a_host_scale_back) {
    RecordingSurface surface = host_surface();
    surface.set_scale_left(-10);
    surface.set_scale_top(5);
    surface.set_scale_width(200);
    surface.set_scale_height(100);
    dispatcher.RotateText(surface, u"A", 90, 90, 55);
    // 6000 twips are 400 pixels and 200 units wide: (90 + 10) units are 200 pixels.
    EXPECT_EQ(surface.logged(u"TextOut").at(0), u"TextOut 90 200 133 A");
    EXPECT_EQ(surface.scale_left(), -10);
    EXPECT_EQ(surface.scale_top(), 5);
    EXPECT_EQ(surface.scale_width(), 200);
    EXPECT_EQ(surface.scale_height(), 100);
    surface.lack(u"TextOut");
    EXPECT_THROW(dispatcher.RotateText(surface, u"A", 90, 0, 0), base::AutomationError);
    EXPECT_EQ(surface.scale_width(), 200);
    expect_untouched(surface);
}

}  // namespace
}  // namespace tavrix::barcode
