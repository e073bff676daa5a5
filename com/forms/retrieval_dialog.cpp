#include "com/forms/retrieval_dialog.h"

#include <algorithm>

#include "com/forms/forms.h"
#include "com/forms/identifiers.h"
// Needs what they include.
#include <commctrl.h>

namespace tavrix::com {
namespace {

constexpr UINT_PTR work_timer = 1;
// As often as the system's timers come; the work waits for the server itself meanwhile.
constexpr UINT between_pieces_ms = 10;
constexpr std::chrono::milliseconds piece_of_work{40};
constexpr int progress_steps = 1000;

// Whichever of the two it is: while one is open no other retrieval can begin.
FormPlace retrieval_place;

class RetrievalOnDesktop final : public mail::RetrievalWindow {
  public:
    void show(mail::RetrievalWork& work) noexcept override {
        RetrievalDialog(work).show_in(retrieval_place);
        // However the form was closed.
        work.cancel();
    }
};

}  // namespace

std::unique_ptr<mail::RetrievalWindow> make_retrieval_window() {
    return std::make_unique<RetrievalOnDesktop>();
}

// The progress bar is no control that every process knows.
RetrievalDialog::RetrievalDialog(mail::RetrievalWork& work) noexcept
    : Dialog(work.form() == mail::RetrievalForm::manager ? TAVRIX_MANAGER_FORM
                                                         : TAVRIX_SOCKET_FORM),
      work_(work) {
    INITCOMMONCONTROLSEX wanted{};
    wanted.dwSize = sizeof wanted;
    wanted.dwICC = ICC_PROGRESS_CLASS;
    InitCommonControlsEx(&wanted);
}

void RetrievalDialog::on_open() {
    SendMessageW(control(TAVRIX_RETRIEVAL_PROGRESS), PBM_SETRANGE32, 0, progress_steps);
    set_text(TAVRIX_RETRIEVAL_CONNECTION, work_.labels().connection);
    show_labels();
    SetTimer(window(), work_timer, between_pieces_ms, nullptr);
}

std::optional<INT_PTR> RetrievalDialog::on_message(UINT message, WPARAM wparam, LPARAM) {
    if (message != WM_TIMER || wparam != work_timer) return {};
    work_on();
    return 0;
}

void RetrievalDialog::work_on() {
    if (work_.go_on(piece_of_work)) {
        show_labels();
    } else {
        KillTimer(window(), work_timer);
        close();
    }
}

void RetrievalDialog::show_labels() {
    const mail::RetrievalLabels& labels = work_.labels();
    if (labels == shown_) return;
    show_text(TAVRIX_RETRIEVAL_STATUS, labels.status, shown_.status);
    show_text(TAVRIX_RETRIEVAL_TIME, labels.time, shown_.time);
    show_text(TAVRIX_RETRIEVAL_FROM, labels.from, shown_.from);
    show_text(TAVRIX_RETRIEVAL_SUBJECT, labels.subject, shown_.subject);
    shown_ = labels;
    show_progress();
}

// Only what has changed: a label that is set anew flickers.
void RetrievalDialog::show_text(int id, const base::Text& text, const base::Text& shown) noexcept {
    if (text != shown) set_text(id, text);
}

void RetrievalDialog::show_progress() noexcept {
    if (shown_.expected_bytes == 0) return;
    const std::uint64_t steps = std::min(shown_.received_bytes, shown_.expected_bytes) *
                                progress_steps / shown_.expected_bytes;
    SendMessageW(control(TAVRIX_RETRIEVAL_PROGRESS), PBM_SETPOS, static_cast<WPARAM>(steps), 0);
}

}  // namespace tavrix::com
