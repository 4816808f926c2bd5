#include "support/CliRun.h"

#include <fcntl.h>
#include <malloc.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <regex>
#include <sstream>
#include <thread>

namespace fs = std::filesystem;

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif
#else
constexpr bool kSanitized = false;
#endif
#ifdef NDEBUG
constexpr bool kOptimised = true;
#else
constexpr bool kOptimised = false;
#endif

// The child's resident size now, from /proc; 0 when it cannot be read.
long ResidentMegabytes(pid_t pid) {
    std::ifstream statm("/proc/" + std::to_string(pid) + "/statm");
    long size = 0, resident = 0;
    if (!(statm >> size >> resident)) return 0;
    return resident * (sysconf(_SC_PAGESIZE) / 1024) / 1024;
}

std::string Slurp(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

}  // namespace

CliLimits DefaultCliLimits() {
    return {5.0 * (kSanitized ? 4 : 1) * (kOptimised ? 1 : 3), 512L * (kSanitized ? 3 : 1)};
}

bool CliOutcome::SanitizerReported() const {
    return err.find("runtime error:") != std::string::npos || err.find("Sanitizer") != std::string::npos;
}

int CliOutcome::MessageCount() const {
    static const std::regex count("\"message_count\":([0-9]+)");
    std::smatch m;
    return std::regex_search(out, m, count) ? std::stoi(m[1]) : -1;
}

CliOutcome RunCli(const std::vector<std::string>& args, const fs::path& scratch, const CliLimits& limits) {
    const fs::path outFile = scratch / "stdout", errFile = scratch / "stderr";
    std::string program = VANTREL_CLI;
    std::vector<std::string> copies = args;
    std::vector<char*> argv{program.data()};
    for (std::string& a : copies) argv.push_back(a.data());
    argv.push_back(nullptr);

    CliOutcome o;
    // The child starts as a copy of this process, whose resident pages count in its peak:
    // give back what the test freed first.
    malloc_trim(0);
    const auto start = std::chrono::steady_clock::now();
    const pid_t pid = fork();
    if (pid == 0) {
        // Only async-signal-safe calls between fork and exec.
        const int in = open("/dev/null", O_RDONLY);
        const int out = open(outFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        const int err = open(errFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (in < 0 || out < 0 || err < 0 || dup2(in, 0) < 0 || dup2(out, 1) < 0 || dup2(err, 2) < 0)
            _exit(126);
        execv(argv[0], argv.data());
        _exit(127);
    }
    if (pid < 0) return o;
    const auto killAfter = std::chrono::duration<double>(3 * limits.seconds);
    int status = 0;
    rusage usage{};
    for (;;) {
        if (wait4(pid, &status, WNOHANG, &usage) == pid) break;
        const bool late = std::chrono::steady_clock::now() - start > killAfter;
        if (late || ResidentMegabytes(pid) > 2 * limits.megabytes) {
            o.killedFor = late ? "time" : "memory";
            kill(pid, SIGKILL);
            wait4(pid, &status, 0, &usage);
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    o.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    o.peakMegabytes = usage.ru_maxrss / 1024;  // kilobytes on Linux
    if (WIFEXITED(status)) o.exitStatus = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) o.signal = WTERMSIG(status);
    o.out = Slurp(outFile);
    o.err = Slurp(errFile);
    return o;
}

ScratchFolder::ScratchFolder(const std::string& name, const char* keepIn) {
    m_keep = keepIn && *keepIn;
    m_path = m_keep ? fs::path(keepIn) / name
                    : fs::temp_directory_path() / ("vantrel-" + name + "-" + std::to_string(::getpid()));
    fs::remove_all(m_path);
    fs::create_directories(m_path);
}

ScratchFolder::~ScratchFolder() {
    std::error_code ec;
    if (!m_keep) fs::remove_all(m_path, ec);
}
