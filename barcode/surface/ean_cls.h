#pragma once

#include "barcode/surface/rotation.h"
#include "base/currency.h"
#include "ports/code_page.h"
#include "ports/database.h"
#include "ports/files.h"
#include "ports/shell.h"
#include "ports/surface.h"

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
    explicit Drk_Wyd_Ean_cls(BarcodePorts ports) : ports_(ports) {}

    /// Height and width of the Code 39 text last drawn, in the surface's scale units.
    base::Currency wys() const noexcept { return height_; }
    void set_wys(base::Currency height) noexcept { height_ = height; }
    base::Currency szer() const noexcept { return width_; }
    void set_szer(base::Currency width) noexcept { width_ = width; }

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

    /// Selects the font `fnt` on the surface, after installing it from the program folder where it
    /// is missing. True when the surface has it; otherwise a message asks the user for it, whatever
    /// `silent` says, which only becomes the message's help number. Throws nothing.
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
    struct FontFile;
    struct Call;

    void paint_file(const Call& call);
    void draw_kind(const Call& call, base::TextView kind);
    void draw_turned_ean13(const Call& call);
    void draw_code39(ports::Surface& surface, const base::Text& text, std::int32_t size, bool bare,
                     bool rotate, const FontFile& font, const base::Text& program_folder,
                     const base::Text& windows_folder);
    bool ensure_font(ports::Surface& surface, const FontFile& font,
                     const base::Text& program_folder, const base::Text& windows_folder);
    void install_font(const base::Text& file, const base::Text& program_folder,
                      const base::Text& windows_folder);
    ports::PictureForm& form();

    BarcodePorts ports_;
    std::unique_ptr<ports::PictureForm> form_;
    base::Currency height_;
    base::Currency width_;
};

}  // namespace tavrix::barcode
