#pragma once
#include <cstdint>
#include <string>

// Texts the desktop program shows for its document session, computed here so that the core's
// tests cover them.

// The product title, the window's title without a document.
inline constexpr const char* kProductTitle = "Vantrel 1.2";

// "file.pdf - Vantrel 1.2": the file's name without its folder.
std::string WindowTitle(const std::string& path);
// "1 Page", else "%d Pages" (so "0 Pages").
std::string PageCountText(std::size_t pages);
// "File Size: 1.25 MB (1,310,720 bytes)".
std::string FileSizeText(std::uint64_t bytes);
// The prompt for a file that cannot be opened, with the removal question when asked for.
std::string MissingFileText(const std::string& path, bool offerRemoval);
// "'%s' is protected. Please enter a Document Open Password." with the file's short name.
std::string PasswordPromptText(const std::string& shortName);
