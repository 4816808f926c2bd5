#pragma once
#include <cstddef>
#include <string>

#include "pdf/object/pdfObject.h"
#include "pdf/object/pdfXref.h"

class ivPdf;
class pdfPage;

// What the object trees show of a PDF value: the item's text, its icon in the "treeIcons"
// strip and its hint. Texts are UTF-8.

// Icons of the "treeIcons" strip.
enum ivTreeIcon : int {
    kIconOther = 0,
    kIconArray = 1,
    kIconDictionary = 2,
    kIconCatalog = 4,
    kIconNumber = 5,
    kIconStream = 6,
    kIconText = 7,
    kIconStreamData = 8,
    kIconSection = 9,
    kIconTrailer = 10,
    kIconLandscapePage = 12,
    kIconPages = 13,
    kIconPage = 14,
    kIconXObject = 15,
    kIconUnresolved = 16,  // drawn over the item's own icon
};

struct ivItemText {
    std::string text;
    int icon = kIconOther;
    bool unresolved = false;            // a reference on the way could not be resolved
    const pdfObject* target = nullptr;  // the value with every reference resolved, or null
};

// The icon of one value by its kind (a dictionary by its /Type).
int IconOf(const pdfObject* value);

// The text of an object item: `prefix` (a dictionary's key followed by a blank, or nothing
// for an array element), then the value; a reference reads "[N G R]", is resolved and goes on
// with what it leads to, or ends in " Unresolved". Resolving may report a missing object.
ivItemText ObjectItemText(ivPdf& doc, const std::string& prefix, const pdfObject* value);
// The prefix of a dictionary entry: its key's text and a blank; nothing for a key that is not
// a name or a string.
std::string KeyPrefix(const pdfObject* key);
// The hint of an object item: "Type:..." with, for a reference, where its object lies.
std::string ObjectItemHint(ivPdf& doc, const pdfObject* value);
// The hint of a stream's data item.
std::string StreamDataHint(const pdfStream& stream);
// Whether an object item unfolds: arrays, dictionaries, streams and references (unresolved
// ones included).
bool IsExpandable(const pdfObject* value);

// The root item of the Document Tree: "[1 0 R] Catalog  (Catalog)", icon 4.
ivItemText CatalogItemText(ivPdf& doc);
// A page item: "Page 1,  A4" and icon 12 (wider than tall) or 14. `index` counts from 0.
ivItemText PageItemText(std::size_t index, const pdfPage& page);

// How the "Context.Object" menu is trimmed for one value (a reference stands for the object it
// leads to, or for itself when it does not resolve).
struct ivObjectMenu {
    bool saveObject = false;     // File.SaveToFile: only for a reference
    bool saveStream = false;     // File.SaveStreamToFile: only for a stream
    bool saveImage = false;      // File.SaveImageToFile: only for an image
    bool locate = false;         // Object.Locate, Object.LinkTo, Object.LinkFrom: only with an entry
    bool linkToEnabled = false;  // Object.LinkTo: only when something refers to it
    const pdfObject* target = nullptr;
    XrefEntry* entry = nullptr;
};
ivObjectMenu ObjectMenuFor(ivPdf& doc, const pdfObject* value);
// The same for a reference to `id` (an entry of the cross-reference view); `target` is null
// when the object does not load.
ivObjectMenu ObjectMenuFor(ivPdf& doc, ObjId id);
