#include "ui/panes/ivTreeFrames.h"

#include "pdf/analysis/ivPdf.h"
#include "ui/panes/ivObjTree.h"
#include "ui/panes/ivObjectTreeModel.h"

void ivTreeFrame::Fill() {
    Model()->ShowCatalog(Document());
    if (Model()->rowCount() > 0) Tree()->expand(Model()->index(0, 0));
}

void ivPageFrame::Fill() {
    Model()->ShowPages(Document());
}

void ivRoleFrame::Fill() {
    std::vector<XrefEntry*> entries;
    for (const auto& section : Document()->Sections())
        for (XrefEntry* e : section->entries)
            if (e->role == m_role) entries.push_back(e);
    Model()->ShowEntries(Document(), std::move(entries));
}
