#include "pdf/decode/pdfPredictor.h"

// Placeholder until the predictor lands: the data passes unchanged.
ivRef<ivStream> ApplyPNGPredictor(ivRef<ivStream> source, std::uint32_t, std::uint32_t, std::uint32_t) {
    return source;
}
