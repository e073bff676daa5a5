#include "com/forms/chart_output.h"

// Need what that includes.
#include <wincodec.h>
#include <winspool.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "com/forms/clipboard.h"
#include "windows/bstr.h"
#include "windows/com_pointer.h"
#include "windows/failure.h"

namespace tavrix::com {
namespace {

using windows::check;
using windows::ComPointer;

constexpr int screen_dots_per_inch = 96;
constexpr double screen_pixel_twips = static_cast<double>(twips_per_inch) / screen_dots_per_inch;
constexpr int file_dots_per_inch = 2 * screen_dots_per_inch;

[[noreturn]] void throw_last_error(base::TextView source) {
    const DWORD error = GetLastError();
    windows::throw_failure(error == 0 ? E_FAIL : HRESULT_FROM_WIN32(error), source);
}

/// The picture of a size for a device whose unit is the twip already.
drawing::Picture picture_for(const ChartToSend& sent, GdiText& text, double pixel_twips,
                             double scale = 1) {
    dialogs::ChartLook look;
    look.width_twips = static_cast<std::int32_t>(sent.width_twips * scale);
    look.height_twips = static_cast<std::int32_t>(sent.height_twips * scale);
    look.pixel_twips = pixel_twips;
    look.em_twips = sent.em_twips * scale;
    look.text_width = [&](base::TextView words, double em_twips, bool bold) {
        return text.width_of(words, em_twips, bold);
    };
    return dialogs::draw_chart(sent.chart, look);
}

void draw(HDC device, const drawing::Picture& picture, GdiText& text) {
    draw_layers(device, picture);
    for (const drawing::Label& label : picture.labels) text.draw(label);
}

void abandon_metafile(HDC metafile) noexcept {
    DeleteEnhMetaFile(CloseEnhMetaFile(metafile));
}
using MetafileBeingWritten = windows::Owned<HDC, abandon_metafile>;
using MetafileHandle = windows::Owned<HENHMETAFILE, DeleteEnhMetaFile>;

MetafileHandle metafile_of(const ChartToSend& sent) {
    // Hundredths of a millimetre; what the screen says of its own size is not asked, because
    // virtual machines make it up.
    constexpr double frame_units_per_inch = 2540;
    const auto frame_units = [](std::int32_t twips) {
        return std::lround(twips * frame_units_per_inch / twips_per_inch);
    };
    const RECT frame = {0, 0, frame_units(sent.width_twips), frame_units(sent.height_twips)};
    MetafileBeingWritten device(CreateEnhMetaFileW(nullptr, nullptr, &frame, nullptr));
    if (!device) throw_last_error(u"CreateEnhMetaFile");
    constexpr double millimetres_per_inch = 25.4;
    const auto dots_per_inch = [&](int dots, int millimetres) {
        return GetDeviceCaps(device.get(), dots) * millimetres_per_inch /
               std::max(1, GetDeviceCaps(device.get(), millimetres));
    };
    {
        const TwipsDevice in_twips(device.get(), dots_per_inch(HORZRES, HORZSIZE),
                                   dots_per_inch(VERTRES, VERTSIZE));
        GdiText text(device.get(), sent.face);
        draw(device.get(), picture_for(sent, text, screen_pixel_twips), text);
    }
    return MetafileHandle(CloseEnhMetaFile(device.release()));
}

PictureBitmap bitmap_of(const ChartToSend& sent, int dots_per_inch) {
    const windows::MemoryDevice measuring(CreateCompatibleDC(nullptr));
    const TwipsDevice in_twips(measuring.get(), dots_per_inch, dots_per_inch);
    LOGFONTW face = sent.face;
    // Smoothed for this screen's own stripes, letters have coloured edges anywhere else.
    face.lfQuality = ANTIALIASED_QUALITY;
    GdiText text(measuring.get(), face);
    return {picture_for(sent, text, static_cast<double>(twips_per_inch) / dots_per_inch), face,
            dots_per_inch};
}

GlobalMemory bitmap_for_clipboard(const PictureBitmap& bitmap) {
    BITMAPINFOHEADER header{};
    header.biSize = sizeof header;
    header.biWidth = bitmap.width_px();
    header.biHeight = bitmap.height_px();
    header.biPlanes = 1;
    header.biBitCount = 32;
    // Not every program takes rows from the top.
    std::vector<std::uint8_t> rows;
    const auto row_bytes = static_cast<std::size_t>(bitmap.width_px()) * 4;
    for (std::int32_t row = bitmap.height_px(); row-- > 0;) {
        const auto bytes =
            bitmap.bytes().subspan(static_cast<std::size_t>(row) * row_bytes, row_bytes);
        rows.insert(rows.end(), bytes.begin(), bytes.end());
    }
    return global_copy({{reinterpret_cast<const std::uint8_t*>(&header), sizeof header}, rows});
}

/// A file that is written beside its place, which keeps what it has until the new one is whole.
class FileBeside {
  public:
    explicit FileBeside(const base::Text& path)
        : path_(path), beside_(path + u"." + base::to_decimal(GetCurrentProcessId()) + u".tmp") {}
    ~FileBeside() { DeleteFileW(windows::wide(beside_)); }
    FileBeside(const FileBeside&) = delete;
    FileBeside& operator=(const FileBeside&) = delete;

    const base::Text& path() const noexcept { return beside_; }
    void keep() const {
        if (!MoveFileExW(windows::wide(beside_), windows::wide(path_), MOVEFILE_REPLACE_EXISTING)) {
            throw_last_error(u"MoveFileEx");
        }
    }

  private:
    base::Text path_;
    base::Text beside_;
};

/// The picture codecs have errors of their own, for which most systems have no words.
void check_codec(HRESULT code) {
    constexpr base::TextView source = u"PNG";
    constexpr int facility_of_codecs = 0x898;
    if (FAILED(code) && HRESULT_FACILITY(code) == facility_of_codecs) {
        throw base::AutomationError(static_cast<base::ErrorNumber>(code), base::Text(source),
                                    code == WINCODEC_ERR_STREAMWRITE
                                        ? u"Pliku nie można zapisać do końca."
                                        : u"Ten system nie potrafi zapisać obrazu PNG.");
    }
    check(code, source);
}

/// The file is whole and closed when this returns.
void write_png(const PictureBitmap& bitmap, const base::Text& path) {
    ComPointer<IWICImagingFactory> factory;
    check_codec(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                 __uuidof(IWICImagingFactory), factory.out_void()));
    ComPointer<IWICStream> stream;
    check_codec(factory->CreateStream(stream.out()));
    check_codec(stream->InitializeFromFilename(windows::wide(path), GENERIC_WRITE));
    ComPointer<IWICBitmapEncoder> encoder;
    check_codec(factory->CreateEncoder(GUID_ContainerFormatPng, nullptr, encoder.out()));
    check_codec(encoder->Initialize(stream.get(), WICBitmapEncoderNoCache));
    ComPointer<IWICBitmapFrameEncode> frame;
    check_codec(encoder->CreateNewFrame(frame.out(), nullptr));
    check_codec(frame->Initialize(nullptr));
    const auto width = static_cast<UINT>(bitmap.width_px());
    const auto height = static_cast<UINT>(bitmap.height_px());
    check_codec(frame->SetSize(width, height));
    check_codec(frame->SetResolution(file_dots_per_inch, file_dots_per_inch));
    // The encoder may say that it only takes another one; PNG has none with an unused byte.
    ComPointer<IWICBitmap> pixels;
    check_codec(factory->CreateBitmapFromMemory(
        width, height, GUID_WICPixelFormat32bppBGR, width * 4, width * height * 4,
        const_cast<BYTE*>(bitmap.bytes().data()), pixels.out()));
    WICPixelFormatGUID format = GUID_WICPixelFormat24bppBGR;
    check_codec(frame->SetPixelFormat(&format));
    check_codec(frame->WriteSource(pixels.get(), nullptr));
    check_codec(frame->Commit());
    check_codec(encoder->Commit());
}

using PrinterHandle = windows::Owned<HANDLE, ClosePrinter>;
using PrinterDevice = windows::Owned<HDC, DeleteDC>;

/// The user's own settings for the printer, but for the paper's orientation.
std::vector<std::byte> printer_settings(const base::Text& name, bool is_wide) {
    // Neither function writes there.
    auto* const device_name = const_cast<wchar_t*>(windows::wide(name));
    PrinterHandle printer;
    if (!OpenPrinterW(device_name, printer.out(), nullptr)) throw_last_error(u"OpenPrinter");
    const auto exchange = [&](DEVMODEW* out, DEVMODEW* in, DWORD what) {
        const LONG answer = DocumentPropertiesW(nullptr, printer.get(), device_name, out, in, what);
        if (answer < 0) throw_last_error(u"DocumentProperties");
        return static_cast<std::size_t>(answer);
    };
    std::vector<std::byte> settings(exchange(nullptr, nullptr, 0));
    auto* const mode = reinterpret_cast<DEVMODEW*>(settings.data());
    exchange(mode, nullptr, DM_OUT_BUFFER);
    if ((mode->dmFields & DM_ORIENTATION) != 0) {
        mode->dmOrientation = is_wide ? DMORIENT_LANDSCAPE : DMORIENT_PORTRAIT;
        exchange(mode, mode, DM_IN_BUFFER | DM_OUT_BUFFER);
    }
    return settings;
}

PrinterDevice open_printer(const base::Text& name, bool is_wide) {
    const std::vector<std::byte> settings = printer_settings(name, is_wide);
    PrinterDevice device(CreateDCW(L"WINSPOOL", windows::wide(name), nullptr,
                                   reinterpret_cast<const DEVMODEW*>(settings.data())));
    if (!device) throw_last_error(u"CreateDC");
    return device;
}

/// What a printing function answers. False when the user called it off: a printer that writes
/// files asks for a name first.
bool goes_on(int answer, base::TextView source) {
    if (answer > 0) return true;
    const DWORD error = GetLastError();
    if (error == ERROR_CANCELLED || error == ERROR_PRINT_CANCELLED) return false;
    SetLastError(error);
    throw_last_error(source);
}

/// A document on a printer that is abandoned unless it was ended.
class PrintedDocument {
  public:
    PrintedDocument(HDC printer, const base::Text& title) : printer_(printer) {
        DOCINFOW document{};
        document.cbSize = sizeof document;
        document.lpszDocName = windows::wide(title);
        is_open_ = goes_on(StartDocW(printer_, &document), u"StartDoc");
    }
    ~PrintedDocument() {
        if (is_open_) AbortDoc(printer_);
    }
    PrintedDocument(const PrintedDocument&) = delete;
    PrintedDocument& operator=(const PrintedDocument&) = delete;

    bool is_open() const noexcept { return is_open_; }
    void end() { is_open_ = !goes_on(EndDoc(printer_), u"EndDoc"); }

  private:
    HDC printer_;
    bool is_open_ = false;
};

}  // namespace

bool copy_chart(const ChartToSend& sent, HWND owner) {
    MetafileHandle metafile = metafile_of(sent);
    GlobalMemory bitmap = bitmap_for_clipboard(bitmap_of(sent, screen_dots_per_inch));
    GlobalMemory text = global_copy(dialogs::tab_separated(chart_table(sent.chart.data)));
    EmptiedClipboard clipboard(owner);
    return clipboard && clipboard.give(CF_ENHMETAFILE, std::move(metafile)) &&
           clipboard.give(CF_DIB, std::move(bitmap)) &&
           clipboard.give(CF_UNICODETEXT, std::move(text));
}

void save_chart(const ChartToSend& sent, const base::Text& path) {
    const FileBeside file(path);
    write_png(bitmap_of(sent, file_dots_per_inch), file.path());
    file.keep();
}

void print_chart(const ChartToSend& sent, const base::Text& printer_name) {
    const PrinterDevice device = open_printer(printer_name, sent.width_twips > sent.height_twips);
    HDC const printer = device.get();
    const double x_dots = GetDeviceCaps(printer, LOGPIXELSX);
    const double y_dots = GetDeviceCaps(printer, LOGPIXELSY);
    const double paper_width = GetDeviceCaps(printer, HORZRES) / x_dots * twips_per_inch;
    const double paper_height = GetDeviceCaps(printer, VERTRES) / y_dots * twips_per_inch;
    const double scale = std::min(paper_width / sent.width_twips, paper_height / sent.height_twips);
    PrintedDocument document(printer, sent.chart.title.empty() ? u"Wykres" : sent.chart.title);
    if (!document.is_open() || !goes_on(StartPage(printer), u"StartPage")) return;
    {
        const TwipsDevice in_twips(printer, x_dots, y_dots);
        const auto half_of_the_rest = [&](double paper, double chart, double dots) {
            return static_cast<int>(
                std::lround((paper - chart * scale) / 2 * dots / twips_per_inch));
        };
        SetViewportOrgEx(printer, half_of_the_rest(paper_width, sent.width_twips, x_dots),
                         half_of_the_rest(paper_height, sent.height_twips, y_dots), nullptr);
        GdiText text(printer, sent.face);
        // Thinner lines than a quarter of a millimetre are lost on some printers.
        constexpr double quarter_of_a_millimetre = twips_per_inch / 25.4 / 4;
        draw(printer, picture_for(sent, text, quarter_of_a_millimetre, scale), text);
    }
    if (goes_on(EndPage(printer), u"EndPage")) document.end();
}

}  // namespace tavrix::com
