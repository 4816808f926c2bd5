#include "codecs/ivCodecs.h"
std::unique_ptr<ivImageImporter> CreateJbig2Importer() { return nullptr; }
