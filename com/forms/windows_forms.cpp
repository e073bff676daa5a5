#include "com/forms/windows_forms.h"

#include "com/forms/about_dialog.h"
#include "com/forms/message_dialog.h"

namespace tavrix::com {
namespace {

FormPlace about_place;
FormPlace message_place;

}  // namespace

void WindowsForms::show_about(const ports::AboutBox& box) noexcept {
    AboutDialog(box).show_in(about_place);
}

void WindowsForms::show_message_form(const ports::MessageForm& form) noexcept {
    MessageDialog(form).show_in(message_place);
}

}  // namespace tavrix::com
