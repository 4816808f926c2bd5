#include "pdf/analysis/pdfPageTree.h"

#include <algorithm>
#include <set>
#include <unordered_set>

#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/pdfRoleRegistry.h"
#include "pdf/object/pdfAccessors.h"
#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfObjectAccess.h"
#include "pdf/object/pdfRoleCodes.h"

namespace {

// One walk from the catalog's Pages. Kids that lead back to a node on the path from the root
// (a cycle) are not followed. A node listed under two parents is walked again, as a page
// listed twice is listed twice, but only within a budget: trees that share subtrees could
// otherwise grow exponentially from a small file.
class PageTreeWalker {
public:
    explicit PageTreeWalker(ivPdf& doc) : m_doc(doc) {}
    ivStatus Walk(const pdfObject* value, pdfTree* parent);

private:
    static constexpr long kRevisitBudget = 100000;  // visits below nodes walked again

    ivStatus WalkTreeNode(const pdfObject* dict, ObjId id, pdfTree* parent);
    bool OnPath(const pdfTree* node, const pdfObject* dict) const;
    // Counts a visit below a node walked again; false once the budget is spent.
    bool Spend() { return m_revisiting == 0 || m_budget-- > 0; }

    ivPdf& m_doc;
    std::unordered_set<const pdfObject*> m_treeNodes;
    std::unordered_set<const pdfObject*> m_cutOff;  // nodes reported as listed too many times
    std::unordered_set<const pdfObject*> m_pages;   // pages met that have no page role to tell
    std::unordered_set<const pdfObject*> m_reportedRepeats;
    std::set<ObjId> m_unreadable;                    // kids whose object could not be read
    int m_revisiting = 0;
    long m_budget = kRevisitBudget;
};

ivStatus PageTreeWalker::Walk(const pdfObject* value, pdfTree* parent) {
    if (!value) return kInvalidArg;
    // Every visit below a node walked again counts, kids that cannot be read included.
    if (!Spend()) return kOk;
    ObjId id;
    XrefEntry* entry = nullptr;
    if (const pdfRef* ref = AsRef(value)) {
        id = ref->Id();
        // A kid that could not be read is not tried again in this walk (it would report again).
        if (m_unreadable.count(id)) return kNotFound;
        // Resolved first, so that a missing kid is reported inside "Reading Object".
        value = ResolveRef(m_doc, id);
        if (!value) {
            m_unreadable.insert(id);
            return kNotFound;
        }
        entry = m_doc.LookupEntry(id);
    }
    if (!AsDict(value)) {
        Report(m_doc, "Not a dictionary");
        return kOk;
    }
    const pdfObject* type = DictGet(value, "Type");
    if (!AsTextValued(type)) return kOk;  // silently skipped
    if (TextEquals(type, "Page")) {
        const ivStatus role = SetRole(m_doc, value, entry, kRolePage);
        if (!parent) {
            Report(m_doc, "Page is not expected here");
            return kOk;
        }
        // Still listed as often as it appears; the extra checks say so, once for each page.
        // A page object that already had the page role was met before; only pages without an
        // entry of their own (or with another role) need the set.
        const bool repeated = role == kRemark || (role != kOk && !m_pages.insert(value).second);
        if (repeated && m_reportedRepeats.insert(value).second)
            ReportExtra(m_doc, "Page %d %d R is listed more than once in the page tree",
                        static_cast<int>(id.num), id.gen);
        auto* page = static_cast<pdfPage*>(parent->Add(std::make_unique<pdfPage>(value, id, parent)));
        m_doc.AddPage(page);
        return kOk;
    }
    if (TextEquals(type, "Pages")) return WalkTreeNode(value, id, parent);
    return kOk;
}

bool PageTreeWalker::OnPath(const pdfTree* node, const pdfObject* dict) const {
    for (; node; node = node->Parent())
        if (node->Object() == dict) return true;
    return false;
}

ivStatus PageTreeWalker::WalkTreeNode(const pdfObject* dict, ObjId id, pdfTree* parent) {
    const bool again = !m_treeNodes.insert(dict).second;
    if (again && OnPath(parent, dict)) {
        Report(m_doc, "Page tree node %d %d R is its own ancestor; its Kids are not walked again",
               static_cast<int>(id.num), id.gen);
        return kOk;
    }
    if (again && m_budget <= 0) {
        if (m_cutOff.insert(dict).second)
            Report(m_doc, "Page tree node %d %d R is listed too many times; its Kids are not walked again",
                   static_cast<int>(id.num), id.gen);
        return kOk;
    }
    AnalysisDepth depth(m_doc);
    if (!depth.Ok()) return kFail;
    auto node = std::make_unique<pdfTree>(dict, id, parent);
    pdfTree* tree = node.get();
    if (parent)
        parent->Add(std::move(node));
    else
        m_doc.SetRootTree(std::move(node));
    DictGet(dict, "Count");  // looked up, not compared: the walk trusts Kids alone
    m_revisiting += again;
    if (const pdfArray* kids = AsArray(Deref(m_doc, DictGet(dict, "Kids"))))
        for (const pdfObject* kid : kids->Elements()) Walk(kid, tree);
    m_revisiting -= again;
    return kOk;
}

}  // namespace

ivStatus WalkPageTree(ivPdf& doc, const pdfObject* value, pdfTree* parent) {
    return PageTreeWalker(doc).Walk(value, parent);
}

const pdfObject* GetPageAttribute(ivPdf& doc, const pdfPage& page, const char* key, int expectedType,
                                  bool inherit) {
    const pdfHierachy* node = &page;
    for (; node; node = inherit ? node->Parent() : nullptr) {
        if (!AsDict(node->Object())) {
            Report(doc, "Not a dictionary");
            continue;
        }
        const pdfObject* value = DictGet(node->Object(), key);
        if (!value) continue;
        value = Deref(doc, value);
        if (!value) return nullptr;  // an unresolvable reference, reported where it was looked up
        if (expectedType == 0 || value->tag == expectedType) return value;
        Report(doc, "Page Attribute has an invalid type");
        return nullptr;
    }
    return nullptr;
}

bool GetMediaBox(ivPdf& doc, const pdfPage& page, pdfRect& rect) {
    const pdfArray* box = AsArray(GetPageAttribute(doc, page, "MediaBox", kTagArray, true));
    if (!box || box->count != 4) return false;
    double c[4] = {0, 0, 0, 0};
    for (std::uint32_t i = 0; i < 4; ++i) {
        double v = 0;  // anything but a number leaves the coordinate at 0
        if (Succeeded(GetNumber(doc, box->Items()[i], &v))) c[i] = v;
    }
    rect = {std::min(c[0], c[2]), std::min(c[1], c[3]), std::max(c[0], c[2]), std::max(c[1], c[3])};
    return true;
}

void ResolvePageAttributes(ivPdf& doc) {
    for (pdfPage* page : doc.Pages()) {
        page->resources = GetPageAttribute(doc, *page, "Resources", kTagDictionary, true);
        if (AsDict(page->Object()))
            page->contents = Deref(doc, DictGet(page->Object(), "Contents"));
        else
            Report(doc, "Not a dictionary");
        page->mediaBoxValid = GetMediaBox(doc, *page, page->mediaBox);
    }
}
