#include "frame/cinfo.h"

#include <algorithm>

#include "base/error.h"
#include "dialogs/browser_session.h"
#include "dialogs/chart_data.h"
#include "frame/version_text.h"

namespace tavrix::frame {
namespace {

using base::Text;

constexpr base::TextView description =
    u"Składniki dla polskich programów handlowych: KSeF, kody kreskowe, poczta, podpis PDF.\n"
    u"© 2026 Autorzy Tavrix, licencja MIT.";

constexpr std::int32_t helpdesk_mode = 2;

Text helpdesk_recipients(const mail::Settings& settings, const Text& tax_number) {
    Text recipients = settings.helpdesk_address;
    const Text digits = base::remove_characters(tax_number, u"-");
    for (const mail::HelpdeskRoute& route : settings.helpdesk_routes) {
        if (route.tax_number == digits) return recipients.append(u"; ").append(route.address);
    }
    return recipients;
}

std::vector<Text> shown_databases(const std::vector<base::SecretText>& entries) {
    std::vector<Text> shown;
    for (const base::SecretText& entry : entries) {
        shown.push_back(dialogs::without_passwords(entry.view()));
    }
    return shown;
}

// What the hosts' own HTML is known by.
bool is_html(const Text& body) {
    constexpr base::TextView signs[] = {u"<span style", u"</td>", u"</span"};
    return std::ranges::any_of(signs, [&](base::TextView sign) {
        return base::find_case_blind(body, sign) != Text::npos;
    });
}

}  // namespace

Text CInfo::VersjaLib() const {
    return version_text() + u"." + base::product_title;
}

void CInfo::OProgramie() noexcept {
    try {
        ports_.about_window.show({base::product_title, version_text(), Text(description),
                                  [this] { show_system_information(ports_.system_information); }});
    } catch (...) {
        // Out of memory: there is no box to show.
    }
}

std::int32_t CInfo::sendmail(const Text& Par_Source, const Text& Par_nip, const Text& Par_Wersja,
                             const Text& txt1, const Text& txt2, const Text& txt3,
                             const Text& Pliki, const Text& MailDO2) noexcept {
    return guarded([&] {
        mail::MailRecord& record = ports_.hand_over.mail;
        record.source = Par_Source;
        record.tax_number = Par_nip;
        record.host_version = Par_Wersja;
        record.sender.clear();
        record.recipients = helpdesk_recipients(ports_.load_settings().mail, Par_nip) + MailDO2;
        record.subject = u"BOK-QUEN";
        record.body = {txt1, txt2, txt3};
        record.attachments = Pliki;
        record.mode = helpdesk_mode;
        return show_message_form(mail::Origin::told);
    });
}

std::int32_t CInfo::SendMail_dowolny(const Text& MailOD, const Text& MailDo, const Text& MailTemat,
                                     const Text& txt1, const Text& txt2, const Text& txt3,
                                     const Text& Plik, const Text& /*Par_nip*/,
                                     std::int32_t Auto) noexcept {
    return guarded([&] {
        // Source, tax number and version stay as the last message left them.
        mail::MailRecord& record = ports_.hand_over.mail;
        record.sender = MailOD;
        record.recipients = MailDo;
        record.subject = MailTemat;
        record.body = {txt1, txt2, txt3};
        record.attachments = Plik;
        record.mode = Auto;
        return show_message_form(mail::Origin::withheld);
    });
}

std::int32_t CInfo::show_message_form(mail::Origin origin) {
    // The form's own: a host that calls again while it is open hands over another message.
    mail::MailRecord record = ports_.hand_over.mail;
    record.result = 0;
    base::DateTime today = ports_.clock.now_local();
    today.hour = today.minute = today.second = 0;
    const auto send = [&, origin](mail::smtp::SendingListener& listener) -> Text {
        try {
            Text failure =
                mail::deliver_record(ports_.delivery, ports_.load_settings().mail.form_account,
                                     record, origin, listener);
            record.result = failure.empty() ? 1 : 0;
            return failure;
        } catch (const base::AutomationError& error) {
            return error.description();
        }
    };
    ports_.message_window.show({record, ports_.locale.general_date(today), send});
    ports_.hand_over.mail.result = record.result;
    return record.result;
}

template <typename Action>
std::int32_t CInfo::guarded(Action action, std::int32_t failure) noexcept {
    try {
        try {
            return action();
        } catch (const base::AutomationError& error) {
            // Settings that cannot be taken as they stand, for example: their file, line and key.
            ports_.system_information.shell.show_message(error.description(), 0);
        }
    } catch (...) {
        // The host sees no error.
    }
    return failure;
}

void CInfo::Wykres(bool Par_Czy_Pełny_Ekran, ports::HostObject& Par_I_wykresy_Flex,
                   std::int32_t Par_I_wykresy_Col, const Text& Par_I_wykresy_Str,
                   std::int32_t PAr_I_wykresy_X1, std::int32_t X2, std::int32_t X3,
                   const Text& PAr_I_wykresy_Title, const Text& PAr_I_wykresy_rodzaj,
                   const Text& PAr_I_wykresy_checks, std::int16_t PAr_I_wykresy_options) noexcept {
    guarded([&] {
        const dialogs::ChartRecord record = {.full_screen = Par_Czy_Pełny_Ekran,
                                             .column = Par_I_wykresy_Col,
                                             .text = Par_I_wykresy_Str,
                                             .x1 = PAr_I_wykresy_X1,
                                             .x2 = X2,
                                             .x3 = X3,
                                             .title = PAr_I_wykresy_Title,
                                             .kind = PAr_I_wykresy_rodzaj,
                                             .checks = PAr_I_wykresy_checks,
                                             .options = PAr_I_wykresy_options};
        const bool was_shown = ports_.chart_window.show([&] {
            return dialogs::Chart{dialogs::on_one_line(record.title),
                                  dialogs::chart_kind(record.kind),
                                  dialogs::chart_options(record.options), record.full_screen,
                                  dialogs::read_chart_data(Par_I_wykresy_Flex, record)};
        });
        if (was_shown) ports_.hand_over.chart = record;
        return 0;
    });
}

std::int32_t CInfo::Informator(const Text& Nagłówek, const Text& Treść, const Text& Prz0,
                               const Text& Prz1, const Text& Prz2, const Text& Prz3,
                               const Text& Prz4, const Text& Prz5, const Text& Prz6,
                               const Text& Prz7, const Text& Prz8, const Text& Prz9,
                               const Text& Prz10, const Text& Prz11, const Text& Prz12) noexcept {
    const auto show = [&] {
        // The call's own until the window is closed: a host may call again while it is open.
        dialogs::InformatorRecord record{.header = Nagłówek,
                                         .text = Treść,
                                         .buttons = {Prz0, Prz1, Prz2, Prz3, Prz4, Prz5, Prz6, Prz7,
                                                     Prz8, Prz9, Prz10, Prz11, Prz12}};
        if (const auto choice = ports_.informator_window.show(informator_form(record))) {
            record.result = choice->button;
        }
        return (ports_.hand_over.informator = std::move(record)).result;
    };
    return guarded(show, dialogs::no_button);
}

std::int32_t CInfo::Informator_Zamówień(
    Text& REF_Informator_Value_Zamówień, std::int32_t& REF_Informator_Value_Zamówień_WYJ,
    std::int32_t Ile_wyj, const Text& Nagłówek, const Text& Treść, const Text& Prz1,
    const Text& Prz2, const Text& Prz3, const Text& Prz4, const Text& Prz5, const Text& Prz6,
    const Text& Prz7, const Text& Prz8, const Text& Prz9, const Text& Przyc0, const Text& Przyc1,
    const Text& Przyc2, const Text& Przyc3, const Text& Przyc4) noexcept {
    const auto show = [&] {
        dialogs::OrderInformatorRecord record{
            .header = Nagłówek,
            .text = Treść,
            .buttons = {Prz1, Prz2, Prz3, Prz4, Prz5, Prz6, Prz7, Prz8, Prz9},
            .outcome_buttons = {Przyc0, Przyc1, Przyc2, Przyc3, Przyc4},
            .outcome_count = Ile_wyj,
            .value = REF_Informator_Value_Zamówień,
            .outcome = REF_Informator_Value_Zamówień_WYJ};
        if (const auto choice = ports_.informator_window.show(informator_form(record))) {
            record.value = choice->value.value_or(record.value);
            record.outcome = choice->outcome.value_or(record.outcome);
            record.result = choice->button;
        }
        // What can fail comes first: all three go to the host, or none.
        base::Text value = record.value;
        ports_.hand_over.order_informator = std::move(record);
        REF_Informator_Value_Zamówień = std::move(value);
        REF_Informator_Value_Zamówień_WYJ = ports_.hand_over.order_informator.outcome;
        return ports_.hand_over.order_informator.result;
    };
    return guarded(show, dialogs::no_button);
}

bool CInfo::Browse(std::int32_t Ile_baz, const std::vector<base::SecretText>& Bazy,
                   base::SecretText& ConnectionStr1, base::SecretText& ConnectionStr2,
                   Text& Server) noexcept {
    return guarded([&]() -> std::int32_t {
               base::SecretText connection = ConnectionStr1.copy();
               connection += ConnectionStr2.view();
               dialogs::BrowserSession session(
                   dialogs::list_databases(Ile_baz, Bazy, connection.view(), Server),
                   ports_.make_query_connection, ports_.clock);
               const auto chosen = ports_.browser_window.show(session);
               dialogs::SplitConnection split;
               Text chosen_server = Server;
               if (chosen) {
                   const dialogs::ListedDatabase& database = session.databases().at(*chosen);
                   connection = database.connection.copy();
                   split = dialogs::split_connection(connection.view());
                   chosen_server = database.server;
               }
               dialogs::BrowserRecord record = {Ile_baz, shown_databases(Bazy),
                                                dialogs::without_passwords(connection.view()),
                                                chosen_server, chosen.has_value()};
               // From here on nothing throws: a call that fails changes no argument.
               ports_.hand_over.browser = std::move(record);
               if (!chosen) return false;
               Server = std::move(chosen_server);
               ConnectionStr1 = std::move(split.first);
               ConnectionStr2 = std::move(split.second);
               return true;
           }) != 0;
}

Text CInfo::SendMailCDO(const Text& sTo, const Text& sSubject, const Text& sFrom, const Text& sBody,
                        const Text& sSmtpServer, std::int16_t iSmtpPort, const Text& sSmtpUser,
                        const base::SecretText& sSmtpPword, const Text& sFilePath,
                        bool bSmtpSSL) const noexcept {
    try {
        ports_.mailer.send({.to = sTo,
                            .subject = sSubject,
                            .from = sFrom,
                            .body = sBody,
                            .body_is_html = is_html(sBody),
                            .file = base::trim(sFilePath).empty() ? Text() : sFilePath,
                            .server = sSmtpServer,
                            .port = iSmtpPort,
                            .user = sSmtpUser,
                            .password = sSmtpPword.copy(),
                            .ssl = bSmtpSSL});
        return {};
    } catch (const base::AutomationError& error) {
        if (!error.description().empty()) return error.description();
    } catch (...) {
        // Out of memory: no description is known.
    }
    return u"nieznany błąd";
}

}  // namespace tavrix::frame
