#pragma once
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "pdf/analysis/pdfPageTree.h"
#include "pdf/object/pdfDocument.h"

class ivPasswordPrompt;

// The document analyser: one per opened file. Open reads the physical structure, the catalog
// and the page tree; Analyse visits every object of every section, records who refers to it,
// gives it its role and checks it, then checks the linearization.
class ivPdf : public pdfDocument {
public:
    ivPdf(ivRef<ivStream> file, std::string fileName, ivIOControl* control);
    ~ivPdf() override;

    // A failure code when the header or the newest section's position cannot be read, or a
    // section ends in error; 0 otherwise (also for an empty document).
    ivStatus Open();
    // Always 0 (kOutOfMemory if memory runs out).
    ivStatus Analyse();

    const std::string& FileName() const { return m_fileName; }
    // Who is asked for a password when the empty one does not open the document; not owned.
    void SetPasswordPrompt(ivPasswordPrompt* prompt) { m_prompt = prompt; }

    // The pages in tree order; a page listed twice in Kids is here twice.
    const std::vector<pdfPage*>& Pages() const { return m_pages; }
    const pdfTree* RootTree() const { return m_root.get(); }
    void AddPage(pdfPage* page) { m_pages.push_back(page); }
    void SetRootTree(std::unique_ptr<pdfTree> root) { m_root = std::move(root); }

    ObjId CatalogId() const { return m_catalogId; }
    const pdfObject* Catalog() const { return m_catalog; }

    // The entries whose objects refer to `entry`'s object, in the order they were met.
    std::vector<XrefEntry*> Referrers(const XrefEntry* entry) const;
    // The same as ordinals (AllEntries() indices), without making a list.
    std::span<const std::uint32_t> ReferrerOrdinals(const XrefEntry* entry) const;

    // Parsed content streams, kept until the document is closed.
    std::shared_ptr<const std::vector<pdfObject*>> CachedContents(const pdfObject* stream) const {
        auto it = m_contents.find(stream);
        return it != m_contents.end() ? it->second : nullptr;
    }
    void CacheContents(const pdfObject* stream, std::shared_ptr<const std::vector<pdfObject*>> ops) {
        m_contents[stream] = std::move(ops);
    }

    // Nesting of the analysis's recursive walks, bounded so no file can exhaust the stack.
    int& WalkDepth() { return m_walkDepth; }
    // The form XObjects whose resources the analysis is inside of, outermost first.
    std::vector<const XrefEntry*>& FormPath() { return m_formPath; }

private:
    ivStatus ReadSectionChain();
    void ReadCatalogAndPages();
    void AnalyseEntry(const XrefSection& section, XrefEntry* entry);
    void RecordReferences(XrefEntry* entry, const pdfObject* object);
    void StartPrefetch();
    void IndexReferrers();

    std::string m_fileName;
    ivPasswordPrompt* m_prompt = nullptr;
    std::vector<pdfPage*> m_pages;
    std::unique_ptr<pdfTree> m_root;
    ObjId m_catalogId;
    const pdfObject* m_catalog = nullptr;
    int m_walkDepth = 0;
    std::vector<const XrefEntry*> m_formPath;

    // (target, referrer) ordinals as recorded, then grouped by target once the analysis ends:
    // the referrers of entry i are m_referrers[m_referrerStart[i] .. m_referrerStart[i + 1]).
    std::vector<std::pair<std::uint32_t, std::uint32_t>> m_references;
    std::vector<std::uint32_t> m_referrers;
    std::vector<std::uint32_t> m_referrerStart;
    std::vector<const pdfObject*> m_scratchPending;
    std::vector<std::uint32_t> m_scratchTargets;  // ordinals
    std::unordered_map<const pdfObject*, std::shared_ptr<const std::vector<pdfObject*>>> m_contents;
};

// Guards one level of a recursive walk: Ok() is false (after a message) beyond the limit.
class AnalysisDepth {
public:
    static constexpr int kLimit = 200;
    explicit AnalysisDepth(ivPdf& doc);
    ~AnalysisDepth() { --m_depth; }
    AnalysisDepth(const AnalysisDepth&) = delete;
    AnalysisDepth& operator=(const AnalysisDepth&) = delete;
    bool Ok() const { return m_depth <= kLimit; }

private:
    int& m_depth;
};

// "%d.%d (%s)": the header version with the Acrobat release that introduced it.
std::string VersionText(std::uint16_t major, std::uint16_t minor);
