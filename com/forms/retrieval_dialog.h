#pragma once

#include "com/forms/dialog.h"
#include "mail/retrieval_form.h"

namespace tavrix::com {

/// Both retrieval forms: does the work in small pieces between the thread's messages, and closes
/// when it is over.
class RetrievalDialog final : public Dialog {
  public:
    explicit RetrievalDialog(mail::RetrievalWork& work) noexcept;

  private:
    void on_open() override;
    std::optional<INT_PTR> on_message(UINT message, WPARAM wparam, LPARAM lparam) override;
    void work_on();
    void show_labels();
    void show_text(int id, const base::Text& text, const base::Text& shown) noexcept;
    void show_progress() noexcept;

    mail::RetrievalWork& work_;
    mail::RetrievalLabels shown_;
};

}  // namespace tavrix::com
