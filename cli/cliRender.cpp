#include "cli/cliRender.h"

#include <functional>
#include <optional>
#include <vector>

#include "cli/cliJson.h"
#include "pdf/analysis/pdfPageLabel.h"
#include "pdf/analysis/pdfRoles.h"
#include "pdf/decode/ivDecrypt.h"
#include "pdf/object/pdfObjectText.h"

namespace {

std::string IdText(std::uint32_t num, std::uint16_t gen) {
    return ivFormat("%d %d R", static_cast<int>(num), static_cast<int>(gen));
}

std::string StatusText(ivStatus st) {
    return ivFormat("0x%08X", static_cast<unsigned>(st));
}

// Revisions count down from the newest section; a file with one section has revision 0.
int RevisionOf(std::size_t index, std::size_t count) {
    return count < 2 ? 0 : static_cast<int>(count - index);
}

// A trailer value: the identifier of a reference, the text of a direct value ("<hex>" of the
// first element for ID), or nothing when absent.
std::optional<std::string> TrailerValue(const ObjRef& slot, bool isId) {
    if (slot.Empty()) return std::nullopt;
    if (!slot.obj) return IdText(slot.num, slot.gen);
    if (isId) {
        const pdfArray* a = AsArray(slot.obj);
        const pdfObject* first = a && a->count ? a->Items()[0] : slot.obj;
        if (const pdfBytes* b = AsBytes(first);
            b && (first->tag == kTagString || first->tag == kTagHexString))
            return "<" + HexText(b->Data(), b->size) + ">";
    }
    return ObjectText(slot.obj);
}

// The /Type of an entry's loaded object (of a stream's dictionary).
const char* TypeOf(const XrefEntry* e) {
    if (!e->object) return nullptr;
    const pdfObject* dict = e->object;
    if (const pdfStream* s = AsStream(dict)) dict = s->dict;
    const pdfBytes* t = AsTextValued(DictGet(dict, "Type"));
    return t ? t->Chars() : nullptr;
}

void JsonOptional(JsonWriter& w, const std::optional<std::string>& v) {
    if (v)
        w.String(*v);
    else
        w.Null();
}

void JsonEntry(JsonWriter& w, const ivPdf& doc, const XrefEntry* e) {
    w.BeginObject();
    w.Key("obj").Number(e->num).Key("gen").Number(e->gen);
    w.Key("offset");
    if (e->Compressed())
        w.Null();
    else
        w.Number(e->offset);
    w.Key("compressed").Bool(e->Compressed());
    w.Key("objstm");
    if (e->Compressed())
        w.Number(e->objStm);
    else
        w.Null();
    w.Key("index");
    if (e->Compressed())
        w.Number(e->offset);
    else
        w.Null();
    w.Key("size");
    if (e->length == kUnknownLength)
        w.Null();
    else
        w.Number(e->length);
    w.Key("flags").Number(e->flags);
    w.Key("role").Number(e->role);
    w.Key("role_name").StringOrNull(e->role ? RoleTitle(e->role) : nullptr);
    w.Key("type").StringOrNull(TypeOf(e));
    w.Key("referrers").BeginArray();
    for (const XrefEntry* r : doc.Referrers(e)) w.String(IdText(r->num, r->gen));
    w.EndArray();
    w.EndObject();
}

void JsonSection(JsonWriter& w, const ivPdf& doc, const XrefSection& s, int revision) {
    w.BeginObject();
    w.Key("offset").Number(s.offset).Key("prev").Number(s.prev).Key("size").Number(s.size);
    w.Key("xref_stm").Number(s.xrefStm);
    w.Key("xref_stream");
    if (s.xrefStream)
        w.String(IdText(s.xrefStreamId.num, s.xrefStreamId.gen));
    else
        w.Null();
    w.Key("revision").Number(revision);
    w.Key("trailer").BeginObject();
    w.Key("Root");
    JsonOptional(w, TrailerValue(s.root, false));
    w.Key("Info");
    JsonOptional(w, TrailerValue(s.info, false));
    w.Key("Encrypt");
    JsonOptional(w, TrailerValue(s.encrypt, false));
    w.Key("ID");
    JsonOptional(w, TrailerValue(s.id, true));
    w.EndObject();
    w.Key("entries").BeginArray();
    s.ForEachEntry([&](const XrefEntry* e) { JsonEntry(w, doc, e); });
    w.EndArray();
    w.EndObject();
}

void JsonMessageNode(JsonWriter& w, const ivMessageNode& node) {
    w.BeginObject().Key("text").String(node.text).Key("children").BeginArray();
    for (const auto& child : node.children) JsonMessageNode(w, *child);
    w.EndArray().EndObject();
}

void ForEachMessage(
    const ivMessageNode& node, std::vector<const std::string*>& scopes,
    const std::function<void(const std::string&, const std::vector<const std::string*>&)>& fn) {
    for (const auto& child : node.children) {
        if (child->isScope) {
            scopes.push_back(&child->text);
            ForEachMessage(*child, scopes, fn);
            scopes.pop_back();
        } else {
            fn(child->text, scopes);
        }
    }
}

void JsonMessages(JsonWriter& w, const ivIOControl& control) {
    w.Key("messages").BeginArray();
    for (const auto& child : control.Messages().children) JsonMessageNode(w, *child);
    w.EndArray();
    w.Key("message_list").BeginArray();
    std::vector<const std::string*> scopes;
    ForEachMessage(control.Messages(), scopes,
                   [&w](const std::string& text, const std::vector<const std::string*>& in) {
                       w.BeginObject().Key("text").String(text).Key("scopes").BeginArray();
                       for (const std::string* s : in) w.String(*s);
                       w.EndArray().EndObject();
                   });
    w.EndArray();
    w.Key("message_count").Number(static_cast<std::int64_t>(control.MessageCount()));
}

void JsonInfo(JsonWriter& w, const std::optional<pdfDocInfo>& info) {
    if (!info) {
        w.Null();
        return;
    }
    const std::pair<const char*, const std::optional<std::string>*> fields[] = {
        {"Title", &info->title},       {"Author", &info->author},   {"Subject", &info->subject},
        {"Keywords", &info->keywords}, {"Creator", &info->creator}, {"Producer", &info->producer}};
    w.BeginObject();
    for (const auto& [key, value] : fields) {
        w.Key(key);
        JsonOptional(w, *value);
    }
    w.EndObject();
}

void JsonEncryption(JsonWriter& w, const ivDecrypt* security) {
    if (!security) {
        w.Null();
        return;
    }
    w.BeginObject();
    w.Key("filter");
    if (security->FilterName().empty())
        w.Null();
    else
        w.String(security->FilterName());
    w.Key("V").Number(security->V()).Key("R").Number(security->R()).Key("length").Number(security->Length());
    w.Key("method").String(security->MethodText()).Key("authenticated").Bool(security->Authenticated());
    w.Key("P").Number(security->P());
    w.EndObject();
}

void JsonPage(JsonWriter& w, std::size_t index, const pdfPage& page) {
    w.BeginObject().Key("number").Number(static_cast<std::int64_t>(index + 1));
    w.Key("obj").Number(page.Id().num).Key("gen").Number(page.Id().gen);
    const pdfRect& box = page.mediaBox;
    w.Key("media_box").BeginArray().Real(box.left).Real(box.bottom).Real(box.right).Real(box.top).EndArray();
    w.Key("media_box_valid").Bool(page.mediaBoxValid);
    w.Key("label").String(PageLabel(index, page));
    w.EndObject();
}

bool HasVersion(const ReportData& data) {
    return data.doc && (data.doc->VersionMajor() || data.doc->VersionMinor());
}

}  // namespace

std::string JsonReport(const ReportData& data) {
    JsonWriter w;
    w.BeginObject();
    w.Key("schema").String("vantrel-report/1");
    w.Key("file").String(data.path);
    w.Key("file_size").Number(data.doc ? static_cast<std::int64_t>(data.doc->FileSize()) : 0);
    if (!data.fileError.empty()) w.Key("error").String(data.fileError);
    w.Key("status").BeginObject().Key("open").String(StatusText(data.openStatus));
    w.Key("analyse").String(StatusText(data.analyseStatus)).EndObject();
    w.Key("extra_checks").Bool(data.extraChecks);
    w.Key("version");
    if (HasVersion(data)) {
        const ivPdf& d = *data.doc;
        w.BeginObject().Key("major").Number(d.VersionMajor()).Key("minor").Number(d.VersionMinor());
        w.Key("text").String(VersionText(d.VersionMajor(), d.VersionMinor())).EndObject();
    } else {
        w.Null();
    }
    w.Key("page_count").Number(data.doc ? static_cast<std::int64_t>(data.doc->Pages().size()) : 0);
    w.Key("encryption");
    JsonEncryption(w, data.doc ? data.doc->Security() : nullptr);
    w.Key("info");
    JsonInfo(w, data.info);
    w.Key("sections").BeginArray();
    if (data.doc) {
        const auto& sections = data.doc->Sections();
        for (std::size_t i = 0; i < sections.size(); ++i)
            JsonSection(w, *data.doc, *sections[i], RevisionOf(i, sections.size()));
    }
    w.EndArray();
    w.Key("pages").BeginArray();
    if (data.doc) {
        const auto& pages = data.doc->Pages();
        for (std::size_t i = 0; i < pages.size(); ++i) JsonPage(w, i, *pages[i]);
    }
    w.EndArray();
    JsonMessages(w, data.control);
    w.EndObject();
    return w.Text();
}

namespace {

std::string EntryLine(const ivPdf& doc, const XrefEntry* e) {
    std::string where =
        e->Compressed() ? ivFormat("in %d 0 R #%d", static_cast<int>(e->objStm), static_cast<int>(e->offset))
                        : ivFormat("at %u", e->offset);
    std::string line = ivFormat("  %-12s %-20s", IdText(e->num, e->gen).c_str(), where.c_str());
    line += e->length == kUnknownLength ? std::string("size ?         ") : ivFormat("size %-9u ", e->length);
    if (e->flags & kXrefNotFound) line += " not found";
    if (const char* title = e->role ? RoleTitle(e->role) : nullptr) line += ivFormat(" %s", title);
    if (e->role && !RoleTitle(e->role)) line += ivFormat(" role %d", e->role);
    if (const char* type = TypeOf(e)) line += std::string(" /") + type;
    if (auto refs = doc.Referrers(e); !refs.empty()) {
        line += " <-";
        for (std::size_t i = 0; i < refs.size() && i < 6; ++i)
            line += " " + IdText(refs[i]->num, refs[i]->gen);
        if (refs.size() > 6) line += ivFormat(" and %zu more", refs.size() - 6);
    }
    while (!line.empty() && line.back() == ' ') line.pop_back();
    return ivTextToUtf8(line) + "\n";
}

std::string SectionText(const ivPdf& doc, const XrefSection& s, int revision) {
    std::string out = ivFormat("\n%s at %u (0x%xh): %zu entries, Size %u, Prev %u",
                               s.xrefStream ? "XREF stream" : "XREF table", s.offset, s.offset,
                               s.EntryCount(), s.size, s.prev);
    if (s.xrefStm) out += ivFormat(", XRefStm %u", s.xrefStm);
    if (revision) out += ivFormat(", revision %d", revision);
    out += "\n  Trailer:";
    const std::pair<const char*, std::optional<std::string>> values[] = {
        {"Root", TrailerValue(s.root, false)},
        {"Info", TrailerValue(s.info, false)},
        {"Encrypt", TrailerValue(s.encrypt, false)},
        {"ID", TrailerValue(s.id, true)}};
    bool any = false;
    for (const auto& [key, value] : values) {
        if (!value) continue;
        out += std::string(any ? ", " : " ") + key + " " + ivTextToUtf8(*value);
        any = true;
    }
    out += any ? "\n" : " none\n";
    s.ForEachEntry([&](const XrefEntry* e) { out += EntryLine(doc, e); });
    return out;
}

std::string SecurityText(const ivDecrypt* security) {
    if (!security) return "\nSecurity: No Security\n";
    std::string out = "\nSecurity: " + security->MethodText() + ivFormat(", %d bit", security->Length());
    out += ivFormat(", V %d, R %d, P %d, %s\n", security->V(), security->R(), security->P(),
                    security->Authenticated() ? "password accepted" : "not authenticated");
    if (security->Authenticated()) out += "  File key: " + security->FileKeyText() + "\n";
    return out;
}

std::string PagesText(const ivPdf& d) {
    std::string out = ivFormat("\nPages: %zu\n", d.Pages().size());
    for (std::size_t i = 0; i < d.Pages().size(); ++i) {
        const pdfPage& p = *d.Pages()[i];
        const pdfRect& b = p.mediaBox;
        out += ivFormat("  %-28s %-12s", PageLabel(i, p).c_str(), IdText(p.Id().num, p.Id().gen).c_str());
        out += p.mediaBoxValid ? ivFormat("MediaBox [%g %g %g %g]\n", b.left, b.bottom, b.right, b.top)
                               : std::string("no valid MediaBox\n");
    }
    return out;
}

std::string InfoText(const std::optional<pdfDocInfo>& info) {
    if (!info) return "\nInfo: none\n";
    std::string out = "\nInfo:\n";
    const std::pair<const char*, const std::optional<std::string>*> fields[] = {
        {"Title", &info->title},       {"Author", &info->author},   {"Subject", &info->subject},
        {"Keywords", &info->keywords}, {"Creator", &info->creator}, {"Producer", &info->producer}};
    for (const auto& [key, value] : fields)
        if (*value) out += std::string("  ") + key + ": " + **value + "\n";
    return out;
}

void AppendTree(std::string& out, const ivMessageNode& node, int depth) {
    for (const auto& child : node.children) {
        out += std::string(2 * depth + 2, ' ') + ivTextToUtf8(child->text) + "\n";
        if (child->isScope) AppendTree(out, *child, depth + 1);
    }
}

}  // namespace

std::string MessageTreeText(const ivIOControl& control) {
    std::string out = ivFormat("Messages: %zu\n", control.MessageCount());
    AppendTree(out, control.Messages(), 0);
    return out;
}

std::string TextReport(const ReportData& data) {
    const ivPdf& d = *data.doc;
    std::string out = "File:     " + ivTextToUtf8(data.path) + "\n";
    out += ivFormat("Size:     %llu bytes\n", static_cast<unsigned long long>(d.FileSize()));
    out +=
        "Version:  " + (HasVersion(data) ? VersionText(d.VersionMajor(), d.VersionMinor()) : "none") + "\n";
    out += ivFormat("Pages:    %zu\n", d.Pages().size());
    out += "Status:   open " + StatusText(data.openStatus) + ", analyse " + StatusText(data.analyseStatus) +
           "\n";
    const auto& sections = d.Sections();
    out += ivFormat("Sections: %zu\n", sections.size());
    for (std::size_t i = 0; i < sections.size(); ++i)
        out += SectionText(d, *sections[i], RevisionOf(i, sections.size()));
    out += SecurityText(d.Security());
    out += PagesText(d);
    out += InfoText(data.info);
    out += "\n" + MessageTreeText(data.control);
    return out;
}
