#include "codecs/ivCodecs.h"
std::unique_ptr<ivImageExporter> CreateTiffExporter() { return nullptr; }
