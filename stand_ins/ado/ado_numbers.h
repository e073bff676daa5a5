#pragma once

#include <cstdint>

#include "base/error.h"

namespace tavrix::ado {

// Numbers that hosts know from ADO, under the names that its documentation gives them.

namespace object_state {
inline constexpr std::int32_t closed = 0;      // adStateClosed
inline constexpr std::int32_t open = 1;        // adStateOpen
inline constexpr std::int32_t connecting = 2;  // adStateConnecting
inline constexpr std::int32_t executing = 4;   // adStateExecuting
inline constexpr std::int32_t fetching = 8;    // adStateFetching
}  // namespace object_state

namespace cursor_location {
inline constexpr std::int32_t server = 2;  // adUseServer
inline constexpr std::int32_t client = 3;  // adUseClient
}  // namespace cursor_location

namespace cursor_type {
inline constexpr std::int32_t forward_only = 0;  // adOpenForwardOnly
inline constexpr std::int32_t static_rows = 3;   // adOpenStatic
}  // namespace cursor_type

namespace lock_type {
inline constexpr std::int32_t read_only = 1;         // adLockReadOnly
inline constexpr std::int32_t optimistic = 3;        // adLockOptimistic
inline constexpr std::int32_t batch_optimistic = 4;  // adLockBatchOptimistic
}  // namespace lock_type

namespace edit_mode {
inline constexpr std::int32_t none = 0;         // adEditNone
inline constexpr std::int32_t in_progress = 1;  // adEditInProgress
inline constexpr std::int32_t added = 2;        // adEditAdd
}  // namespace edit_mode

namespace update_criteria {
inline constexpr std::int32_t key = 0;              // adCriteriaKey
inline constexpr std::int32_t all_columns = 1;      // adCriteriaAllCols
inline constexpr std::int32_t changed_columns = 2;  // adCriteriaUpdCols
}  // namespace update_criteria

namespace data_type {
inline constexpr std::int32_t small_integer = 2;  // adSmallInt
inline constexpr std::int32_t integer = 3;        // adInteger
inline constexpr std::int32_t single_number = 4;  // adSingle
inline constexpr std::int32_t double_number = 5;  // adDouble
inline constexpr std::int32_t currency = 6;       // adCurrency
inline constexpr std::int32_t boolean = 11;       // adBoolean
inline constexpr std::int32_t tiny_integer = 17;  // adUnsignedTinyInt
inline constexpr std::int32_t big_integer = 20;   // adBigInt
inline constexpr std::int32_t guid = 72;          // adGUID
inline constexpr std::int32_t binary = 128;       // adBinary
inline constexpr std::int32_t ansi_char = 129;    // adChar
inline constexpr std::int32_t wide_char = 130;    // adWChar
inline constexpr std::int32_t numeric = 131;      // adNumeric
inline constexpr std::int32_t date = 135;         // adDBTimeStamp
inline constexpr std::int32_t ansi_text = 200;    // adVarChar
inline constexpr std::int32_t long_ansi = 201;    // adLongVarChar
inline constexpr std::int32_t text = 202;         // adVarWChar
inline constexpr std::int32_t long_text = 203;    // adLongVarWChar
inline constexpr std::int32_t long_binary = 205;  // adLongVarBinary
}  // namespace data_type

inline constexpr std::int32_t async_connect = 0x10;       // adAsyncConnect
inline constexpr std::int32_t async_execute = 0x10;       // adAsyncExecute
inline constexpr std::int32_t async_fetch = 0x20;         // adAsyncFetch
inline constexpr std::int32_t execute_no_records = 0x80;  // adExecuteNoRecords

enum class AdoError : std::uint32_t {
    invalid_argument = 0x800A0BB9,    // 3001
    no_current_row = 0x800A0BCD,      // 3021
    illegal_operation = 0x800A0C93,   // 3219
    in_transaction = 0x800A0CAE,      // 3246
    not_updatable = 0x800A0CB3,       // 3251
    item_not_found = 0x800A0CC1,      // 3265
    wrong_type = 0x800A0D5D,          // 3421
    bad_parameter = 0x800A0E7C,       // 3708
    object_closed = 0x800A0E78,       // 3704
    object_open = 0x800A0E79,         // 3705
    invalid_connection = 0x800A0E7D,  // 3709
    unspecified = 0x80004005,
    type_mismatch = 0x80020005,
    multiple_step = 0x80040E21,
    timed_out = 0x80040E31,
    transaction_exists = 0x8004D013,
    no_transaction = 0x8004D00E,
};

/// Throws the error with the words that ADO has for it. `source` is the object, such as
/// "ADODB.Recordset".
[[noreturn]] void raise(AdoError error, base::TextView source);
[[noreturn]] void raise(AdoError error, base::TextView source, base::TextView description);

}  // namespace tavrix::ado
