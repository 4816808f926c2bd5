#pragma once
#include <cstdint>

#include "pdf/object/pdfObject.h"
#include "pdf/object/pdfXref.h"
#include "platform/ivStatus.h"

class ivPdf;

// Flags of MarkRole.
constexpr unsigned kMarkArrays = 0x1;            // arrays may be walked
constexpr unsigned kMarkDicts = 0x2;             // dictionaries may be walked
constexpr unsigned kMarkArrayItself = 0x10;      // an array receives the role itself
constexpr unsigned kMarkIndirectDict = 0x20;     // an indirect dictionary receives the role itself
constexpr unsigned kMarkDirectAccepted = 0x100;  // a direct value without an entry is accepted
constexpr unsigned kMarkTakenDirect = 0x200;     // the value is direct: no entry is looked up

// Gives an entry a role: 0 when newly set, 1 when it had this role already (callers then skip
// the object, which ends cycles), kFail after "%d %d R Used as something else already",
// kInvalidArg when no entry is given and none belongs to `object`.
ivStatus SetRole(ivPdf& doc, const pdfObject* object, XrefEntry* entry, std::uint8_t role);

// Walks a value and gives `role` to the indirect objects it reaches, as the flags allow.
// Streams (and indirect dictionaries with kMarkIndirectDict) that newly get role 16 are
// analysed as resource holders, those that get role 35 as annotations.
ivStatus MarkRole(ivPdf& doc, const pdfObject* value, std::uint8_t role, unsigned flags);
