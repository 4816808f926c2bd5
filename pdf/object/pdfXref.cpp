#include "pdf/object/pdfXref.h"

#include <algorithm>

namespace {
bool ById(const XrefEntry* a, const XrefEntry* b) {
    return a->Id() < b->Id();
}
}  // namespace

XrefEntry* XrefSection::Find(ObjId want) const {
    auto it = std::lower_bound(entries.begin(), entries.end(), want,
                               [](const XrefEntry* e, ObjId w) { return e->Id() < w; });
    if (it != entries.end() && (*it)->Id() == want) return *it;
    auto m = missing.find(want);
    return m != missing.end() ? m->second : nullptr;
}

void XrefSection::SortEntries() {
    if (!std::is_sorted(entries.begin(), entries.end(), ById))
        std::stable_sort(entries.begin(), entries.end(), ById);
}
