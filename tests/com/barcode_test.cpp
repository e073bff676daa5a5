// The three bar code classes as hosts create them, drawing on a picture box whose members are
// called by name: types, references, errors, and what GDI does. The rest is told natively.

#include "tests/com/picture_box.h"

namespace tavrix::test {
namespace {

using base::Text;

VARIANT bare(const VARIANT& value) {
    return value;
}
VARIANT bare(const HostedBox& box) {
    return box.variant();
}
VARIANT bare(const Variant& value) {
    return value.get();
}

template <typename... Arguments>
Outcome ask(const ComPointer<IDispatch>& object, const char16_t* name,
            const Arguments&... arguments) {
    // Temporary variants live until the call is over.
    return call(object, name, {bare(arguments)...});
}

/// The fonts beside the program, for this process.
struct Fonts {
    Fonts() {
        for (const char16_t* name : {u"ean13", u"code128", u"free3of9", u"fre3of9x"}) {
            const Text file = beside_program(u"fonts\\" + Text(name) + u".ttf");
            EXPECT_EQ(AddFontResourceExW(windows::wide(file), FR_PRIVATE, nullptr), 1);
        }
    }
};

class Barcode : public testing::Test {
  protected:
    static void SetUpTestSuite() { static const Fonts fonts; }

    ComPointer<IDispatch> ean = create(u"Tavrix.Drk_Wyd_Ean_cls813");
    ComPointer<IDispatch> code128 = create(u"Tavrix.Drk_Wyd_Ean_cls128");
    ComPointer<IDispatch> dispatcher = create(u"Tavrix.Drk_Wyd_Ean_cls");
    /// A variable of the host.
    BSTR text = SysAllocString(L"5901234123457");
    ~Barcode() override { SysFreeString(text); }

    Outcome dispatch(const HostedBox& box, const char16_t* symbol_text, const char16_t* kind,
                     bool rotate) {
        return ask(dispatcher, u"RysujEAN", box, symbol_text, 150, 150, 3000, 3000, 0, kind, false,
                   rotate, u"C:\\none", u"C:\\windows");
    }
    static int dark_pixels(const HostedBox& box, std::int32_t left, std::int32_t right) {
        int dark = 0;
        for (std::int32_t y = 0; y < box.box->height_px; ++y) {
            for (std::int32_t x = left; x < right; ++x) dark += box.box->is_dark(x, y) ? 1 : 0;
        }
        return dark;
    }
};

TEST_F(Barcode, EncodersGiveTheFontsCharacters) {
    EXPECT_EQ(bstr_of(ask(ean, u"EAN13", u"590123412345").result), u"5JKLCDO*bcdefh+");
    EXPECT_EQ(bstr_of(ask(ean, u"EAN8", u"12345").result), u"");
    EXPECT_EQ(bstr_of(ask(ean, u"AddOn", by_reference(&text)).result), u"");
    EXPECT_EQ(bstr_of(ask(ean, u"BinaryByte", 5).result), u"00000101");
    // Value 104 is the Polish character of its byte.
    EXPECT_EQ(bstr_of(ask(code128, u"Code128_Str", u"x").result).front(), u'Ě');
    EXPECT_EQ(ask(code128, u"Code128_GetWidth", u"x", 2).result.get().lVal, 100);
}

TEST_F(Barcode, DrawingChangesTheCallersTextAndGivesTheBoxBack) {
    HostedBox box(400, 200);
    box.box->font_name = u"code ean13";
    box.box->x = 150;
    const Outcome outcome = ask(ean, u"RysujEAN", box, by_reference(&text), 0, false);
    EXPECT_EQ(outcome.code, S_OK) << base::to_utf8(outcome.description);
    EXPECT_EQ(windows::view_of(text), u"590123412345");
    EXPECT_EQ(box.box->printed, std::vector<Text>{u"5JKLCDO*bcdefh+"});
    EXPECT_EQ(box.box->font_size, 8);
    EXPECT_EQ(box.box->x, 150);
    const Outcome width = get(ean, u"szer");
    EXPECT_EQ(width.result.type(), VT_CY);
    // Twelve digits of 14 modules; at 48 points a module is one pixel of 15 twips.
    EXPECT_EQ(width.result.get().cyVal.int64, 12 * 14 * 15 * 10000);
    // The start guard stands 11 modules in.
    std::string modules;
    for (std::int32_t x = 10; x < 25; ++x) modules += box.box->is_dark(x, 5) ? '1' : '0';
    EXPECT_EQ(modules, "000000000001010");
}

TEST_F(Barcode, ErrorsReachTheHostByNumber) {
    HostedBox box(100, 100);
    const Outcome huge = ask(ean, u"RysujEAN", box, by_reference(&text), 214748365, false);
    EXPECT_EQ(huge.code, DISP_E_EXCEPTION);
    EXPECT_EQ(static_cast<std::uint32_t>(huge.number), 0x800A0006u);
    EXPECT_EQ(box.box->font_size, 8);
    EXPECT_EQ(ask(ean, u"RysujEAN", 5, by_reference(&text), 0, false).code, DISP_E_TYPEMISMATCH);
}

TEST_F(Barcode, DispatcherPaintsQrMetafilesAndTurnedEan13) {
    HostedBox box(240, 240);
    EXPECT_EQ(dispatch(box, u"https://example.pl/zażółć", u"QR", false).code, S_OK);
    EXPECT_GT(dark_pixels(box, 10, 210), 200 * 200 / 4);
    // The quiet zone is white.
    for (std::int32_t i = 10; i < 28; ++i) EXPECT_FALSE(box.box->is_dark(i, i));
    HostedBox turned(300, 300);
    EXPECT_EQ(dispatch(turned, u"590123412345", u"EAN13", true).code, S_OK);
    EXPECT_GT(dark_pixels(turned, 110, 111), 40);
    // Bars lie across the box.
    for (std::int32_t x = 90; x < 140; ++x) {
        EXPECT_EQ(turned.box->is_dark(x, 100), turned.box->is_dark(x + 1, 100));
    }
    // With its font there it prints nothing, without a symbol it paints nothing.
    HostedBox empty(100, 100);
    EXPECT_EQ(dispatch(empty, u"590123412345", u"EAN13", false).code, S_OK);
    EXPECT_EQ(dispatch(empty, u"", u"QR", false).code, S_OK);
    EXPECT_EQ(dark_pixels(empty, 0, 100), 0);
    EXPECT_EQ(ask(dispatcher, u"SetCzcionkę", box, u"ARIAL", u"x", true, u"C:\\none", u"C:\\none")
                  .result.get()
                  .boolVal,
              VARIANT_TRUE);
}

TEST_F(Barcode, SyncShellWaitsAndSaysWhetherItStarted) {
    const auto run = [&](const char16_t* command) {
        return ask(dispatcher, u"SyncShell", command, 1, true, true).result.get().boolVal;
    };
    EXPECT_EQ(run(u"cmd.exe /c exit 3"), VARIANT_TRUE);
    EXPECT_EQ(run(u"C:\\none\\none.exe"), VARIANT_FALSE);
}

TEST_F(Barcode, TurnsSurfacesBitmapsAndText) {
    HostedBox source(4, 3);
    SetPixel(source.box->memory.get(), 2, 1, RGB(32, 1, 0));
    HostedBox turned(10, 10);
    EXPECT_EQ(ask(dispatcher, u"RotateSurface", source, turned, 45, 2, 1).result.type(), VT_EMPTY);
    EXPECT_EQ(GetPixel(turned.box->memory.get(), 2 + 3 - 1, 1 + 2), RGB(32, 1, 0));
    HostedBox bitmap(8, 8);
    EXPECT_EQ(ask(ean, u"RotatePicture", source, bitmap, 90).code, S_OK);
    EXPECT_EQ(bitmap.box->width_px, 3);
    EXPECT_EQ(bitmap.box->height_px, 4);
    EXPECT_EQ(GetPixel(bitmap.box->memory.get(), 2 - 1, 2), RGB(32, 1, 0));
    EXPECT_EQ(bitmap.box->refreshes + bitmap.box->kept_images, 2);
    HostedBox box(300, 300);
    box.box->font_name = u"CODE 128";
    EXPECT_EQ(ask(code128, u"RysujEAN", box, by_reference(&text), 0, true, true).code, S_OK);
    EXPECT_TRUE(box.box->printed.empty());
    EXPECT_EQ(box.box->scale_mode, 1);
    EXPECT_GT(dark_pixels(box, 0, 300), 1000);
}

}  // namespace
}  // namespace tavrix::test
