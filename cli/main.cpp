#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <mutex>
#include <thread>
#include <vector>

#include "cli/cliOptions.h"
#include "cli/cliReport.h"
#include "platform/ivCodec.h"

namespace {

void Emit(const FileOutcome& o) {
    if (!o.out.empty()) std::fwrite(o.out.data(), 1, o.out.size(), stdout);
    std::fflush(stdout);
    if (!o.err.empty()) std::fwrite(o.err.data(), 1, o.err.size(), stderr);
}

// Analyses the files on up to `jobs` threads and prints each outcome as soon as every file
// before it has been printed, so the output keeps the order given.
int RunAll(const CliOptions& options) {
    const std::size_t count = options.files.size();
    unsigned jobs = options.jobs ? options.jobs : std::max(1u, std::thread::hardware_concurrency());
    jobs = static_cast<unsigned>(std::min<std::size_t>(jobs, count));
    std::vector<FileOutcome> outcomes(count);
    std::vector<bool> done(count, false);
    std::mutex mutex;
    std::condition_variable finished;
    std::atomic<std::size_t> next{0};
    auto worker = [&] {
        for (std::size_t i; (i = next++) < count;) {
            FileOutcome o = AnalyseFile(options.files[i], options);
            std::lock_guard lock(mutex);
            outcomes[i] = std::move(o);
            done[i] = true;
            finished.notify_all();
        }
    };
    std::vector<std::thread> threads;
    for (unsigned t = 1; t < jobs; ++t) threads.emplace_back(worker);
    if (jobs <= 1) worker();
    int status = 0;
    for (std::size_t i = 0; i < count; ++i) {
        std::unique_lock lock(mutex);
        finished.wait(lock, [&] { return done[i]; });
        FileOutcome o = std::move(outcomes[i]);
        lock.unlock();
        if (!options.json && !options.quiet && count > 1 && i > 0) std::fputs("\n", stdout);
        Emit(o);
        status = std::max(status, o.exitStatus);
    }
    for (auto& t : threads) t.join();
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    CliOptions options;
    std::string error;
    switch (ParseCommandLine(args, options, error)) {
        case CliAction::Help:
            std::fputs(UsageText().c_str(), stdout);
            return 0;
        case CliAction::Version:
            std::puts("vantrel-cli " VANTREL_VERSION);
            return 0;
        case CliAction::UsageError:
            std::fprintf(stderr, "vantrel-cli: %s\nTry 'vantrel-cli --help' for more information.\n",
                         error.c_str());
            return kExitUsage;
        case CliAction::Run:
            break;
    }
    if (options.exportDir) {
        if (!CreateInterface<ivImageExporter>(ExportFormatId(options.format))) {
            std::fprintf(stderr, "vantrel-cli: --format %s is not available in this build\n",
                         options.format.c_str());
            return kExitUsage;
        }
        std::error_code ec;
        std::filesystem::create_directories(*options.exportDir, ec);
        if (!std::filesystem::is_directory(*options.exportDir, ec)) {
            std::fprintf(stderr, "vantrel-cli: Can't create folder %s\n", options.exportDir->c_str());
            return kExitUsage;
        }
    }
    if (options.streamRequested || options.contentsPage) {
        FileOutcome o = options.streamRequested ? WriteStreamData(options.files.front(), options)
                                                : WriteContentOperations(options.files.front(), options);
        Emit(o);
        return o.exitStatus;
    }
    return RunAll(options);
}
