#include "pdf/object/pdfObjStmPrefetch.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>

#include "platform/ivFileStream.h"

namespace {

// Inflated bytes the worker may hold that the analysis has not taken yet.
constexpr std::uint64_t kAheadBudget = std::uint64_t(16) << 20;
// The head of an object stream: "N G obj", its dictionary and the stream keyword.
constexpr std::uint32_t kHeadBytes = 4096;

bool IsBlank(char c) {
    return c == ' ' || c == '\n' || c == '\r' || c == '\t' || c == '\f' || c == '\0';
}

bool IsDelimiter(char c) {
    return IsBlank(c) || std::strchr("/<>[]()%{}", c) != nullptr;
}

// The value after `key` when the dictionary holds the key exactly once; empty otherwise.
std::string_view ValueOf(std::string_view dict, std::string_view key) {
    std::size_t at = std::string_view::npos;
    for (std::size_t pos = dict.find(key); pos != std::string_view::npos; pos = dict.find(key, pos + 1)) {
        const std::size_t end = pos + key.size();
        if (end < dict.size() && !IsDelimiter(dict[end])) continue;  // a longer name
        if (at != std::string_view::npos) return {};
        at = end;
    }
    if (at == std::string_view::npos) return {};
    std::size_t start = at;
    while (start < dict.size() && IsBlank(dict[start])) ++start;
    return dict.substr(start);
}

// A direct non-negative integer (not the number of a reference) at the start of `text`.
bool ReadLength(std::string_view text, std::uint32_t& length) {
    std::size_t i = 0;
    std::uint64_t value = 0;
    while (i < text.size() && text[i] >= '0' && text[i] <= '9' && value <= 0xFFFFFFFFu)
        value = value * 10 + std::uint64_t(text[i++] - '0');
    if (i == 0 || value > 0xFFFFFFFFu || (i < text.size() && !IsDelimiter(text[i]))) return false;
    std::size_t next = i;
    while (next < text.size() && IsBlank(text[next])) ++next;
    if (next < text.size() && text[next] >= '0' && text[next] <= '9') return false;  // "N G R"
    length = static_cast<std::uint32_t>(value);
    return true;
}

// Where the data starts for the plain case, with its Length; false for anything else.
bool ReadHead(std::string_view head, std::uint32_t offset, std::uint32_t& dataPos, std::uint32_t& length) {
    const std::size_t open = head.find("<<");
    const std::size_t close = head.find(">>", open == std::string_view::npos ? 0 : open);
    if (open == std::string_view::npos || close == std::string_view::npos) return false;
    const std::string_view dict = head.substr(open + 2, close - open - 2);
    // A nested value, an array of filters or parameters: left to the ordinary path.
    if (dict.find_first_of("<[(") != std::string_view::npos) return false;
    if (dict.find("/DecodeParms") != std::string_view::npos || dict.find("/DL") != std::string_view::npos)
        return false;
    const std::string_view filter = ValueOf(dict, "/Filter");
    if (filter.substr(0, 12) != "/FlateDecode" || (filter.size() > 12 && !IsDelimiter(filter[12]))) return false;
    if (!ReadLength(ValueOf(dict, "/Length"), length)) return false;
    std::size_t pos = close + 2;
    while (pos < head.size() && IsBlank(head[pos])) ++pos;
    if (head.substr(pos, 6) != "stream") return false;
    pos += 6;
    if (head.substr(pos, 2) == "\r\n")
        pos += 2;
    else if (pos < head.size() && head[pos] == '\n')
        ++pos;
    else
        return false;
    dataPos = offset + static_cast<std::uint32_t>(pos);
    return true;
}

bool ReadAt(ivStream& file, std::uint64_t at, std::vector<std::uint8_t>& out, std::uint32_t count) {
    out.resize(count);
    if (file.Seek(static_cast<std::int64_t>(at), ivSeekOrigin::Begin) != static_cast<std::int64_t>(at)) return false;
    std::uint32_t got = 0;
    if (Failed(file.Read(out.data(), count, &got))) return false;
    out.resize(got);
    return true;
}

}  // namespace

pdfObjStmPrefetch::pdfObjStmPrefetch(std::string path, std::vector<Request> order, std::uint64_t limit)
    : m_path(std::move(path)), m_limit(limit) {
    m_jobs.reserve(order.size());
    for (const Request& r : order) {
        if (!m_byNumber.emplace(r.objStm, m_jobs.size()).second) continue;
        m_jobs.push_back(Job{r.objStm, r.offset, Job::State::kPending, {}});
    }
    m_worker = std::thread([this] { Work(); });
}

pdfObjStmPrefetch::~pdfObjStmPrefetch() {
    {
        std::lock_guard lock(m_mutex);
        m_stop = true;
    }
    m_changed.notify_all();
    m_worker.join();
}

void pdfObjStmPrefetch::Work() {
    auto file = ivFileStream::Open(m_path);
    for (;;) {
        std::size_t index = 0;
        {
            std::unique_lock lock(m_mutex);
            // Streams the analysis has already read its own way are passed over.
            while (m_next < m_jobs.size() && m_jobs[m_next].state != Job::State::kPending) ++m_next;
            m_changed.wait(lock, [this] { return m_stop || (m_next < m_jobs.size() && m_ahead <= kAheadBudget); });
            if (m_stop) return;
            index = m_next++;
            m_jobs[index].state = Job::State::kRunning;
        }
        Job& job = m_jobs[index];
        bool ok = false;
        try {
            ok = file && Inflate(*file, job);
        } catch (const std::bad_alloc&) {
            ok = false;  // the ordinary path will meet the same shortage and say so
        }
        {
            std::lock_guard lock(m_mutex);
            if (!ok) {
                job.result = {};  // not inflatable here
                job.state = Job::State::kDone;
            } else {
                job.state = Job::State::kReady;
                m_ahead += job.result.bytes.size();
            }
        }
        m_changed.notify_all();
    }
}

bool pdfObjStmPrefetch::Inflate(ivStream& file, Job& job) const {
    std::vector<std::uint8_t> buffer;
    if (!ReadAt(file, job.offset, buffer, kHeadBytes)) return false;
    const std::string_view head(reinterpret_cast<const char*>(buffer.data()), buffer.size());
    std::uint32_t dataPos = 0, length = 0;
    if (!ReadHead(head, job.offset, dataPos, length)) return false;
    if (std::uint64_t(dataPos) + length > file.Size()) return false;
    if (!ReadAt(file, dataPos, buffer, length) || buffer.size() != length) return false;

    z_stream z{};
    if (inflateInit(&z) != Z_OK) return false;
    std::vector<std::uint8_t>& out = job.result.bytes;
    out.resize(std::min<std::uint64_t>(std::max<std::uint64_t>(std::uint64_t(length) * 4, 4096), m_limit));
    z.next_in = buffer.data();
    z.avail_in = length;
    int rc = Z_OK;
    for (;;) {
        if (z.total_out == out.size()) {
            if (out.size() >= m_limit) break;  // the ordinary path reports what lies beyond
            out.resize(std::min<std::uint64_t>(out.size() * 2, m_limit));
        }
        z.next_out = out.data() + z.total_out;
        z.avail_out = static_cast<uInt>(std::min<std::uint64_t>(out.size() - z.total_out, 1u << 30));
        rc = inflate(&z, Z_NO_FLUSH);
        if (rc != Z_OK) break;
    }
    out.resize(z.total_out);
    inflateEnd(&z);
    if (rc != Z_STREAM_END) {
        out = {};
        return false;
    }
    out.shrink_to_fit();
    job.result.dataPos = dataPos;
    job.result.length = length;
    return true;
}

void pdfObjStmPrefetch::WaitForWorker() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] {
        const bool busy = std::any_of(m_jobs.begin(), m_jobs.end(),
                                      [](const Job& j) { return j.state == Job::State::kRunning; });
        return !busy && (m_next >= m_jobs.size() || m_ahead > kAheadBudget);
    });
}

std::optional<pdfObjStmPrefetch::Result> pdfObjStmPrefetch::Take(std::uint32_t objStm) {
    const auto found = m_byNumber.find(objStm);
    if (found == m_byNumber.end()) return std::nullopt;
    Job& job = m_jobs[found->second];
    std::unique_lock lock(m_mutex);
    // Not started: the analysis reads it now, and the worker passes it over.
    if (job.state == Job::State::kPending) {
        job.state = Job::State::kDone;
        return std::nullopt;
    }
    m_changed.wait(lock, [&] { return job.state != Job::State::kRunning; });
    if (job.state != Job::State::kReady) return std::nullopt;
    Result result = std::move(job.result);
    job.result = {};
    job.state = Job::State::kDone;
    m_ahead -= result.bytes.size();
    m_changed.notify_all();
    return result;
}
