// Tavrix.KseF_comm as hosts create it: how failures and arguments look through the
// automation door.

#include "tests/com/late_host.h"

namespace tavrix::test {
namespace {

TEST(KsefComm, NamesItselfInItsErrors) {
    const Outcome failed =
        call(create(u"Tavrix.KseF_comm"), u"TimestampToUnixMs", {u"2025-07-11T12:23:56+00:00"});
    EXPECT_EQ(written(failed), refused(DISP_E_EXCEPTION));
    EXPECT_LT(failed.number, 0);
    EXPECT_NE(failed.source.find(u"KseF_comm"), base::Text::npos);
    EXPECT_FALSE(failed.description.empty());
}

TEST(KsefComm, InstancesShareNothing) {
    const auto first = create(u"Tavrix.KseF_comm");
    const auto second = create(u"Tavrix.KseF_comm.10");
    invoke(first, u"baseUrl", DISPATCH_PROPERTYPUT, {u"https://one"});
    EXPECT_EQ(written(get(second, u"baseUrl")), "text ");
}

TEST(KsefComm, SendingReportsEveryOutcomeInItsText) {
    const auto send = [](const Argument& connection) {
        return answer(create(u"Tavrix.KseF_comm"), u"SendInvoiceToKSeF",
                      {connection, u"5260250995", u"no bars", u"<x/>", u"FA (3)", u"1-0E", u"FA", 2,
                       u"dok_fak", 1});
    };
    // Nothing is an object variable that was not set; a text is no object at all.
    EXPECT_EQ(send(ComPointer<IDispatch>()), "text Błędny token :no bars");
    EXPECT_EQ(send(u"connection"), refused(DISP_E_TYPEMISMATCH, 9));
}

}  // namespace
}  // namespace tavrix::test
