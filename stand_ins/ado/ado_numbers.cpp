#include "stand_ins/ado/ado_numbers.h"

namespace tavrix::ado {
namespace {

base::TextView words_of(AdoError error) {
    switch (error) {
        case AdoError::invalid_argument:
            return u"Arguments are of the wrong type, are out of acceptable range, or are in "
                   u"conflict with one "
                   u"another.";
        case AdoError::no_current_row:
            return u"Either BOF or EOF is True, or the current record has been deleted. Requested "
                   u"operation "
                   u"requires a current record.";
        case AdoError::illegal_operation:
            return u"Operation is not allowed in this context.";
        case AdoError::not_updatable:
            return u"Current Recordset does not support updating. This may be a limitation of the "
                   u"provider, or "
                   u"of the selected locktype.";
        case AdoError::item_not_found:
            return u"Item cannot be found in the collection corresponding to the requested name or "
                   u"ordinal.";
        case AdoError::object_closed:
            return u"Operation is not allowed when the object is closed.";
        case AdoError::object_open:
            return u"Operation is not allowed when the object is open.";
        case AdoError::invalid_connection:
            return u"The connection cannot be used to perform this operation. It is either closed "
                   u"or invalid in "
                   u"this context.";
        case AdoError::in_transaction:
            return u"Connection object cannot be explicitly closed while in a transaction.";
        case AdoError::wrong_type:
            return u"Application uses a value of the wrong type for the current operation.";
        case AdoError::bad_parameter:
            return u"Parameter object is improperly defined. Inconsistent or incomplete "
                   u"information was provided.";
        case AdoError::type_mismatch:
            return u"Type mismatch.";
        case AdoError::multiple_step:
            return u"Multiple-step operation generated errors. Check each status value.";
        case AdoError::transaction_exists:
            return u"Only one transaction can be active on this session.";
        case AdoError::no_transaction:
            return u"No transaction is active.";
        case AdoError::timed_out:
            return u"Query timeout expired";
        case AdoError::unspecified:
            break;
    }
    return u"Unspecified error";
}

}  // namespace

void raise(AdoError error, base::TextView source) {
    raise(error, source, words_of(error));
}

void raise(AdoError error, base::TextView source, base::TextView description) {
    throw base::AutomationError(static_cast<base::ErrorNumber>(error), base::Text(source),
                                base::Text(description));
}

}  // namespace tavrix::ado
