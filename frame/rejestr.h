#pragma once

#include <cstdint>

#include "ports/code_page.h"
#include "ports/registry.h"

namespace tavrix::frame {

/// The public class `Rejestr`: single values of the system's registry, as text.
class Rejestr {
  public:
    Rejestr(ports::Registry& registry, const ports::CodePage& code_page)
        : registry_(registry), code_page_(code_page) {}

    /// The value `Value` of the key `SubKey` under the root that `MainKey_def` names: 0
    /// HKEY_CLASSES_ROOT, 1 HKEY_CURRENT_USER, 2 HKEY_LOCAL_MACHINE, 3 HKEY_USERS. A REG_DWORD is
    /// its signed decimal digits; of every other type the stored bytes count as characters and the
    /// last one, the zero at a text's end, is left out. Names and texts are ANSI.
    ///
    /// Gives the empty text for any failure: another root (without touching the registry), no such
    /// key or value, no right to read it, more than 255 bytes. Never raises.
    base::Text RegGetValue(std::uint8_t MainKey_def, const base::Text& SubKey,
                           const base::Text& Value) const noexcept;

  private:
    base::Text read(std::uint8_t root, const base::Text& sub_key, const base::Text& name) const;

    ports::Registry& registry_;
    const ports::CodePage& code_page_;
};

}  // namespace tavrix::frame
