#include <iostream>
#include <memory>

#include "barcode/qr_generator.h"
#include "cli/command.h"
#include "cli/picture_file.h"
#include "drawing/text.h"

namespace tavrix::cli {
namespace {

struct QrOptions {
    std::string text;
    std::string caption;
    bool has_caption = false;
    std::string colour = "black";
    std::int32_t level = 1;
    std::int32_t rotation_degrees = 0;
    bool diamonds = false;
    PictureOptions picture{.file = {}, .dots_per_inch = 300, .module_twips = 40};
};

constexpr std::int32_t qr_caption_size_twips = 240;

ExitCode draw(const QrOptions& options) {
    barcode::drk_wyd_QRGen generator;
    generator.set_xEcl(options.level);
    generator.set_xBoostEcl(true);
    generator.set_xSquare(!options.diamonds);
    generator.set_xModuleSize(options.picture.module_twips);
    generator.set_xColor(base::from_utf8(options.colour));
    const auto symbol = generator.QRCodegenBarcode(base::from_utf8(options.text));
    if (!symbol) {
        std::cerr << (options.text.empty() ? "Pusty tekst nie ma symbolu QR.\n"
                                           : "Tekst nie mieści się w symbolu QR.\n");
        return exit_usage;
    }
    drawing::Drawing drawing = *symbol;
    if (options.has_caption) {
        const std::string& caption = options.caption.empty() ? options.text : options.caption;
        drawing::add_caption(drawing, base::from_utf8(caption), qr_caption_size_twips);
    }
    write_picture(drawing::turned(drawing, options.rotation_degrees / 90), options.picture);
    return exit_done;
}

}  // namespace

void add_qr_command(CLI::App& app, int& exit_code) {
    auto options = std::make_shared<QrOptions>();
    CLI::App* command = app.add_subcommand("qr", "Rysuje symbol QR jako SVG albo PNG");
    command->add_option("--text", options->text, "Tekst, np. adres linku weryfikacyjnego")
        ->required();
    command->add_option("--out", options->picture.file, "Plik .svg albo .png; - to SVG na ekran")
        ->required();
    CLI::Option* caption = command
                               ->add_option("--caption", options->caption,
                                            "Podpis pod symbolem; bez wartości sam tekst symbolu")
                               ->expected(0, 1);
    add_colour_option(*command, options->colour, "Kolor modułów");
    command->add_option("--level", options->level, "Poziom korekcji: 0 L, 1 M, 2 Q, 3 H")
        ->check(CLI::Range(0, 3))
        ->capture_default_str();
    command->add_option("--rotate", options->rotation_degrees, "Obrót w prawo, w stopniach")
        ->check(CLI::IsMember({0, 90, 180, 270}));
    command->add_option("--dpi", options->picture.dots_per_inch, "PNG: punktów na cal")
        ->check(CLI::Range(30, 4800))
        ->capture_default_str();
    command
        ->add_option("--module", options->picture.module_twips,
                     "Bok modułu w twipach (1/1440 cala)")
        ->check(CLI::Range(1, 10000))
        ->capture_default_str();
    command->add_flag("--diamonds", options->diamonds, "Moduły jako romby zamiast kwadratów");
    command->callback([options, caption, &exit_code] {
        options->has_caption = caption->count() > 0;
        exit_code = draw(*options);
    });
}

}  // namespace tavrix::cli
