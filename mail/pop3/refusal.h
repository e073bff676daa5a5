#pragma once

#include "base/text.h"

namespace tavrix::mail {

/// What a user can do about it, in front of the server's own words, when a server refused
/// `reply`, its line without CR LF. Knows the response codes of POP3 (RFC 2449, RFC 3206) and how
/// large services say that they want no passwords. Only the words where nothing is known.
base::Text explained_refusal(base::TextView reply);

/// The words of a connection that failed, with what can be done about a certificate.
base::Text explained_failure(base::TextView words);

}  // namespace tavrix::mail
