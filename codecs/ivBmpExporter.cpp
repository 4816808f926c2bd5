#include "codecs/ivCodecs.h"
std::unique_ptr<ivImageExporter> CreateBmpExporter() { return nullptr; }
