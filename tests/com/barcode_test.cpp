// The three bar code classes as hosts create them, drawing on the picture boxes of two kinds of
// host: types, references, errors, and what GDI does. The rest is told natively.

#include "tests/com/picture_box.h"

namespace tavrix::test {
namespace {

using base::Text;

class Barcode : public testing::TestWithParam<HostKind> {
  protected:
    static void SetUpTestSuite() { EXPECT_TRUE(load_fonts()); }

    ComPointer<IDispatch> ean = create(u"Tavrix.Drk_Wyd_Ean_cls813");
    ComPointer<IDispatch> dispatcher = create(u"Tavrix.Drk_Wyd_Ean_cls");
    Variant text{u"5901234123457"};

    std::string dispatch(const HostedBox& box, const char16_t* symbol_text, const char16_t* kind,
                         bool rotate) {
        return answer(dispatcher, u"RysujEAN",
                      {box.object, symbol_text, 150, 150, 3000, 3000, 0, kind, false, rotate,
                       u"C:\\none", u"C:\\windows"});
    }
    static int dark_pixels(const HostedBox& box, std::int32_t left, std::int32_t right) {
        int dark = 0;
        for (std::int32_t y = 0; y < box.box->height_px; ++y) {
            for (std::int32_t x = left; x < right; ++x) dark += box.box->is_dark(x, y) ? 1 : 0;
        }
        return dark;
    }
};

TEST_P(Barcode, DrawingChangesTheCallersTextAndGivesTheBoxBack) {
    HostedBox box(GetParam(), 400, 200);
    box.box->font_name = u"code ean13";
    box.box->x = 150;
    EXPECT_EQ(answer(ean, u"RysujEAN", {box.object, by_reference(text), 0, false}), "empty");
    EXPECT_EQ(written(text.get()), "text 590123412345");
    const std::vector<Text> statement = {u"5JKLCDO*bcdefh+", u"\r\n"};
    EXPECT_EQ(box.box->written, statement);
    EXPECT_EQ(box.box->font_size, 8);
    EXPECT_EQ(box.box->x, 150);
    // Twelve digits of 14 modules; at 48 points a module is one pixel of 15 twips.
    EXPECT_EQ(written(invoke(ean, u"szer", DISPATCH_PROPERTYGET)), "currency 2520");
    // The start guard stands 11 modules in.
    std::string modules;
    for (std::int32_t x = 10; x < 25; ++x) modules += box.box->is_dark(x, 5) ? '1' : '0';
    EXPECT_EQ(modules, "000000000001010");
}

TEST_P(Barcode, ErrorsReachTheHostByNumber) {
    HostedBox box(GetParam(), 100, 100);
    const Outcome huge = call(ean, u"RysujEAN", {box.object, by_reference(text), 214748365, false});
    EXPECT_EQ(huge.code, DISP_E_EXCEPTION);
    EXPECT_EQ(static_cast<std::uint32_t>(huge.number), 0x800A0006u);
    EXPECT_EQ(box.box->font_size, 8);
    // What was done to the host's variable by then stays done.
    EXPECT_EQ(written(text.get()), "text 590123412345");
    box.box->out_of_paper = true;
    Variant again{u"5901234123457"};
    EXPECT_EQ(call(ean, u"RysujEAN", {box.object, by_reference(again), 0, false}).code,
              DISP_E_EXCEPTION);
    box.box->font_size = 100'000;  // that no device can draw
    const Outcome turned = call(dispatcher, u"RotateText", {box.object, u"A", 90, 0, 0});
    EXPECT_EQ(turned.number, huge.number);
    EXPECT_EQ(answer(ean, u"RysujEAN", {5, by_reference(text), 0, false}),
              refused(DISP_E_TYPEMISMATCH, 3));
}

TEST_P(Barcode, DispatcherPaintsQrMetafilesAndTurnedEan13) {
    HostedBox box(GetParam(), 240, 240);
    EXPECT_EQ(dispatch(box, u"https://example.pl/zażółć", u"QR", false), "empty");
    EXPECT_GT(dark_pixels(box, 10, 210), 200 * 200 / 4);
    HostedBox turned(GetParam(), 300, 300);
    EXPECT_EQ(dispatch(turned, u"590123412345", u"EAN13", true), "empty");
    EXPECT_GT(dark_pixels(turned, 110, 111), 40);
    // Bars lie across the box.
    for (std::int32_t x = 90; x < 140; ++x) {
        EXPECT_EQ(turned.box->is_dark(x, 100), turned.box->is_dark(x + 1, 100));
    }
}

TEST_P(Barcode, TurnsSurfacesBitmapsAndText) {
    HostedBox source(GetParam(), 4, 3);
    SetPixel(source.box->memory.get(), 2, 1, RGB(32, 1, 0));
    HostedBox turned(GetParam(), 10, 10);
    EXPECT_EQ(answer(dispatcher, u"RotateSurface", {source.object, turned.object, 45, 2, 1}),
              "empty");
    EXPECT_EQ(GetPixel(turned.box->memory.get(), 2 + 3 - 1, 1 + 2), RGB(32, 1, 0));
    HostedBox bitmap(GetParam(), 8, 8);
    EXPECT_EQ(answer(ean, u"RotatePicture", {source.object, bitmap.object, 90}), "empty");
    EXPECT_EQ(bitmap.box->width_px, 3);
    EXPECT_EQ(bitmap.box->height_px, 4);
    EXPECT_EQ(GetPixel(bitmap.box->memory.get(), 2 - 1, 2), RGB(32, 1, 0));
    HostedBox box(GetParam(), 300, 300);
    box.box->font_name = u"CODE 128";
    EXPECT_EQ(answer(create(u"Tavrix.Drk_Wyd_Ean_cls128"), u"RysujEAN",
                     {box.object, by_reference(text), 0, true, true}),
              "empty");
    EXPECT_EQ(box.box->scale_mode(), 1);
    EXPECT_GT(dark_pixels(box, 0, 300), 1000);
}

TEST_P(Barcode, BitmapsOf256ColoursTurnWithTheirPalette) {
    HostedBox source(GetParam(), 4, 3);
    HostedBox turned(GetParam(), 3, 4);
    for (const HostedBox* box : {&source, &turned}) {
        box->box->bitmap.reset(
            CreateBitmap(box->box->width_px, box->box->height_px, 1, 8, nullptr));
    }
    EXPECT_EQ(call(ean, u"RotatePicture", {source.object, turned.object, 180}).description,
              u"Error matching bitmap palette");
    struct {
        LOGPALETTE head = {0x300, 2, {}};
        PALETTEENTRY second = {1, 2, 3, 0};
    } colours;
    for (const HostedBox* box : {&source, &turned}) {
        box->box->palette.reset(CreatePalette(&colours.head));
    }
    EXPECT_EQ(answer(ean, u"RotatePicture", {source.object, turned.object, 180}), "empty");
}

int asked_to_paint = 0;

// Never says that it is painted: asked without end, it would keep a caller for ever, so that it
// gives up at last.
LRESULT CALLBACK never_painted(HWND window, UINT message, WPARAM first, LPARAM second) {
    constexpr int patience = 10'000;
    if (message == WM_PAINT && ++asked_to_paint < patience) return 0;
    return DefWindowProcW(window, message, first, second);
}

TEST(Shell, WaitsForAProgramAsLongAsItRunsWhateverIsInvalid) {
    WNDCLASSW description{};
    description.lpszClassName = L"NeverPainted";
    description.lpfnWndProc = &never_painted;
    RegisterClassW(&description);
    const HWND window = CreateWindowW(description.lpszClassName, L"", WS_POPUP | WS_VISIBLE, 0, 0,
                                      10, 10, nullptr, nullptr, nullptr, nullptr);
    InvalidateRect(window, nullptr, FALSE);
    EXPECT_EQ(answer(create(u"Tavrix.Drk_Wyd_Ean_cls"), u"SyncShell",
                     {u"cmd.exe /c exit", 0, false, true}),
              "bool -1");
    EXPECT_GE(asked_to_paint, 1);
    EXPECT_LT(asked_to_paint, 100);
    // Whoever asks it next does so in vain as well.
    EXPECT_TRUE(GetUpdateRect(window, nullptr, FALSE));
    DestroyWindow(window);
}

INSTANTIATE_TEST_SUITE_P(Hosts, Barcode, testing::Values(HostKind::vb6, HostKind::script),
                         [](const auto& host) {
                             return host.param == HostKind::vb6 ? "Vb6" : "Script";
                         });

}  // namespace
}  // namespace tavrix::test
