#include "ports/instant_mail.h"
#include "ports/windows/adapters.h"
#include "windows/late_bound.h"

namespace tavrix::ports {
namespace {

using windows::LateBound;
using windows::Variant;

constexpr const char16_t* cdo_message = u"CDO.Message";

class CdoMailer final : public InstantMailer {
  public:
    void send(const InstantMail& mail) override {
        const LateBound message = LateBound::create(cdo_message);
        // Before any text, or letters beyond ASCII arrive as "?".
        use_utf8(message, u"BodyPart");
        message.put(u"To", mail.to);
        message.put(u"From", mail.from);
        message.put(u"Subject", mail.subject);
        set_body(message, mail);
        if (!mail.file.empty()) message.call(u"AddAttachment", mail.file);
        configure(message.object(u"Configuration").object(u"Fields"), mail);
        message.call(u"Send");
    }

  private:
    static void use_utf8(const LateBound& message, const char16_t* part) {
        message.object(part).put(u"Charset", u"utf-8");
    }

    static void set_body(const LateBound& message, const InstantMail& mail) {
        if (!mail.body_is_html) {
            message.put(u"TextBody", mail.body);
            return;
        }
        message.put(u"HTMLBody", mail.body);
        // With the plain text that is made of it, the message has parts of its own for both.
        use_utf8(message, u"HTMLBodyPart");
        use_utf8(message, u"TextBodyPart");
    }

    // The order and the types are those that hosts have always had.
    static void configure(const LateBound& fields, const InstantMail& mail) {
        constexpr std::int32_t basic_authentication = 1;
        constexpr std::int16_t connect_timeout_s = 30;
        constexpr std::int32_t send_over_the_network = 2;
        const auto set = [&](base::TextView name, Variant value) {
            const base::Text schema = u"http://schemas.microsoft.com/cdo/configuration/";
            fields.object(u"Item", schema + base::Text(name)).put(u"Value", std::move(value));
        };
        set(u"smtpserver", mail.server);
        set(u"smtpserverport", mail.port);
        set(u"smtpusessl", mail.ssl);
        set(u"smtpauthenticate", basic_authentication);
        set(u"sendusername", mail.user);
        set(u"sendpassword", mail.password.view());
        set(u"smtpconnectiontimeout", connect_timeout_s);
        set(u"sendusing", send_over_the_network);
        fields.call(u"Update");
    }
};

}  // namespace

std::unique_ptr<InstantMailer> make_cdo_mailer() {
    CLSID class_id;
    const bool is_registered = SUCCEEDED(CLSIDFromProgID(windows::wide(cdo_message), &class_id));
    return is_registered ? std::make_unique<CdoMailer>() : nullptr;
}

}  // namespace tavrix::ports
