#include "com/classes/classes.h"

#include "com/classes/compositions.h"
#include "com/dispatch_object.h"
#include "com/guid.h"
#include "com/signature.h"

namespace tavrix::com {

/// Arguments only: whatever the system can turn into text in the caller's locale.
template <>
struct Codec<mail::NullableText> {
    static constexpr VARTYPE type = VT_VARIANT;
    static mail::NullableText read(const VARIANT& source, LCID locale) {
        if (source.vt == VT_EMPTY || source.vt == VT_NULL) return {};
        try {
            return {Codec<base::Text>::read(source, locale)};
        } catch (const ArgumentError&) {
            return {};
        }
    }
};

namespace {

using mail::ClsSendMail;

// DISPIDs are published: append only.
constexpr auto cls_send_mail_members = members(
    method<&ClsSendMail::NullStr>(1, u"NullStr", u"Tekst wartości; pusty dla Null i Empty.",
                                  by_value(u"ds")),
    method<&ClsSendMail::sendmail>(
        2, u"sendmail", u"Wysyła wiadomość przez SMTP; pusty tekst, gdy poszła.",
        by_value(u"dokogo"), by_value(u"temat"), by_value(u"odkogo"), by_value(u"Body"),
        by_value(u"smtphost"), by_value(u"smtpport"), by_value(u"smtpuser"), by_value(u"smtppass"),
        by_value(u"Plik"), by_value(u"ssl"), by_value(u"maildw"), by_value(u"htmlBody"),
        by_value(u"mailudw"), by_value(u"DeliveryNotificationOptions"), by_value(u"Priority"),
        by_value(u"ReplyTo"), by_value(u"sender")));

constexpr ClassTable cls_send_mail_table = {
    .class_id = guid("FC59A353-9821-45CC-A467-2EACCF089608"),
    .interface_id = guid("05785896-2426-4995-B104-66DD567A4CDE"),
    .name = u"ClsSendMail",
    .help = u"Tavrix: wysyłanie poczty",
    .members = cls_send_mail_members,
};

}  // namespace

constexpr CreatableClass cls_send_mail_class = {
    cls_send_mail_table, [] { return make_object(cls_send_mail_table, compose_cls_send_mail()); }};

}  // namespace tavrix::com
