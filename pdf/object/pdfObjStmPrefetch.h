#pragma once
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

// Inflates object streams on a second thread ahead of the analysis, which reads them in a
// known order. Only the plain case is done here: an unencrypted stream whose dictionary gives
// a direct Length and the single filter FlateDecode, inflated to its end without an error.
// Anything else, or a stream whose data the object parser places elsewhere, is left to the
// ordinary path, which decodes it (and reports) as if nothing had been prefetched.
class pdfObjStmPrefetch {
public:
    struct Request {
        std::uint32_t objStm;  // the object stream's number
        std::uint32_t offset;  // where its "N G obj" starts in the file
    };
    // A finished stream: where its data starts and how long the Length said it is, with the
    // inflated bytes.
    struct Result {
        std::uint32_t dataPos = 0;
        std::uint32_t length = 0;
        std::vector<std::uint8_t> bytes;
    };

    // Reads `path` through a handle of its own; at most `limit` inflated bytes a stream.
    pdfObjStmPrefetch(std::string path, std::vector<Request> order, std::uint64_t limit);
    ~pdfObjStmPrefetch();
    pdfObjStmPrefetch(const pdfObjStmPrefetch&) = delete;
    pdfObjStmPrefetch& operator=(const pdfObjStmPrefetch&) = delete;

    // The inflated data of `objStm`, waiting for it while the worker inflates it; empty when
    // the worker has not started it (it is then passed over) or could not inflate it.
    std::optional<Result> Take(std::uint32_t objStm);
    // Waits until the worker has looked at every stream (or stopped for its budget).
    void WaitForWorker();

private:
    struct Job {
        std::uint32_t objStm;
        std::uint32_t offset;
        // Ready: inflated and waiting; done: taken, passed over or not inflatable here.
        enum class State { kPending, kRunning, kReady, kDone } state = State::kPending;
        Result result;
    };

    void Work();
    bool Inflate(class ivStream& file, Job& job) const;

    const std::string m_path;
    const std::uint64_t m_limit;
    std::vector<Job> m_jobs;  // in the order the analysis is expected to ask
    std::unordered_map<std::uint32_t, std::size_t> m_byNumber;  // object stream number -> job
    std::size_t m_next = 0;     // the first job the worker has not looked at
    std::uint64_t m_ahead = 0;  // inflated bytes waiting to be taken
    bool m_stop = false;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::thread m_worker;
};
