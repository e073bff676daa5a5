#pragma once

#include "base/text.h"

namespace tavrix::mail {

/// What the parser knows of quoted-printable: the blank and the eighteen Polish letters, in
/// ISO-8859-2 and in UTF-8. Everything else stays as it is. Hosts have seen these very texts for
/// years, so the codes that come out wrong do so on purpose: =B6 and =A6 give the letter of the
/// other case, and =C6=A0, =C6=A1 and =C5=BC have their last or first code read alone.
base::Text with_polish_letters(base::TextView text);

}  // namespace tavrix::mail
