// Tavrix.KseF_comm as hosts create it: what its small conversions give through the automation door,
// and how its arguments and failures look from there.

#include "tests/com/late_host.h"

namespace tavrix::test {
namespace {

class KsefComm : public testing::Test {
  protected:
    ComPointer<IDispatch> ksef = create(u"Tavrix.KseF_comm");

    base::Text text(const char16_t* method, const VARIANT& argument) {
        const Outcome outcome = call(ksef, method, {argument});
        EXPECT_EQ(outcome.code, S_OK) << base::to_utf8(outcome.description);
        return bstr_of(outcome.result);
    }
    base::Bytes bytes(const char16_t* method, const VARIANT& argument) {
        return bytes_of(call(ksef, method, {argument}).result);
    }
};

TEST_F(KsefComm, ConversionsGoThroughThePlatformsComponents) {
    EXPECT_EQ(text(u"Base64EncodeSS", Variant(u"Zażółć").get()), u"WmG/87Pm");
    EXPECT_EQ(text(u"Base64DecodeSS", Variant(u"WmG/87Pm").get()), u"Zażółć");
    EXPECT_EQ(bytes(u"Base64DecodeToBytes", Variant(u"AAEC/w==").get()),
              (base::Bytes{0, 1, 2, 255}));
    EXPECT_EQ(text(u"Base64Encode", Variant(base::Bytes{0, 1, 2, 255}).get()), u"AAEC/w==");
    EXPECT_EQ(bytes(u"HexStringToBytes", Variant(u"ż").get()), (base::Bytes{0xC5, 0xBC}));
    EXPECT_EQ(bytes(u"Base64ToBytes", Variant(u"*").get()), base::Bytes{});
    // FIPS 180-4: the digest of no bytes.
    EXPECT_EQ(text(u"Sha256XmlSimpleb", Variant(base::Bytes{}).get()),
              u"47DEQpj8HBSa+/TImW+5JCeuQeRkm5NMpJWZG3hSuFU=");
}

TEST_F(KsefComm, InstancesShareNothing) {
    const auto second = create(u"Tavrix.KseF_comm.10");
    put(ksef, u"baseUrl", {Variant(u"https://one").get()});
    EXPECT_EQ(bstr_of(get(second, u"baseUrl").result), u"");
}

TEST_F(KsefComm, FailuresOfConversionsReachTheHost) {
    const Outcome outcome =
        call(ksef, u"TimestampToUnixMs", {Variant(u"2025-07-11T12:23:56+00:00").get()});
    EXPECT_EQ(outcome.code, DISP_E_EXCEPTION);
    EXPECT_LT(outcome.number, 0);
    EXPECT_NE(outcome.source.find(u"KseF_comm"), base::Text::npos);
    EXPECT_FALSE(outcome.description.empty());
    EXPECT_EQ(call(ksef, u"Base64DecodeToBytes", {Variant(u"*").get()}).code, DISP_E_EXCEPTION);
}

TEST_F(KsefComm, SendingReportsEveryOutcomeInItsText) {
    Variant schema(u"1-0E");
    BSTR form = windows::make_bstr(u"FA").release();
    const Variant nothing{ComPointer<IDispatch>()};
    const auto send = [&](const VARIANT& connection) {
        return call(
            ksef, u"SendInvoiceToKSeF",
            {connection, Variant(u"5260250995").get(), Variant(u"no bars").get(),
             Variant(u"<x/>").get(), Variant(u"FA (3)").get(), by_reference(schema.address()),
             by_reference(&form), plain(2), Variant(u"dok_fak").get(), plain(1)});
    };
    EXPECT_EQ(bstr_of(send(nothing.get()).result), u"Błędny token :no bars");
    // Nothing is an object variable that was not set; a text is no object at all.
    const Outcome wrong = send(Variant(u"connection").get());
    EXPECT_EQ(wrong.code, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(wrong.argument_index, 9u);
    EXPECT_EQ(bstr_of(schema), u"1-0E");
    EXPECT_EQ(windows::view_of(form), u"FA");
    SysFreeString(form);
}

}  // namespace
}  // namespace tavrix::test
