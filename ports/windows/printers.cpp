#include <cstddef>

#include "ports/windows/adapters.h"
#include "windows/bstr.h"
// Needs what they include.
#include <winspool.h>

namespace tavrix::ports {
namespace {

class WindowsPrinters final : public Printers {
  public:
    PrinterList list() override {
        PrinterList found;
        found.service_answers = add_names(found.names);
        found.default_name = default_printer();
        return found;
    }

  private:
    // The fourth level comes out of the registry; any other one opens each printer, and one on a
    // server that is off lets the caller wait for a minute.
    static bool add_names(std::vector<base::Text>& names) {
        constexpr DWORD level = 4;
        constexpr int attempts = 5;
        std::vector<std::byte> bytes;
        for (int i = 0; i < attempts; ++i) {
            DWORD needed = 0;
            DWORD count = 0;
            if (EnumPrintersW(PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS, nullptr, level,
                              reinterpret_cast<BYTE*>(bytes.data()),
                              static_cast<DWORD>(bytes.size()), &needed, &count)) {
                const auto* printers = reinterpret_cast<const PRINTER_INFO_4W*>(bytes.data());
                for (DWORD at = 0; at < count; ++at) {
                    names.push_back(windows::text_from_wide(printers[at].pPrinterName));
                }
                return true;
            }
            // Somebody may add a printer between the two calls.
            if (GetLastError() != ERROR_INSUFFICIENT_BUFFER) return false;
            bytes.resize(needed);
        }
        return false;
    }

    static base::Text default_printer() {
        DWORD size = 0;
        GetDefaultPrinterW(nullptr, &size);
        base::Text name(size, u'\0');
        if (size == 0 || !GetDefaultPrinterW(reinterpret_cast<wchar_t*>(name.data()), &size)) {
            return {};
        }
        return name.c_str();
    }
};

}  // namespace

std::unique_ptr<Printers> make_windows_printers() {
    return std::make_unique<WindowsPrinters>();
}

}  // namespace tavrix::ports
