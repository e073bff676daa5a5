// The classes as hosts call them: by name, with the user before the forms and the system's own
// registry behind them.

#include <filesystem>
#include <fstream>

#include "com/forms/identifiers.h"
#include "com/guid.h"
#include "tests/com/event_sink.h"
#include "tests/com/form_user.h"
#include "tests/com/late_host.h"

namespace tavrix::test {
namespace {

TEST(Facade, ShowsTheAboutBoxAndTheMessageForTheHelpdesk) {
    FormUser user;
    const auto info = create(u"Tavrix.CInfo");
    const auto about = [&] { EXPECT_EQ(answer(info, u"OProgramie"), "empty"); };
    const auto nothing_else_waits = [&](HWND form) {
        expect_texts(form, {{TAVRIX_ABOUT_VERSION, u"Wersja 10.0.36"}});
        EXPECT_EQ(answer(info, u"VersjaLib"), "text 10.0.36.Tavrix");
    };
    user.use(about, {nothing_else_waits, press(VK_RETURN)});
    Variant files(u"C:\\a.pdf");
    const auto send = [&] {
        EXPECT_EQ(answer(info, u"sendmail",
                         {u"a", u"525-000-12-34", u"b", u"c", u"d", u"e", by_reference(files),
                          u"; ktos@inny.example"}),
                  "long 0");
    };
    const auto look = [](HWND form) {
        expect_texts(form, {{TAVRIX_MESSAGE_RECIPIENTS, u"pomoc@tavrix.example; ktos@inny.example"},
                            {TAVRIX_MESSAGE_TAX_NUMBER, u"525-000-12-34"},
                            {TAVRIX_MESSAGE_ATTACHMENTS, u"C:\\a.pdf"}});
    };
    user.use(send, {look, click_cross()});
}

TEST(Facade, AsksTheUserOnceAtATimeAndGivesTheAnswerBack) {
    FormUser user;
    const auto info = create(u"Tavrix.CInfo");
    const auto of_another_object = create(u"Tavrix.CInfo");
    std::vector<Argument> captions(15, Argument(u""));
    captions[0] = u"Pytanie";
    captions[14] = u"&Ostatni";
    const auto ask = [&] { EXPECT_EQ(answer(info, u"Informator", captions), "long 12"); };
    const auto again = [&](HWND) {
        EXPECT_EQ(answer(of_another_object, u"Informator", captions), "long -1");
    };
    user.use(ask, {again, press_with_alt(L'o')});

    Variant value(u"5");
    Variant outcome(std::int32_t{3});
    std::vector<Argument> order(19, Argument(u"x"));
    order[0] = by_reference(value);
    order[1] = by_reference(outcome);
    order[2] = 2;
    const auto ask_for_order = [&] {
        EXPECT_EQ(answer(info, u"Informator_Zamówień", order), "long 9");
    };
    const auto change = [](HWND form) {
        const HWND box = GetDlgItem(form, TAVRIX_INFORMATOR_VALUE);
        SetWindowTextW(box, L"łyżka");
        SendMessageW(box, EM_SETMODIFY, TRUE, 0);
    };
    user.use(ask_for_order,
             {change, click(TAVRIX_INFORMATOR_OUTCOME + 1), click(TAVRIX_INFORMATOR_BUTTON + 9)});
    EXPECT_EQ(written(value.get()) + written(outcome.get()), "text łyżkalong 1");
}

TEST(Registry, GivesTheSystemsOwnValues) {
    const wchar_t* key = L"Software\\Tavrix test\\Zażółć";
    const auto rejestr = create(u"Tavrix.Rejestr");
    const std::wstring fits(254, L'x');
    const std::wstring too_long(255, L'x');
    const DWORD all_bits = 0xFFFFFFFF;
    const struct {
        const wchar_t* name;
        DWORD type;
        const void* data;
        std::size_t size;
        std::string expected;
    } values[] = {
        {L"Gęś", REG_SZ, L"gęgała", 14, "text gęgała"},
        {L"path", REG_EXPAND_SZ, L"%TEMP%\\x", 18, "text %TEMP%\\x"},  // as it is stored
        {L"number", REG_DWORD, &all_bits, sizeof all_bits, "text -1"},
        // 255 bytes with the zero, and no more.
        {L"fits", REG_SZ, fits.c_str(), 2 * 255, "text " + std::string(254, 'x')},
        {L"too long", REG_SZ, too_long.c_str(), 2 * 256, "text "},
    };
    for (const auto& row : values) {
        RegSetKeyValueW(HKEY_CURRENT_USER, key, row.name, row.type, row.data,
                        static_cast<DWORD>(row.size));
        const base::Text name = windows::text_from_wide(row.name);
        EXPECT_EQ(answer(rejestr, u"RegGetValue", {1, u"Software\\Tavrix test\\Zażółć", name}),
                  row.expected);
    }
    RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\Tavrix test");
}

// The classes and members that no test of their own calls.
TEST(Classes, AnswerTheirHosts) {
    const base::Text none = beside_program(u"none.file");
    const ComPointer<IDispatch> object = create(u"Tavrix.CInfo");
    const struct {
        const char16_t* name;
        const char16_t* method;
        std::vector<Argument> arguments;
        std::string expected;
    } calls[] = {
        {u"KseF_comm", u"HexStringToBytes", {u"ż"}, "byte[] 197 188"},
        {u"Drk_Wyd_Ean_cls", u"SyncShell", {u"cmd.exe /c exit 3", 1, true, true}, "bool -1"},
        {u"Drk_Wyd_Ean_cls", u"SyncShell", {u"none.exe", 0, false, true}, "bool 0"},
        {u"CMessage", u"DodajMail", {u"x", none, false}, "long 0"},
        {u"ClsSendMail", u"NullStr", {Variant::null()}, "text "},
        {u"ClsSendMail", u"NullStr", {1.5}, "text 1,5"},  // as the user writes it
        {u"ClsSendMail", u"NullStr", {base::Bytes{1}}, "text "},
        {u"ClsSendMail", u"NullStr", {object}, "text "},  // has no value
        {u"ClsPdfPodpis", u"pdfpodpis", {none, none, none, u"1"}, "bool 0"},
    };
    for (const auto& row : calls) {
        const auto created = create((u"Tavrix." + base::Text(row.name)).c_str());
        EXPECT_EQ(answer(created, row.method, row.arguments), row.expected)
            << base::to_utf8(row.name);
    }
}

TEST(Classes, NeedTheirSettingsOnlyWhenTheyUseThem) {
    const base::Text path = beside_program(u"Tavrix.json");
    const auto write_settings = [&](const char* text) {
        std::ofstream(std::filesystem::path(path), std::ios::binary) << text;
    };
    write_settings("{\n  \"ksef\": {\n    \"tset\": \"https://127.0.0.1:1\"\n  }\n}");
    const std::string wrong =
        base::to_utf8(path) + ", wiersz 3: klucz \"ksef.tset\": nieznany klucz";
    const auto ksef = create(u"Tavrix.KseF_comm");
    const auto send = [&](const Argument& connection) {
        return answer(ksef, u"SendInvoiceToKSeF",
                      {connection, u"5260250995", u"no bars", u"<x/>", u"FA (3)", u"1-0E", u"FA", 2,
                       u"dok_fak", 1});
    };
    // An object variable that was never set.
    const ComPointer<IDispatch> nothing;
    EXPECT_EQ(answer(ksef, u"Base64DecodeSS", {u"WmG/87Pm"}), "text Zażółć");
    EXPECT_EQ(send(nothing), "text " + wrong);

    const auto socket = create(u"Tavrix.clsSocket");
    const ConnectedSink sink(socket, com::guid("D7EFD24E-AC81-4DBF-A0D9-CD71DFC3386D"));
    EXPECT_EQ(answer(socket, u"OpeneSocket", {0, 0, u"127.0.0.1:1"}), "long 0");
    EXPECT_EQ(sink->events, (std::vector<std::string>{"4, text Błąd, text " + wrong, "6, bool 0"}));
    // The host's developer mends it meanwhile.
    write_settings("{}");
    EXPECT_EQ(send(nothing), "text Błędny token :no bars");
    EXPECT_EQ(send(u"connection"), refused(DISP_E_TYPEMISMATCH, 9)) << "a text is no object";
    std::filesystem::remove(std::filesystem::path(path));
}

TEST(Classes, HaveInstancesThatShareNothing) {
    const auto first = create(u"Tavrix.KseF_comm");
    const auto second = create(u"Tavrix.KseF_comm.10");
    invoke(first, u"baseUrl", DISPATCH_PROPERTYPUT, {u"https://one"});
    EXPECT_EQ(written(invoke(second, u"baseUrl", DISPATCH_PROPERTYGET)), "text ");
}

}  // namespace
}  // namespace tavrix::test
