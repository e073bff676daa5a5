#include "com/classes/classes.h"
#include "com/classes/compositions.h"

#include "com/dispatch_object.h"
#include "com/guid.h"
#include "com/signature.h"
#include "mail/cmessage.h"

namespace tavrix::com {
namespace {

using mail::CMessage;
using Name = mail::MessageProperty;

template <Name property_name>
consteval auto text_property(DISPID id, base::TextView name, base::TextView help) {
    return property<&CMessage::text<property_name>, &CMessage::set_text<property_name>>(id, name,
                                                                                        help);
}

// DISPIDs are published: append only.
constexpr auto cmessage_members = members(
    method<&CMessage::DodajMail>(
        1, u"DodajMail", u"Odczytuje wiadomość i zapisuje załączniki; zwraca liczbę części.",
        by_reference(u"strMessage"), by_reference(u"GM_Katalog"),
        by_reference(u"GM_DoplikuTylkoZałączniki")),
    text_property<Name::Headers>(2, u"Headers", u"Cały nagłówek wiadomości."),
    text_property<Name::MessageBody>(3, u"MessageBody", u"Wszystko za nagłówkiem."),
    text_property<Name::MessageText>(4, u"MessageText", u"Odkodowana treść."),
    text_property<Name::Encrypted>(5, u"Encrypted", u"Nagłówek Encrypted."),
    text_property<Name::Comments>(6, u"Comments", u"Nagłówek Comments."),
    text_property<Name::Keywords>(7, u"Keywords", u"Nagłówek Keywords."),
    text_property<Name::References>(8, u"References", u"Nagłówek References."),
    text_property<Name::InReplyTo>(9, u"InReplyTo", u"Nagłówek In-Reply-To."),
    text_property<Name::BCC>(10, u"BCC", u"Nagłówek Bcc."),
    text_property<Name::CC>(11, u"CC", u"Nagłówek Cc."),
    text_property<Name::sender>(12, u"sender", u"Nagłówek Sender."),
    text_property<Name::ReplyTo>(13, u"ReplyTo", u"Nagłówek Reply-To."),
    text_property<Name::Subject>(14, u"Subject", u"Temat."),
    text_property<Name::From>(15, u"From", u"Nadawca."),
    text_property<Name::MessageTo>(16, u"MessageTo", u"Adresaci."),
    text_property<Name::MessageID>(17, u"MessageID", u"Identyfikator wiadomości."),
    text_property<Name::SendDate>(18, u"SendDate", u"Data wysłania."),
    text_property<Name::Received>(19, u"Received", u"Nagłówek Received."),
    text_property<Name::ReturnPath>(20, u"ReturnPath", u"Nagłówek Return-Path."),
    read_only<&CMessage::Files>(21, u"Files",
                                u"Ścieżki zapisanych załączników, przed każdą średnik."),
    read_only<&CMessage::Size>(22, u"Size", u"Liczba znaków w MessageText."));

constexpr ClassTable cmessage_table = {
    .class_id = guid("8B668BEB-CDC9-4F4E-B517-7DF1671B2465"),
    .interface_id = guid("17FA61E3-4213-4E46-89CA-448C0EFA056D"),
    .name = u"CMessage",
    .help = u"Tavrix: wiadomość poczty",
    .members = cmessage_members,
};

}  // namespace

constexpr CreatableClass cmessage_class = {
    cmessage_table, [] { return make_object(cmessage_table, compose_cmessage()); }};

}  // namespace tavrix::com
