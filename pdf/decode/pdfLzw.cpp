#include "pdf/decode/pdfLzw.h"

// Placeholder until the decoder lands: copies nothing.
ivStatus DecodeLZW(ivStream&, ivMemStream&, bool) { return kFail; }
