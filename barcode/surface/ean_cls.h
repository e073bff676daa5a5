#pragma once

#include "barcode/surface/code39_printing.h"
#include "barcode/surface/rotation.h"
#include "ports/code_page.h"
#include "ports/database.h"

namespace tavrix::barcode {

/// What the dispatcher reaches outside; the host's surface comes with each call.
struct BarcodePorts {
    ports::Shell& shell;
    ports::Files& files;
    ports::Pictures& pictures;
    const ports::CodePage& code_page;
};

/// The hosts' one entry for every kind of bar code, and Code 39 itself.
///
/// Kept on purpose: a symbol is drawn only when SetCzcionkę says False, that is in whatever font
/// the surface kept when the right one could not be had, and nothing is drawn when the font is
/// there. Hosts were written around it and draw with the font's class themselves.
class Drk_Wyd_Ean_cls {
  public:
    explicit Drk_Wyd_Ean_cls(BarcodePorts ports)
        : ports_(ports), fonts_(ports.shell, ports.files), code39_(fonts_) {}

    /// Height and width of the Code 39 text last drawn, in the surface's scale units.
    base::Currency wys() const noexcept { return code39_.height; }
    void set_wys(base::Currency height) noexcept { code39_.height = height; }
    base::Currency szer() const noexcept { return code39_.width; }
    void set_szer(base::Currency width) noexcept { code39_.width = width; }

    /// Draws `EAN_text` as the kind `Rodzaj` says, or the picture file that "<OBR,file>" names; the
    /// rectangle is for pictures. Fails silently, but for the overflow error of a huge `Rozm`.
    void RysujEAN(ports::Surface& pict, const base::Text& EAN_text, std::int32_t stX_Par,
                  std::int32_t Sty_Par, std::int32_t maxx_Par, std::int32_t maxy_Par,
                  std::int32_t Rozm, const base::Text& Rodzaj, bool beznapisów, bool rotate,
                  const base::Text& KatalogProgramu, const base::Text& WindowsDir);
    void RysujEAN39(ports::Surface& pict, const base::Text& EAN_text, std::int32_t Rozm, bool bn,
                    bool rotate, const base::Text& KatalogProgramu, const base::Text& WindowsDir);
    void RysujEAN39ex(ports::Surface& pict, const base::Text& EAN_text, std::int32_t Rozm, bool bn,
                      bool rotate, const base::Text& KatalogProgramu, const base::Text& WindowsDir);

    /// See FontInstaller::select.
    bool SetCzcionkę(ports::Surface& pict, const base::Text& fnt, const base::Text& Plik,
                     bool silent, const base::Text& KatalogProgramu, const base::Text& WindowsDir);
    /// Runs a program to its end; True when it could be started. The two middle arguments are
    /// accepted and ignored.
    bool SyncShell(const base::Text& CommandLine, const ports::Value& Timeout_NIE_UZYWANE,
                   const ports::Value& WaitForInputIdle_NIE_UZYWANE, bool Hide);

    /// See write_turned_text.
    void RotateText(ports::Surface& Pdevice, const base::Text& Text, std::int16_t angle, double X,
                    double Y);
    /// See copy_quarter_turn; the angle is ignored. The result stays empty.
    EmptyResult RotateSurface(ports::Surface& SourcePicture, ports::Surface& DestPicture,
                              std::int32_t lngAngle, std::int32_t XDest, std::int32_t YDest);

  private:
    struct Call;

    void paint_file(const Call& call);
    void draw_kind(const Call& call, base::TextView name);
    void draw_turned_ean13(const Call& call);
    ports::PictureForm& form();

    BarcodePorts ports_;
    FontInstaller fonts_;
    Code39Printing code39_;
    std::unique_ptr<ports::PictureForm> form_;
};

}  // namespace tavrix::barcode
