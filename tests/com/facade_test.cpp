// CInfo, Rejestr and the small conversions as hosts call them: by name, with the user before the
// forms and the system's own registry behind them.

#include "com/forms/identifiers.h"
#include "tests/com/form_user.h"
#include "tests/com/late_host.h"

namespace tavrix::test {
namespace {

class Facade : public testing::Test {
  protected:
    FormUser user;
    ComPointer<IDispatch> info = create(u"Tavrix.CInfo");

    std::function<void()> about() {
        return [this] {
            const Outcome outcome = call(info, u"OProgramie");
            EXPECT_EQ(outcome.code, S_OK);
            EXPECT_EQ(outcome.result.type(), VT_EMPTY);
        };
    }
};

TEST_F(Facade, OpensTheAboutBoxOnce) {
    const auto same_again = [&](HWND form) {
        EXPECT_EQ(text_of(form, TAVRIX_ABOUT_VERSION), u"Wersja 10.0.36");
        EXPECT_EQ(call(create(u"Tavrix.CInfo"), u"OProgramie").code, S_OK);
        EXPECT_EQ(open_forms(), std::vector<HWND>{form});
        // Nothing else waits for the box.
        EXPECT_EQ(bstr_of(call(info, u"VersjaLib").result), u"10.0.36.Tavrix");
    };
    user.use(about(), {same_again, press(VK_RETURN)});
}

TEST_F(Facade, SaysWhenThereIsNoSystemInformation) {
    const wchar_t key[] = L"SOFTWARE\\Microsoft\\Shared Tools\\MSINFO";
    const wchar_t nothing[] = L"C:\\none\\none.exe";
    ASSERT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, key, L"PATH", REG_SZ, nothing, sizeof nothing),
              ERROR_SUCCESS);
    bool seen = false;
    user.use(about(), {[&](HWND form) {
                           click(TAVRIX_ABOUT_SYSTEM_INFORMATION)(form);
                           user.soon([&seen, form](HWND box) {
                               EXPECT_EQ(GetWindow(box, GW_OWNER), form);
                               for (const HWND control : controls_of(box)) {
                                   seen |= text_of(control) ==
                                           u"Brak zainstalownej opcji w Systemie Windows";
                               }
                               press(VK_RETURN)(box);
                           });
                       },
                       press(VK_ESCAPE)});
    EXPECT_TRUE(seen);
    // The prefix's own state: none.
    RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, key, L"PATH");
}

TEST_F(Facade, ShowsTheMessageForTheHelpdeskAndGivesItsResult) {
    const Variant text(u"tekst");
    const Variant tax_number(u"525-000-12-34");
    Variant files(u"C:\\a.pdf");
    BSTR more = windows::make_bstr(u"; ktos@inny.example").release();
    Variant result;
    user.use(
        [&] {
            result =
                std::move(call(info, u"sendmail",
                               {text.get(), tax_number.get(), text.get(), text.get(), text.get(),
                                text.get(), by_reference(files.address()), by_reference(&more)})
                              .result);
        },
        {[](HWND form) {
             EXPECT_EQ(text_of(form, TAVRIX_MESSAGE_RECIPIENTS),
                       u"pomoc@tavrix.example; ktos@inny.example");
             EXPECT_EQ(text_of(form, TAVRIX_MESSAGE_TAX_NUMBER), u"525-000-12-34");
             EXPECT_EQ(text_of(form, TAVRIX_MESSAGE_ATTACHMENTS), u"C:\\a.pdf");
         },
         click_cross()});
    EXPECT_EQ(result.type(), VT_I4);
    EXPECT_EQ(result.get().lVal, 0);
    SysFreeString(more);
}

TEST(Registry, GivesTheSystemsOwnValues) {
    const wchar_t* key = L"Software\\Tavrix test\\Zażółć";
    const Variant sub_key(u"Software\\Tavrix test\\Zażółć");
    const auto rejestr = create(u"Tavrix.Rejestr");
    const auto read = [&](const char16_t* name, LONG root = 1) {
        const Outcome outcome =
            call(rejestr, u"RegGetValue", {plain(root), sub_key.get(), Variant(name).get()});
        EXPECT_EQ(outcome.code, S_OK);
        return bstr_of(outcome.result);
    };
    const std::wstring fits(254, L'x');
    const std::wstring too_long(255, L'x');
    const DWORD all_bits = 0xFFFFFFFF;
    const struct {
        const wchar_t* name;
        DWORD type;
        const void* data;
        std::size_t size;
        base::Text expected;
    } values[] = {
        {L"Gęś", REG_SZ, L"gęgała", 14, u"gęgała"},
        {L"path", REG_EXPAND_SZ, L"%TEMP%\\x", 18, u"%TEMP%\\x"},  // as it is stored
        {L"number", REG_DWORD, &all_bits, sizeof all_bits, u"-1"},
        {L"nothing", REG_SZ, L"", 0, u""},
        // 255 bytes with the zero, and no more.
        {L"fits", REG_SZ, fits.c_str(), 2 * 255, base::Text(254, u'x')},
        {L"too long", REG_SZ, too_long.c_str(), 2 * 256, u""},
    };
    for (const auto& row : values) {
        ASSERT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, key, row.name, row.type, row.data,
                                  static_cast<DWORD>(row.size)),
                  ERROR_SUCCESS);
        const base::Text name = windows::text_from_wide(row.name);
        EXPECT_EQ(read(name.c_str()), row.expected) << base::to_utf8(name);
    }
    EXPECT_EQ(read(u"missing"), u"");
    for (const LONG root : {2, 4, 255}) EXPECT_EQ(read(u"number", root), u"") << root;
    RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\Tavrix test");
}

TEST(NullStr, TurnsAnyValueIntoText) {
    const auto sender = create(u"Tavrix.ClsSendMail");
    const auto text_of_value = [&](const VARIANT& value) {
        const Outcome outcome = call(sender, u"NullStr", {value});
        EXPECT_EQ(outcome.code, S_OK);
        return bstr_of(outcome.result);
    };
    VARIANT null{};
    null.vt = VT_NULL;
    EXPECT_EQ(text_of_value(null), u"");
    EXPECT_EQ(text_of_value({}), u"");
    EXPECT_EQ(text_of_value(Variant(u"zażółć").get()), u"zażółć");
    EXPECT_EQ(text_of_value(Variant(1.5).get()), u"1,5") << "as the user writes it";
    EXPECT_EQ(text_of_value(plain(-7)), u"-7");
    const Variant numbers(windows::SafeArray(SafeArrayCreateVector(VT_I4, 0, 2)), VT_I4);
    EXPECT_EQ(text_of_value(numbers.get()), u"") << "what has no text";
    EXPECT_EQ(text_of_value(Variant(sender).get()), u"") << "an object without a value";
    BSTR text = windows::make_bstr(u"zmienna").release();
    EXPECT_EQ(text_of_value(by_reference(&text)), u"zmienna");
    SysFreeString(text);
}

}  // namespace
}  // namespace tavrix::test
