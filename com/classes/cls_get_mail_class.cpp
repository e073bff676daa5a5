#include "com/classes/classes.h"

#include "com/classes/compositions.h"
#include "com/dispatch_object.h"
#include "com/guid.h"
#include "com/signature.h"
#include "mail/cls_get_mail.h"

namespace tavrix::com {

/// Results only: the message as an object of its class, or Nothing.
template <>
struct Codec<std::shared_ptr<mail::CMessage>> {
    static constexpr VARTYPE type = VT_DISPATCH;
    static constexpr base::TextView class_name = u"CMessage";
    static windows::Variant write(std::shared_ptr<mail::CMessage> message) {
        if (!message) return windows::ComPointer<IDispatch>();
        return make_object(cmessage_class.table, std::move(message));
    }
};

namespace {

using mail::ClsGetMail;

// DISPIDs are published: append only.
constexpr auto cls_get_mail_members = members(
    method<&ClsGetMail::cmdGetMail>(
        1, u"cmdGetMail", u"Pobiera całą pocztę POP3, zapisuje załączniki w katalogu.",
        by_reference(u"host"), by_reference(u"port"), by_reference(u"user"), by_reference(u"Pass"),
        by_reference(u"Delete"), by_reference(u"opis"), by_reference(u"temat"),
        by_reference(u"Katalog")),
    method<&ClsGetMail::cmdGetMailM>(
        2, u"cmdGetMailM", u"Pobiera pierwszą wiadomość POP3; Nothing, gdy jej nie ma.",
        by_reference(u"host"), by_reference(u"port"), by_reference(u"user"), by_reference(u"Pass"),
        by_reference(u"Delete"), by_reference(u"Katalog"), by_reference(u"czyssl")));

constexpr ClassTable cls_get_mail_table = {
    .class_id = guid("1584D392-6775-4897-B6E5-1837BC7AAC79"),
    .interface_id = guid("63AFE13F-71B4-48B7-A755-BD4AE4B3A0C1"),
    .name = u"ClsGetMail",
    .help = u"Tavrix: pobieranie poczty",
    .members = cls_get_mail_members,
};

}  // namespace

constexpr CreatableClass cls_get_mail_class = {
    cls_get_mail_table, [] { return make_object(cls_get_mail_table, compose_cls_get_mail()); }};

}  // namespace tavrix::com
