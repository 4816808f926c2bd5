#pragma once
#include <cstdint>
#include <functional>
#include <string>

#include "platform/ivStatus.h"

class ivPdf;

// The image export's settings, as the settings store keeps them under "tools".
struct pdfExportSettings {
    std::string si_Folder;           // output folder
    bool si_keepJpeg = false;        // copy JPEG (and CCITT) data out as stored
    int si_name = 0;                 // 0: "N G." names, 1: the running index
    std::string si_format = "jpeg";  // identifier of the export filter for decoded images
};

struct pdfExportOutcome {
    std::uint32_t images = 0;   // entries with the image role
    std::uint32_t written = 0;  // files written
};

// Writes every image (role 11) of the analysed document to the settings' folder, which must
// exist. `progress` is told (done, total) after each image; it may be empty.
pdfExportOutcome ExportImages(ivPdf& doc, const pdfExportSettings& settings,
                              const std::function<void(std::uint32_t, std::uint32_t)>& progress);
