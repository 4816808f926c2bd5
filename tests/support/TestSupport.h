#pragma once
#include <memory>
#include <string>
#include <vector>

#include "pdf/object/pdfDocument.h"
#include "platform/ivIOControl.h"
#include "platform/ivMemStream.h"

// A message sink for tests: flattens the message tree into readable lines.
class RecordingControl : public ivIOControl {
public:
    // Message texts in reporting order.
    std::vector<std::string> Texts() const;
    // Each message with its scopes, outermost first: "scope > scope > text".
    std::vector<std::string> Paths() const;
    // How many messages equal `text`.
    int Count(const std::string& text) const;
};

ivRef<ivMemStream> MemStream(const std::string& bytes);

// A document over bytes in memory, reporting to `control`.
std::unique_ptr<pdfDocument> DocFromBytes(const std::string& bytes, ivIOControl* control);

// Contents of a file under tests/data.
std::string ReadTestFile(const std::string& relativePath);
std::string TestDataPath(const std::string& relativePath);

// LZW codes (EarlyChange 1) that fill the table without ever clearing it, then `repeats` more
// codes naming its longest string.
std::string LzwWithoutClearCodes(std::size_t repeats);
