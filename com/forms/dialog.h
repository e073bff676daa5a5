#pragma once

#include <atomic>

#include "base/text.h"
#include "windows/automation.h"

namespace tavrix::com {

/// The place of the one form of its kind that the process shows at a time.
class FormPlace {
  public:
    /// False when a form is there already.
    bool take() noexcept { return !taken_.exchange(true); }
    void leave() noexcept;
    void show(HWND window) noexcept { window_ = window; }
    /// The form, or what it has opened itself, becomes the user's active window.
    void bring_to_front() const noexcept;

  private:
    std::atomic<bool> taken_ = false;
    std::atomic<HWND> window_ = nullptr;
};

/// A modal form made from a dialog template of the module that holds this code. A form says in its
/// own class what it shows when it opens and what its buttons do; Esc and the window's cross close
/// every form.
class Dialog {
  public:
    explicit Dialog(int template_number) noexcept : template_number_(template_number) {}
    virtual ~Dialog() = default;
    Dialog(const Dialog&) = delete;
    Dialog& operator=(const Dialog&) = delete;

    /// Shows the form over the calling thread's active window and returns when the form was closed.
    /// All other windows of the thread are disabled meanwhile. The thread's messages go on being
    /// delivered. Where the place is taken, the form that is there comes to the front instead and
    /// the call returns at once. A form that cannot be made is not shown.
    void show_in(FormPlace& place) noexcept;

  protected:
    /// Fills the controls. The first control that can have the focus gets it, unless this gave it
    /// to another one. Whatever any of these three throws closes the form.
    virtual void on_open() = 0;
    /// A button was pressed, or Enter (IDOK) or Esc (IDCANCEL) without a button of that number.
    virtual void on_command(int id);
    /// What no other function handles. True when the message was handled.
    virtual bool on_message(UINT message, WPARAM wparam, LPARAM lparam);

    void close() noexcept;
    /// For work that takes a while: delivers what waits in the thread's queue, as the form does
    /// when it has nothing to do. False when the form is to go.
    bool deliver_messages() noexcept;
    HWND window() const noexcept { return window_; }
    HWND control(int id) const noexcept { return GetDlgItem(window_, id); }
    void set_text(int id, const base::Text& text) noexcept;
    /// Makes a static control as high as its text needs, moves down what stands below it, and makes
    /// the form higher by as much.
    void grow_to_text(int id);

  private:
    static INT_PTR CALLBACK procedure(HWND window, UINT message, WPARAM wparam,
                                      LPARAM lparam) noexcept;
    INT_PTR handle(UINT message, WPARAM wparam, LPARAM lparam);
    void show_over_host(FormPlace& place) noexcept;
    void run(HWND owner) noexcept;
    void wake() noexcept;
    void deliver(MSG& message) noexcept;
    void move_down_below(LONG edge_px, int distance_px) noexcept;

    int template_number_;
    HWND window_ = nullptr;
    bool closing_ = false;
};

}  // namespace tavrix::com
