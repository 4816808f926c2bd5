#pragma once
#include <cstdint>
#include <memory>
#include <vector>

#include "pdf/object/pdfObject.h"
#include "platform/ivStatus.h"

class ivPdf;
class pdfTree;

// A node of the page tree as the analyser models it: its dictionary (owned by the object
// cache, not by the node), the identifier it was reached by (0 0 for a direct dictionary) and
// the tree node above it.
class pdfHierachy {
public:
    pdfHierachy(const pdfObject* object, ObjId id, pdfTree* parent)
        : m_object(object), m_id(id), m_parent(parent) {}
    virtual ~pdfHierachy() = default;
    pdfHierachy(const pdfHierachy&) = delete;
    pdfHierachy& operator=(const pdfHierachy&) = delete;

    virtual int Kind() const = 0;  // kNodePage or kNodeTree
    const pdfObject* Object() const { return m_object; }
    ObjId Id() const { return m_id; }
    pdfTree* Parent() const { return m_parent; }

private:
    const pdfObject* m_object;
    ObjId m_id;
    pdfTree* m_parent;
};

// A page tree node (Type Pages); owns its children, in Kids order.
class pdfTree final : public pdfHierachy {
public:
    using pdfHierachy::pdfHierachy;
    int Kind() const override { return kNodeTree; }
    const std::vector<std::unique_ptr<pdfHierachy>>& Children() const { return m_children; }
    pdfHierachy* Add(std::unique_ptr<pdfHierachy> child) {
        m_children.push_back(std::move(child));
        return m_children.back().get();
    }

private:
    std::vector<std::unique_ptr<pdfHierachy>> m_children;
};

// A media box in PDF units, normalised so that left <= right and bottom <= top.
struct pdfRect {
    double left = 0, bottom = 0, right = 0, top = 0;
    double Width() const { return right - left; }
    double Height() const { return top - bottom; }
};

// A page (Type Page) with the attributes the analysis resolves for it.
class pdfPage final : public pdfHierachy {
public:
    using pdfHierachy::pdfHierachy;
    int Kind() const override { return kNodePage; }

    bool mediaBoxValid = false;
    pdfRect mediaBox;
    const pdfObject* resources = nullptr;  // possibly inherited
    const pdfObject* contents = nullptr;   // the page's own Contents, resolved
};

// Walks the page tree from `value` (a reference or a dictionary) below `parent` (null for
// the root), building tree nodes and appending pages to the document's page list.
ivStatus WalkPageTree(ivPdf& doc, const pdfObject* value, pdfTree* parent);
// Fills resources, contents and media box of every page.
void ResolvePageAttributes(ivPdf& doc);
// A page attribute of the expected type (0: any), searched up the parents when `inherit`.
const pdfObject* GetPageAttribute(ivPdf& doc, const pdfPage& page, const char* key, int expectedType,
                                  bool inherit);
// True when a MediaBox array of four elements was found; `rect` is then normalised.
bool GetMediaBox(ivPdf& doc, const pdfPage& page, pdfRect& rect);
