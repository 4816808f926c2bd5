#pragma once
#include <filesystem>
#include <string>
#include <vector>

// Runs vantrel-cli as a user would, in a child process, for the tests that give it hostile
// files: the exit status, the wall time, the child's peak resident size and its output.

// Limits of one run over one file. Sanitizer and unoptimised builds run several times slower,
// and ASan's shadow memory and quarantine count in the resident size.
struct CliLimits {
    double seconds;
    long megabytes;
};
CliLimits DefaultCliLimits();

struct CliOutcome {
    int exitStatus = -1;  // -1 when killed by a signal (or not run)
    int signal = 0;
    std::string killedFor;  // "time" or "memory" when the runner stopped it
    double seconds = 0;
    // From wait4; it includes the pages the test process had when it forked (a few MB).
    long peakMegabytes = 0;
    std::string out, err;

    // "runtime error:" or a sanitizer report on standard error: a fault even when the
    // sanitizer's exit status happens to equal a status of the contract.
    bool SanitizerReported() const;
    // "message_count" of a --json report; -1 when there is none.
    int MessageCount() const;
};

// Standard input is empty, so no password is asked for; standard output and error go to
// files in `scratch`. A run is killed once it takes three times the time limit or twice the
// memory limit, so that a runaway file costs the suite little and never the machine.
CliOutcome RunCli(const std::vector<std::string>& args, const std::filesystem::path& scratch,
                  const CliLimits& limits = DefaultCliLimits());

// A folder of its own for one test, removed afterwards unless `keepIn` is set (then the
// folder is keepIn/name and stays).
class ScratchFolder {
public:
    explicit ScratchFolder(const std::string& name, const char* keepIn = nullptr);
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    const std::filesystem::path& Path() const { return m_path; }

private:
    std::filesystem::path m_path;
    bool m_keep = false;
};
