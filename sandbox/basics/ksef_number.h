// Numbers the service gives out: of invoices and of operations.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tavrix::sandbox {

/// CRC-8 with polynomial 0x07, initial value 0x00, no reflection, no final xor.
/// Source: the ministry's "Numer KSeF - struktura i walidacja".
std::uint8_t crc8(std::string_view text);

/// `NIP-YYYYMMDD-12HEX-CRC8`: 35 characters, the checksum over the first 32.
/// \param technical_part 12 upper-case hexadecimal digits.
std::string make_ksef_number(std::string_view nip, std::string_view compact_date,
                             std::string_view technical_part);

/// True for what the contract's pattern calls a KSeF number: its checksum is not looked at, and the
/// 36 characters of the first KSeF are taken.
bool has_ksef_number_form(std::string_view text);

/// `YYYYMMDD-KK-10HEX-10HEX-CRC8`: 36 characters. The same checksum, over everything before the
/// last hyphen: the published examples agree with it. \param kind two letters: CR challenge, AU
/// authentication, SO online session, EE invoice, EU UPO, EC token.
std::string make_reference_number(std::string_view compact_date, std::string_view kind);

/// True for what the contract calls a reference number: 36 characters. Older clients put other
/// texts there, which must be told from a number nobody gave out.
bool is_reference_number(std::string_view text);

/// True for the full form `YYYYMMDD-KK-10HEX-10HEX-2HEX`, the only one a confirmation may name.
bool has_reference_form(std::string_view text);

/// True for ten digits of a Polish tax number's shape; the check digit is not looked at, as on the
/// service's test environment.
bool is_nip(std::string_view text);

/// True for the identifier of a company's unit: its tax number, a hyphen, five digits.
bool is_internal_id(std::string_view text);

}  // namespace tavrix::sandbox
