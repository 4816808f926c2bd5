#pragma once
// Deterministic inputs for the micro-benchmarks, built in memory: object text as producers
// write it, content streams, cross-reference tables and streams, compressed image rows,
// LZW data and whole small documents. The same call always gives the same bytes.
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ivMemStream.h"

namespace bench {

// xorshift64*: the same sequence on every machine.
class Rng {
public:
    explicit Rng(std::uint64_t seed) : m_s(seed * 0x9E3779B97F4A7C15ull + 0x1234567ull) {
        if (m_s == 0) m_s = 1;
    }
    std::uint64_t Next() {
        m_s ^= m_s >> 12;
        m_s ^= m_s << 25;
        m_s ^= m_s >> 27;
        return m_s * 0x2545F4914F6CDD1Dull;
    }
    std::uint32_t Below(std::uint32_t n) { return static_cast<std::uint32_t>((Next() >> 11) % n); }

private:
    std::uint64_t m_s;
};

ivRef<ivMemStream> MemStreamOf(std::string_view bytes);

// About `bytes` bytes of "N 0 obj ... endobj" objects of the kinds a file is made of: pages,
// annotations, fonts with widths, outline items, structure elements, actions. `count`
// receives the number of objects.
std::string ObjectText(std::size_t bytes, std::size_t* count);

// About `bytes` bytes of page content: text, paths, colours, marked content, XObjects.
std::string ContentText(std::size_t bytes);

// A file that holds only a classic table of `entries` in-use objects and its trailer; the
// table starts at *tableOffset.
std::string ClassicTableFile(std::uint32_t entries, std::uint32_t* tableOffset);

// A file that holds only a cross-reference stream (W [1 4 2], Flate with the PNG Up
// predictor) of `entries` objects, most of them in object streams of 100; the stream object
// starts at *streamOffset.
std::string XrefStreamFile(std::uint32_t entries, std::uint32_t* streamOffset);

// Zlib data of an RGB image, `width` x `height`, 8 bits per component. `pngFilter` 0-4 tags
// every row with that PNG filter (applied), 5 cycles through all of them (Predictor 15 as
// encoders write it), -1 writes plain rows without tag bytes. `decoded` gets the plain rows.
std::string FlateImage(std::uint32_t width, std::uint32_t height, int pngFilter, std::string* decoded);

// zlib's compress2 at `level`.
std::string Deflate(std::string_view data, int level = 6);

// LZW as producers write it: a clear code first, codes of 9 to 12 bits, a clear code when
// the table is full, the end code last.
std::string LzwEncode(std::string_view data, bool earlyChange = true);

// A whole file of `pages` pages, each with a content stream, two annotations that point back
// to it and a share of fonts and images, under a page tree of 16 kids per node, with an
// outline and an Info dictionary. `objects` receives the number of objects.
std::string SmallObjectsDocument(std::uint32_t pages, std::uint32_t* objects);

}  // namespace bench
