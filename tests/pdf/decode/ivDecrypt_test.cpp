#include "pdf/decode/ivDecrypt.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <regex>

#include "HexBytes.h"
#include "pdf/analysis/ivPdf.h"
#include "pdf/decode/AesContext.h"
#include "pdf/decode/ivPasswordPrompt.h"
#include "pdf/decode/pdfFilterChain.h"
#include "pdf/object/OpenedFixture.h"
#include "pdf/object/pdfAccessors.h"
#include "pdf/object/pdfObjectAccess.h"
#include "pdf/object/pdfRoleCodes.h"
#include "platform/ivFileStream.h"
#include "platform/ivFormat.h"

// The encrypted fixtures and the qpdf output beside them are described in tests/data/README.md
// and tests/fixtures/README.md. In the qpdf-made files 2 0 is the document information, 5 0 an
// object stream holding the annotation 7 0, 8 0 a Flate content stream, 9 0, 10 0 and 11 0
// unfiltered streams of 25, 32 and 2406 bytes, 12 0 the encryption dictionary.

namespace {

using Strings = std::vector<std::string>;

// Answers with the given passwords in turn, then cancels; remembers what it was shown.
class ListPrompt final : public ivPasswordPrompt {
public:
    explicit ListPrompt(Strings answers) : m_answers(std::move(answers)) {}
    bool AskPassword(const std::string& fileName, std::string& password) override {
        names.push_back(fileName);
        shown.push_back(password);
        if (names.size() > m_answers.size()) return false;
        password = m_answers[names.size() - 1];
        return true;
    }
    int Asked() const { return static_cast<int>(names.size()); }

    Strings names;  // the file names it was given
    Strings shown;  // the text it found in the password field, the one tried last

private:
    Strings m_answers;
};

// A file from tests/data opened as the application opens it, with a prompt that answers
// from a list. The path handed to the document has folders, the prompt gets the short name.
struct Opened {
    RecordingControl control;
    ListPrompt prompt;
    std::unique_ptr<ivPdf> doc;
    ivStatus status = kFail;
    std::string bytes;

    explicit Opened(const std::string& name, Strings answers = {})
        : prompt(std::move(answers)), bytes(ReadTestFile(name)) {
        doc = std::make_unique<ivPdf>(ivFileStream::Open(TestDataPath(name)), TestDataPath(name), &control);
        doc->SetPasswordPrompt(&prompt);
        status = doc->Open();
        doc->SetPasswordPrompt(nullptr);
    }
    ivDecrypt& Security() { return *doc->Security(); }

    Strings Messages() const {
        Strings out;
        for (const std::string& p : control.Paths()) out.push_back(WithoutPosition(p));
        return out;
    }
    std::string Decoded(std::uint32_t num, std::uint16_t gen = 0) {
        pdfObject* obj = ResolveRef(*doc, {num, gen});
        pdfDecodedStream out;
        if (Failed(OpenDecodedStream(*doc, obj, FindEntry(*doc, {num, gen}), out)) || !out.stream)
            return "(failed)";
        std::string data;
        ivReadAll(*out.stream, data);
        return data;
    }
    std::string Raw(std::uint32_t num) {
        pdfDecodedStream out;
        if (Failed(OpenRawStream(*doc, ResolveRef(*doc, {num, 0}), out)) || !out.stream) return "(failed)";
        std::string data;
        ivReadAll(*out.stream, data);
        return data;
    }
    // The bytes of a string entry of object `num` as the reader decrypted them.
    std::string String(std::uint32_t num, const char* key, std::uint16_t gen = 0) {
        const pdfBytes* b = AsBytes(DictGet(ResolveRef(*doc, {num, gen}), key));
        return b ? std::string(b->View()) : "(none)";
    }
    // The bytes of the hexadecimal string after `key` in the file: what is stored.
    std::string StoredString(const std::string& key) const {
        std::smatch m;
        if (!std::regex_search(bytes, m, std::regex(key + " <([0-9a-f]+)>"))) return "(none)";
        auto v = FromHex(m[1].str());
        return {v.begin(), v.end()};
    }
    // The stored data of stream `num`, cut out of the file by its record.
    std::string StoredData(std::uint32_t num) {
        const pdfStream* s = AsStream(ResolveRef(*doc, {num, 0}));
        const pdfObject* length = s ? DictGet(s->dict, "Length") : nullptr;
        if (!length || length->tag != kTagInt) return "(none)";
        return bytes.substr(s->dataPos, static_cast<std::size_t>(static_cast<const pdfInt*>(length)->value));
    }
};

std::string Scoped(const std::string& text) {
    return "Encryption Dictionary > " + text;
}

// What qpdf --show-encryption --show-encryption-key said about a file.
struct QpdfEncryption {
    int r = 0, p = 0;
    std::string key;  // "%02x " per byte, as the security page shows a key
};

QpdfEncryption ReadQpdfEncryption(const std::string& name) {
    const std::string text = ReadTestFile(name + ".show-encryption.txt");
    QpdfEncryption q;
    std::smatch m;
    if (std::regex_search(text, m, std::regex("R = (-?[0-9]+)"))) q.r = std::stoi(m[1]);
    if (std::regex_search(text, m, std::regex("P = (-?[0-9]+)"))) q.p = std::stoi(m[1]);
    if (std::regex_search(text, m, std::regex("Encryption key = ([0-9a-f]+)"))) {
        const std::string hex = m[1].str();
        for (std::size_t i = 0; i + 1 < hex.size(); i += 2) q.key += hex.substr(i, 2) + " ";
    }
    return q;
}

// The literal strings of a dictionary as qpdf --show-object printed it: key, text.
std::vector<std::pair<std::string, std::string>> QpdfStrings(const std::string& file) {
    const std::string text = ReadTestFile(file);
    std::vector<std::pair<std::string, std::string>> out;
    static const std::regex entry("/([A-Za-z]+) \\(([^)]*)\\)");
    for (auto it = std::sregex_iterator(text.begin(), text.end(), entry); it != std::sregex_iterator(); ++it)
        out.emplace_back((*it)[1], (*it)[2]);
    return out;
}

const std::string kQpdf = "enc-rc4-40-user.";  // the file qpdf's decoded data was taken from

TEST(Decrypt, QpdfFilesOpenWithTheirPasswords) {
    const struct {
        const char* file;
        Strings answers;
        ivStatus status;
        int asked;
        const char* method;
        int v, r, length;
    } cases[] = {
        // The empty user password opens it without asking.
        {"enc-rc4-40", {}, kOk, 0, "RC4 40 bit", 1, 2, 40},
        // Asked until the user password comes.
        {"enc-rc4-40-user", {"wrong", "user"}, kOk, 2, "RC4 40 bit", 1, 2, 40},
        // Only the user password is checked for RC4.
        {"enc-rc4-40-user", {"owner"}, kCancelled, 2, "RC4 40 bit", 1, 2, 40},
        // U's last 16 bytes are not zero: even the right (empty) password is refused.
        {"enc-rc4-128", {"", "owner"}, kCancelled, 3, "RC4 128 bit", 2, 3, 128},
        {"enc-rc4-128-user", {"user"}, kCancelled, 2, "RC4 128 bit", 2, 3, 128},
        // The same files with a zero tail.
        {"enc-rc4-128-zero-tail", {}, kOk, 0, "RC4 128 bit", 2, 3, 128},
        {"enc-rc4-128-user-zero-tail", {"user"}, kOk, 1, "RC4 128 bit", 2, 3, 128},
        {"enc-aes-128", {""}, kCancelled, 2, "AES 128 bit", 4, 4, 128},
        {"enc-aes-128-user", {"user"}, kCancelled, 2, "AES 128 bit", 4, 4, 128},
        {"enc-aes-128-zero-tail", {}, kOk, 0, "AES 128 bit", 4, 4, 128},
        {"enc-aes-128-user-zero-tail", {"wrong", "user"}, kOk, 2, "AES 128 bit", 4, 4, 128},
        {"enc-aes-256", {}, kOk, 0, "AES 256 bit (Acrobat X)", 5, 6, 256},
        {"enc-aes-256-user", {"user"}, kOk, 1, "AES 256 bit (Acrobat X)", 5, 6, 256},
        // An owner password that differs from the user password never opens the document.
        {"enc-aes-256-user", {"owner"}, kCancelled, 2, "AES 256 bit (Acrobat X)", 5, 6, 256},
        // Owner and user password alike: it opens.
        {"enc-aes-256-same-passwords", {"same"}, kOk, 1, "AES 256 bit (Acrobat X)", 5, 6, 256},
    };
    for (const auto& c : cases) {
        const std::string file = std::string(c.file) + ".pdf";
        Opened f(file, c.answers);
        SCOPED_TRACE(file + " answering " + ::testing::PrintToString(c.answers));
        EXPECT_EQ(f.status, c.status);
        EXPECT_EQ(f.prompt.Asked(), c.asked);
        ASSERT_NE(f.doc->Security(), nullptr);
        ivDecrypt& d = f.Security();
        EXPECT_EQ(d.Authenticated(), c.status == kOk);
        EXPECT_EQ(d.MethodText(), c.method);
        EXPECT_EQ(d.FilterName(), "Standard");
        EXPECT_EQ(std::make_tuple(d.V(), d.R(), d.Length()), std::make_tuple(c.v, c.r, c.length));
        EXPECT_TRUE(f.Messages().empty()) << ::testing::PrintToString(f.Messages());

        // qpdf's view of the same file; the zero-tail copies have the same key as their originals.
        std::string original = std::regex_replace(std::string(c.file), std::regex("-zero-tail$"), "");
        const QpdfEncryption q = ReadQpdfEncryption(original);
        EXPECT_EQ(d.R(), q.r);
        EXPECT_EQ(d.P(), q.p);
        if (d.Authenticated()) {
            EXPECT_EQ(d.FileKeyText(), q.key);
            EXPECT_EQ(f.doc->Pages().size(), 1u);  // the page tree was read through decrypted objects
        }
    }
}

TEST(Decrypt, PromptGetsTheShortNameAndTheTextTriedLast) {
    Opened f("enc-rc4-40-user.pdf", {"first", "second"});
    EXPECT_EQ(f.status, kCancelled);
    EXPECT_EQ(f.prompt.names, Strings(3, "enc-rc4-40-user.pdf"));
    EXPECT_EQ(f.prompt.shown, (Strings{"", "first", "second"}));
}

TEST(Decrypt, StreamsMatchQpdf) {
    const std::string flate = ReadTestFile(kQpdf + "8-0.bin"), stored = ReadTestFile(kQpdf + "8-0.raw.bin");
    const std::string objstm = ReadTestFile(kQpdf + "5-0.bin"), short25 = ReadTestFile(kQpdf + "9-0.bin");
    const std::string whole32 = ReadTestFile(kQpdf + "10-0.bin"), long2406 = ReadTestFile(kQpdf + "11-0.bin");
    ASSERT_EQ(short25.size(), 25u);
    ASSERT_EQ(whole32.size(), 32u);
    ASSERT_EQ(long2406.size(), 2406u);
    const struct {
        const char* file;
        Strings answers;
        int mode;
    } cases[] = {
        {"enc-rc4-40.pdf", {}, ivDecrypt::kModeRc4Short},
        {"enc-rc4-40-user.pdf", {"user"}, ivDecrypt::kModeRc4Short},
        {"enc-rc4-128-zero-tail.pdf", {}, ivDecrypt::kModeRc4},
        {"enc-aes-128-zero-tail.pdf", {}, ivDecrypt::kModeAes128},
        {"enc-aes-128-user-zero-tail.pdf", {"user"}, ivDecrypt::kModeAes128},
        // Its crypt filter names RC4, yet V 4 means AES-128 for every stream.
        {"enc-v4-crypt-filter-rc4.pdf", {}, ivDecrypt::kModeAes128},
        {"enc-aes-256.pdf", {}, ivDecrypt::kModeAes256},
    };
    for (const auto& c : cases) {
        Opened f(c.file, c.answers);
        SCOPED_TRACE(c.file);
        ASSERT_EQ(f.status, kOk);
        EXPECT_EQ(f.Security().GetMode(), c.mode);
        const bool aes = c.mode >= ivDecrypt::kModeAes128;
        EXPECT_EQ(f.Decoded(8), flate);
        EXPECT_EQ(f.Decoded(5), objstm);
        // No filter: AES padding (here 7 bytes) is removed.
        EXPECT_EQ(f.Decoded(9), short25);
        // RC4 in chunks of 1,024 bytes, the keystream carried from one to the next.
        EXPECT_EQ(f.Decoded(11), long2406);
        if (!aes) {
            EXPECT_EQ(f.Decoded(10), whole32);
            EXPECT_EQ(f.Raw(8), stored);
        } else {
            // A padding of a whole block of 16 stays on purpose.
            EXPECT_EQ(f.Decoded(10), whole32 + std::string(16, '\x10'));
            // With a filter the padding is handed to the first decoder, not removed.
            const char pad = static_cast<char>(16 - stored.size() % 16);
            EXPECT_EQ(f.Raw(8), stored + std::string(static_cast<std::size_t>(pad), pad));
        }
        EXPECT_TRUE(f.Messages().empty()) << ::testing::PrintToString(f.Messages());
    }
}

TEST(Decrypt, StringsMatchQpdf) {
    const auto info = QpdfStrings(kQpdf + "2-0.txt");
    const auto annotation = QpdfStrings(kQpdf + "7-0.txt");
    ASSERT_EQ(info.size(), 4u);  // Author, Producer, Subject (hexadecimal in the source), Title
    ASSERT_EQ(annotation.size(), 2u);
    const struct {
        const char* file;
        Strings answers;
    } cases[] = {
        {"enc-rc4-40-user.pdf", {"user"}},
        {"enc-rc4-128-zero-tail.pdf", {}},
        // The Title has 16 bytes: AES pads it with a whole block, which strings drop.
        {"enc-aes-128-zero-tail.pdf", {}},
        {"enc-aes-256.pdf", {}},
    };
    for (const auto& c : cases) {
        Opened f(c.file, c.answers);
        SCOPED_TRACE(c.file);
        ASSERT_EQ(f.status, kOk);
        for (const auto& [key, text] : info) EXPECT_EQ(f.String(2, key.c_str()), text) << key;
        // Objects of an object stream: decrypted with the stream, not once more.
        for (const auto& [key, text] : annotation) EXPECT_EQ(f.String(7, key.c_str()), text) << key;
    }
}

TEST(Decrypt, DictionaryEdgeCases) {
    const struct {
        const char* file;
        Strings answers;
        std::optional<ivStatus> status;  // none: not part of the case
        int asked;
        Strings messages;
    } cases[] = {
        // Mode 0 still checks the password; when it passes nothing is decrypted.
        {"enc-v3.pdf",
         {},
         kOk,
         0,
         {Scoped(
             "3 is unpublished algorithm that permits encryption key lengths ranging from 40 to 128 bits. "
             "Not supported")}},
        {"enc-v7.pdf", {}, kWrongType, 0, {Scoped("7 is unsupported algorithm number")}},
        // V absent counts as 65535.
        {"enc-v-missing.pdf", {}, kWrongType, 0, {Scoped("65535 is unsupported algorithm number")}},
        // R 5: mode 0 and an O of 48 bytes; no password ever passes.
        {"enc-v5-r5.pdf", {"", "user", "owner"}, kCancelled, 4, {}},
        {"enc-filter-not-standard.pdf",
         {},
         kFail,
         0,
         {Scoped("Currently we do not support non standard filters")}},
        {"enc-filter-missing.pdf", {}, kOk, 0, {Scoped("required Filter entry is not found")}},
        {"enc-unknown-key.pdf", {}, kOk, 0, {Scoped("Foo is unsupported entry\n")}},
        // P stays 0, so the key comes out wrong.
        {"enc-p-not-number.pdf", {}, kCancelled, 1, {Scoped("Can't parse P")}},
        // R stays 0, below any revision that can authenticate.
        {"enc-r-not-number.pdf", {""}, kCancelled, 2, {Scoped("Can't parse R")}},
        // Length stays 40, which is what this file has.
        {"enc-length-not-number.pdf", {}, kOk, 0, {Scoped("Can't parse length")}},
        // A wrong O or U length fails every password.
        {"enc-o-short.pdf", {""}, kCancelled, 2, {Scoped("Length of O string is 31. It must be 32")}},
        // Only string objects are copied: a number leaves O empty.
        {"enc-o-not-string.pdf", {}, kCancelled, 1, {Scoped("Length of O string is 0. It must be 32")}},
        {"enc-u-short.pdf", {""}, kCancelled, 2, {Scoped("Length of U string is 31. It must be 32")}},
        // The user password does not need OE or Perms.
        {"enc-oe-short.pdf", {}, kOk, 0, {Scoped("Length of OE string is 31. It must be 32")}},
        {"enc-perms-short.pdf", {}, kOk, 0, {Scoped("Length of Perms string is 15. It must be 16")}},
        {"enc-ue-short.pdf", {}, std::nullopt, 0, {Scoped("Length of UE string is 31. It must be 32")}},
        // Without an identifier the keys take 16 zero bytes in its place.
        {"enc-id-missing.pdf", {}, kOk, 0, {Scoped("File ID is not fonund in the file trailer")}},
        {"enc-id-not-array.pdf", {}, kOk, 0, {Scoped("File ID must be an ARRAY type")}},
        {"enc-id-empty.pdf", {}, kOk, 0, {Scoped("File ID array is empty")}},
        // The literal string's bytes still make the key.
        {"enc-id-not-hex.pdf", {}, kOk, 0, {Scoped("ID must be a HEX string")}},
        // A short identifier is completed with zeros.
        {"enc-id-short.pdf", {}, kOk, 0, {}},  // padded with zeros, silently
        // Only 16 bytes of a 32-byte identifier enter the key; the file's writer took all 32.
        {"enc-id-32-bytes.pdf", {}, kCancelled, 1, {}},
        // O begins with FE FF: its bytes still count as stored.
        {"enc-o-begins-with-fe-ff.pdf", {}, kOk, 0, {}},
        // EncryptMetadata false does not enter the key, so qpdf's key differs.
        {"enc-aes-128-cleartext-metadata-zero-tail.pdf", {}, kCancelled, 1, {}},
        {"enc-encrypt-metadata-not-boolean.pdf", {}, kOk, 0, {Scoped("BOOL is Expected")}},
        {"enc-not-dictionary.pdf", {"user"}, kFail, 0, {Scoped("Dictionary must be a Dictionary object")}},
        {"enc-dictionary-missing.pdf",
         {},
         kFail,
         0,
         {Scoped("Reading Object 3 0 R > Object 3 0 R was not found")}},
    };
    for (const auto& c : cases) {
        Opened f(c.file, c.answers);
        SCOPED_TRACE(c.file);
        if (c.status) {
            EXPECT_EQ(f.status, *c.status);
            if (f.doc->Security()) {
                EXPECT_EQ(f.Security().Authenticated(), *c.status == kOk);
            }
        }
        EXPECT_EQ(f.prompt.Asked(), c.asked);
        EXPECT_EQ(f.Messages(), c.messages);
    }
}

TEST(Decrypt, DecryptorIsKeptWheneverOneWasMade) {
    const struct {
        const char* file;
        bool kept;
    } cases[] = {
        {"enc-not-dictionary.pdf", false},
        {"enc-dictionary-missing.pdf", false},
        {"enc-source.pdf", false},  // not encrypted
        {"enc-filter-not-standard.pdf", true},
        {"enc-v7.pdf", true},
    };
    for (const auto& c : cases) {
        Opened f(c.file);
        EXPECT_EQ(f.doc->Security() != nullptr, c.kept) << c.file;
    }
    Opened custom("enc-filter-not-standard.pdf");
    EXPECT_EQ(custom.Security().FilterName(), "Custom");
    Opened missing("enc-filter-missing.pdf");
    EXPECT_EQ(missing.Security().FilterName(), "");
}

TEST(Decrypt, ModeFollowsVAndR) {
    const struct {
        const char* file;
        int mode;
        const char* method;
    } cases[] = {
        {"enc-v3.pdf", ivDecrypt::kModeNone, "Unknown"},
        {"enc-v4-r3.pdf", ivDecrypt::kModeNone, "Unknown"},
        {"enc-v5-r5.pdf", ivDecrypt::kModeNone, "Unknown"},
        {"enc-rc4-v2-40bit.pdf", ivDecrypt::kModeRc4Short, "RC4 40 bit"},  // V 2 with a Length below 128
        {"enc-v4-crypt-filter-rc4.pdf", ivDecrypt::kModeAes128, "AES 128 bit"},
    };
    for (const auto& c : cases) {
        Opened f(c.file);
        ASSERT_NE(f.doc->Security(), nullptr) << c.file;
        EXPECT_EQ(f.Security().GetMode(), c.mode) << c.file;
        EXPECT_EQ(f.Security().MethodText(), c.method) << c.file;
    }
}

TEST(Decrypt, EncryptionDictionaryKeepsItsStringsAndGetsItsRole) {
    Opened f("enc-rc4-40.pdf");
    ASSERT_EQ(f.status, kOk);
    ASSERT_EQ(f.doc->Analyse(), kOk);
    EXPECT_EQ(FindEntry(*f.doc, {12, 0})->role, kRoleEncryption);
    // Its own strings are not decrypted.
    EXPECT_EQ(f.String(12, "O"), f.StoredString("/O"));
    EXPECT_EQ(f.String(12, "U"), f.StoredString("/U"));
    EXPECT_TRUE(f.Messages().empty()) << ::testing::PrintToString(f.Messages());
}

TEST(Decrypt, ModeNoneLeavesStringsAndEmptiesStreams) {
    Opened f("enc-v3.pdf");
    ASSERT_EQ(f.status, kOk);
    EXPECT_TRUE(f.Security().Authenticated());
    EXPECT_EQ(f.String(2, "Title"), f.StoredString("/Title"));
    for (std::uint32_t num : {5u, 8u, 9u, 10u, 11u}) EXPECT_EQ(f.Decoded(num), "") << num;
    std::string bytes = "abc";
    EXPECT_FALSE(f.Security().DecryptString(bytes));
    EXPECT_EQ(bytes, "abc");
}

TEST(Decrypt, AesKeyThatCannotBeExpandedLeavesTheDataAsStored) {
    // No Length in a V 5 dictionary: 40 bits, an object key of 10 bytes, which AES cannot use.
    Opened f("enc-v5-length-missing.pdf");
    ASSERT_EQ(f.status, kOk);
    EXPECT_TRUE(f.Security().Authenticated());
    EXPECT_EQ(f.Security().Length(), 40);
    // The file key is right; the security page shows Length / 8 bytes of it.
    EXPECT_EQ(f.Security().FileKeyText(), ReadQpdfEncryption("enc-aes-256").key.substr(0, 15));
    EXPECT_EQ(f.String(2, "Title"), f.StoredString("/Title"));
    // The stream loses its first 16 bytes, read as the IV.
    const std::string stored = f.StoredData(9);
    ASSERT_EQ(stored.size(), 48u);
    EXPECT_EQ(f.Decoded(9), stored.substr(16));
}

TEST(Decrypt, CatalogInEncryptedObjectStream) {
    Opened f("enc-catalog-in-objstm.pdf");
    ASSERT_EQ(f.status, kOk);
    EXPECT_EQ(f.doc->Pages().size(), 1u);  // the catalog and pages were read from the decrypted stream
    ASSERT_EQ(f.doc->Analyse(), kOk);
    EXPECT_EQ(f.Messages(),
              Strings{"Document's Catalog can't be inside of encrypted object stream (Acrobat)"});

    // The same layout without encryption.
    Opened twin("objstm-good.pdf");
    ASSERT_EQ(twin.status, kOk);
    ASSERT_EQ(twin.doc->Analyse(), kOk);
    EXPECT_TRUE(twin.Messages().empty()) << ::testing::PrintToString(twin.Messages());
}

TEST(Decrypt, FilesMadeHere) {
    const struct {
        const char* file;
        const char* title;
    } cases[] = {
        {"enc-o-begins-with-fe-ff.pdf", "O starts like UTF-16"},
        {"enc-id-missing.pdf", "No file identifier"},
        {"enc-id-not-array.pdf", "Identifier not in an array"},
        {"enc-id-empty.pdf", "Empty identifier array"},
        {"enc-id-not-hex.pdf", "Literal identifier"},
        {"enc-id-short.pdf", "Four-byte identifier"},
        // V 2 with a Length other than 128 cuts object keys to 5 bytes (others use 10).
        {"enc-rc4-v2-40bit.pdf", "Five-byte object keys"},
    };
    for (const auto& c : cases) {
        Opened f(c.file);
        ASSERT_EQ(f.status, kOk) << c.file;
        EXPECT_EQ(f.String(3, "Title"), c.title) << c.file;
    }
    Opened f("enc-rc4-v2-40bit.pdf");
    EXPECT_EQ(f.Security().MethodText(), "RC4 40 bit");
    EXPECT_EQ(f.Security().GetMode(), ivDecrypt::kModeRc4Short);
    EXPECT_EQ(f.Decoded(5), "BT /F1 12 Tf (Five bytes) Tj ET");

    // Generation 2 and a number above 65535 enter the object keys; a literal string with
    // escapes is decrypted after they are undone.
    Opened k("enc-rc4-key-inputs.pdf");
    ASSERT_EQ(k.status, kOk);
    EXPECT_EQ(k.String(3, "Title", 2), "Literal string of generation 2");
    EXPECT_EQ(k.String(3, "Subject", 2), "Hexadecimal string");
    // Decrypted before the byte-order mark is looked at.
    std::u16string keywords;
    EXPECT_EQ(GetText(*k.doc, DictGet(ResolveRef(*k.doc, {3, 2}), "Keywords"), &keywords), kOk);
    EXPECT_EQ(keywords, u"\u00e9t\u00e9");
    EXPECT_EQ(k.Decoded(70000), "Object number of three bytes");
    EXPECT_TRUE(k.Messages().empty()) << ::testing::PrintToString(k.Messages());
}

TEST(Decrypt, Rc4StreamReadShort) {
    Opened f("enc-rc4-40.pdf");
    ASSERT_EQ(f.status, kOk);
    const std::string stored = f.StoredData(9);
    f.Security().SetCurrentObject({9, 0});
    std::int32_t length = 2000;  // beyond the end of the data
    auto out = f.Security().DecryptStream(*MemStream(stored), 0, length, false);
    std::string data;
    ivReadAll(*out, data);
    EXPECT_EQ(data, ReadTestFile(kQpdf + "9-0.bin"));  // what was read is kept, decrypted
    EXPECT_EQ(length, 25);
    EXPECT_EQ(f.Messages(), Strings{"Stream Read Error"});
}

// Padding rules on data encrypted here with the file key of an AES-256 document, which is also
// the key of every one of its objects.
class AesPadding : public ::testing::Test {
protected:
    static void SetUpTestSuite() { s_file = new Opened("enc-aes-256.pdf"); }
    static void TearDownTestSuite() {
        delete s_file;
        s_file = nullptr;
    }

    // A 16-byte IV, then `plain` (whole blocks, padded by the caller) under the file key.
    static std::string Encrypt(const std::string& plain) {
        std::string keyText = s_file->Security().FileKeyText();
        keyText.erase(std::remove(keyText.begin(), keyText.end(), ' '), keyText.end());
        const auto key = FromHex(keyText);
        std::vector<std::uint8_t> iv(16), out(plain.size());
        for (std::size_t i = 0; i < iv.size(); ++i) iv[i] = static_cast<std::uint8_t>(i * 7 + 1);
        AesContext aes;
        EXPECT_EQ(aes.ExpandKey(key), kAesOk);
        aes.SetIv(std::span<const std::uint8_t, 16>(iv.data(), 16));
        EXPECT_EQ(aes.CbcEncrypt(AsBytes(plain), out), kAesOk);
        return std::string(iv.begin(), iv.end()) + std::string(out.begin(), out.end());
    }
    static std::string String(const std::string& cipher) {
        std::string s = cipher;
        EXPECT_TRUE(s_file->Security().DecryptString(s));
        return s;
    }
    static std::string Stream(const std::string& cipher, bool strip) {
        std::int32_t length = static_cast<std::int32_t>(cipher.size());
        auto out = s_file->Security().DecryptStream(*MemStream("xyz" + cipher), 3, length, strip);
        std::string data;
        ivReadAll(*out, data);
        EXPECT_EQ(static_cast<std::size_t>(length), data.size());
        return data;
    }

    static Opened* s_file;
};

Opened* AesPadding::s_file = nullptr;

TEST_F(AesPadding, StringsDropPaddingUpToAWholeBlock) {
    ASSERT_EQ(s_file->status, kOk);
    const std::string sixteen = "0123456789abcdef";
    const struct {
        std::string plain, expected;
    } cases[] = {
        {"abc" + std::string(13, '\x0d'), "abc"},                        // 13 bytes of 13
        {sixteen + "abcdefghijklmno\x01", sixteen + "abcdefghijklmno"},  // one byte of 1
        {sixteen + std::string(16, '\x10'), sixteen},                    // a whole block of 16 goes
        {sixteen + "abcdefghijkl\x03\x04\x04\x04",
         sixteen + "abcdefghijkl\x03\x04\x04\x04"},                          // one byte differs
        {sixteen + "abcdefghijklmno\x11", sixteen + "abcdefghijklmno\x11"},  // 17 is no padding
        {sixteen + "abcdefghijklmno" + std::string(1, '\0'),
         sixteen + "abcdefghijklmno" + std::string(1, '\0')},  // a last byte of 0 removes nothing
    };
    for (const auto& c : cases) EXPECT_EQ(String(Encrypt(c.plain)), c.expected) << ToHex(AsBytes(c.plain));
}

TEST_F(AesPadding, StreamsKeepAPaddingOf16) {
    ASSERT_EQ(s_file->status, kOk);
    const std::string sixteen = "0123456789abcdef";
    const struct {
        std::string plain;
        bool strip;
        std::string expected;
    } cases[] = {
        {"abc" + std::string(13, '\x0d'), true, "abc"},                                // no filter: removed
        {sixteen + std::string(16, '\x10'), true, sixteen + std::string(16, '\x10')},  // 16 stays
        {"abc" + std::string(13, '\x0d'), false, "abc" + std::string(13, '\x0d')},     // a filter follows
        {sixteen + "abcdefghijkl\x03\x04\x04\x04", true,
         sixteen + "abcdefghijkl\x03\x04\x04\x04"},  // one byte differs: no padding
    };
    for (const auto& c : cases)
        EXPECT_EQ(Stream(Encrypt(c.plain), c.strip), c.expected) << ToHex(AsBytes(c.plain)) << " " << c.strip;
}

TEST_F(AesPadding, ChunkedStreamEqualsTheData) {
    ASSERT_EQ(s_file->status, kOk);
    // Beyond three chunks of the largest size (10,256 bytes), the last one partial: the chaining
    // value is carried from one chunk to the next.
    std::string plain;
    for (int i = 0; plain.size() < 33000; ++i) plain += ivFormat("line %d\n", i);
    const std::size_t pad = 16 - plain.size() % 16;
    ASSERT_LT(pad, 16u);  // a padding of 16 would stay
    const std::string padded = plain + std::string(pad, static_cast<char>(pad));
    EXPECT_EQ(Stream(Encrypt(padded), true), plain);
    EXPECT_EQ(Stream(Encrypt(padded), false), padded);
}

TEST_F(AesPadding, StreamNotOfWholeBlocksKeepsItsLength) {
    ASSERT_EQ(s_file->status, kOk);
    const std::string plain = "0123456789abcdefghijklmnopqrstuv";
    // Four bytes past the last whole block: they come out (as something) and count.
    const std::string data = Stream(Encrypt(plain) + "WXYZ", false);
    EXPECT_EQ(data.size(), plain.size() + 4);
    EXPECT_EQ(data.substr(0, plain.size()), plain);
}

}  // namespace
