#include "pdf/analysis/pdfResources.h"

#include "pdf/analysis/ivPdf.h"

// Placeholders until the walks land.
ivStatus AnalyseResourceHolder(ivPdf&, const pdfObject*) { return kOk; }
ivStatus AnalyseResources(ivPdf&, const pdfObject*) { return kOk; }
ivStatus AnalyseXObjects(ivPdf&, const pdfObject*) { return kOk; }
ivStatus AnalyseXObject(ivPdf&, XrefEntry*, const pdfObject*) { return kOk; }
ivStatus AnalysePropertyLists(ivPdf&, const pdfObject*) { return kOk; }
ivStatus AnalyseColourSpace(ivPdf&, const pdfObject*) { return kOk; }
ivStatus AnalyseAnnotation(ivPdf&, const pdfObject*) { return kOk; }
ivStatus WalkActions(ivPdf&, const pdfObject*) { return kOk; }
ivStatus WalkOutlines(ivPdf&, const pdfObject*, int) { return kOk; }
