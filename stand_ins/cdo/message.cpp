#include "stand_ins/cdo/message.h"

#include <cstdlib>
#include <fstream>

#include "base/error.h"
#include "com/dispatch_object.h"
#include "com/guid.h"
#include "com/signature.h"
#include "mail/smtp_mailer.h"
#include "ports/portable/curl_stream.h"
#include "ports/portable/openssl_crypto.h"
#include "ports/portable/time_zone.h"
#include "ports/windows/adapters.h"

namespace tavrix::cdo {
namespace {

using com::by_value;
using com::method;
using com::property;
using com::read_only;

constexpr auto message_members = com::members(
    property<&Message::to, &Message::set_to>(1, u"To", u"Adresaci."),
    property<&Message::from, &Message::set_from>(2, u"From", u"Nadawca."),
    property<&Message::subject, &Message::set_subject>(3, u"Subject", u"Temat."),
    property<&Message::text_body, &Message::set_text_body>(4, u"TextBody", u"Treść."),
    property<&Message::html_body, &Message::set_html_body>(5, u"HTMLBody", u"Treść w HTML."),
    read_only<&Message::body_part>(6, u"BodyPart", u"Całość."),
    read_only<&Message::html_body_part>(7, u"HTMLBodyPart", u"Część w HTML."),
    read_only<&Message::text_body_part>(8, u"TextBodyPart", u"Część tekstowa."),
    read_only<&Message::configuration>(9, u"Configuration", u"Konfiguracja."),
    method<&Message::AddAttachment>(10, u"AddAttachment", u"Dołącza plik.", by_value(u"URL")),
    method<&Message::Send>(11, u"Send", u"Wysyła."));

constexpr auto body_part_members = com::members(
    property<&BodyPart::charset, &BodyPart::set_charset>(1, u"Charset", u"Zestaw znaków."));

constexpr com::ClassTable body_part_class = {
    .class_id = GUID{},
    .interface_id = com::guid("2D9B6C80-17E5-4A3F-B0C4-6A8E7F5D1C04"),
    .name = u"BodyPart",
    .help = u"Część wiadomości",
    .members = body_part_members,
};

[[noreturn]] void raise_cdo(std::uint32_t number, base::TextView description) {
    throw base::AutomationError(static_cast<base::ErrorNumber>(number), u"CDO.Message.1",
                                base::Text(description));
}

}  // namespace

void Message::set_to(const base::Text& to) {
    note(record_, u"To", to);
    to_ = to;
}

void Message::set_from(const base::Text& from) {
    note(record_, u"From", from);
    from_ = from;
}

void Message::set_subject(const base::Text& subject) {
    note(record_, u"Subject", subject);
    subject_ = subject;
}

void Message::set_text_body(const base::Text& body) {
    note(record_, u"TextBody", body);
    body_ = body;
    is_html_ = false;
}

void Message::set_html_body(const base::Text& body) {
    note(record_, u"HTMLBody", body);
    body_ = body;
    is_html_ = true;
}

windows::ComPointer<IDispatch> Message::part(base::TextView name) const {
    return com::make_object(body_part_class, std::make_shared<BodyPart>(record_, base::Text(name)));
}

windows::ComPointer<IDispatch> Message::configuration() const {
    return com::make_object(configuration_class, std::make_shared<Configuration>(fields_));
}

windows::ComPointer<IDispatch> Message::AddAttachment(const base::Text& url) {
    note(record_, u"AddAttachment", url);
    if (!ports::make_windows_files()->is_file(url)) {
        raise_cdo(0x80070002, u"The system cannot find the file specified.\r\n");
    }
    file_ = url;
    return part(u"Attachment");
}

base::Text Message::setting(base::TextView name) const {
    return fields_->text(u"http://schemas.microsoft.com/cdo/configuration/" + base::Text(name));
}

void Message::Send() {
    note(record_, u"Send", u"");
    if (const char* file = std::getenv("TAVRIX_CDO_RECORD")) {
        std::ofstream(file, std::ios::binary | std::ios::app) << base::to_utf8(*record_);
    }
    if (setting(u"sendusing") != u"2") {
        raise_cdo(0x80040220, u"The \"SendUsing\" configuration value is invalid.\r\n");
    }
    const auto files = ports::make_windows_files();
    const auto crypto = ports::make_openssl_crypto();
    const auto clock = ports::make_windows_clock();
    mail::SmtpMailer mailer({{*files, *crypto, *clock, &ports::utc_offset_at},
                             &ports::make_curl_mail_stream,
                             [] { return ports::ConnectionSettings(); }});
    mailer.send({.to = to_,
                 .subject = subject_,
                 .from = from_,
                 .body = body_,
                 .body_is_html = is_html_,
                 .file = file_,
                 .server = setting(u"smtpserver"),
                 .port = static_cast<std::int16_t>(
                     std::atoi(base::to_utf8(setting(u"smtpserverport")).c_str())),
                 .user = setting(u"sendusername"),
                 .password = base::SecretText(setting(u"sendpassword")),
                 .ssl = setting(u"smtpusessl") == u"True"});
}

constexpr com::ClassTable message_class = {
    .class_id = com::guid("A7E0D3B5-64C1-4F2A-9D8B-1B3C5E7F9A05"),
    .interface_id = com::guid("E6F8B1C9-3D52-4A07-8C6E-7D9F0A2B4C06"),
    .name = u"Message",
    .help = u"Wiadomość",
    .members = message_members,
};

windows::ComPointer<IDispatch> create_message() {
    return com::make_object(message_class, std::make_shared<Message>());
}

}  // namespace tavrix::cdo
