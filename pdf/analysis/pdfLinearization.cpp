#include "pdf/analysis/pdfLinearization.h"

// Placeholder until the check lands.
ivStatus CheckLinearization(ivPdf&) { return kRemark; }
