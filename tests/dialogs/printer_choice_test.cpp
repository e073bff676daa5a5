#include "dialogs/printer_choice.h"

#include <gtest/gtest.h>

namespace tavrix::dialogs {
namespace {

TEST(PrinterChoice, ShowsPrintersByNameAndBeginsWithTheDefaultOne) {
    using Rows = std::vector<PrinterChoiceForm::Row>;
    const PrinterChoiceForm form =
        printer_choice_form({{u"Żółta", u"brother", u"\\\\biuro\\Kasa", u"Alfa"}, u"brother"});
    EXPECT_EQ(form.rows, (Rows{{u"Alfa", u"Alfa"},
                               {u"brother", u"brother (domyślna)"},
                               {u"\\\\biuro\\Kasa", u"\\\\biuro\\Kasa"},
                               {u"Żółta", u"Żółta"}}));
    EXPECT_EQ(form.chosen, 1u);
    EXPECT_EQ(printer_choice_form({{u"b", u"a"}, u"gone"}).chosen, 0u);

    EXPECT_NE(printer_choice_form({}).note, printer_choice_form({{}, u"", false}).note);
}

}  // namespace
}  // namespace tavrix::dialogs
