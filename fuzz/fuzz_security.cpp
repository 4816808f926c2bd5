// The standard security handler: an encryption dictionary and a password from the input,
// then strings and streams decrypted with it.
//
// Input: a mode byte, then fields (16-bit length first): password, encryption dictionary text,
// file identifier bytes, a string; the rest is stream data.
//   mode bit 0 = 0  a one-page document is built around the fields and opened the way the
//                   command line opens it, with the password as the prompt's one answer; then
//                   every object is loaded, the page's contents and the stream decoded and the
//                   document information read. Bit 1: ID as literal strings; bit 2: Encrypt a
//                   direct dictionary; bit 3: no ID; bit 4: the stream is Flate-compressed.
//   mode bit 0 = 1  the handler is driven directly: ReadDictionary, Authenticate, then the
//                   string and the stream decrypted for an object number (u32) and generation
//                   (u16), with a Length (i32, negative: to the end); bit 1 strips AES padding.
// Work per input stays small: at most two passwords are tried, and a password is cut where the
// handler cuts it.
#include <cstdint>
#include <memory>
#include <string>

#include "FuzzInput.h"
#include "FuzzStreams.h"
#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/pdfContents.h"
#include "pdf/analysis/pdfDocInfo.h"
#include "pdf/decode/ivDecrypt.h"
#include "pdf/decode/ivPasswordPrompt.h"
#include "pdf/decode/pdfFilterChain.h"
#include "pdf/object/pdfObjectAccess.h"
#include "pdf/object/pdfObjectParser.h"
#include "pdf/object/pdfParser.h"
#include "support/PdfBuilder.h"

namespace {

constexpr std::size_t kMaxPassword = 127;

// Answers once, then gives up as a user would.
class OnePasswordPrompt : public ivPasswordPrompt {
public:
    explicit OnePasswordPrompt(std::string password) : m_password(std::move(password)) {}
    bool AskPassword(const std::string&, std::string& password) override {
        if (m_asked) return false;
        m_asked = true;
        password = m_password;
        return true;
    }

private:
    std::string m_password;
    bool m_asked = false;
};

std::string Hex(std::string_view bytes) {
    static const char kDigits[] = "0123456789ABCDEF";
    std::string out = "<";
    for (unsigned char c : bytes) {
        out += kDigits[c >> 4];
        out += kDigits[c & 15];
    }
    return out + ">";
}

// A literal string that holds the bytes exactly: brackets and backslashes escaped.
std::string Literal(std::string_view bytes) {
    std::string out = "(";
    for (char c : bytes) {
        if (c == '(' || c == ')' || c == '\\') out += '\\';
        out += c;
    }
    return out + ")";
}

struct Fields {
    std::string password;
    std::string_view dictionary, id, string, data;
};

void OpenDocument(std::uint8_t mode, const Fields& f) {
    PdfBuilder pdf;
    pdf.Object(1, "<< /Type /Catalog /Pages 2 0 R >>");
    pdf.Object(2, "<< /Type /Pages /Kids [3 0 R] /Count 1 >>");
    pdf.Object(3, "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 10 10] /Contents 4 0 R >>");
    pdf.Stream(4, (mode & 16) ? " /Filter /FlateDecode" : "", f.data);
    if (!(mode & 4)) pdf.Object(5, f.dictionary);
    pdf.Object(6, "<< /Title " + Literal(f.string) + " /Author " + Hex(f.string) + " >>");
    std::string trailer = " /Size 7 /Root 1 0 R /Info 6 0 R";
    trailer += (mode & 4) ? " /Encrypt " + std::string(f.dictionary) : std::string(" /Encrypt 5 0 R");
    if (!(mode & 8))
        trailer += (mode & 2) ? " /ID [" + Literal(f.id) + Literal(f.id) + "]"
                              : " /ID [" + Hex(f.id) + Hex(f.id) + "]";
    pdf.StartXref(pdf.Table(trailer));

    ivIOControl control;
    ivPdf doc(FuzzStream(pdf.Bytes()), "fuzz.pdf", &control);
    OnePasswordPrompt prompt(f.password);
    doc.SetPasswordPrompt(&prompt);
    const ivStatus opened = doc.Open();
    doc.SetPasswordPrompt(nullptr);
    if (Failed(opened)) return;
    for (const auto& section : doc.Sections())
        section->ForEachEntry([&](XrefEntry* e) { LoadObject(doc, e); });
    if (pdfObject* stream = ResolveRef(doc, {4, 0})) {
        pdfDecodedStream decoded;
        if (Succeeded(OpenDecodedStream(doc, stream, FindEntryByRecord(doc, stream), decoded)) &&
            decoded.stream)
            FuzzDrain(*decoded.stream);
        if (Succeeded(OpenRawStream(doc, stream, decoded)) && decoded.stream) FuzzDrain(*decoded.stream);
    }
    for (const pdfPage* page : doc.Pages()) {
        std::shared_ptr<const pdfContentOps> ops;
        ReadPageContents(doc, page->Object(), ops);
    }
    ReadDocInfo(doc);
}

void DriveHandler(std::uint8_t mode, FuzzInput& in, const Fields& f) {
    const std::uint32_t num = in.U32();
    const std::uint16_t gen = in.U16();
    std::int32_t length = in.I32();
    const std::string_view data = in.Rest();

    ivIOControl control;
    pdfDocument doc(FuzzStream(data), &control);
    pdfParser source(&doc, FuzzStream(f.dictionary), 0);
    ObjList list;
    ParseObjects(doc, source, list, 0);
    // The handler's caller hands it dictionaries only.
    if (list.items.empty() || !AsDict(list.items.front())) return;
    XrefSection trailer;
    if (!(mode & 8)) {
        pdfObject* id[2] = {NewBytes(doc.Arena(), (mode & 4) ? kTagString : kTagHexString, f.id),
                            NewBytes(doc.Arena(), kTagHexString, f.id)};
        trailer.id.obj = NewArray(doc.Arena(), id);
    }
    ivDecrypt handler(doc, list.items.front(), trailer);
    if (Failed(handler.ReadDictionary())) return;
    handler.Authenticate(f.password);
    (void)handler.MethodText();
    (void)handler.FileKeyText();
    handler.SetCurrentObject({num, gen});
    std::string bytes(f.string);
    handler.DecryptString(bytes);
    handler.DecryptStream(*doc.File(), 0, length, mode & 2);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    const std::uint8_t mode = in.Byte();
    Fields f;
    f.password = std::string(in.Field().substr(0, kMaxPassword));
    f.dictionary = in.Field();
    f.id = in.Field();
    f.string = in.Field();
    if (mode & 1) {
        DriveHandler(mode, in, f);
    } else {
        f.data = in.Rest();
        OpenDocument(mode, f);
    }
    return 0;
}
