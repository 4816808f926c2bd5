#include "codecs/ivCodecs.h"
std::unique_ptr<ivImageImporter> CreateJpxImporter() { return nullptr; }
