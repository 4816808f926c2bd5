#include "pdf/analysis/ivPdf.h"

#include <algorithm>
#include <filesystem>
#include <new>
#include <unordered_set>

#include "pdf/analysis/pdfLinearization.h"
#include "pdf/analysis/pdfObjectAnalysis.h"
#include "pdf/decode/ivDecrypt.h"
#include "pdf/object/pdfObjStmPrefetch.h"
#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfObjectAccess.h"
#include "pdf/object/pdfRoleCodes.h"
#include "pdf/object/pdfXrefReader.h"

namespace {}  // namespace

AnalysisDepth::AnalysisDepth(ivPdf& doc) : m_depth(++doc.WalkDepth()) {
    if (m_depth == kLimit + 1) Report(doc, "Objects are nested too deep to follow");
}

ivPdf::ivPdf(ivRef<ivStream> file, std::string fileName, ivIOControl* control)
    : pdfDocument(std::move(file), control), m_fileName(std::move(fileName)) {}

ivPdf::~ivPdf() = default;

ivStatus ivPdf::Open() {
    try {
        if (ivStatus st = ReadHeader(*this); Failed(st)) return st;
        if (ivStatus st = ReadStartXref(*this, nullptr); Failed(st)) return st;
        ivStatus st = ReadSectionChain();
        FinishSections();
        if (Failed(st)) return st;
        CheckTrailerSizes(*this);
        // From here on every string and stream read is decrypted.
        std::string shortName = std::filesystem::path(m_fileName).filename().string();
        if (st = SetUpEncryption(*this, m_prompt, shortName); Failed(st)) return st;
        ComputeLengths(*this);
        StartPrefetch();  // the page tree already reads from most object streams
        ReadCatalogAndPages();
        return kOk;
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
}

ivStatus ivPdf::ReadSectionChain() {
    // Offsets already read: a Prev that leads back to one of them ends the chain.
    std::unordered_set<std::uint32_t> seen{NewestSection()->offset};
    for (;;) {
        const XrefSection* last = Sections().back().get();
        if (last->prev == 0) return kOk;
        if (!seen.insert(last->prev).second) {
            ivStdScope scope(Control(), ivFormat("Reading XREF table at %d (0x%xh)",
                                                 static_cast<int>(last->offset), last->offset));
            Report(*this, "XREF table at %d was already read", static_cast<int>(last->prev));
            return kOk;
        }
        std::uint32_t prev = last->prev;
        XrefSection* section = AppendSection();
        if (ivStatus st = ReadSection(*this, *section, prev); Failed(st)) return st;
    }
}

void ivPdf::ReadCatalogAndPages() {
    const ObjRef& root = NewestSection()->root;
    if (root.Empty()) return;  // an empty document
    m_catalogId = root.Id();
    m_catalog = root.obj ? root.obj : ResolveRef(*this, root.Id());
    if (!m_catalog) {
        // Already reported as not found.
        ReportExtra(*this, "Not a dictionary");
        return;
    }
    if (!AsDict(m_catalog)) {
        Report(*this, "Not a dictionary");
        return;
    }
    if (const pdfObject* pages = DictGet(m_catalog, "Pages")) WalkPageTree(*this, pages, nullptr);
    ResolvePageAttributes(*this);
}

void ivPdf::StartPrefetch() {
    // Encrypted streams and documents held in memory are read by the ordinary path alone.
    if (HasSecurityHandler() || m_fileName.empty() || !std::filesystem::is_regular_file(m_fileName)) return;
    // The object streams in the order the analysis below first needs them.
    std::vector<pdfObjStmPrefetch::Request> order;
    std::unordered_set<std::uint32_t> seen;
    std::uint32_t last = 0;  // objects of one stream mostly come together
    for (const auto& section : Sections())
        section->ForEachEntry([&](XrefEntry* entry) {
            if (!entry->Compressed() || entry->loaded || entry->objStm == last) return;
            last = entry->objStm;
            if (!seen.insert(entry->objStm).second) return;
            const XrefEntry* stream = LookupEntry({entry->objStm, 0});
            if (stream && !stream->Compressed() && stream->offset < FileSize())
                order.push_back({entry->objStm, stream->offset});
        });
    if (order.size() < 2) return;  // nothing to overlap
    SetPrefetch(std::make_unique<pdfObjStmPrefetch>(m_fileName, std::move(order), ParsedLimit()));
}

ivStatus ivPdf::Analyse() {
    try {
        for (const auto& section : Sections())
            section->ForEachEntry([&](XrefEntry* entry) { AnalyseEntry(*section, entry); });
        SetPrefetch(nullptr);
        IndexReferrers();
        ReleaseObjStmData();  // every object is loaded now
        CheckLinearization(*this);
        return kOk;
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
}

void ivPdf::AnalyseEntry(const XrefSection& section, XrefEntry* entry) {
    // Trailer roles overwrite whatever the object had.
    if (section.info.IsRef() && entry->Id() == section.info.Id()) {
        entry->role = kRoleDocInfo;
    } else if (section.root.IsRef() && entry->Id() == section.root.Id()) {
        entry->role = kRoleCatalog;
        if (entry->Compressed() && HasSecurityHandler())
            Report(*this, "Document's Catalog can't be inside of encrypted object stream (Acrobat)");
    }
    const pdfObject* object = LoadObject(*this, entry);
    if (!object) return;
    ivObjIDScope scope(Control(), entry->num, entry->gen, "Analize %s");
    RecordReferences(entry, object);
    AnalyseObject(*this, entry, object);
}

void ivPdf::RecordReferences(XrefEntry* entry, const pdfObject* object) {
    // Every reference inside the object, each target once; containers are walked with a stack
    // since parsed nesting may be deep. The buffers are reused from one object to the next.
    std::vector<const pdfObject*>& pending = m_scratchPending;
    std::vector<std::uint32_t>& targets = m_scratchTargets;
    pending.assign(1, object);
    targets.clear();
    while (!pending.empty()) {
        const pdfObject* o = pending.back();
        pending.pop_back();
        if (const pdfRef* ref = AsRef(o)) {
            std::uint32_t ordinal = 0;
            if (OrdinalOf(ref->Id(), ordinal))
                targets.push_back(ordinal);
            else if (XrefEntry* target = FindEntry(*this, ref->Id()))
                targets.push_back(target->ordinal);
        } else if (const pdfStream* s = AsStream(o)) {
            if (s->dict) pending.push_back(s->dict);
        } else if (const pdfArray* a = AsArray(o)) {
            pending.insert(pending.end(), a->Items(), a->Items() + a->count);
        } else if (const pdfDict* d = AsDict(o)) {
            for (const pdfPair& p : d->Entries()) pending.push_back(p.value);
        }
    }
    std::sort(targets.begin(), targets.end());
    targets.erase(std::unique(targets.begin(), targets.end()), targets.end());
    for (std::uint32_t target : targets) m_references.emplace_back(target, entry->ordinal);
}

void ivPdf::IndexReferrers() {
    // A counting sort by target keeps each target's referrers in the order they were met.
    const std::size_t entries = AllEntries().size();
    m_referrerStart.assign(entries + 1, 0);
    for (const auto& [target, referrer] : m_references) ++m_referrerStart[target + 1];
    for (std::size_t i = 0; i < entries; ++i) m_referrerStart[i + 1] += m_referrerStart[i];
    m_referrers.resize(m_references.size());
    std::vector<std::uint32_t> next(m_referrerStart.begin(), m_referrerStart.end() - 1);
    for (const auto& [target, referrer] : m_references) m_referrers[next[target]++] = referrer;
    m_references.clear();
    m_references.shrink_to_fit();
}

std::span<const std::uint32_t> ivPdf::ReferrerOrdinals(const XrefEntry* entry) const {
    if (entry->ordinal + 1 >= m_referrerStart.size()) return {};
    const std::uint32_t begin = m_referrerStart[entry->ordinal], end = m_referrerStart[entry->ordinal + 1];
    return {m_referrers.data() + begin, end - begin};
}

std::vector<XrefEntry*> ivPdf::Referrers(const XrefEntry* entry) const {
    std::vector<XrefEntry*> out;
    for (std::uint32_t ordinal : ReferrerOrdinals(entry)) out.push_back(AllEntries()[ordinal]);
    return out;
}

std::string VersionText(std::uint16_t major, std::uint16_t minor) {
    static const char* const kReleases[] = {"Unknown Acrobat", "Unknown Acrobat", "Acrobat 3.0",
                                            "Acrobat 4.0",     "Acrobat 5.0",     "Acrobat 6.0",
                                            "Acrobat 7.0",     "Acrobat 8.0"};
    const char* release = minor < 8 ? kReleases[minor] : "Acrobat X";
    return ivFormat("%d.%d (%s)", major, minor, release);
}
