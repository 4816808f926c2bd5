#pragma once
#include "pdf/object/pdfObject.h"
#include "pdf/object/pdfXref.h"
#include "platform/ivStatus.h"

class ivPdf;

// The per-object analysis: recognises an object by its Type (and a stream by its Type and
// Subtype), gives it its role and follows what hangs below it. 0, or kFail after
// "Type must be a name".
ivStatus AnalyseObject(ivPdf& doc, XrefEntry* entry, const pdfObject* object);
