#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "base/text.h"
#include "windows/automation.h"

namespace tavrix::test {

/// What a user does while a form waits. Runs on the form's own thread.
using Step = std::function<void(HWND form)>;

/// A host's main window and the user before it. A modal form tells its owner whenever it has
/// nothing left to do; the user takes the next step then, so nothing here waits by the clock.
class FormUser {
  public:
    FormUser();
    ~FormUser();
    FormUser(const FormUser&) = delete;
    FormUser& operator=(const FormUser&) = delete;

    HWND host_window() const { return window_; }
    /// Calls `show`, which opens a form, and takes the steps. The last one has to close the form:
    /// where it does not, or where a step is never reached, the test fails, and the form goes.
    void use(const std::function<void()>& show, std::vector<Step> steps);
    /// Takes a step as soon as the thread's messages are delivered again, by whichever form.
    void soon(Step step);

  private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
    void take_step(HWND form);

    HWND window_;
    std::vector<Step> steps_;
    std::size_t next_step_ = 0;
    Step soon_;
};

// Input as it reaches the control with the focus.
Step press(WPARAM key);
Step press_with_alt(wchar_t letter);
Step click(int control);
Step click_cross();

/// The forms that the calling thread shows.
std::vector<HWND> open_forms();
base::Text text_of(HWND window);
std::wstring class_of(HWND window);
std::vector<HWND> controls_of(HWND form);
/// The test fails for each control, by its number, that shows something else.
void expect_texts(HWND form, const std::map<int, base::Text>& texts);

}  // namespace tavrix::test
