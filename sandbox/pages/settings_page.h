// Pace and faults: what they are, and forms that set them.
#pragma once

#include <string>

#include "sandbox/pages/page.h"

namespace tavrix::sandbox {

/// HTML that says, above the lists, that this sandbox is slow or makes trouble; nothing when it
/// does neither.
std::string settings_notice(const Service& service);

/// Answers `/ustawienia`.
Answer settings_page(const PageRoom& room);

/// Carries out a form of the pages: 303 to the page that comes next, 400 with the reason, 403 for a
/// form that another site's page sends, 404 for an address that is no form's.
Answer submit_settings(PageRoom& room, const Request& request);

}  // namespace tavrix::sandbox
