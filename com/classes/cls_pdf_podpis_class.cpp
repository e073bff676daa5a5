#include "com/classes/classes.h"

#include "com/classes/compositions.h"
#include "com/dispatch_object.h"
#include "com/guid.h"
#include "com/signature.h"
#include "pdfsign/cls_pdf_podpis.h"

namespace tavrix::com {
namespace {

using pdfsign::ClsPdfPodpis;

// DISPIDs are published: append only.
constexpr auto cls_pdf_podpis_members = members(method<&ClsPdfPodpis::pdfpodpis>(
    1, u"pdfpodpis", u"Podpisuje plik PDF certyfikatem z pliku PFX.", by_reference(u"Plik"),
    by_reference(u"plikpodpisany"), by_reference(u"cenrtPFX"), by_reference(u"pin")));

constexpr ClassTable cls_pdf_podpis_table = {
    .class_id = guid("10AD282D-EFC0-4CEA-B55E-A530377C0BE9"),
    .interface_id = guid("574AA55E-4773-437B-89B8-B34593C5E277"),
    .name = u"ClsPdfPodpis",
    .help = u"Tavrix: podpisywanie plików PDF",
    .members = cls_pdf_podpis_members,
};

}  // namespace

constexpr CreatableClass cls_pdf_podpis_class = {
    cls_pdf_podpis_table,
    [] { return make_object(cls_pdf_podpis_table, compose_cls_pdf_podpis()); }};

}  // namespace tavrix::com
