#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "base/text.h"

namespace tavrix::dialogs {

/// What an informator gives that was closed without a button, or not shown at all. Not 0, which is
/// the first button of all.
inline constexpr std::int32_t no_button = -1;

/// A message with buttons, and which one was chosen.
struct InformatorRecord {
    base::Text header;
    base::Text text;
    /// One caption for each button, thirteen of them; a blank one is a button that is not shown.
    std::vector<base::Text> buttons;
    std::int32_t result = no_button;
};

/// The same for orders, with a value and an outcome.
struct OrderInformatorRecord {
    base::Text header;
    base::Text text;
    /// The first one's number is 1.
    std::vector<base::Text> buttons;
    std::vector<base::Text> outcome_buttons;
    std::int32_t outcome_count = 0;
    base::Text value;
    std::int32_t outcome = 0;
    std::int32_t result = no_button;
};

/// A button, or one of the outcomes to choose among, with the number that the host knows it by.
struct InformatorButton {
    std::int32_t number = 0;
    /// In one line; a letter after an ampersand is its key, and no two of a form have the same.
    base::Text caption;
    bool operator==(const InformatorButton&) const = default;
};

/// What an informator's window shows.
struct InformatorForm {
    struct Order {
        base::Text value;
        std::vector<InformatorButton> outcomes;
        /// The number of the one that is chosen when the window opens.
        std::optional<std::int32_t> outcome;
    };

    /// In one line.
    base::Text title;
    /// As edit controls take it, and cut where it is longer than they can show in decent time.
    base::Text text;
    /// Before it was cut.
    base::Text whole_text;
    /// May be empty.
    std::vector<InformatorButton> buttons;
    std::optional<Order> order;
};

/// What the user left there.
struct InformatorChoice {
    std::int32_t button = no_button;
    /// None when the user did not change it.
    std::optional<base::Text> value;
    /// None when no outcome was chosen.
    std::optional<std::int32_t> outcome;
};

InformatorForm informator_form(const InformatorRecord& record);
InformatorForm informator_form(const OrderInformatorRecord& record);

/// What the clipboard gets: all that can be read in the window, as the system's own message boxes
/// copy themselves.
base::Text copied_text(const InformatorForm& form);

/// A caption of at most so many characters, an ellipsis in place of the rest.
base::Text cut_caption(base::TextView caption, std::size_t characters);

/// An informator on the user's desktop: modal. Each of the two kinds is open once at a time.
class InformatorWindow {
  public:
    virtual ~InformatorWindow() = default;
    /// None when the window was closed without a button, or could not be shown.
    virtual std::optional<InformatorChoice> show(const InformatorForm& form) noexcept = 0;
};

}  // namespace tavrix::dialogs
