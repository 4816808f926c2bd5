#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// The command line of vantrel-cli.
struct CliOptions {
    std::vector<std::string> files;
    bool json = false;
    bool quiet = false;
    bool extraChecks = false;  // our own validations beyond the standard report
    std::optional<std::string> password;
    bool streamRequested = false;
    std::uint32_t streamNum = 0;
    std::uint16_t streamGen = 0;
    bool raw = false;
    std::optional<std::uint32_t> contentsPage;
    std::optional<std::string> exportDir;
    std::string naming = "id";
    bool keepJpeg = false;
    std::string format = "jpg";
    unsigned jobs = 0;  // 0: one per processor
};

enum class CliAction { Run, Help, Version, UsageError };

// Parses the arguments after the program name. On a usage error `error` says what is wrong.
CliAction ParseCommandLine(const std::vector<std::string>& args, CliOptions& options, std::string& error);

// The export filter's identifier for a --format value ("jpg" → "jpeg").
std::string ExportFormatId(const std::string& format);

// The text printed by --help.
std::string UsageText();

// Exit status for bad usage.
constexpr int kExitUsage = 64;
