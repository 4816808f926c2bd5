#pragma once
#include <memory>
#include <span>
#include <vector>

#include "pdf/object/pdfObject.h"
#include "platform/ivStatus.h"

class ivPdf;

// The tokens of a content stream in order: operands, then their operator (a Key record);
// an inline image is its image record followed by the keyword "EI".
using pdfContentOps = std::vector<pdfObject*>;

// One operation: the operands before an operator. The last operation of a stream may lack
// its operator (null) when the stream ends with operands.
struct pdfOperation {
    std::span<pdfObject* const> operands;
    const pdfObject* op;
};

// A content stream's tokens, parsed once and cached on the document. No stream gives
// kMissing; a decoding or parsing failure gives its code and caches nothing.
ivStatus ReadContentStream(ivPdf& doc, const pdfObject* stream, std::shared_ptr<const pdfContentOps>& ops);
// The tokens of all of a page's content streams, in order (each stream parsed on its own).
ivStatus ReadPageContents(ivPdf& doc, const pdfObject* page, std::shared_ptr<const pdfContentOps>& ops);
// Calls `visit` with each operation in order, without a list of them all.
template <class Visit>
void ForEachOperation(const pdfContentOps& ops, Visit&& visit) {
    std::size_t start = 0;
    for (std::size_t i = 0; i < ops.size(); ++i) {
        if (ops[i]->tag != kTagKey) continue;
        visit(pdfOperation{{ops.data() + start, i - start}, ops[i]});
        start = i + 1;
    }
    if (start < ops.size()) visit(pdfOperation{{ops.data() + start, ops.size() - start}, nullptr});
}

// Groups tokens into operations.
std::vector<pdfOperation> SplitOperations(const pdfContentOps& ops);
