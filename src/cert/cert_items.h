// Steps that certificates and requests have in common. Each takes what it finds into the certificate object.
#pragma once

#include "cert/mg_cert.h"

namespace vorma {

// SEQUENCE { SEQUENCE signed part, … }, with the cursor at its beginning: the outer item must fill `size` bytes, else
// the error is `bad_length`. Takes the signed part; the cursor stands behind its header then.
uint32_t find_signed_part(MGCert& cert, DER_S_POINTER& cursor, uint32_t size, uint32_t bad_length);

// The version, if the item is an INTEGER of one byte.
uint32_t take_version(MGCert& cert, const DER_S_ENCODING& item);

// A copy of the item that was just entered, header included, and the cursor behind it; false if it is too long.
bool take_whole_item(DerBytes& copy, uint32_t& length, DER_S_POINTER& cursor, const DER_S_ENCODING& item);

// The subject, if the item is a SEQUENCE.
uint32_t take_subject(MGCert& cert, DER_S_POINTER& cursor, const DER_S_ENCODING& item);

// The next item of the public key: up to three identifiers, then the BIT STRING, which sets publ_done.
uint32_t take_public_key_item(MGCert& cert, const DER_S_ENCODING& item);

// Reads the list of extensions from the SEQUENCE that was just entered, which fits, and passes over it.
uint32_t take_extensions(MGCert& cert, DER_S_POINTER& cursor, const DER_S_ENCODING& item);

} // namespace vorma
