// The methods of KseF_comm whose work is still to be done. Each goes into the file of its idea when
// it is built; until then it answers with its own failure.

#include "base/error.h"
#include "ksef/ksef_comm.h"

namespace tavrix::ksef {
namespace {

using base::Text;

constexpr base::TextView not_available = u"metoda nie jest jeszcze dostępna w tej wersji";

}  // namespace

Text KseF_comm::LoadXMLFromFile(const Text& /*FilePath*/) {
    throw base::AutomationError(base::ErrorNumber::component_failed, u"KseF_comm.LoadXMLFromFile",
                                Text(not_available));
}

Text KseF_comm::SprawdzXMLzXSD(const Text& /*strXML*/, const Text& /*strXSD*/) {
    return u"Błąd walidacji: " + Text(not_available);
}

Text KseF_comm::XMLdoHTML(const Text& /*strXML*/, const Text& /*strXSL*/, const Text& /*Plik*/) {
    return u"Błąd transformacji: " + Text(not_available);
}

}  // namespace tavrix::ksef
