#include <fstream>
#include <iostream>
#include <memory>
#include <optional>

#include "barcode/qr_generator.h"
#include "barcode/symbol_drawing.h"
#include "base/path.h"
#include "cli/class_drawing.h"
#include "cli/command.h"
#include "cli/picture_file.h"

namespace tavrix::cli {
namespace {

struct BarcodeOptions {
    std::string kind = "EAN13";
    std::string text;
    std::string caption;
    std::string batch_file;
    std::string colour = "black";
    bool no_caption = false;
    bool scannable = true;
    std::int32_t size_step = 0;
    std::int32_t rotation_degrees = 0;
    PictureOptions picture;
};

constexpr std::int32_t caption_size_twips = 200;

std::vector<std::string> kinds() {
    std::vector<std::string> names;
    for (const barcode::Symbology& row : barcode::symbologies()) {
        if (row.encode != nullptr) names.push_back(base::to_utf8(row.name));
    }
    return names;
}

std::string kinds_help() {
    std::string help = "Rodzaj:";
    for (const barcode::Symbology& row : barcode::symbologies()) {
        help += "\n" + base::to_utf8(row.name) + " (" + base::to_utf8(row.title) +
                "): " + base::to_utf8(row.accepts);
        if (row.encode == nullptr) help += "; poleceniem tavrix qr";
    }
    return help;
}

drawing::Drawing draw(const barcode::Symbology& symbology, const base::Text& symbol,
                      const std::string& text, const BarcodeOptions& options) {
    drawing::Drawing drawing =
        barcode::draw_symbol(symbology, symbol, options.picture.module_twips,
                             barcode::qr_colour(base::from_utf8(options.colour)));
    if (!options.no_caption && (symbology.needs_caption() || !options.caption.empty())) {
        const std::string& caption = options.caption.empty() ? text : options.caption;
        drawing::add_caption(drawing, base::from_utf8(caption), caption_size_twips);
    }
    return options.rotation_degrees == 0 ? drawing
                                         : drawing::turned(drawing, options.rotation_degrees / 90);
}

bool is_plain_svg(const barcode::Symbology& symbology, const BarcodeOptions& options) {
    const bool is_svg = options.picture.file == "-" || options.picture.file.ends_with(".svg");
    const bool captioned =
        !options.no_caption && (symbology.needs_caption() || !options.caption.empty());
    return is_svg && !captioned && options.rotation_degrees == 0;
}

/// Draws one text after the other.
class Press {
  public:
    Press(const barcode::Symbology& symbology, const BarcodeOptions& options)
        : symbology_(symbology), options_(options) {
        if (is_plain_svg(symbology, options)) {
            svg_.emplace(symbology.font->glyphs(),
                         barcode::em_twips(symbology, options.picture.module_twips),
                         barcode::qr_colour(base::from_utf8(options.colour)));
        }
    }
    /// False when the text has no symbol, after saying why.
    bool draw_one(const std::string& text, const PictureOptions& picture) const;

  private:
    const barcode::Symbology& symbology_;
    const BarcodeOptions& options_;
    std::optional<drawing::TextSvg> svg_;
};

bool Press::draw_one(const std::string& text, const PictureOptions& picture) const {
    if (!options_.scannable) {
        write_picture(draw_as_class(symbology_, text, options_.size_step, options_.no_caption,
                                    options_.rotation_degrees != 0),
                      picture);
        return true;
    }
    const barcode::Encoded encoded = symbology_.encode(base::from_utf8(text));
    if (!encoded.refusal.empty()) {
        std::cerr << text << ": " << base::to_utf8(encoded.refusal) << '\n';
        return false;
    }
    if (svg_) {
        write_svg(svg_->write(encoded.symbol, barcode::symbol_frame(symbology_, encoded.symbol,
                                                                    options_.picture.module_twips)),
                  picture.file);
    } else {
        write_picture(draw(symbology_, encoded.symbol, text, options_), picture);
    }
    return true;
}

// The place of a line's picture: its number stands in for "%" in the name.
PictureOptions numbered(const PictureOptions& picture, std::size_t number) {
    PictureOptions result = picture;
    const std::size_t mark = result.file.find('%');
    if (mark != std::string::npos) result.file.replace(mark, 1, std::to_string(number));
    return result;
}

bool draw_batch(const barcode::Symbology& symbology, const BarcodeOptions& options) {
    if (options.picture.file != "-" && options.picture.file.find('%') == std::string::npos) {
        throw CLI::ValidationError("--out", "przy --batch nazwa ma znak % na numer wiersza");
    }
    std::ifstream file;
    if (options.batch_file != "-") {
        file.open(base::path_of(options.batch_file), std::ios::binary);
        if (!file) throw CLI::ValidationError(options.batch_file, "nie można odczytać pliku");
    }
    std::istream& lines = options.batch_file == "-" ? std::cin : file;
    const Press press(symbology, options);
    bool all_drawn = true;
    std::size_t number = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.ends_with('\r')) line.pop_back();
        ++number;
        all_drawn &= press.draw_one(line, numbered(options.picture, number));
    }
    return all_drawn;
}

}  // namespace

void add_barcode_command(CLI::App& app, int& exit_code) {
    auto options = std::make_shared<BarcodeOptions>();
    CLI::App* command =
        app.add_subcommand("barcode", "Rysuje kod kreskowy jako SVG albo PNG tak, że się skanuje");
    command->add_option("--kind", options->kind, kinds_help())
        ->check(CLI::IsMember(kinds()))
        ->capture_default_str();
    CLI::Option* text = command->add_option("--text", options->text, "Tekst albo cyfry kodu");
    command
        ->add_option("--batch", options->batch_file,
                     "Zamiast --text: plik z jednym tekstem w wierszu; - to wejście")
        ->excludes(text);
    command
        ->add_option("--out", options->picture.file,
                     "Plik .svg albo .png; - to SVG na ekran; przy --batch z % na numer wiersza")
        ->required();
    command->add_option("--caption", options->caption, "Podpis zamiast tekstu kodu");
    command->add_flag("--no-caption", options->no_caption, "Bez podpisu");
    add_colour_option(*command, options->colour, "Kolor kresek");
    command->add_option("--rotate", options->rotation_degrees, "Obrót w prawo, w stopniach")
        ->check(CLI::IsMember({0, 90, 180, 270}));
    command->add_option("--dpi", options->picture.dots_per_inch, "PNG: punktów na cal")
        ->check(CLI::Range(30, 4800))
        ->capture_default_str();
    command
        ->add_option("--module", options->picture.module_twips,
                     "Szerokość modułu w twipach (1/1440 cala)")
        ->check(CLI::Range(1, 10000))
        ->capture_default_str();
    command
        ->add_flag("--scannable,!--as-class", options->scannable,
                   "Kod, który się skanuje; --as-class to, co rysują klasy automatyzacji, z ich "
                   "osobliwościami")
        ->capture_default_str();
    command->add_option("--size", options->size_step, "Z --as-class: stopień wielkości Rozm");
    command->callback([options, text, &exit_code] {
        const barcode::Symbology& symbology =
            *barcode::find_symbology(base::from_utf8(options->kind));
        const bool batch = !options->batch_file.empty();
        if (!batch && text->count() == 0) throw CLI::RequiredError("--text albo --batch");
        const bool drawn =
            batch ? draw_batch(symbology, *options)
                  : Press(symbology, *options).draw_one(options->text, options->picture);
        exit_code = drawn ? exit_done : exit_usage;
    });
}

}  // namespace tavrix::cli
