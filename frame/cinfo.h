#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "base/secret.h"
#include "dialogs/chart_window.h"
#include "frame/about_box.h"
#include "frame/library_state.h"
#include "frame/settings.h"
#include "frame/system_information.h"
#include "mail/form_delivery.h"
#include "ports/clock.h"
#include "ports/host_object.h"
#include "ports/instant_mail.h"
#include "ports/locale.h"
#include "ports/query_connection.h"

namespace tavrix::frame {

/// What the facade reaches outside. The references outlive it.
struct FramePorts {
    AboutWindow& about_window;
    mail::MessageWindow& message_window;
    dialogs::ChartWindow& chart_window;
    dialogs::InformatorWindow& informator_window;
    ports::Clock& clock;
    ports::Locale& locale;
    SystemInformationPorts system_information;
    HandOver& hand_over;
    /// What SendMailCDO sends with.
    ports::InstantMailer& mailer;
    /// What the message form does.
    mail::DeliveryPorts delivery;
    /// Reads the settings file; throws when it cannot be taken as it stands.
    std::function<Settings()> load_settings;
    dialogs::BrowserWindow& browser_window;
    ports::MakeQueryConnection make_query_connection;
};

/// The public class `CInfo`: the library's version and its dialogs. No method raises: numbers are 0
/// (of the informators -1) and flags False for whatever went wrong, and what the user must know is
/// shown in a message.
class CInfo {
  public:
    explicit CInfo(FramePorts ports) : ports_(std::move(ports)) {}

    /// "10.0.36.Tavrix": major, minor, revision, the library's title. Always succeeds.
    base::Text VersjaLib() const;

    /// Shows the About box and returns when it closes.
    void OProgramie() noexcept;

    /// Sends a message to the helpdesk through the message form: to the helpdesk's address, to the
    /// second one that the settings give for the tax number `Par_nip` (compared without "-"), and
    /// to `MailDO2`, which brings its own "; ". `Pliki` are paths separated by ";". The account
    /// that it goes out from is that of the settings. Returns 1 when the message was sent, else 0.
    std::int32_t sendmail(const base::Text& Par_Source, const base::Text& Par_nip,
                          const base::Text& Par_Wersja, const base::Text& txt1,
                          const base::Text& txt2, const base::Text& txt3, const base::Text& Pliki,
                          const base::Text& MailDO2) noexcept;

    /// The same with free addressing; `Auto` is the form's mode. `Par_nip` is not used.
    std::int32_t SendMail_dowolny(const base::Text& MailOD, const base::Text& MailDo,
                                  const base::Text& MailTemat, const base::Text& txt1,
                                  const base::Text& txt2, const base::Text& txt3,
                                  const base::Text& Plik, const base::Text& Par_nip,
                                  std::int32_t Auto) noexcept;

    /// Shows the numbers of the host's grid as a chart until its user closes the window. The grid
    /// is read late-bound, before the window opens: `Rows`, `Cols`, `TextMatrix(row, column)`.
    /// `Par_I_wykresy_Col` is the column of values, and `PAr_I_wykresy_checks` says with "1" or "0"
    /// for each column from the first on which others are drawn beside it, up to twelve in all.
    /// `PAr_I_wykresy_X1` and `X2` are the first and the last row (both 0: all below the headings;
    /// 5000 of them at most), `X3` is the column with the labels. `Par_I_wykresy_Str` is what the
    /// labels are; where there is no column `X3`, each row is that and its number.
    /// `PAr_I_wykresy_rodzaj` is "słupkowy", "liniowy" or "kołowy", in any letters, and a pie shows
    /// the first column alone; for anything else bars are drawn. `PAr_I_wykresy_options` adds up 1
    /// for a legend, 2 for the values, 4 for lines across. While a chart is open another call only
    /// brings it to the front. A grid that cannot be read is told of in the window.
    void Wykres(bool Par_Czy_Pełny_Ekran, ports::HostObject& Par_I_wykresy_Flex,
                std::int32_t Par_I_wykresy_Col, const base::Text& Par_I_wykresy_Str,
                std::int32_t PAr_I_wykresy_X1, std::int32_t X2, std::int32_t X3,
                const base::Text& PAr_I_wykresy_Title, const base::Text& PAr_I_wykresy_rodzaj,
                const base::Text& PAr_I_wykresy_checks,
                std::int16_t PAr_I_wykresy_options) noexcept;

    /// A message with up to thirteen buttons, one for each caption that is not blank; "&" before a
    /// letter makes it the button's key. Returns the chosen one's number, 0 for `Prz0` to 12 for
    /// `Prz12`; -1 for all else: closed by the cross or Esc, open already (it comes to the front),
    /// no desktop that anybody sees, the host has ended, out of memory.
    std::int32_t Informator(const base::Text& Nagłówek, const base::Text& Treść,
                            const base::Text& Prz0, const base::Text& Prz1, const base::Text& Prz2,
                            const base::Text& Prz3, const base::Text& Prz4, const base::Text& Prz5,
                            const base::Text& Prz6, const base::Text& Prz7, const base::Text& Prz8,
                            const base::Text& Prz9, const base::Text& Prz10,
                            const base::Text& Prz11, const base::Text& Prz12) noexcept;

    /// The same for orders: returns 1 for `Prz1` to 9 for `Prz9`. The user may change the value and
    /// choose one of the first `Ile_wyj` outcomes (0 to 5): 0 for `Przyc0` to 4 for `Przyc4`, and
    /// the number that comes in is chosen at first. Both come back with a button; without one, and
    /// where no outcome was chosen, they stay as they came.
    std::int32_t Informator_Zamówień(
        base::Text& REF_Informator_Value_Zamówień, std::int32_t& REF_Informator_Value_Zamówień_WYJ,
        std::int32_t Ile_wyj, const base::Text& Nagłówek, const base::Text& Treść,
        const base::Text& Prz1, const base::Text& Prz2, const base::Text& Prz3,
        const base::Text& Prz4, const base::Text& Prz5, const base::Text& Prz6,
        const base::Text& Prz7, const base::Text& Prz8, const base::Text& Prz9,
        const base::Text& Przyc0, const base::Text& Przyc1, const base::Text& Przyc2,
        const base::Text& Przyc3, const base::Text& Przyc4) noexcept;

    /// The query browser: lets the user look into one of the databases and choose it. The first
    /// `Ile_baz` of `Bazy` are connection texts, or names of databases on the connection that
    /// `ConnectionStr1` and `ConnectionStr2` make when they are joined. True when one was chosen:
    /// then its connection text is in the first two, the second one empty when 255 characters are
    /// enough, and its server in `Server`. Otherwise they stay as they came.
    bool Browse(std::int32_t Ile_baz, const std::vector<base::SecretText>& Bazy,
                base::SecretText& ConnectionStr1, base::SecretText& ConnectionStr2,
                base::Text& Server) noexcept;

    /// Sends one message without a window. Gives "" when it went, otherwise the reason, and
    /// "nieznany błąd" for one without words. A body with "<span style", "</td>" or "</span" in it
    /// is HTML. `sFilePath` is one file; blank for none.
    base::Text SendMailCDO(const base::Text& sTo, const base::Text& sSubject,
                           const base::Text& sFrom, const base::Text& sBody,
                           const base::Text& sSmtpServer, std::int16_t iSmtpPort,
                           const base::Text& sSmtpUser, const base::SecretText& sSmtpPword,
                           const base::Text& sFilePath, bool bSmtpSSL) const noexcept;

  private:
    std::int32_t show_message_form(mail::Origin origin);
    /// What `action` gives; `failure` when it throws, after the user was told why.
    template <typename Action>
    std::int32_t guarded(Action action, std::int32_t failure = 0) noexcept;

    FramePorts ports_;
};

}  // namespace tavrix::frame
