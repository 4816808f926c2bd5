#pragma once
#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "pdf/object/pdfObject.h"
#include "platform/ivMemStream.h"
#include "platform/ivStatus.h"

class pdfDocument;
class ivPasswordPrompt;
struct XrefSection;

// The decryptor of a document protected by the standard security handler: reads the
// encryption dictionary, authenticates a password, and decrypts strings and streams with
// per-object keys.
class ivDecrypt {
public:
    enum Mode : int { kModeNone = 0, kModeRc4Short = 1, kModeRc4 = 2, kModeAes128 = 3, kModeAes256 = 4 };

    // Takes the file identifier from the trailer, reporting what is wrong with it.
    ivDecrypt(pdfDocument& doc, const pdfObject* dictionary, const XrefSection& trailer);

    // Reads V and every entry, then picks the mode. kWrongType for an unsupported V.
    ivStatus ReadDictionary();
    // Tries `password` (UTF-8) as user and owner password; 0 when it opens the document.
    ivStatus Authenticate(const std::string& password);

    // Names the object whose strings or stream are decrypted next; its key is derived on first use.
    void SetCurrentObject(ObjId id);
    // Decrypts in place; false when the mode decrypts nothing.
    bool DecryptString(std::string& bytes);
    // Reads `length` bytes (-1: to the end) at `offset` of `file` and decrypts them; `length`
    // receives the plain length. With `stripPadding` AES padding is removed.
    ivRef<ivMemStream> DecryptStream(ivStream& file, std::uint32_t offset, std::int32_t& length,
                                     bool stripPadding);

    // What the security page shows.
    std::string MethodText() const;
    std::string FileKeyText() const;  // "%02x " per byte of the key, Length / 8 bytes
    int V() const { return m_v; }
    int R() const { return m_r; }
    std::int32_t P() const { return m_p; }
    int Length() const { return m_length; }
    int GetMode() const { return m_mode; }
    const std::string& FilterName() const { return m_filter; }
    bool Authenticated() const { return m_authenticated; }
    void SetAuthenticated(bool ok) { m_authenticated = ok; }

private:
    using Bytes = std::vector<std::uint8_t>;

    void ReadEntry(const char* key, const pdfObject* value);
    void CopyBytes(const pdfObject* value, Bytes& field);
    void CheckLength(const char* name, const Bytes& field, std::size_t expected);
    void SelectMode();
    ivStatus AuthenticateRc4OrAes128(const std::string& password);
    ivStatus AuthenticateAes256(const std::string& password);
    void ComputeObjectKey();
    void DecryptAesStream(ivStream& file, std::span<const std::uint8_t> key, std::uint64_t total,
                          bool stripPadding, Bytes& data);
    std::array<std::uint8_t, 32> PaddedPassword(const std::string& password) const;

    pdfDocument& m_doc;
    const pdfObject* m_dictionary;
    Bytes m_fileId;
    std::string m_filter;
    int m_v = 65535;
    int m_r = 0;
    std::int32_t m_p = 0;
    int m_length = 40;
    int m_mode = kModeNone;
    int m_objectKeyLength = 0;
    Bytes m_o, m_u, m_oe, m_ue, m_perms;
    Bytes m_fileKey;
    std::array<std::uint8_t, 32> m_objectKey{};
    ObjId m_current;
    bool m_keyReady = false;
    bool m_authenticated = false;
    bool m_encryptMetadata = true;  // read and kept; no key computation uses it
};

// Sets up the standard security handler when the newest trailer names an encryption
// dictionary: 1 when it names none, 0 when a password was accepted, kFail for a missing or
// non-standard dictionary, kWrongType for an unsupported V, kCancelled when the user gave up.
// The document keeps the decryptor whenever one was created.
ivStatus SetUpEncryption(pdfDocument& doc, ivPasswordPrompt* prompt, const std::string& fileName);
