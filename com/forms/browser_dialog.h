#pragma once

#include <optional>

#include "com/forms/dialog.h"
#include "dialogs/browser_session.h"
#include "dialogs/resize.h"
// Needs what they include.
#include <commctrl.h>

namespace tavrix::com {

/// The query browser: databases to choose from, a box for a query, and its rows. Esc and the button
/// that closes end a running query first; the window's cross closes at once.
class BrowserDialog final : public Dialog {
  public:
    explicit BrowserDialog(dialogs::BrowserSession& session) noexcept;
    /// The database that the user chose.
    std::optional<std::size_t> chosen() const noexcept { return chosen_; }

  private:
    void on_open() override;
    void on_command(int id, int notification) override;
    std::optional<INT_PTR> on_message(UINT message, WPARAM wparam, LPARAM lparam) override;
    bool on_key(UINT key) override;
    void on_size(int width_px, int height_px) override;

    std::optional<INT_PTR> on_notify(const NMHDR& about);
    INT_PTR draw_cell(const NMLVCUSTOMDRAW& drawing) const;
    void give_cell(NMLVDISPINFOW& asked) const;
    void fill_databases();
    std::size_t selected_database() const noexcept;
    void connect();
    void run_query();
    void choose();
    void work_on();
    void turn_page(bool forward);
    void show_status();
    void show_result();
    void show_page();
    void show_row(int row);
    void fit_database_columns() noexcept;
    int column_width(std::size_t column) const;

    dialogs::BrowserSession& session_;
    std::optional<std::size_t> chosen_;
    std::optional<dialogs::Resize> resize_;
};

}  // namespace tavrix::com
