#include "pdf/analysis/ivDisplayTokens.h"

#include <algorithm>
#include <cstring>

#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/ivPdfInfo.h"
#include "pdf/analysis/ivViewerTexts.h"
#include "pdf/object/pdfObjectAccess.h"
#include "pdf/object/pdfObjectText.h"
#include "pdf/object/pdfRoleCodes.h"
#include "platform/ivFormat.h"

namespace {

constexpr int kDeepest = 32;  // nesting shown; deeper values show as "..."
constexpr std::size_t kArrayItemsPerLine = 64;

// Lays out tokens into lines as they are added.
class Builder {
public:
    explicit Builder(ivViewText& out) : m_out(out) { NewLine(0); }
    // Dictionaries stay on the line they start on, as in a content stream's operation.
    void SetInline(bool on) { m_inline = on; }

    void NewLine(int indent) {
        if (!m_out.lines.empty() && m_out.lines.back().tokens.empty()) {
            m_out.lines.back().indent = indent;
            return;
        }
        m_out.lines.push_back({indent, {}});
    }
    std::size_t Add(ivDisplayToken token) {
        m_out.tokens.push_back(std::move(token));
        m_out.lines.back().tokens.push_back(m_out.tokens.size() - 1);
        return m_out.tokens.size() - 1;
    }
    void Text(std::string text, int indent) {
        NewLine(indent);
        ivDisplayToken t;
        t.kind = ivDisplayToken::Kind::Text;
        t.text = std::move(text);
        Add(std::move(t));
        NewLine(indent);
    }

    // A value: dictionaries put a pair a line; arrays stay on the line they start on.
    void Value(const pdfObject* v, int indent, const pdfObject* key, const pdfObject* outerKey, int depth) {
        ivDisplayToken t;
        t.record = v;
        t.key = key;
        t.outerKey = outerKey;
        t.marks = key ? kMarkOperand : kMarkOutsideDict;
        if (depth > kDeepest) {
            t.kind = ivDisplayToken::Kind::Text;
            t.text = "...";
            Add(std::move(t));
            return;
        }
        const pdfDict* dict = AsDict(v);
        if (const pdfStream* s = AsStream(v)) dict = AsDict(s->dict);
        const pdfArray* array = AsArray(v);
        Add(t);
        if (dict) {
            for (const pdfPair& p : dict->Entries()) {
                if (!m_inline) NewLine(indent + 1);
                ivDisplayToken k;
                k.record = p.key;
                k.key = p.key;
                k.outerKey = key;
                k.isKey = true;
                k.marks = kMarkOperator;
                Add(std::move(k));
                if (p.value) Value(p.value, indent + 1, p.key, key, depth + 1);
            }
            if (!m_inline) NewLine(indent);
        } else if (array) {
            // A long array goes on over further lines, so that no line grows without bound.
            std::size_t onLine = 0;
            for (const pdfObject* item : array->Elements()) {
                if (!item) continue;
                if (onLine++ == kArrayItemsPerLine) {
                    NewLine(indent + 1);
                    onLine = 1;
                }
                Value(item, indent, key, outerKey, depth + 1);
            }
        } else {
            return;
        }
        ivDisplayToken close = t;
        close.kind = ivDisplayToken::Kind::Close;
        Add(std::move(close));
    }

private:
    ivViewText& m_out;
    bool m_inline = false;
};

std::string UnescapeC(const char* text) {
    std::string out;
    for (const char* p = text; *p; ++p) {
        if (*p != '\\' || !p[1]) {
            out += *p;
            continue;
        }
        switch (*++p) {
            case 'n':
                out += '\n';
                break;
            case 't':
                out += '\t';
                break;
            case 'r':
                out += '\r';
                break;
            default:
                out += *p;
        }
    }
    return out;
}

bool EndsWith(const std::string& s, std::string_view end) {
    return s.size() >= end.size() && s.compare(s.size() - end.size(), end.size(), end) == 0;
}

double NumberOf(const pdfObject* o) {
    if (o && o->tag == kTagInt) return static_cast<const pdfInt*>(o)->value;
    if (o && o->tag == kTagReal) return static_cast<const pdfReal*>(o)->value;
    return 0;
}

bool IsNumber(const pdfObject* o) {
    return o && (o->tag == kTagInt || o->tag == kTagReal);
}

// The bytes of a name, string or keyword (an operator).
std::string NameOf(const pdfObject* o) {
    if (o && o->tag == kTagKey) return std::string(static_cast<const pdfBytes*>(o)->View());
    const pdfBytes* b = AsTextValued(o);
    return b ? std::string(b->View()) : std::string();
}

// The description to look for, and under which kind, for a token that belongs to a key.
struct Lookup {
    std::string id;
    std::uint8_t kind = 0;
};

Lookup KeyLookup(const ivDisplayToken& t, std::uint8_t role) {
    Lookup l{NameOf(t.key), role};
    if (!t.outerKey) return l;
    const std::string outer = NameOf(t.outerKey);
    if (role == kRolePage && outer == "Resources")
        l.kind = kRoleResources;
    else if (role == kRoleAnnotation && outer == "A")
        l.kind = kRoleAction;
    else if (role == kRoleAnnotation && outer == "BS")
        l.kind = kRoleBorderStyle;
    else
        l.id = outer + "." + l.id;
    return l;
}

// The enum and bit help of a value under its description.
void AddValueHelp(std::string& help, pugi::xml_node description, const pdfObject* value) {
    std::string valueText;
    if (value && value->tag == kTagInt) valueText = ivFormat("%d", static_cast<const pdfInt*>(value)->value);
    if (value && (value->tag == kTagString || value->tag == kTagName)) valueText = NameOf(value);
    if (!valueText.empty()) {
        for (pugi::xml_node e : description.children("enum")) {
            if (valueText != e.attribute("id").as_string()) continue;
            help += (EndsWith(help, "---") ? "" : "\n") + UnescapeC(e.attribute("help").as_string());
            break;
        }
    }
    if (value && value->tag == kTagInt) {
        const auto bits = static_cast<std::uint32_t>(static_cast<const pdfInt*>(value)->value);
        for (pugi::xml_node b : description.children("bit")) {
            const int v = b.attribute("id").as_int();
            if (v >= 1 && v <= 32 && (bits >> (v - 1) & 1))
                help += "\n" + UnescapeC(b.attribute("help").as_string());
        }
    }
}

}  // namespace

std::string DisplayTokenText(const ivDisplayToken& token) {
    switch (token.kind) {
        case ivDisplayToken::Kind::Text:
            return token.text;
        case ivDisplayToken::Kind::Close:
            return AsArray(token.record) ? "]" : ">>";
        case ivDisplayToken::Kind::Record:
            return ivTextToUtf8(TokenText(token.record));
    }
    return {};
}

std::string ivViewText::LineText(std::size_t line) const {
    std::string text(static_cast<std::size_t>(lines[line].indent) * 2, ' ');
    for (std::size_t i = 0; i < lines[line].tokens.size(); ++i)
        text += (i ? " " : "") + DisplayTokenText(tokens[lines[line].tokens[i]]);
    return text;
}

ivViewText ObjectViewText(const pdfObject* object) {
    ivViewText out;
    if (!object) return out;
    Builder b(out);
    b.Value(object, 0, nullptr, nullptr, 0);
    return out;
}

ivViewText ContentViewText(const pdfContentOps& ops) {
    ivViewText out;
    Builder b(out);
    b.SetInline(true);
    std::uint16_t running = 0;
    int depth = 0;
    ForEachOperation(ops, [&](const pdfOperation& op) {
        const std::size_t first = out.tokens.size();
        for (const pdfObject* operand : op.operands) {
            // An array or dictionary operand brings its items along, all of them operands.
            const std::size_t from = out.tokens.size();
            b.Value(operand, 0, nullptr, nullptr, 0);
            for (std::size_t i = from; i < out.tokens.size(); ++i) {
                ivDisplayToken& t = out.tokens[i];
                t.isContent = true;
                t.isKey = false;
                t.key = t.outerKey = nullptr;
                t.marks = static_cast<std::uint16_t>(running | kMarkOperand);
            }
        }
        if (op.op) {
            ivDisplayToken t;
            t.record = op.op;
            t.isContent = true;
            const std::string name = NameOf(op.op);
            if (name == "BT") running |= kMarkInText;
            t.marks = static_cast<std::uint16_t>(running | kMarkOperator);
            if (name == "ET") running &= static_cast<std::uint16_t>(~kMarkInText);
            if (name == "q") {
                t.marks |= kMarkPush;
                ++depth;
            } else if (name == "Q") {
                t.marks |= kMarkPop;
                --depth;
            }
            b.Add(std::move(t));
        }
        for (std::size_t i = first; i < out.tokens.size(); ++i)
            out.tokens[i].operation = static_cast<int>(first);
        b.NewLine(0);
    });
    if (depth != 0) out.status = "Push/Pop context are not match";
    return out;
}

ivViewText ObjectStreamViewText(ivPdf& doc, const pdfStream& stream) {
    ivViewText out;
    Builder b(out);
    const ObjStmIndex* index = stream.objStmIndex;
    if (!index) return out;
    for (std::size_t i = 0; i < index->items.size(); ++i) {
        const ObjStmIndex::Item& item = index->items[i];
        b.Text(ivFormat("#%zu [%u %u obj]", i, item.num, static_cast<unsigned>(item.gen)), 0);
        XrefEntry* entry = FindEntry(doc, {item.num, item.gen});
        if (const pdfObject* object = entry ? LoadObject(doc, entry) : nullptr) {
            b.Value(object, 0, nullptr, nullptr, 0);
            b.NewLine(0);
        }
        b.Text(entry ? ivFormat("%u bytes", entry->length == kUnknownLength ? 0u : entry->length) : "--end",
               0);
    }
    return out;
}

std::uint8_t HelpRoleOf(const pdfObject* object, std::uint8_t entryRole) {
    if (entryRole != kRoleAnnotation) return entryRole;
    const std::string subtype = NameOf(DictGet(object, "Subtype"));
    if (subtype == "Link") return kRoleLinkAnnotation;
    if (subtype == "Highlight") return kRoleHighlightAnnotation;
    if (subtype == "FreeText") return kRoleFreeTextAnnotation;
    if (subtype == "Widget") return kRoleWidgetAnnotation;
    if (subtype == "3D") return kRole3DAnnotation;
    return entryRole;
}

std::string TokenHelp(ivPdfInfo& info, const ivViewText& text, std::size_t index, std::uint8_t role) {
    if (index >= text.tokens.size()) return {};
    const ivDisplayToken& t = text.tokens[index];
    if (t.isContent) {
        // An operand explains its operator; the operator looks itself up among the operators.
        std::size_t op = index;
        while (op < text.tokens.size() && text.tokens[op].operation == t.operation &&
               !(text.tokens[op].marks & kMarkOperator))
            ++op;
        if (op >= text.tokens.size() || text.tokens[op].operation != t.operation) return {};
        const std::string name = NameOf(text.tokens[op].record);
        pugi::xml_node d = info.Find(kRolePageStream, name);
        if (!d) return {};
        std::string help = name + "\n" + UnescapeC(d.attribute("help").as_string());
        if (std::strcmp(d.attribute("args").as_string(), "matrix") == 0) {
            std::vector<double> m;
            bool numbers = true;
            for (std::size_t i = static_cast<std::size_t>(t.operation); i < op; ++i) {
                numbers = numbers && IsNumber(text.tokens[i].record);
                m.push_back(NumberOf(text.tokens[i].record));
            }
            if (numbers) help += MatrixDecomposition(m);
        }
        if (std::strcmp(d.parent().name(), "category") == 0)
            help += std::string("\n---") + d.parent().attribute("name").as_string();
        return help;
    }
    if (!t.key) return {};
    const Lookup l = KeyLookup(t, role);
    pugi::xml_node d = info.Find(l.kind, l.id);
    if (!d) return {};
    std::string help = NameOf(t.key) + "\n" + UnescapeC(d.attribute("help").as_string());
    if (std::strcmp(d.parent().name(), "category") == 0)
        help += std::string("\n---") + d.parent().attribute("name").as_string();
    if (!t.isKey && t.kind == ivDisplayToken::Kind::Record) AddValueHelp(help, d, t.record);
    return help;
}
