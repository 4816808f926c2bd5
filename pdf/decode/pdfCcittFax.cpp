#include "pdf/decode/pdfCcittFax.h"

// Placeholder until the decoder lands.
ivStatus DecodeCCITTG4(ivStream&, ivImage2d&, const CcittParams&) { return kOk; }
ivStatus DecodeCCITTFax(pdfDocument&, const pdfObject*, ivImage2d&, ivStream&) { return kOk; }
