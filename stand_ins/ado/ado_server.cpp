#include "com/server.h"
#include "stand_ins/ado/command.h"
#include "stand_ins/ado/connection.h"
#include "stand_ins/ado/recordset.h"

namespace tavrix::com {

// Under the real names, so that a host needs no change to be tried out where the platform has no
// working ADO.
const Server& server() noexcept {
    static const CreatableClass classes[] = {
        {ado::command_class, &ado::create_command},
        {ado::connection_class, &ado::create_connection},
        {ado::recordset_class, &ado::create_recordset},
    };
    static const Server provider = {
        .library = u"ADODB", .version_major = 6, .classes = classes, .only_under_wine = true};
    return provider;
}

}  // namespace tavrix::com
