#pragma once
#include <string>

#include "pdf/analysis/ivObjectItems.h"
#include "pdf/object/pdfXref.h"

class ivPdf;

// What the cross-reference view shows of sections, trailers and entries. Texts are UTF-8.

// The revision a section shows: n, n - 1, … 1 from the newest of n ≥ 2 sections; 0 for a
// document with one section.
int SectionRevision(std::size_t index, std::size_t sections);
// "XREF [%d]", or "XREF [%d], Revison: %d" (spelled so) with a revision.
std::string SectionItemText(const XrefSection& section, int revision);
// "XREF Table\nLocation: N (0xNh)Entries: N".
std::string SectionItemHint(const XrefSection& section);

// The text of an entry item: "[N G R] ", the role's title, a font's subtype and "/" with the
// object's /Type. `loadObject` loads the entry's object first, as the item's first paint does.
std::string EntryItemText(ivPdf& doc, XrefEntry& entry);
// The icon of an entry item: its object's (loaded now), 0 when it does not load.
int EntryItemIcon(ivPdf& doc, XrefEntry& entry);
// The hint of an entry item: identifier and role, location, size, who uses it and the page.
std::string EntryItemHint(ivPdf& doc, const XrefEntry& entry);

// The /Type name of a loaded object (a stream's dictionary's); empty when it has none.
std::string TypeNameOf(const pdfObject* object);
