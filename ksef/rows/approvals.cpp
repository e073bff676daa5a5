#include "ksef/rows/approvals.h"

#include <charconv>
#include <exception>

#include "base/error.h"
#include "ksef/rows/fields.h"

namespace tavrix::ksef {
namespace {

constexpr std::int64_t first_stage = 0;

std::int32_t user_number(base::TextView text) {
    const std::string digits = base::to_utf8(text);
    std::int32_t number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number);
    if (error == std::errc() && stop == end) return number;
    throw base::AutomationError(base::ErrorNumber::component_failed, u"KseF_comm",
                                u"Reguła podpisów nie wskazuje użytkownika: " + base::Text(text));
}

bool names(base::TextView list, const base::Text& user) {
    return (u',' + base::Text(list) + u',').find(u',' + user + u',') != base::Text::npos;
}

}  // namespace

// A column of a rule that is empty, or 0, fits any invoice.
base::Text Approvals::users(const ApprovalQuestion& question) {
    const base::Text contractor = question.contractor.empty() ? u"0" : question.contractor;
    const auto rows = database_.open(
        u"select top 1 Set_User_id_podpisuStr from DOK_IMPORTY where (Set_User_id_podpisuStr<>'' "
        u"and not Set_User_id_podpisuStr is null) "
        u" and (JESLI_KONH_ID=0 or JESLI_KONH_ID=" +
        contractor + u") and (JESLI_IDWEW='' or JESLI_IDWEW=" +
        sql_literal(question.internal_identifier) + u") and (JESLI_ROLAINNA='' or JESLI_ROLAINNA=" +
        sql_literal(question.other_role) + u") and (JESLI_podmiot3zawiera='' or charindex(" +
        sql_literal(question.third_party) +
        u",JESLI_podmiot3zawiera)>0) and (JESLI_TEXT_W_NUMERZE_DOK='' or charindex(" +
        sql_literal(question.number) + u",JESLI_TEXT_W_NUMERZE_DOK)>0)");
    return rows->at_end() ? base::Text() : ports::text_of(rows->field(u"Set_User_id_podpisuStr"));
}

void Approvals::enter(const base::Text& id, const ApprovalQuestion& question) {
    const base::Text users = this->users(question);
    if (users.empty()) return;
    const base::TextView column = u"User_ids_do_podpisu";
    const auto invoice = database_.open(u"select top 1 " + base::Text(column) +
                                        u" from DOK_ZDJECIA where countt=" + id);
    std::exception_ptr failure;
    base::Text list = ports::text_of(invoice->field(column));
    for (const base::Text& piece : base::split(users, u',')) {
        const base::TextView user = base::trim(piece);
        if (user.empty()) continue;
        try {
            enter_user(id, user_number(user));
        } catch (const base::AutomationError&) {
            failure = std::current_exception();
            continue;
        }
        if (names(list, base::Text(user))) continue;
        if (!list.empty()) list += u',';
        list += user;
        invoice->set_field(column, list);
        invoice->update_batch();
    }
    if (failure) std::rethrow_exception(failure);
}

void Approvals::enter_user(const base::Text& id, std::int64_t user) {
    const auto rows = database_.open(
        u"select top 1 id_zdjecia,user_id,etappodpisow from dok_zdjecia_podpisy where id_zdjecia=" +
        id + u" and user_id=" + base::to_decimal(user));
    if (!rows->at_end()) return;
    rows->add_new();
    rows->set_field(u"id_zdjecia", id);
    rows->set_field(u"user_id", user);
    rows->set_field(u"etappodpisow", first_stage);
    rows->update_batch();
}

}  // namespace tavrix::ksef
