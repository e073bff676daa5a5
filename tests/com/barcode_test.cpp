// The three bar code classes as hosts create them, drawing on a picture box whose members are
// called by name.

#include "barcode/ean.h"
#include "tests/com/picture_box.h"

namespace tavrix::test {
namespace {

/// A BSTR variable of the host.
class HostText {
  public:
    explicit HostText(const char16_t* text) : text_(windows::make_bstr(text).release()) {}
    ~HostText() { SysFreeString(text_); }
    HostText(const HostText&) = delete;
    HostText& operator=(const HostText&) = delete;
    VARIANT reference() { return by_reference(&text_); }
    VARIANT value() const {
        VARIANT value{};
        value.vt = VT_BSTR;
        value.bstrVal = text_;
        return value;
    }
    base::Text now() const { return base::Text(windows::view_of(text_)); }

  private:
    BSTR text_;
};

VARIANT flag(bool value) {
    VARIANT variant{};
    variant.vt = VT_BOOL;
    variant.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
    return variant;
}

/// The fonts beside the program, for this process.
class Fonts {
  public:
    Fonts() {
        for (const char16_t* name : {u"ean13", u"code128", u"free3of9", u"fre3of9x"}) {
            files_.push_back(beside_program(u"fonts\\" + base::Text(name) + u".ttf"));
            EXPECT_EQ(AddFontResourceExW(windows::wide(files_.back()), FR_PRIVATE, nullptr), 1);
        }
    }
    ~Fonts() {
        for (const base::Text& file : files_) {
            RemoveFontResourceExW(windows::wide(file), FR_PRIVATE, nullptr);
        }
    }

  private:
    std::vector<base::Text> files_;
};

class Barcode : public testing::Test {
  protected:
    ComPointer<IDispatch> ean = create(u"Tavrix.Drk_Wyd_Ean_cls813");
    ComPointer<IDispatch> code128 = create(u"Tavrix.Drk_Wyd_Ean_cls128");
    ComPointer<IDispatch> dispatcher = create(u"Tavrix.Drk_Wyd_Ean_cls");

    Outcome dispatch(const HostedBox& box, const char16_t* text, const char16_t* kind,
                     bool rotate = false, LONG size = 0) {
        const HostText given(text), type(kind), program(u"C:\\none"), windows(u"C:\\windows");
        return call(dispatcher, u"RysujEAN",
                    {box.variant(), given.value(), plain(150), plain(150), plain(3000), plain(3000),
                     plain(size), type.value(), flag(false), flag(rotate), program.value(),
                     windows.value()});
    }
};

TEST_F(Barcode, EncodersGiveTheFontsCharacters) {
    const HostText digits12(u"590123412345"), digits7(u"1234567"), wrong(u"12345");
    HostText add_on(u"12");
    EXPECT_EQ(bstr_of(call(ean, u"EAN13", {digits12.value()}).result), u"5JKLCDO*bcdefh+");
    EXPECT_EQ(bstr_of(call(ean, u"EAN8", {digits7.value()}).result), u":BCDE*fgha+");
    EXPECT_EQ(bstr_of(call(ean, u"EAN8", {wrong.value()}).result), u"");
    EXPECT_EQ(bstr_of(call(ean, u"AddOn", {add_on.reference()}).result), u"[B\\C");
    EXPECT_EQ(bstr_of(call(ean, u"BinaryByte", {plain(5)}).result), u"00000101");
    // Value 104 is the Polish character of its byte.
    EXPECT_EQ(bstr_of(call(code128, u"Code128_Str", {wrong.value()}).result).front(), u'Ě');
    EXPECT_EQ(call(code128, u"Code128_GetWidth", {wrong.value(), plain(2)}).result.get().lVal,
              2 * call(code128, u"Code128_GetWidth", {wrong.value(), plain(1)}).result.get().lVal);
}

TEST_F(Barcode, DrawingChangesTheCallersTextAndGivesTheBoxBack) {
    const Fonts fonts;
    HostedBox box(400, 200);
    box.box->font_name = u"code ean13";
    box.box->font_size = 10;
    box.box->x = 150;
    HostText digits(u"5901234123457");
    const Outcome outcome =
        call(ean, u"RysujEAN", {box.variant(), digits.reference(), plain(0), flag(false)});
    EXPECT_EQ(outcome.code, S_OK) << base::to_utf8(outcome.description);
    EXPECT_EQ(digits.now(), u"590123412345");
    EXPECT_EQ(box.box->printed, std::vector<base::Text>{u"5JKLCDO*bcdefh+"});
    EXPECT_EQ(box.box->font_size, 10);
    EXPECT_EQ(box.box->x, 150);
    EXPECT_EQ(box.box->y, 0);
    const Outcome width = get(ean, u"szer");
    EXPECT_EQ(width.result.type(), VT_CY);
    // Twelve digits of 14 modules; at 48 points a module is one pixel of 15 twips.
    EXPECT_EQ(width.result.get().cyVal.int64, 12 * 14 * 15 * 10000);
    // The start guard stands 11 modules in.
    EXPECT_FALSE(box.box->is_dark(10 + 10, 5));
    EXPECT_TRUE(box.box->is_dark(10 + 11, 5));
    EXPECT_FALSE(box.box->is_dark(10 + 12, 5));
    EXPECT_TRUE(box.box->is_dark(10 + 13, 5));
}

TEST_F(Barcode, ErrorsReachTheHostByNumber) {
    HostedBox box(100, 100);
    HostText digits(u"590123412345");
    const Outcome huge =
        call(ean, u"RysujEAN", {box.variant(), digits.reference(), plain(214748365), flag(false)});
    EXPECT_EQ(huge.code, DISP_E_EXCEPTION);
    EXPECT_EQ(static_cast<std::uint32_t>(huge.number), 0x800A0006u);
    EXPECT_EQ(box.box->font_size, 8);
    EXPECT_EQ(call(ean, u"RysujEAN", {plain(5), digits.reference(), plain(0), flag(false)}).code,
              DISP_E_TYPEMISMATCH);
}

TEST_F(Barcode, DispatcherPaintsAQrMetafileAndKeepsTheBox) {
    HostedBox box(240, 240);
    EXPECT_EQ(dispatch(box, u"https://example.pl/zażółć", u"QR").code, S_OK);
    // 33 modules of version 2 or more with quiet zones, on 200 pixels from (10, 10): the finder's
    // corner is four modules in, and the quiet zone is white.
    int dark = 0;
    for (std::int32_t x = 10; x < 210; ++x) dark += box.box->is_dark(x, 60) ? 1 : 0;
    EXPECT_GT(dark, 20);
    for (std::int32_t i = 10; i < 28; ++i) EXPECT_FALSE(box.box->is_dark(i, i));
    EXPECT_EQ(box.box->x, 0);
    EXPECT_EQ(box.box->font_name, u"Arial");
    // Without a symbol nothing is painted and nothing is raised.
    HostedBox empty(100, 100);
    EXPECT_EQ(dispatch(empty, u"", u"QR").code, S_OK);
    EXPECT_TRUE(empty.box->printed.empty());
}

TEST_F(Barcode, DispatcherDrawsNothingWithTheFontThereAndTurnsEan13) {
    const Fonts fonts;
    HostedBox box(300, 300);
    EXPECT_EQ(dispatch(box, u"590123412345", u"EAN13").code, S_OK);
    EXPECT_TRUE(box.box->printed.empty());
    EXPECT_EQ(dispatch(box, u"590123412345", u"EAN13", true).code, S_OK);
    int dark = 0;
    for (std::int32_t y = 0; y < 300; ++y) dark += box.box->is_dark(110, y) ? 1 : 0;
    EXPECT_GT(dark, 40);
    // Bars lie across the box.
    int changes = 0;
    for (std::int32_t x = 90; x < 140; ++x) {
        changes += box.box->is_dark(x, 100) != box.box->is_dark(x + 1, 100) ? 1 : 0;
    }
    EXPECT_EQ(changes, 0);
}

TEST_F(Barcode, FontNamesOfThePolishInterface) {
    HostedBox box(50, 50);
    const HostText arial(u"ARIAL"), file(u"x"), folder(u"C:\\none");
    const Outcome outcome = call(
        dispatcher, u"SetCzcionkę",
        {box.variant(), arial.value(), file.value(), flag(true), folder.value(), folder.value()});
    ASSERT_EQ(outcome.code, S_OK);
    EXPECT_EQ(outcome.result.get().boolVal, VARIANT_TRUE);
}

TEST_F(Barcode, SyncShellWaitsAndSaysWhetherItStarted) {
    const HostText quick(u"cmd.exe /c exit 3"), missing(u"C:\\none\\none.exe");
    const auto run = [&](const HostText& command) {
        return call(dispatcher, u"SyncShell", {command.value(), plain(1), flag(true), flag(true)});
    };
    EXPECT_EQ(run(quick).result.get().boolVal, VARIANT_TRUE);
    EXPECT_EQ(run(missing).result.get().boolVal, VARIANT_FALSE);
}

TEST_F(Barcode, TurnsSurfacesPixelByPixelAndBitmapsAtOnce) {
    HostedBox source(4, 3);
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 4; ++x) SetPixel(source.box->memory.get(), x, y, RGB(16 * x, y, 0));
    }
    HostedBox turned(10, 10);
    const Outcome outcome =
        call(dispatcher, u"RotateSurface",
             {source.variant(), turned.variant(), plain(45), plain(2), plain(1)});
    EXPECT_EQ(outcome.code, S_OK) << base::to_utf8(outcome.description);
    EXPECT_EQ(outcome.result.type(), VT_EMPTY);
    EXPECT_EQ(GetPixel(turned.box->memory.get(), 2 + 3 - 1, 1 + 2), RGB(32, 1, 0));

    HostedBox bitmap(8, 8);
    EXPECT_EQ(call(ean, u"RotatePicture", {source.variant(), bitmap.variant(), plain(90)}).code,
              S_OK);
    EXPECT_EQ(bitmap.box->width_px, 3);
    EXPECT_EQ(bitmap.box->height_px, 4);
    EXPECT_EQ(GetPixel(bitmap.box->memory.get(), 2 - 1, 2), RGB(32, 1, 0));
    EXPECT_EQ(bitmap.box->refreshes, 1);
    EXPECT_EQ(bitmap.box->kept_images, 1);
}

TEST_F(Barcode, TurnedTextLeavesTheScaleAlone) {
    const Fonts fonts;
    HostedBox box(300, 300);
    box.box->font_name = u"CODE 128";
    box.box->font_size = 42;
    HostText text(u"podpis");
    const Outcome outcome = call(
        code128, u"RysujEAN", {box.variant(), text.reference(), plain(0), flag(true), flag(true)});
    EXPECT_EQ(outcome.code, S_OK) << base::to_utf8(outcome.description);
    EXPECT_TRUE(box.box->printed.empty());
    EXPECT_EQ(box.box->scale_mode, 1);
    int dark = 0;
    for (std::int32_t y = 0; y < 300; ++y) {
        for (std::int32_t x = 0; x < 300; ++x) dark += box.box->is_dark(x, y) ? 1 : 0;
    }
    EXPECT_GT(dark, 1000);
}

}  // namespace
}  // namespace tavrix::test
