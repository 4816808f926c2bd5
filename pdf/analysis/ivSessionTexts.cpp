#include "pdf/analysis/ivSessionTexts.h"

#include "platform/ivFormat.h"

namespace {

std::string ShortName(const std::string& path) {
    const std::size_t slash = path.find_last_of("/\\");
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace

std::string WindowTitle(const std::string& path) {
    return ShortName(path) + " - " + kProductTitle;
}

std::string PageCountText(std::size_t pages) {
    return pages == 1 ? "1 Page" : ivFormat("%zu Pages", pages);
}

std::string FileSizeText(std::uint64_t bytes) {
    return "File Size: " + FormatSizeEx(bytes);
}

std::string MissingFileText(const std::string& path, bool offerRemoval) {
    std::string text =
        "Sorry, we couldn't find your file. Is it possible it was moved, renamed or deleted?\n(" + path + ")";
    if (offerRemoval) text += "\nDo you want delete file from the list?";
    return text;
}

std::string PasswordPromptText(const std::string& shortName) {
    return ivFormatOne("'%s' is protected. Please enter a Document Open Password.", shortName);
}
