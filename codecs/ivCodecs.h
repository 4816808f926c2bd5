#pragma once
#include <memory>

#include "platform/ivCodec.h"

// One maker per codec; each is compiled only when its library is part of the build.
std::unique_ptr<ivImageImporter> CreateJpegImporter();
std::unique_ptr<ivImageExporter> CreateJpegExporter();
std::unique_ptr<ivImageImporter> CreateJpxImporter();
std::unique_ptr<ivImageImporter> CreateJbig2Importer();
std::unique_ptr<ivImageExporter> CreatePngExporter();
std::unique_ptr<ivImageExporter> CreateTiffExporter();
std::unique_ptr<ivImageExporter> CreateBmpExporter();
