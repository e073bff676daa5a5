// What the classes do to a host's surface, statement by statement, on every way of drawing.

#include <gtest/gtest.h>

#include <set>
#include <tuple>

#include "barcode/surface/ean_cls.h"
#include "barcode/surface/ean_cls128.h"
#include "barcode/surface/ean_cls813.h"
#include "barcode/surface/qr_code.h"
#include "barcode/symbol_drawing.h"
#include "base/error.h"
#include "drawing/coverage.h"
#include "tests/support/code_page.h"
#include "tests/support/fake_desktop.h"
#include "tests/support/recording_surface.h"

namespace tavrix::barcode {
namespace {

using base::Text;
using test::RecordingSurface;

const Text program_folder = u"C:\\Program Files (x86)\\Host";
const Text windows_folder = u"C:\\Windows";
constexpr std::int32_t huge_size = 214'748'365;  // ten times this is more than 32 bits hold

/// What a host has set before it calls: a scale of pixels, a place and a font.
struct HostSurface : RecordingSurface {
    HostSurface() : RecordingSurface(6000, 4500) {
        Canvas::set_scale_mode(ports::scale_pixels);
        Canvas::set_font_name(u"Times New Roman");
        Canvas::set_font_size(11);
        Canvas::set_font_bold(true);
        Canvas::set_current_x(20);
        Canvas::set_current_y(14);
    }
    void lack_all_fonts() {
        for (const Symbology& row : symbologies()) {
            if (row.font != nullptr) lack_font(row.font->family);
        }
    }
    void expect_as_before() {
        EXPECT_EQ(std::tuple(font_name(), font_size(), font_bold(), current_x(), current_y(),
                             scale_mode()),
                  std::tuple(u"Times New Roman", 11, true, 20, 14, ports::scale_pixels));
    }
};

/// One picture file there is.
class OnePicture final : public ports::Pictures {
  public:
    std::unique_ptr<ports::Picture> from_drawing(const drawing::Drawing& drawing) override {
        return native->from_drawing(drawing);
    }
    std::unique_ptr<ports::Picture> load(base::TextView path) override {
        EXPECT_EQ(path, u"C:\\logo.bmp");
        return from_drawing({15, 15});
    }
    std::unique_ptr<ports::PictureForm> open_form() override { return native->open_form(); }

  private:
    std::unique_ptr<ports::Pictures> native = ports::make_native_pictures();
};

class Classes : public testing::Test {
  protected:
    // Copying a font makes it known to nobody, as before a restart.
    test::FakeDesktop shell;
    OnePicture pictures;
    std::unique_ptr<ports::CodePage> code_page = test::system_code_page();
    Drk_Wyd_Ean_cls dispatcher{{shell, shell, pictures, *code_page}};
    Drk_Wyd_Ean_cls813 ean;
    Drk_Wyd_Ean_cls128 code128{*code_page};

    struct Order {
        Text text;
        Text kind;
        bool bare = false;
        bool rotate = false;
        std::int32_t size = 0;
    };
    void dispatch(RecordingSurface& surface, const Order& order) {
        dispatcher.RysujEAN(surface, order.text, 100, 50, 1200, 1100, order.size, order.kind,
                            order.bare, order.rotate, program_folder, windows_folder);
    }
    Text log_of(const Order& order) {
        HostSurface surface;
        dispatch(surface, order);
        return surface.log();
    }
    /// Where the kind's font is not installed: its name is set in vain before and after that.
    Text drawn(const Order& order) {
        const Text font = u"FontName " + Text(find_symbology(order.kind)->font->family) + u"; ";
        HostSurface surface;
        surface.lack_all_fonts();
        dispatch(surface, order);
        const Text log = surface.log();
        const std::size_t place = log.find(font + font);
        if (place == Text::npos) return u"without its font: " + log;
        return Text(log).erase(place, 2 * font.size());
    }
    /// The text is the caller's variable.
    Text log_of_ean(Text&& text, std::int32_t size, bool rotate) {
        HostSurface surface;
        ean.RysujEAN(surface, text, size, rotate);
        return surface.log();
    }
    Text log_of_128(std::int32_t size, bool bare, bool rotate) {
        HostSurface surface;
        Text text = u"Ala";
        code128.RysujEAN(surface, text, size, bare, rotate);
        return surface.log();
    }
};

// What the log repeats.
const Text name_back = u"FontName Times New Roman; ";
const Text font_back = name_back + u"FontSize 11; FontBold True; ";
const Text place_back = u"CurrentX 20; CurrentY 14; ";
const Text state_back = font_back + place_back;
const Text all_back = state_back + name_back;
const Text painted = u"PaintPicture 100 50 1200 1100; ";

Text plain(const Text& points) {
    return u"FontSize " + points + u"; FontBold False; ";
}
Text height_of(const Text& text) {
    return u"TextHeight " + text + u"; ";
}
Text size_of(const Text& text) {
    return u"TextWidth " + text + u"; " + height_of(text);
}
/// The measuring of a caption that leaves nothing behind.
Text measured(const Text& text) {
    return u"FontName Arial CE; FontSize 13; CurrentX 20; " + height_of(text) + font_back +
           u"CurrentX 20; ";
}
Text caption_font(const Text& points) {
    return u"CurrentX 20; FontName Arial CE; FontSize " + points + u"; ";
}
Text turned(const Text& x, const Text& text) {
    return height_of(text) + u"TextOut 270 " + x + u" 14 " + text + u"; " + place_back;
}

// Start B, "(12)", CODE C, 59 01 21 21 25; the check character is 1699 modulo 103, 51; Stop.
const Text fixed_symbol = u"Ě(12)Ç[!559SÎ";
const Text ean13_printed = u"Print 5JKLCDO*bcdefh+; " + size_of(u"590123412345");

TEST_F(Classes, ean_by_its_class) {
    Text digits = u"5901234123450";
    EXPECT_EQ(log_of_ean(std::move(digits), 1, true),
              measured(u"") + plain(u"58") + ean13_printed + state_back);
    // The given check digit, a wrong one, is gone from the caller's variable.
    EXPECT_EQ(digits, u"590123412345");
    EXPECT_EQ(ean.szer(), base::Currency::from(12 * 58 / 2));
    EXPECT_EQ(ean.wys(), base::Currency::from(58));
    EXPECT_EQ(log_of_ean(u"12345670", 0, false),
              plain(u"48") + u"Print :BCDE*fgha+; " + size_of(u"1234567") + state_back);
    // A number that is no EAN prints an empty line, what is no number is printed as it is.
    EXPECT_EQ(log_of_ean(u"123x", 0, false),
              plain(u"48") + u"Print ; " + size_of(u"123x") + state_back);
    for (const char16_t* text : {u"ABC", u"000000123456", u"", u"  0"}) {
        EXPECT_EQ(log_of_ean(text, 0, true), u"Print " + Text(text) + u"; ");
    }
}

TEST_F(Classes, code128_by_its_class) {
    const Text caption = caption_font(u"14");
    const Text printed = u"Print " + fixed_symbol + u"; " + caption;
    EXPECT_EQ(log_of_128(2, false, false), plain(u"62") + printed + u"Print Ala; " + font_back);
    EXPECT_EQ(log_of_128(0, true, false), plain(u"42") + printed + font_back);
    EXPECT_EQ(std::get<Text>(code128.Code128_Str(u"Ala")), fixed_symbol);
    // Beside the place by the heights of a line of 13 and of the bars' 42 points.
    const Text bars = measured(fixed_symbol) + plain(u"42") + turned(u"75", fixed_symbol) + caption;
    EXPECT_EQ(log_of_128(0, true, true), bars + font_back);
    EXPECT_EQ(log_of_128(0, false, true), bars + turned(u"37", u"Ala") + font_back);
}

TEST_F(Classes, linear_kinds_by_the_dispatcher) {
    EXPECT_EQ(drawn({u"590123412345", u"EAN13"}), plain(u"48") + ean13_printed + all_back);
    EXPECT_EQ(drawn({u"Ala", u"EAN128", true, false, 2}), log_of_128(2, true, false) + name_back);
    const Text code39 = u"FontSize 48; Print *123*; " + size_of(u"123");
    for (const char16_t* text : {u"<1EAN z Kart BN>", u"<1EAN z Kart>", u"<EAN z PLU>", u"123"}) {
        EXPECT_EQ(drawn({text, u"EAN39"}),
                  code39 + caption_font(u"13") + u"Print 123; " + all_back);
    }
    EXPECT_EQ(dispatcher.szer(), base::Currency::from(3 * 48 / 2));
    EXPECT_EQ(dispatcher.wys(), base::Currency::from(48));
    EXPECT_EQ(drawn({u"123", u"EAN39", true}), code39 + all_back);
    // 20 and a line of 13 and the bars' 58; 20 and the caption's 13 and 3.
    EXPECT_EQ(drawn({u"Ab", u"EAN39EX", false, true, 1}),
              measured(u"Ab") + u"FontSize 58; " + turned(u"91", u"*Ab*") + size_of(u"Ab") +
                  caption_font(u"13") + turned(u"36", u"Ab") + all_back);
    // With the font there nothing is drawn, nothing installed and nobody asked.
    shell.done.clear();
    EXPECT_EQ(log_of({u"590123412345", u"EAN13"}), u"FontName code ean13; " + name_back);
    EXPECT_EQ(log_of({u"Ala", u"EAN128"}), u"FontName CODE 128; " + name_back);
    EXPECT_EQ(log_of({u"Ala", u"EAN39"}), u"FontName free 3 of 9; " + all_back);
    EXPECT_TRUE(shell.done.empty());
}

TEST_F(Classes, pictures_by_the_dispatcher) {
    const Text qr = plain(u"42") + painted + u"CurrentX 1220; FontName Arial CE; FontSize 14; ";
    EXPECT_EQ(log_of({u"Ala", u"QR"}), qr + all_back);
    EXPECT_EQ(log_of({u"Ala", u"QR", true, true}), measured(u"Ala") + qr + all_back);
    EXPECT_EQ(log_of({u"Ala", u"QR", false, true}), measured(u"Ala") + qr + height_of(u"Ala") +
                                                        u"TextOut 270 1317 50 Ala; " +
                                                        u"CurrentX 1220; CurrentY 14; " + all_back);
    for (const Text& text : {Text(), Text(3000, u'x')}) {
        EXPECT_EQ(log_of({text, u"QR"}), plain(u"42") + all_back);
    }
    shell.files.insert(u"C:\\logo.bmp");
    EXPECT_EQ(log_of({u"<OBR,C:\\logo.bmp>", u"QR"}), painted + name_back);
    for (const char16_t* text : {u"<OBR,C:\\missing.bmp>", u"<OBR,", u"<OBR,>"}) {
        EXPECT_EQ(log_of({text, u"QR"}), name_back);
    }
    for (const char16_t* kind : {u"EAN13", u"ean13", u"", u"qr", u"EAN8"}) {
        // The position comes back from looking how many pixels there is room for.
        EXPECT_EQ(log_of({u"5901234123457", kind, false, true}), place_back + painted + name_back);
        for (const char16_t* text : {u"1234567", u"59012341234x", u"59012341234567", u"123"}) {
            EXPECT_EQ(log_of({text, kind, false, true}), name_back);
        }
    }
}

TEST_F(Classes, qr_is_black_squares_of_120_twips_at_level_medium) {
    drk_wyd_QRGen generator;
    generator.set_xEcl(1);
    generator.set_xBoostEcl(true);
    generator.set_xSquare(true);
    generator.set_xModuleSize(120);
    // Fifty bytes need version 3 at level low, 4 at medium and 5 at quartile; a few bytes boost.
    for (const Text& text : {Text(50, u'x'), Text(u"Tavrix")}) {
        HostSurface surface;
        dispatch(surface, {text, u"QR"});
        ASSERT_EQ(surface.painted().size(), 1u);
        EXPECT_EQ(surface.painted()[0].points(), generator.QRCodegenBarcode(text)->points());
        EXPECT_EQ(surface.painted()[0].colour(), 0u);
    }
}

TEST_F(Classes, ean13_is_turned_clockwise_in_modules_of_whole_pixels) {
    for (const std::int32_t size : {0, 1, 2, 3, 4, 5, 100'000}) {
        HostSurface surface;
        dispatch(surface, {u"590123412345", u"EAN13", false, true, size});
        const drawing::Coverage box = drawing::rasterise(surface.painted().at(0), 1 / 15.0);
        // As long as the rectangle, 113 modules of 9 pixels and what is left on both sides.
        ASSERT_EQ(box.height_px, 1100);
        const std::int32_t first = (1100 - 113 * 9) / 2;
        // The symbol's upper edge is on the right, its left end on top.
        std::string modules;
        for (std::int32_t module = 0; module < 113; ++module) {
            std::set<std::uint8_t> shades;
            for (std::int32_t i = 0; i < 9; ++i) {
                shades.insert(box.at(box.width_px - 3, first + 9 * module + i));
            }
            modules += shades.size() > 1 ? '?' : shades.contains(255) ? '1' : '0';
        }
        EXPECT_EQ(modules.find('?'), std::string::npos) << size;
        // 11 white modules and the guard.
        EXPECT_EQ(modules.substr(0, 15), "000000000001010");
        EXPECT_EQ(modules.substr(105), "10000000");
    }
    // A surface that does not tell its scale has the symbol in one pixel for each module.
    HostSurface surface;
    surface.lack(u"ScaleMode");
    dispatch(surface, {u"590123412345", u"EAN13", false, true, 3});
    EXPECT_EQ(surface.painted().at(0).height_twips(), 113 * 15);
}

TEST_F(Classes, fonts_are_installed_in_this_order) {
    const Text fonts = windows_folder + u"\\Fonts";
    shell.files.insert(program_folder + u"\\free3of9.ttf");
    drawn({u"1", u"EAN39"});
    EXPECT_EQ(shell.done,
              (std::vector<Text>{u"copy " + program_folder + u"\\free3of9.ttf",
                                 u"Install " + fonts + u" free3of9.ttf",
                                 u"run hidden \"" + program_folder + u"\\FontReg64.exe\"",
                                 u"message Proszę zainstalować czcionkę free 3 of 9(free3of9)"}));
    EXPECT_EQ(shell.message_help, -1);
    // Without a file nothing is installed; outside "(x86)" the registrar is the other one.
    shell.done.clear();
    HostSurface surface;
    surface.lack_font(u"X");
    EXPECT_FALSE(dispatcher.SetCzcionkę(surface, u"X", u"x", false, u"C:\\Host", windows_folder));
    EXPECT_EQ(shell.done.size(), 1u);  // the message
    EXPECT_EQ(shell.message_help, 0);
    shell.files.insert(fonts + u"\\x.ttf");
    EXPECT_FALSE(dispatcher.SetCzcionkę(surface, u"X", u"x", true, u"C:\\Host", windows_folder));
    EXPECT_EQ(shell.done.at(2), u"run hidden \"C:\\Host\\FontReg32.exe\"");
}

TEST_F(Classes, a_failing_surface_gets_position_and_font_back) {
    for (const char16_t* member : {u"Print", u"TextWidth", u"FontBold", u"FontSize"}) {
        HostSurface surface;
        surface.lack(member);
        Text digits = u"1234567";
        EXPECT_THROW(ean.RysujEAN(surface, digits, 0, false), base::AutomationError);
        surface.expect_as_before();
    }
    // Nor does a host without memory end the process while position and font are given back.
    HostSurface exhausted;
    exhausted.exhaust(u"FontBold");
    Text number = u"1234567";
    EXPECT_THROW(ean.RysujEAN(exhausted, number, 0, false), std::bad_alloc);
    EXPECT_EQ(exhausted.current_x(), 20);
    // The dispatcher passes over whatever is missing.
    for (const char16_t* member : {u"FontName", u"CurrentX", u"Print", u"FontSize", u"TextWidth"}) {
        for (const char16_t* kind : {u"QR", u"EAN13", u"EAN128", u"EAN39", u"other"}) {
            HostSurface surface;
            surface.lack_all_fonts();
            surface.lack(member);
            EXPECT_NO_THROW(dispatch(surface, {u"590123412345", kind}));
        }
    }
}

TEST_F(Classes, a_size_beyond_32_bits_is_an_overflow) {
    for (const char16_t* kind : {u"QR", u"EAN13", u"EAN128", u"EAN39"}) {
        HostSurface surface;
        surface.lack_all_fonts();
        // The one error that the dispatcher does not pass over.
        EXPECT_THROW(dispatch(surface, {u"590123412345", kind, false, false, huge_size}),
                     base::AutomationError);
        surface.expect_as_before();
    }
    // The helper form takes its size from the rectangle, and refuses what is no size just the same.
    HostSurface surface;
    EXPECT_THROW(dispatch(surface, {u"590123412345", u"EAN13", false, true, huge_size}),
                 base::AutomationError);
    // Within 32 bits, and its glyphs are not.
    ports::Canvas page(6000, 4500);
    page.set_font_name(u"code ean13");
    Text digits = u"590123412345";
    EXPECT_THROW(ean.RysujEAN(page, digits, 20'000'000, false), base::AutomationError);
    EXPECT_EQ(page.font_size(), 8);
    EXPECT_THROW(symbol_frame(symbology_of(Kind::code128), Text(20'000, u'!'), 10'000),
                 base::AutomationError);
}

}  // namespace
}  // namespace tavrix::barcode
