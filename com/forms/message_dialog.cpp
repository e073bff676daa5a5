#include "com/forms/message_dialog.h"

#include "com/forms/forms.h"
#include "com/forms/identifiers.h"
#include "dialogs/shown_text.h"

namespace tavrix::com {
namespace {

base::Text one_below_the_other(base::TextView attachments) {
    base::Text lines;
    for (const base::Text& path : base::split(attachments, u';')) {
        if (path.empty()) continue;
        if (!lines.empty()) lines += u"\r\n";
        lines += path;
    }
    return lines;
}

FormPlace message_place;

class MessageOnDesktop final : public mail::MessageWindow {
  public:
    void show(const mail::MessageForm& form) noexcept override {
        MessageDialog(form).show_in(message_place);
    }
};

}  // namespace

std::unique_ptr<mail::MessageWindow> make_message_window() {
    return std::make_unique<MessageOnDesktop>();
}

MessageDialog::MessageDialog(const mail::MessageForm& form) noexcept
    : Dialog(TAVRIX_MESSAGE_FORM), form_(form) {}

void MessageDialog::on_open() {
    const mail::MailRecord& record = form_.record;
    set_text(TAVRIX_MESSAGE_RECIPIENTS, record.recipients);
    set_text(TAVRIX_MESSAGE_TAX_NUMBER, record.tax_number);
    set_text(TAVRIX_MESSAGE_DATE, form_.date);
    set_text(TAVRIX_MESSAGE_SUBJECT, record.subject);
    int body = TAVRIX_MESSAGE_BODY;
    for (const base::Text& text : record.body) set_text(body++, dialogs::with_edit_line_ends(text));
    set_text(TAVRIX_MESSAGE_ATTACHMENTS, one_below_the_other(record.attachments));
}

void MessageDialog::on_command(int id, int notification) {
    // The boxes' own reports have their own numbers.
    if (notification != BN_CLICKED) return;
    if (id == IDOK && !sending_) return send();
    // A form goes only when the sending has ended, which asks for that.
    if (id == IDCANCEL) close();
}

void MessageDialog::send() {
    EnableWindow(control(IDOK), FALSE);
    sending_ = true;
    const base::Text failure = form_.send(*this);
    sending_ = false;
    if (failure.empty()) return close();
    show_status(failure);
    EnableWindow(control(IDOK), TRUE);
}

void MessageDialog::on_stage(mail::smtp::Stage stage) {
    show_status(base::Text(mail::words_of(stage)));
}

bool MessageDialog::goes_on(std::uint64_t, std::uint64_t) {
    return deliver_messages();
}

void MessageDialog::show_status(const base::Text& text) {
    set_text(TAVRIX_MESSAGE_STATUS, text);
    grow_to_text(TAVRIX_MESSAGE_STATUS);
    UpdateWindow(window());
}

}  // namespace tavrix::com
