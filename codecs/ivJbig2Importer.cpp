#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <set>
#include <string>
#include <vector>

#include "codecs/ivCodecIo.h"
#include "codecs/ivCodecs.h"
#include "platform/ivFormat.h"

// jbig2.h defines `inline` away when it is not a macro, which in C++ it never is; it comes
// last and the definition goes again right after it.
#include <jbig2.h>
#undef inline

// JBIG2 through jbig2dec in its embedded mode: PDF keeps the segments without the file
// header, and shared symbol dictionaries in a separate globals stream.

namespace {

// Segments whose data starts with a region's width, height and position.
constexpr std::uint8_t kRegionTypes[] = {4, 6, 7, 20, 22, 23, 36, 38, 39, 40, 42, 43};
constexpr std::uint8_t kSymbolDictionary = 0;
constexpr std::uint8_t kImmediateGeneric = 38, kImmediateLosslessGeneric = 39, kPageInformation = 48,
                       kEndOfFile = 51;
constexpr std::uint32_t kUnknownLength = 0xFFFFFFFF;
constexpr std::size_t kMaxMessages = 4096;  // characters kept for ErrorText

// Besides the page, jbig2dec keeps region bitmaps and symbols; twice the bitmap limit leaves
// room for a region as large as the page.
constexpr std::size_t kMemoryLimit = 2 * ivImage2d::kMaxBytes + (std::size_t(64) << 20);

std::uint32_t ReadBe32(const std::uint8_t* p) {
    return std::uint32_t(p[0]) << 24 | std::uint32_t(p[1]) << 16 | std::uint32_t(p[2]) << 8 | p[3];
}

struct SegmentHeader {
    std::uint32_t number = 0;
    std::uint8_t type = 0;
    std::uint32_t dataLength = 0;
    std::size_t size = 0;  // bytes of the header itself
    std::vector<std::uint32_t> referred;
};

enum class HeaderRead { kComplete, kIncomplete, kDamaged };

// One segment header at the start of `bytes`.
HeaderRead ReadSegmentHeader(std::span<const std::uint8_t> bytes, SegmentHeader& h) {
    if (bytes.size() < 6) return HeaderRead::kIncomplete;
    h.number = ReadBe32(bytes.data());
    const std::uint8_t flags = bytes[4];
    h.type = flags & 0x3F;
    std::uint64_t count = bytes[5] >> 5;
    std::uint64_t pos = 6;
    if (count == 7) {  // long form: a 29-bit count, then one retention bit per segment and itself
        if (bytes.size() < 9) return HeaderRead::kIncomplete;
        count = ReadBe32(bytes.data() + 5) & 0x1FFFFFFF;
        pos = 9 + (count + 8) / 8;
    } else if (count > 4) {
        return HeaderRead::kDamaged;
    }
    const unsigned width = h.number <= 256 ? 1 : h.number <= 65536 ? 2 : 4;  // of each referred-to number
    const std::uint64_t referredAt = pos;
    pos += count * width;
    pos += flags & 0x40 ? 4 : 1;  // page association
    if (pos + 4 > bytes.size()) return HeaderRead::kIncomplete;
    h.referred.clear();
    for (std::uint64_t i = 0; i < count; ++i) {
        std::uint32_t n = 0;
        for (unsigned k = 0; k < width; ++k)
            n = n << 8 | bytes[static_cast<std::size_t>(referredAt + i * width + k)];
        h.referred.push_back(n);
    }
    h.dataLength = ReadBe32(bytes.data() + pos);
    h.size = static_cast<std::size_t>(pos + 4);
    return HeaderRead::kComplete;
}

// Filters and producers end streams with line ends or zeros; anything else left over is the
// start of a segment that was cut off.
bool IsPadding(std::span<const std::uint8_t> rest) {
    return std::all_of(rest.begin(), rest.end(),
                       [](std::uint8_t b) { return b == 0 || b == '\r' || b == '\n' || b == ' '; });
}

std::uint64_t BitmapBytes(std::uint32_t width, std::uint64_t height) {
    return (std::uint64_t(width) + 31) / 32 * 4 * height;
}

// The page the regions go on; a height of 0xFFFFFFFF means "known at the end", when the
// stripes grow the page within the allocator's limit.
struct PageSize {
    std::uint32_t width = 0, height = 0;
    bool seen = false;
};

std::string CheckPage(std::span<const std::uint8_t> info, PageSize& page) {
    page = {ReadBe32(info.data()), ReadBe32(info.data() + 4), true};
    const std::uint64_t rows = page.height == kUnknownLength ? 1 : page.height;
    if (BitmapBytes(page.width, rows) > ivImage2d::kMaxBytes)
        return ivFormat("JBIG2 page of %u x %u pixels is too large", page.width, page.height);
    return {};
}

// jbig2dec decodes a region whole before it clips it to the page, so a region larger than
// its page costs time and memory for nothing: a few bytes can ask for minutes of decoding.
std::string CheckRegion(std::span<const std::uint8_t> info, const PageSize& page) {
    const std::uint32_t width = ReadBe32(info.data()), height = ReadBe32(info.data() + 4);
    const bool larger =
        page.seen && (width > page.width || (page.height != kUnknownLength && height > page.height));
    if (larger || BitmapBytes(width, height) > ivImage2d::kMaxBytes)
        return ivFormat("JBIG2 region of %u x %u pixels is larger than its page", width, height);
    return {};
}

// Symbols and text instances a segment claims, against the bytes that code them. Past the
// end of its data the arithmetic decoder goes on producing decisions, so a few bytes could
// ask for hundreds of millions of symbols; real data needs far more than a byte for each 32.
constexpr std::uint64_t kItemsPerByte = 32, kItemsWithoutData = 65536;

std::string CheckCount(std::span<const std::uint8_t> segment, std::size_t at, const char* what, const char* items) {
    if (at + 4 > segment.size()) return {};  // too short to say; the decoder will complain
    const std::uint32_t count = ReadBe32(segment.data() + at);
    const std::uint64_t coded = segment.size() - at - 4;
    if (count > kItemsPerByte * coded + kItemsWithoutData)
        return ivFormat("JBIG2 %s claims %u %s in %u bytes", what, count, items, static_cast<unsigned>(coded));
    return {};
}

// Text regions: region information, flags, optional Huffman and refinement fields, then
// the number of instances.
std::string CheckTextRegion(std::span<const std::uint8_t> segment) {
    if (segment.size() < 19) return {};
    const unsigned flags = unsigned(segment[17]) << 8 | segment[18];
    std::size_t at = 19;
    if (flags & 0x0001) at += 2;                         // SBHUFF: the Huffman table selection
    if ((flags & 0x0002) && !(flags & 0x8000)) at += 4;  // SBREFINE with template 0: its AT pixels
    return CheckCount(segment, at, "text region", "instances");
}

// Symbol dictionaries: flags, AT pixels, then the exported and new symbol counts.
std::string CheckSymbolDictionary(std::span<const std::uint8_t> segment) {
    if (segment.size() < 2) return {};
    const unsigned flags = unsigned(segment[0]) << 8 | segment[1];
    std::size_t at = 2;
    if (!(flags & 0x0001)) at += ((flags >> 10) & 3) == 0 ? 8 : 2;  // generic AT pixels
    if ((flags & 0x0002) && !(flags & 0x1000)) at += 4;             // refinement AT pixels
    std::string refused = CheckCount(segment, at, "symbol dictionary", "exported symbols");
    return refused.empty() ? CheckCount(segment, at + 4, "symbol dictionary", "new symbols") : refused;
}

// The sizes a page information or region segment claims, against the limits.
std::string CheckSizes(std::uint8_t type, std::span<const std::uint8_t> segment, PageSize& page) {
    if (type == kSymbolDictionary) return CheckSymbolDictionary(segment);
    if (segment.size() < 8) return {};  // too short to say; the decoder will complain
    if (type == kPageInformation) return CheckPage(segment, page);
    if (std::ranges::find(kRegionTypes, type) == std::end(kRegionTypes)) return {};
    std::string refused = CheckRegion(segment, page);
    if (refused.empty() && (type == 4 || type == 6 || type == 7)) refused = CheckTextRegion(segment);
    return refused;
}

// Walks the segment headers before jbig2dec sees them: it allocates and clears the page as
// soon as it reads the page's size, decodes regions of any size, completes a page whose last
// segment was cut off without a word, and only warns when a region refers to a segment that
// isn't there (the globals forgotten, typically), leaving the page blank. `known` has the numbers of the
// segments seen before (the globals') and receives these. Returns an empty text when the data may go to the
// decoder.
std::string CheckSegments(std::span<const std::uint8_t> data, std::set<std::uint32_t>& known, PageSize& page) {
    std::size_t pos = 0;
    SegmentHeader h;
    while (pos < data.size()) {
        HeaderRead read = ReadSegmentHeader(data.subspan(pos), h);
        if (read == HeaderRead::kDamaged) return "JBIG2 segment header is damaged";
        if (read == HeaderRead::kIncomplete)
            return IsPadding(data.subspan(pos)) ? "" : "JBIG2 data is truncated";
        for (std::uint32_t r : h.referred)
            if (!known.count(r))
                return ivFormat("JBIG2 segment %u refers to segment %u, which is missing", h.number, r);
        known.insert(h.number);
        const std::size_t start = pos + h.size, available = data.size() - start;
        // Only an immediate generic region may leave its length open; the decoder finds its
        // end, and nothing can follow it.
        const bool open = h.dataLength == kUnknownLength;
        if (open && h.type != kImmediateGeneric && h.type != kImmediateLosslessGeneric)
            return "JBIG2 segment has no length";
        if (!open && h.dataLength > available) return "JBIG2 data is truncated";
        const std::size_t length = open ? available : h.dataLength;
        std::string refused = CheckSizes(h.type, data.subspan(start, length), page);
        if (!refused.empty()) return refused;
        if (open || h.type == kEndOfFile) break;
        pos = start + length;
    }
    return {};
}

// A malloc-based allocator with a ceiling, so hostile data can't make jbig2dec take all the
// memory there is. Each block starts with its size.
// Besides what is held at once, the bytes allocated in all are bounded: every bitmap that
// jbig2dec makes (the page, a region, each symbol) is decoded pixel by pixel, and past the end
// of its data the arithmetic decoder goes on producing pixels for nothing. So a stream gets
// its page, a fixed allowance and 16 KiB (131,072 pixels) for each byte of coded data: far
// more than real data needs, and a bound on the time a few bytes can ask for.
constexpr std::size_t kWorkAllowance = std::size_t(8) << 20;
constexpr std::size_t kWorkPerCodedByte = 16 * 1024;

struct CappedAllocator {
    Jbig2Allocator base;  // first, so the pointer jbig2dec hands back converts to this struct
    std::size_t used = 0;
    std::size_t allocated = 0;  // in all, freed blocks included
    std::size_t workLimit = 0;
    bool overWork = false;      // a request was refused for the work limit
};
constexpr std::size_t kBlockHeader = alignof(std::max_align_t);

CappedAllocator& Capped(Jbig2Allocator* allocator) {
    return *reinterpret_cast<CappedAllocator*>(allocator);
}

std::size_t BlockSize(void* p) {
    std::size_t size = 0;
    std::memcpy(&size, static_cast<std::uint8_t*>(p) - kBlockHeader, sizeof size);
    return size;
}

// Counts `size` more bytes towards the work limit; false when they would pass it.
bool SpendWork(CappedAllocator& self, std::size_t size) {
    if (size > self.workLimit - self.allocated) {
        self.overWork = true;
        return false;
    }
    self.allocated += size;
    return true;
}

void* CappedAlloc(Jbig2Allocator* allocator, std::size_t size) {
    CappedAllocator& self = Capped(allocator);
    if (size > kMemoryLimit - self.used || !SpendWork(self, size)) return nullptr;
    auto* block = static_cast<std::uint8_t*>(std::malloc(size + kBlockHeader));
    if (!block) return nullptr;
    std::memcpy(block, &size, sizeof size);
    self.used += size;
    return block + kBlockHeader;
}

void CappedFree(Jbig2Allocator* allocator, void* p) {
    if (!p) return;
    Capped(allocator).used -= BlockSize(p);
    std::free(static_cast<std::uint8_t*>(p) - kBlockHeader);
}

void* CappedRealloc(Jbig2Allocator* allocator, void* p, std::size_t size) {
    if (!p) return CappedAlloc(allocator, size);
    CappedAllocator& self = Capped(allocator);
    const std::size_t old = BlockSize(p);
    if (size > old && (size - old > kMemoryLimit - self.used || !SpendWork(self, size - old))) return nullptr;
    auto* block = static_cast<std::uint8_t*>(
        std::realloc(static_cast<std::uint8_t*>(p) - kBlockHeader, size + kBlockHeader));
    if (!block) return nullptr;
    std::memcpy(block, &size, sizeof size);
    self.used = self.used - old + size;
    return block + kBlockHeader;
}

struct Jbig2Messages {
    std::string fatal, warnings;
};

void OnJbig2Message(void* data, const char* message, Jbig2Severity severity, std::uint32_t) {
    if (severity < JBIG2_SEVERITY_WARNING || !message) return;
    auto* messages = static_cast<Jbig2Messages*>(data);
    std::string& to = severity == JBIG2_SEVERITY_FATAL ? messages->fatal : messages->warnings;
    try {
        if (to.size() > kMaxMessages) return;
        if (!to.empty()) to += "; ";
        to += message;
    } catch (...) {  // a lost message is no reason to let an exception into jbig2dec
    }
}

struct ContextDeleter {
    void operator()(Jbig2Ctx* ctx) const { jbig2_ctx_free(ctx); }
};
struct GlobalDeleter {
    void operator()(Jbig2GlobalCtx* ctx) const { jbig2_global_ctx_free(ctx); }
};
using Jbig2Context = std::unique_ptr<Jbig2Ctx, ContextDeleter>;

class PageGuard {
public:
    PageGuard(Jbig2Ctx* ctx, Jbig2Image* page) : m_ctx(ctx), m_page(page) {}
    ~PageGuard() {
        if (m_page) jbig2_release_page(m_ctx, m_page);
    }
    PageGuard(const PageGuard&) = delete;
    PageGuard& operator=(const PageGuard&) = delete;

private:
    Jbig2Ctx* m_ctx;
    Jbig2Image* m_page;
};

class ivJbig2Importer final : public ivImageImporter {
public:
    ivStatus SetGlobals(std::span<const std::uint8_t> data) override;
    ivStatus Decode(ivStream& data, ivImage2d& image) override;
    std::string ErrorText() const override { return m_error; }

private:
    ivStatus DecodeBytes(std::span<const std::uint8_t> data, ivImage2d& image);
    // Decodes data whose segments were checked, with `allocator` bounding memory and work.
    ivStatus DecodeChecked(std::span<const std::uint8_t> data, ivImage2d& image, CappedAllocator& allocator);
    ivStatus CopyPage(const Jbig2Image& page, ivImage2d& image);
    ivStatus Fail(ivStatus status, const std::string& text);

    std::vector<std::uint8_t> m_globals;
    Jbig2Messages m_messages;
    std::string m_error;
};

ivStatus ivJbig2Importer::SetGlobals(std::span<const std::uint8_t> data) {
    try {
        m_globals.assign(data.begin(), data.end());
        return kOk;
    } catch (const std::bad_alloc&) {
        m_globals.clear();
        return kOutOfMemory;
    }
}

ivStatus ivJbig2Importer::Fail(ivStatus status, const std::string& text) {
    m_error = !m_messages.fatal.empty()      ? m_messages.fatal
              : !m_messages.warnings.empty() ? m_messages.warnings
                                             : text;
    return status;
}

ivStatus ivJbig2Importer::Decode(ivStream& data, ivImage2d& image) {
    m_messages = {};
    m_error.clear();
    return ivDecodeWholeData(data, m_error,
                             [&](std::span<const std::uint8_t> bytes) { return DecodeBytes(bytes, image); });
}

ivStatus ivJbig2Importer::DecodeBytes(std::span<const std::uint8_t> data, ivImage2d& image) {
    if (data.empty()) return Fail(kFail, "No JBIG2 data");
    std::set<std::uint32_t> known;
    PageSize globalPage, page;
    std::string refused = CheckSegments(m_globals, known, globalPage);
    if (refused.empty()) refused = CheckSegments(data, known, page);
    if (!refused.empty()) {
        m_error = refused;
        return kFail;
    }
    // The allocator outlives the contexts that DecodeChecked makes.
    CappedAllocator allocator{{CappedAlloc, CappedFree, CappedRealloc}};
    const std::size_t coded = m_globals.size() + data.size();
    const std::uint64_t pageBytes =
        page.seen && page.height != kUnknownLength ? BitmapBytes(page.width, page.height) : 0;
    const std::uint64_t work = kWorkAllowance + std::uint64_t(kWorkPerCodedByte) * coded + pageBytes;
    allocator.workLimit = static_cast<std::size_t>(std::min<std::uint64_t>(work, SIZE_MAX));
    const ivStatus st = DecodeChecked(data, image, allocator);
    if (Failed(st) && allocator.overWork)
        m_error = ivFormat("JBIG2 data asks for more decoding than its %zu bytes can hold", coded);
    return st;
}

ivStatus ivJbig2Importer::DecodeChecked(std::span<const std::uint8_t> data, ivImage2d& image,
                                        CappedAllocator& allocator) {
    // Declared in this order so the page context goes before the globals it refers to.
    std::unique_ptr<Jbig2GlobalCtx, GlobalDeleter> globals;
    if (!m_globals.empty()) {
        Jbig2Context reader(
            jbig2_ctx_new(&allocator.base, JBIG2_OPTIONS_EMBEDDED, nullptr, OnJbig2Message, &m_messages));
        if (!reader) return Fail(kOutOfMemory, "Out of memory");
        if (jbig2_data_in(reader.get(), m_globals.data(), m_globals.size()) < 0)
            return Fail(kFail, "JBIG2 globals can't be read");
        globals.reset(jbig2_make_global_ctx(reader.release()));
    }
    Jbig2Context ctx(
        jbig2_ctx_new(&allocator.base, JBIG2_OPTIONS_EMBEDDED, globals.get(), OnJbig2Message, &m_messages));
    if (!ctx) return Fail(kOutOfMemory, "Out of memory");
    if (jbig2_data_in(ctx.get(), data.data(), data.size()) < 0)
        return Fail(kFail, "JBIG2 data can't be decoded");
    // PDF's streams need not end their page; completing it takes what came.
    if (jbig2_complete_page(ctx.get()) < 0) return Fail(kFail, "JBIG2 page can't be completed");
    Jbig2Image* page = jbig2_page_out(ctx.get());
    PageGuard guard(ctx.get(), page);
    if (!page) return Fail(kFail, "JBIG2 data has no page");
    if (!m_messages.fatal.empty()) return Fail(kFail, "");
    ivStatus st = CopyPage(*page, image);
    if (Succeeded(st) && !m_messages.warnings.empty()) {
        m_error = m_messages.warnings;
        return kRemark;
    }
    return st;
}

ivStatus ivJbig2Importer::CopyPage(const Jbig2Image& page, ivImage2d& image) {
    if (Failed(image.Create(ivImage2d::kIndexed1, page.width, page.height)))
        return Fail(kOutOfMemory,
                    ivFormat("JBIG2 page of %u x %u pixels is too large", page.width, page.height));
    // jbig2dec's 1 bits are black, as the palette says.
    image.Palette()[0] = 0xFFFFFFFFu;
    image.Palette()[1] = 0xFF000000u;
    const std::size_t bytes = std::min<std::size_t>(image.Stride(), page.stride);
    for (std::uint32_t y = 0; y < page.height; ++y)
        std::memcpy(image.Row(y), page.data + std::size_t(y) * page.stride, bytes);
    return kOk;
}

}  // namespace

std::unique_ptr<ivImageImporter> CreateJbig2Importer() {
    return std::make_unique<ivJbig2Importer>();
}
