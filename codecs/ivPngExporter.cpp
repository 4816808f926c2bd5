#include "codecs/ivCodecs.h"
std::unique_ptr<ivImageExporter> CreatePngExporter() { return nullptr; }
