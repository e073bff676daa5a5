#pragma once

#include <optional>

#include "base/text.h"
#include "com/forms/form_place.h"
#include "windows/automation.h"

namespace tavrix::com {

class HostWindows;

/// A modal form made from a dialog template of the module that holds this code, in the user's own
/// message font. A form says in its own class what it shows when it opens and what its buttons do;
/// Esc and the window's cross close every form.
class Dialog {
  public:
    explicit Dialog(int template_number) noexcept : template_number_(template_number) {}
    virtual ~Dialog() = default;
    Dialog(const Dialog&) = delete;
    Dialog& operator=(const Dialog&) = delete;

    /// Shows the form over the calling thread's active window and returns when the form was closed.
    /// All other windows of the thread are disabled meanwhile. The thread's messages go on being
    /// delivered. False when nothing was shown: the place is taken (the form that is there comes to
    /// the front), the session has no desktop that anybody sees, or the form cannot be made.
    bool show_in(FormPlace& place) noexcept;
    /// The same where the caller had to do something between taking the place and showing.
    bool show_at(const TakenPlace& place) noexcept;

  protected:
    /// Fills the controls; the form grows and moves before anybody sees it. The first control that
    /// can have the focus gets it, unless this gave it to another one. Whatever any of these
    /// functions throws closes the form.
    virtual void on_open() = 0;
    /// A control tells something: its number and the notification (BN_CLICKED, EN_CHANGE,
    /// LBN_DBLCLK and so on, whose numbers only mean something together with the control). Enter
    /// and Esc come as a click on IDOK and IDCANCEL, whether there is such a button or not.
    virtual void on_command(int id, int notification);
    /// What no other function handles. The message's result, a brush for example or what
    /// WM_NOTIFY's sender waits for; none when the message is not handled.
    virtual std::optional<INT_PTR> on_message(UINT message, WPARAM wparam, LPARAM lparam);
    /// A key went down in the form, before anybody else sees it. True when it was handled.
    virtual bool on_key(UINT key);
    /// Places the controls in the form's inside: after on_open and whenever the size changes.
    virtual void on_size(int width_px, int height_px);
    /// Of the whole form, where its template lets the user change it: the size that it opens with.
    virtual SIZE smallest_size() const noexcept { return first_size_; }

    void close() noexcept;
    /// For work that takes a while: delivers what waits in the thread's queue, as the form does
    /// when it has nothing to do. False when the form is to go.
    bool deliver_messages() noexcept;
    HWND window() const noexcept { return window_; }
    HWND control(int id) const noexcept { return GetDlgItem(window_, id); }
    void set_text(int id, const base::Text& text) noexcept;
    /// Makes a static control as high as its text needs, moves down what stands below it, and makes
    /// the form higher by as much, as far as the screen has room: the rest of the text is cut.
    void grow_to_text(int id);
    /// Gives the form another size around the same middle, and keeps it on the screen.
    void resize(SIZE size_px) noexcept;
    /// Pixels of a size in the template's units.
    SIZE pixels(int width_units, int height_units) const noexcept;
    /// What the user's screen has room for, without the task bar.
    RECT work_area() const noexcept;

  private:
    static INT_PTR CALLBACK procedure(HWND window, UINT message, WPARAM wparam,
                                      LPARAM lparam) noexcept;
    INT_PTR handle(UINT message, WPARAM wparam, LPARAM lparam);
    void open();
    INT_PTR command(WPARAM wparam, LPARAM lparam);
    INT_PTR pass_on(UINT message, WPARAM wparam, LPARAM lparam);
    void tell_size();
    void tell_smallest_size(MINMAXINFO& limits) const noexcept;
    void run(HWND owner) noexcept;
    void wake() noexcept;
    void deliver(MSG& message) noexcept;
    bool is_own_key(const MSG& message) noexcept;
    void move_down_below(LONG edge_px, int distance_px) noexcept;

    int template_number_;
    HWND window_ = nullptr;
    SIZE first_size_{};
    bool opened_ = false;
    bool closing_ = false;
};

/// Whether Ctrl is held without Alt: both together are the key that writes ą and ć.
bool only_control_is_down() noexcept;

}  // namespace tavrix::com
