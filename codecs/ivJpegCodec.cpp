#include "codecs/ivCodecs.h"

// Placeholders until the codec lands.
std::unique_ptr<ivImageImporter> CreateJpegImporter() { return nullptr; }
std::unique_ptr<ivImageExporter> CreateJpegExporter() { return nullptr; }
