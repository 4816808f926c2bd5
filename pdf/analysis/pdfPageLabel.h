#pragma once
#include <cstddef>
#include <string>

class pdfPage;

// The Pages pane's text of a page: "Page %d, " and the paper name (" A4") or the size in
// millimetres ("212 x 282 mm"). `index` counts from 0.
std::string PageLabel(std::size_t index, const pdfPage& page);
