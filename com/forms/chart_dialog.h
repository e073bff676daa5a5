#pragma once

#include <memory>
#include <vector>

#include "com/forms/chart_output.h"
#include "com/forms/dialog.h"
#include "com/forms/forms.h"
// Needs what they include.
#include <commctrl.h>

namespace tavrix::com {

/// The chart window: the chart, which grows with the window, its numbers as a table, and the ways
/// out of it.
class ChartDialog final : public Dialog {
  public:
    ChartDialog(dialogs::Chart chart, const PrinterChooser& choose_printer);

  private:
    void on_open() override;
    void on_command(int id, int notification) override;
    std::optional<INT_PTR> on_message(UINT message, WPARAM wparam, LPARAM lparam) override;
    bool on_key(UINT key) override;
    void on_size(int width_px, int height_px) override;
    SIZE smallest_size() const noexcept override;
    void read_font();
    void make_columns();
    void fill_width();
    void show_table(bool shown);
    void tell_cell(NMLVDISPINFOW& asked) const;
    void paint(const DRAWITEMSTRUCT& item);
    drawing::Picture picture_of(SIZE size_px) const;
    ChartToSend to_send() const;
    void copy();
    void save();
    void print();
    /// Does what may fail, and tells the user when it did.
    template <typename Action>
    void guarded(const char16_t* failed, Action action);
    void say(const base::Text& text);

    const PrinterChooser& choose_printer_;
    dialogs::Chart chart_;
    std::vector<std::vector<base::Text>> table_;
    HFONT font_ = nullptr;
    LOGFONTW face_{};
    int dots_per_inch_ = 96;
    double em_twips_ = 0;
    /// The picture at the window's size, until that or the system's colours change.
    std::unique_ptr<PictureBitmap> shown_;
    SIZE shown_size_{};
};

}  // namespace tavrix::com
