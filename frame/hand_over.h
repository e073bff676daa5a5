#pragma once

#include <vector>

#include "ports/forms.h"
#include "ports/host_object.h"

namespace tavrix::frame {

// What the facade's methods hand to their dialogs, and what a dialog leaves there. The records keep
// their last values while the library stays loaded; nothing protects them from a second call that
// comes in while a dialog is open.

struct ChartRecord {
    bool full_screen = false;
    /// The host's grid while the call lasts; null before and after, because it is the host's.
    ports::HostObject* grid = nullptr;
    std::int32_t column = 0;
    base::Text text;
    std::int32_t x1 = 0;
    std::int32_t x2 = 0;
    std::int32_t x3 = 0;
    base::Text title;
    base::Text kind;
    base::Text checks;
    std::int16_t options = 0;
};

struct InformatorRecord {
    base::Text header;
    base::Text text;
    /// One caption for each button, thirteen of them; an empty one is a button that is not shown.
    std::vector<base::Text> buttons;
    std::int32_t result = 0;
};

struct OrderInformatorRecord {
    base::Text header;
    base::Text text;
    std::vector<base::Text> buttons;
    std::vector<base::Text> outcome_buttons;
    std::int32_t outcome_count = 0;
    base::Text value;
    std::int32_t outcome = 0;
    std::int32_t result = 0;
};

struct BrowserRecord {
    std::int32_t database_count = 0;
    std::vector<base::Text> databases;
    base::Text connection_1;
    base::Text connection_2;
    base::Text server;
    bool result = false;
};

struct HandOver {
    ports::MailRecord mail;
    ChartRecord chart;
    InformatorRecord informator;
    OrderInformatorRecord order_informator;
    BrowserRecord browser;
};

}  // namespace tavrix::frame
