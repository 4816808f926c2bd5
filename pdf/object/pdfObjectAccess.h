#pragma once
#include <cstdint>

#include "pdf/object/pdfObject.h"
#include "pdf/object/pdfRoleCodes.h"
#include "pdf/object/pdfXref.h"

class pdfDocument;
class pdfParser;

// Resolves a reference: the entry of the newest section that holds it, loaded once.
pdfObject* ResolveRef(pdfDocument& doc, ObjId id);
// The entry of `id`, or null. An id no section holds is reported once ("Object %d %d R was
// not found") and remembered as a placeholder in the newest section.
XrefEntry* FindEntry(pdfDocument& doc, ObjId id);
// First in-file entry, over all sections in order, at this byte offset.
XrefEntry* FindEntryByOffset(const pdfDocument& doc, std::uint32_t offset);
XrefEntry* FindEntryByRecord(const pdfDocument& doc, const pdfObject* record);
// Reads the entry's object once and keeps it on the entry.
pdfObject* LoadObject(pdfDocument& doc, XrefEntry* entry);
pdfObject* ReadObjectBody(pdfDocument& doc, pdfParser& source, XrefEntry* entry, unsigned flags);
pdfObject* ReadFromObjectStream(pdfDocument& doc, XrefEntry* entry);

// Sets a role found by object access: stored when the entry has none yet, reported as
// "%d %d R Used as something else already" when it has another one.
void SetAccessRole(pdfDocument& doc, XrefEntry* entry, std::uint8_t role);
