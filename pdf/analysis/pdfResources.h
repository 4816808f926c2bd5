#pragma once
#include "pdf/object/pdfObject.h"
#include "pdf/object/pdfXref.h"
#include "platform/ivStatus.h"

class ivPdf;

// What hangs below pages, forms, patterns and the interactive form: content streams,
// annotations and their actions, resources (patterns, XObjects, shadings, graphics states,
// property lists, colour spaces) and the outline tree. The output is roles and messages.

// A page, form XObject, pattern or interactive form dictionary: Contents, Annots, Resources.
ivStatus AnalyseResourceHolder(ivPdf& doc, const pdfObject* dict);
// A Resources value (reference or dictionary).
ivStatus AnalyseResources(ivPdf& doc, const pdfObject* value);
// The XObject sub-dictionary of a resource dictionary.
ivStatus AnalyseXObjects(ivPdf& doc, const pdfObject* dict);
// One XObject: an image (role 11) or a form (role 12, followed once).
ivStatus AnalyseXObject(ivPdf& doc, XrefEntry* entry, const pdfObject* streamDict);
// The Properties sub-dictionary.
ivStatus AnalysePropertyLists(ivPdf& doc, const pdfObject* value);
// One colour space value.
ivStatus AnalyseColourSpace(ivPdf& doc, const pdfObject* value);
// One annotation dictionary.
ivStatus AnalyseAnnotation(ivPdf& doc, const pdfObject* dict);
// An action and its Next chain.
ivStatus WalkActions(ivPdf& doc, const pdfObject* value);
// The outline root (or an item with children) and everything below it.
ivStatus WalkOutlines(ivPdf& doc, const pdfObject* dict, int depth);
