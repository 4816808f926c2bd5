// The object parser, the token reader and object headers over arbitrary bytes.
//
// Input: a selector byte, then the bytes to parse.
//   bits 0-3, 5  the parse flags: kParseInDict, kParseInArray, kParseToEndobj, kParseContent
//                (inline images included) and kParseDecrypt
//   bit 4        read through a stream that hands out short reads, not straight from memory
//   bits 6-7     0: one ParseObjects; 1: a handler byte (none, RC4 40, RC4 128, AES-128,
//                AES-256), then ParseObjects again and again until the data ends; 2: ReadToken
//                to the end; 3: ReadObjectHeader, then the object's body up to "endobj"
#include <cstdint>
#include <memory>
#include <string>

#include "FuzzInput.h"
#include "FuzzStreams.h"
#include "pdf/decode/ivDecrypt.h"
#include "pdf/object/pdfDocument.h"
#include "pdf/object/pdfObjectParser.h"
#include "pdf/object/pdfObjectText.h"
#include "pdf/object/pdfParser.h"
#include "pdf/object/pdfXref.h"

namespace {

constexpr unsigned kFlagBits = kParseInDict | kParseInArray | kParseToEndobj | kParseContent | kParseDecrypt;

// Encryption dictionaries of each kind; the keys come from the empty password whether it
// opens them or not, which is all string decryption needs.
const char* const kHandlers[] = {
    nullptr,
    "<< /Filter /Standard /V 1 /R 2 /P -4 >>",
    "<< /Filter /Standard /V 2 /R 3 /Length 128 /P -4 /O "
    "<5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a> /U "
    "<0000000000000000000000000000000000000000000000000000000000000000> >>",
    "<< /Filter /Standard /V 4 /R 4 /Length 128 /P -4 /O "
    "<5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a> /U "
    "<0000000000000000000000000000000000000000000000000000000000000000> >>",
    "<< /Filter /Standard /V 5 /R 6 /Length 256 /P -4 /U <00> /O <00> /UE <00> /OE <00> /Perms <00> >>",
};

void InstallHandler(pdfDocument& doc, std::uint8_t choice) {
    const char* text = kHandlers[choice % std::size(kHandlers)];
    if (!text) return;
    pdfParser source(nullptr, FuzzStream(text), 0);
    ObjList list;
    if (Failed(ParseObjects(doc, source, list, 0)) || list.items.empty()) return;
    XrefSection trailer;  // no ID: the handler says so and goes on with zeros
    ivDecrypt* handler = doc.SetSecurity(std::make_unique<ivDecrypt>(doc, list.items.front(), trailer));
    if (Succeeded(handler->ReadDictionary())) handler->Authenticate("");
    handler->SetCurrentObject({7, 0});
}

// Renders what was read, as the views and the command line do.
void Render(const ObjList& list) {
    for (const pdfObject* item : list.items) (void)ObjectText(item);
}

ivRef<ivStream> Source(std::string_view bytes, bool chunked) {
    if (chunked) return std::make_shared<FuzzChunkedStream>(bytes, 7);
    return FuzzStream(bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    const std::uint8_t selector = input.Byte();
    const unsigned flags = selector & kFlagBits;
    const bool chunked = selector & 0x10;
    const int mode = selector >> 6;
    const std::uint8_t handler = mode == 1 ? input.Byte() : 0;
    const std::string_view bytes = input.Rest();

    ivIOControl control;
    pdfDocument doc(FuzzStream(bytes), &control);
    pdfParser source(&doc, Source(bytes, chunked), 0);
    switch (mode) {
        case 0: {
            ObjList list;
            ParseObjects(doc, source, list, flags);
            Render(list);
            break;
        }
        case 1: {
            InstallHandler(doc, handler);
            // Each round reads at least one byte or ends, so this stops with the data.
            for (std::uint32_t before = 0, after = 0;; before = after) {
                ObjList list;
                ivStatus st = ParseObjects(doc, source, list, flags);
                Render(list);
                source.GetPosition(after);
                if (Failed(st) || after <= before) break;
            }
            break;
        }
        case 2: {
            std::string token;
            while (ReadToken(source, token)) (void)TokenToLong(token);
            break;
        }
        default: {
            const ObjId expected{1, 0};
            ObjId found;
            if (ReadObjectHeader(doc, source, (selector & 1) ? &expected : nullptr, found)) {
                ObjList list;
                ParseObjects(doc, source, list, kParseToEndobj | (flags & kParseDecrypt));
                Render(list);
            }
        }
    }
    return 0;
}
