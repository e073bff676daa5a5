#pragma once

#include "dialogs/browser_session.h"

namespace tavrix::dialogs_program {

/// A server that answers at once with a shop's documents.
struct SampleQuery final : ports::QueryConnection {
    void open(const base::SecretText&) override {}
    bool done() override { return true; }
    void set_up() override {}
    void begin_transaction() override {}
    void execute(base::TextView, std::size_t) override {}
    std::vector<base::Text> columns() override {
        return {u"ddout_id", u"numer", u"ddout_data_wyst", u"kontrahent",
                u"kwota",    u"uwagi", u"zaplacona",       u""};
    }
    std::vector<std::vector<ports::Value>> rows(std::size_t count) override {
        constexpr std::size_t all = 450;
        const ports::Value names[] = {u"Zakład Usługowy „Żółw” Sp. z o.o.", u"Małgorzata Śliwińska",
                                      u"Hurtownia Gęś & Synowie"};
        std::vector<std::vector<ports::Value>> page;
        for (; page.size() < count && given_ < all; ++given_) {
            const auto number = static_cast<std::int64_t>(given_ + 1);
            page.push_back({number, u"FV/" + base::to_decimal(number) + u"/11/2026",
                            base::DateTime{2026, 11, static_cast<int>(given_ % 28) + 1},
                            names[given_ % 3], u"1234," + base::to_decimal(10 + number % 90),
                            given_ % 4 == 0 ? ports::Value()
                                            : ports::Value(u"Odbiór własny\r\nprosić o telefon"),
                            given_ % 2 == 0, base::Bytes{0xCA, 0xFE, 0x00}});
        }
        return page;
    }
    void cancel() noexcept override {}
    void roll_back() noexcept override {}
    void close() noexcept override {}

  private:
    std::size_t given_ = 0;
};

/// Three databases, one of them elsewhere.
inline dialogs::BrowserSession sample_browser(ports::Clock& clock) {
    std::vector<base::SecretText> entries;
    for (const char16_t* entry : {u"FIRMA_2026", u"FIRMA_2025_archiwum",
                                  u"Data Source=192.168.10.4,1433;Initial Catalog=MAGAZYN"}) {
        entries.emplace_back(base::TextView(entry));
    }
    return {dialogs::list_databases(3, entries, u"Data Source=SERWER\\SQL2019;User ID=biuro", u""),
            [] { return std::make_unique<SampleQuery>(); }, clock};
}

}  // namespace tavrix::dialogs_program
