#include "apps/host/ado/connection.h"
#include "apps/host/ado/recordset.h"
#include "com/server.h"

namespace tavrix::com {

// Under the real names, so that a host needs no change to be tried out where the platform has no
// working ADO.
const Server& server() noexcept {
    static const CreatableClass classes[] = {
        {ado::connection_class, &ado::create_connection},
        {ado::recordset_class, &ado::create_recordset},
    };
    static const Server provider = {u"ADODB", 6, classes, true};
    return provider;
}

}  // namespace tavrix::com
