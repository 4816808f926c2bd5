#pragma once
#include <string>

#include "cli/cliOptions.h"

// What one file gives: standard output, standard error and the exit status.
struct FileOutcome {
    std::string out;
    std::string err;
    int exitStatus = 0;
};

// Exit statuses of one file.
constexpr int kExitClean = 0;
constexpr int kExitMessages = 1;
constexpr int kExitNotOpened = 2;

// Opens and analyses one file and renders its report (text or JSON, nothing with --quiet).
FileOutcome AnalyseFile(const std::string& path, const CliOptions& options);

// Opens one file and writes the data of the requested stream object (decoded, or stored with
// --raw) to `out`; messages go to `err`.
FileOutcome WriteStreamData(const std::string& path, const CliOptions& options);

// Opens one file and writes the content operations of the requested page, one a line:
// the operands' texts, then the operator.
FileOutcome WriteContentOperations(const std::string& path, const CliOptions& options);
