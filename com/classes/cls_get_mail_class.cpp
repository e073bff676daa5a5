#include "com/classes/cls_get_mail_class.h"

#include "com/classes/mail_parameters.h"
#include "com/guid.h"
#include "com/signature.h"
#include "mail/cls_get_mail.h"

namespace tavrix::com {
namespace {

using mail::ClsGetMail;

// DISPIDs are published: append only.
constexpr auto cls_get_mail_members = members(
    pending(method<&ClsGetMail::cmdGetMail>(
        1, u"cmdGetMail", u"Pobiera całą pocztę POP3, zapisuje załączniki w katalogu.",
        by_reference(u"host"), by_reference(u"port"), by_reference(u"user"), by_reference(u"Pass"),
        by_reference(u"Delete"), by_reference(u"opis"), by_reference(u"temat"),
        by_reference(u"Katalog"))),
    pending(method<&ClsGetMail::cmdGetMailM>(
        2, u"cmdGetMailM", u"Pobiera pierwszą wiadomość POP3; Nothing, gdy jej nie ma.",
        by_reference(u"host"), by_reference(u"port"), by_reference(u"user"), by_reference(u"Pass"),
        by_reference(u"Delete"), by_reference(u"Katalog"), by_reference(u"czyssl"))));

}  // namespace

constexpr ClassTable cls_get_mail_class = {
    .class_id = guid("1584D392-6775-4897-B6E5-1837BC7AAC79"),
    .interface_id = guid("63AFE13F-71B4-48B7-A755-BD4AE4B3A0C1"),
    .name = u"ClsGetMail",
    .help = u"Tavrix: pobieranie poczty",
    .members = cls_get_mail_members,
};

windows::ComPointer<IDispatch> create_cls_get_mail() {
    return make_object(cls_get_mail_class, std::make_shared<ClsGetMail>());
}

}  // namespace tavrix::com
