#include "pdf/decode/ivDecrypt.h"

#include <algorithm>
#include <cstring>

#include "pdf/decode/AesContext.h"
#include "pdf/decode/Rc4State.h"
#include "pdf/decode/ivMD5.h"
#include "pdf/decode/ivPasswordPrompt.h"
#include "pdf/decode/ivSHA_256.h"
#include "pdf/object/pdfAccessors.h"
#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfDocument.h"
#include "pdf/object/pdfObjectAccess.h"
#include "pdf/object/pdfRoleCodes.h"

namespace {

// The 32 bytes that complete a password to 32 bytes, from the PDF specification.
constexpr std::uint8_t kPadding[32] = {0x28, 0xBF, 0x4E, 0x5E, 0x4E, 0x75, 0x8A, 0x41, 0x64, 0x00, 0x4E,
                                       0x56, 0xFF, 0xFA, 0x01, 0x08, 0x2E, 0x2E, 0x00, 0xB6, 0xD0, 0x68,
                                       0x3E, 0x80, 0x2F, 0x0C, 0xA9, 0xFE, 0x64, 0x53, 0x69, 0x7A};
constexpr std::uint8_t kAesSalt[4] = {0x73, 0x41, 0x6C, 0x54};  // "sAlT"
constexpr std::size_t kMaxPassword = 127;

using Bytes = std::vector<std::uint8_t>;

std::span<const std::uint8_t> Span(const std::string& s) {
    return {reinterpret_cast<const std::uint8_t*>(s.data()), s.size()};
}

void Append(Bytes& out, std::span<const std::uint8_t> bytes) {
    out.insert(out.end(), bytes.begin(), bytes.end());
}

// Up to `n` bytes of `bytes` from `at`, zeros for what it lacks.
Bytes Slice(const Bytes& bytes, std::size_t at, std::size_t n) {
    Bytes out(n, 0);
    for (std::size_t i = 0; i < n && at + i < bytes.size(); ++i) out[i] = bytes[at + i];
    return out;
}

// The password hash of AES-256 documents (revision 6): SHA-256, then rounds of AES-128-CBC
// and a SHA-2 function chosen by the data until the last byte says stop.
std::array<std::uint8_t, 32> Hash2B(std::span<const std::uint8_t> password,
                                    std::span<const std::uint8_t> salt, std::span<const std::uint8_t> extra) {
    Bytes k;
    {
        ivSHA_256 sha;
        sha.Update(password);
        sha.Update(salt);
        sha.Update(extra);
        k.resize(32);
        std::uint32_t size = 32;
        sha.Final(k.data(), &size);
    }
    Bytes k1, e;
    for (int round = 1;; ++round) {
        k1.clear();
        for (int i = 0; i < 64; ++i) {
            Append(k1, password);
            Append(k1, k);
            Append(k1, extra);
        }
        AesContext aes;
        (void)aes.ExpandKey(std::span(k.data(), 16));
        aes.SetIv(std::span<const std::uint8_t, 16>(k.data() + 16, 16));
        e.resize(k1.size());
        (void)aes.CbcEncrypt(k1, e);
        unsigned sum = 0;
        for (int i = 0; i < 16; ++i) sum += e[i];
        auto hash = CreateSha(sum % 3 == 0 ? 256 : sum % 3 == 1 ? 384 : 512);
        hash->Update(e);
        k.resize(hash->DigestSize());
        std::uint32_t size = hash->DigestSize();
        hash->Final(k.data(), &size);
        if (round >= 64 && e.back() <= round - 32) break;
    }
    std::array<std::uint8_t, 32> out{};
    std::copy_n(k.begin(), 32, out.begin());
    return out;
}

// AES-256 without chaining state: CBC with a zero IV over whole blocks.
Bytes Aes256(std::span<const std::uint8_t> key, const Bytes& data, bool encrypt) {
    AesContext aes;
    Bytes out(data.size());
    if (aes.ExpandKey(key) != kAesOk || data.empty()) return out;
    int rc = encrypt ? aes.CbcEncrypt(data, out) : aes.CbcDecrypt(data, out);
    (void)rc;
    return out;
}

}  // namespace

ivDecrypt::ivDecrypt(pdfDocument& doc, const pdfObject* dictionary, const XrefSection& trailer)
    : m_doc(doc), m_dictionary(dictionary) {
    const ObjRef& id = trailer.id;
    if (id.Empty()) {
        Report(doc, "File ID is not fonund in the file trailer");
        return;
    }
    const pdfArray* ids = AsArray(id.obj ? id.obj : ResolveRef(doc, id.Id()));
    if (!ids) {
        Report(doc, "File ID must be an ARRAY type");
        return;
    }
    if (ids->count == 0) {
        Report(doc, "File ID array is empty");
        return;
    }
    const pdfObject* first = ids->Items()[0];
    if (first->tag != kTagHexString) Report(doc, "ID must be a HEX string");
    if (const pdfBytes* b = AsBytes(first)) m_fileId.assign(b->Data(), b->Data() + b->size);
    // The keys take 16 identifier bytes; a shorter identifier is padded with zeros.
    if (m_fileId.size() < 16)
        ReportExtra(doc, "File ID is %d bytes long; it is padded with zeros to 16",
                    static_cast<int>(m_fileId.size()));
}

void ivDecrypt::CopyBytes(const pdfObject* value, Bytes& field) {
    field.clear();
    if (!value) return;
    if (value->tag == kTagString || value->tag == kTagHexString) {
        const auto* b = static_cast<const pdfBytes*>(value);
        field.assign(b->Data(), b->Data() + b->size);
    } else if (value->tag == kTagUnicodeString) {
        // Binary bytes that happened to begin with a byte-order mark: put them back as stored.
        const auto* u = static_cast<const pdfUnicode*>(value);
        field = {0xFE, 0xFF};
        for (std::uint32_t i = 0; i < u->count; ++i) {
            field.push_back(static_cast<std::uint8_t>(u->Units()[i] >> 8));
            field.push_back(static_cast<std::uint8_t>(u->Units()[i]));
        }
    }
}

void ivDecrypt::CheckLength(const char* name, const Bytes& field, std::size_t expected) {
    if (field.size() != expected)
        Report(m_doc, "Length of %s string is %d. It must be %d", name, static_cast<int>(field.size()),
               static_cast<int>(expected));
}

void ivDecrypt::ReadEntry(const char* key, const pdfObject* value) {
    // These entries have a failure message of their own; the accessor's comes with the extra checks.
    auto number = [&](int& out, const char* failure) {
        std::uint32_t n = 0;
        const ivStatus st = GetIntegerQuiet(m_doc, value, &n);
        if (st == kWrongType) ReportExtra(m_doc, "Number is Expected");
        if (Failed(st))
            Report(m_doc, "%s", failure);
        else
            out = static_cast<int>(n);
    };
    const bool oldRevisions = m_v == 1 || m_v == 2 || m_v == 4;
    if (std::strcmp(key, "P") == 0) {
        int p = 0;
        number(p, "Can't parse P");
        m_p = p;
    } else if (std::strcmp(key, "Filter") == 0 || std::strcmp(key, "V") == 0) {
        // read before the walk
    } else if (std::strcmp(key, "Perms") == 0) {
        CopyBytes(value, m_perms);
        CheckLength("Perms", m_perms, 16);
    } else if (std::strcmp(key, "OE") == 0) {
        CopyBytes(value, m_oe);
        CheckLength("OE", m_oe, 32);
    } else if (std::strcmp(key, "UE") == 0) {
        CopyBytes(value, m_ue);
        CheckLength("UE", m_ue, 32);
    } else if (std::strcmp(key, "O") == 0) {
        CopyBytes(value, m_o);
        if (oldRevisions) CheckLength("O", m_o, 32);
    } else if (std::strcmp(key, "U") == 0) {
        CopyBytes(value, m_u);
        if (oldRevisions) CheckLength("U", m_u, 32);
    } else if (std::strcmp(key, "R") == 0) {
        number(m_r, "Can't parse R");
    } else if (std::strcmp(key, "Length") == 0) {
        number(m_length, "Can't parse length");
    } else if (std::strcmp(key, "StmF") == 0 || std::strcmp(key, "StrF") == 0 ||
               std::strcmp(key, "CF") == 0) {
        // crypt filters are not interpreted: V 4 means AES-128 and V 5 AES-256 throughout
    } else if (std::strcmp(key, "EncryptMetadata") == 0) {
        GetBool(m_doc, value, &m_encryptMetadata);
    } else {
        Report(m_doc, "%s is unsupported entry\n", key);
    }
}

ivStatus ivDecrypt::ReadDictionary() {
    const pdfObject* filter = DictGet(m_dictionary, "Filter");
    if (!AsTextValued(filter)) {
        Report(m_doc, "required Filter entry is not found");
    } else {
        m_filter = static_cast<const pdfBytes*>(filter)->Chars();
        if (m_filter != "Standard") {
            Report(m_doc, "Currently we do not support non standard filters");
            return kFail;
        }
    }
    if (const pdfObject* v = DictGet(m_dictionary, "V")) {
        std::uint32_t n = 0;
        if (Succeeded(GetInteger(m_doc, v, &n))) m_v = static_cast<int>(n);
    }
    if (m_v < 1 || m_v > 5) {
        Report(m_doc, "%d is unsupported algorithm number", m_v);
        return kWrongType;
    }
    if (m_v == 3)
        Report(m_doc,
               "3 is unpublished algorithm that permits encryption key lengths ranging from 40 to 128 bits. "
               "Not supported");
    for (const pdfPair& pair : AsDict(m_dictionary)->Entries())
        if (const pdfBytes* key = AsName(pair.key)) ReadEntry(key->Chars(), pair.value);
    if (m_v == 1) {
        if (m_o.empty()) m_o.assign(32, 0);
        if (m_u.empty()) m_u.assign(32, 0);
    }
    SelectMode();
    return kOk;
}

void ivDecrypt::SelectMode() {
    int cap = 16;
    switch (m_v) {
        case 1:
            m_mode = kModeRc4Short, cap = 10;
            break;
        case 2:
            m_mode = m_length == 128 ? kModeRc4 : kModeRc4Short;
            cap = m_length == 128 ? 16 : 5;  // deliberately 5: it shortens other key lengths
            break;
        case 4:
            m_mode = m_r == 4 ? kModeAes128 : kModeNone;
            break;
        case 5:
            m_mode = m_r == 6 ? kModeAes256 : kModeNone;
            cap = m_r == 6 ? 32 : 16;
            break;
        default:
            m_mode = kModeNone;
    }
    m_objectKeyLength = std::clamp(m_length / 8 + 5, 0, cap);
}

std::string ivDecrypt::MethodText() const {
    switch (m_v) {
        case 1:
            return "RC4 40 bit";
        case 2:
            return m_length == 128 ? "RC4 128 bit" : "RC4 40 bit";
        case 4:
            return m_r == 4 ? "AES 128 bit" : "Unknown";
        case 5:
            return m_r == 6 ? "AES 256 bit (Acrobat X)" : "Unknown";
        default:
            return "Unknown";
    }
}

std::string ivDecrypt::FileKeyText() const {
    std::string out;
    std::size_t n = static_cast<std::size_t>(std::max(m_length / 8, 0));
    for (std::size_t i = 0; i < n && i < m_fileKey.size(); ++i) out += ivFormat("%02x ", m_fileKey[i]);
    return out;
}

std::array<std::uint8_t, 32> ivDecrypt::PaddedPassword(const std::string& password) const {
    std::string text = ivUtf8ToCodePage(password);
    if (text.size() > kMaxPassword) text.resize(kMaxPassword);
    std::array<std::uint8_t, 32> padded{};
    std::size_t n = std::min<std::size_t>(text.size(), 32);
    std::memcpy(padded.data(), text.data(), n);
    std::memcpy(padded.data() + n, kPadding, 32 - n);
    return padded;
}

ivStatus ivDecrypt::Authenticate(const std::string& password) {
    m_keyReady = false;
    return m_mode == kModeAes256 ? AuthenticateAes256(password) : AuthenticateRc4OrAes128(password);
}

ivStatus ivDecrypt::AuthenticateRc4OrAes128(const std::string& password) {
    if (m_o.size() != 32 || m_r < 2) return kFail;
    // The file key: MD5 over the padded password, O, P and the first 16 bytes of the file
    // identifier, re-hashed 50 times from revision 3 on.
    const std::size_t n = static_cast<std::size_t>(std::clamp(m_length / 8, 0, 16));
    if (n == 0) return kFail;
    ivMD5 md5;
    auto padded = PaddedPassword(password);
    md5.Update(padded);
    md5.Update(m_o);
    const std::uint8_t p[4] = {static_cast<std::uint8_t>(m_p), static_cast<std::uint8_t>(m_p >> 8),
                               static_cast<std::uint8_t>(m_p >> 16), static_cast<std::uint8_t>(m_p >> 24)};
    md5.Update(p);
    md5.Update(Slice(m_fileId, 0, 16));
    std::uint8_t digest[16];
    std::uint32_t size = 16;
    md5.Final(digest, &size);
    if (m_r >= 3)
        for (int i = 0; i < 50; ++i) Md5(std::span(digest, n), digest);
    m_fileKey.assign(digest, digest + n);

    std::array<std::uint8_t, 32> expected{};
    if (m_r == 2) {
        std::copy(std::begin(kPadding), std::end(kPadding), expected.begin());
        Rc4State(m_fileKey).Process(expected);
    } else {
        // Deliberately the whole of U is compared: its last 16 bytes must be zero.
        ivMD5 check;
        check.Update(kPadding);
        check.Update(Slice(m_fileId, 0, 16));
        std::uint32_t checkSize = 16;
        check.Final(expected.data(), &checkSize);
        std::span<std::uint8_t> result(expected.data(), 16);
        Rc4State(m_fileKey).Process(result);
        Bytes key(m_fileKey);
        for (std::uint8_t pass = 1; pass <= 19; ++pass) {
            for (std::size_t i = 0; i < n; ++i) key[i] = m_fileKey[i] ^ pass;
            Rc4State(key).Process(result);
        }
    }
    return m_u.size() == 32 && std::equal(expected.begin(), expected.end(), m_u.begin()) ? kOk : kFail;
}

ivStatus ivDecrypt::AuthenticateAes256(const std::string& password) {
    std::span<const std::uint8_t> pw = Span(password).first(std::min(password.size(), kMaxPassword));
    const Bytes u = Slice(m_u, 0, 48), o = Slice(m_o, 0, 48);
    auto part = [](const Bytes& b, std::size_t at, std::size_t n) { return std::span(b).subspan(at, n); };
    const auto userHash = Hash2B(pw, part(u, 32, 8), {});
    const auto ownerHash = Hash2B(pw, part(o, 32, 8), u);
    const bool userValid = std::equal(userHash.begin(), userHash.end(), u.begin());
    const bool ownerValid = std::equal(ownerHash.begin(), ownerHash.end(), o.begin());
    if (!userValid && !ownerValid) return kFail;

    const auto userKeyHash = Hash2B(pw, part(u, 40, 8), {});
    const auto ownerKeyHash = Hash2B(pw, part(o, 40, 8), u);
    const Bytes userKey = Aes256(userKeyHash, Slice(m_ue, 0, 32), false);
    const Bytes ownerKey = Aes256(ownerKeyHash, Slice(m_oe, 0, 32), false);

    auto permsPass = [&](const Bytes& key) {
        Bytes plain = Aes256(key, Slice(m_perms, 0, 16), false);
        const std::int32_t p = static_cast<std::int32_t>(plain[0] | plain[1] << 8 | plain[2] << 16 |
                                                         static_cast<std::uint32_t>(plain[3]) << 24);
        return plain[4] == 0xFF && plain[5] == 0xFF && plain[6] == 0xFF && plain[7] == 0xFF &&
               plain[9] == 'a' && plain[10] == 'd' && plain[11] == 'b' && p == m_p;
    };
    const bool perms = permsPass(userKey) || permsPass(ownerKey);
    // The user-path key must wrap back to UE or OE under one of the key hashes.
    if (Aes256(userKeyHash, userKey, true) != Slice(m_ue, 0, 32) &&
        Aes256(ownerKeyHash, userKey, true) != Slice(m_oe, 0, 32))
        return kFail;
    m_fileKey = userKey;
    if (userValid) return kOk;
    // Deliberately: an owner password opens the document only when both paths agree.
    return userKey == ownerKey && perms ? kOk : kFail;
}

void ivDecrypt::SetCurrentObject(ObjId id) {
    m_current = id;
    m_keyReady = false;
}

void ivDecrypt::ComputeObjectKey() {
    m_keyReady = true;
    m_objectKey.fill(0);
    if (m_mode == kModeAes256) {
        std::copy_n(m_fileKey.begin(), std::min<std::size_t>(m_fileKey.size(), 32), m_objectKey.begin());
        return;
    }
    Bytes input(m_fileKey);
    const std::uint8_t id[5] = {
        static_cast<std::uint8_t>(m_current.num), static_cast<std::uint8_t>(m_current.num >> 8),
        static_cast<std::uint8_t>(m_current.num >> 16), static_cast<std::uint8_t>(m_current.gen),
        static_cast<std::uint8_t>(m_current.gen >> 8)};
    Append(input, id);
    if (m_mode == kModeAes128) Append(input, kAesSalt);
    std::uint8_t digest[16];
    Md5(input, digest);
    std::copy_n(digest, std::min(m_objectKeyLength, 16), m_objectKey.begin());
}

bool ivDecrypt::DecryptString(std::string& bytes) {
    if (m_mode == kModeNone || m_mode > kModeAes256) return false;
    if (!m_keyReady) ComputeObjectKey();
    auto key = std::span(m_objectKey.data(), static_cast<std::size_t>(m_objectKeyLength));
    auto data = std::span(reinterpret_cast<std::uint8_t*>(bytes.data()), bytes.size());
    if (m_mode <= kModeRc4) {
        Rc4State(key).Process(data);
        return true;
    }
    // AES: an IV, then whole blocks; a string too short for a block decrypts to nothing.
    AesContext aes;
    std::size_t blocks = bytes.size() > 16 ? (bytes.size() - 16) / 16 * 16 : 0;
    if (blocks == 0 || aes.ExpandKey(key) != kAesOk) {
        if (blocks == 0) bytes.clear();
        return true;
    }
    aes.SetIv(std::span<const std::uint8_t, 16>(data.data(), 16));
    (void)aes.CbcDecrypt(data.subspan(16, blocks), data.first(blocks));
    bytes.resize(blocks);
    auto v = static_cast<std::uint8_t>(bytes.back());
    if (v >= 1 && v <= 16 &&
        std::all_of(bytes.end() - v, bytes.end(), [v](char c) { return static_cast<std::uint8_t>(c) == v; }))
        bytes.resize(bytes.size() - v);
    return true;
}

ivRef<ivMemStream> ivDecrypt::DecryptStream(ivStream& file, std::uint32_t offset, std::int32_t& length,
                                            bool stripPadding) {
    auto out = ivMemStream::Create();
    if (m_mode == kModeNone || m_mode > kModeAes256) {
        length = 0;
        return out;
    }
    if (!m_keyReady) ComputeObjectKey();
    auto key = std::span(m_objectKey.data(), static_cast<std::size_t>(m_objectKeyLength));
    file.Seek(offset, ivSeekOrigin::Begin);
    std::uint64_t remaining = length < 0 ? file.Size() - std::min<std::uint64_t>(offset, file.Size())
                                         : static_cast<std::uint64_t>(length);
    Bytes& data = out->Data();
    if (m_mode <= kModeRc4) {
        Rc4State rc4(key);
        std::uint8_t chunk[1024];
        while (remaining > 0) {
            auto want = static_cast<std::uint32_t>(std::min<std::uint64_t>(remaining, sizeof chunk));
            std::uint32_t got = 0;
            file.Read(chunk, want, &got);
            rc4.Process(std::span(chunk, got));
            data.insert(data.end(), chunk, chunk + got);
            remaining -= got;
            if (got < want) {
                Report(m_doc, "Stream Read Error");
                break;
            }
        }
        length = static_cast<std::int32_t>(data.size());
        return out;
    }
    DecryptAesStream(file, key, remaining, stripPadding, data);
    length = static_cast<std::int32_t>(data.size());
    return out;
}

void ivDecrypt::DecryptAesStream(ivStream& file, std::span<const std::uint8_t> key, std::uint64_t total,
                                 bool stripPadding, Bytes& data) {
    std::uint8_t iv[16];
    std::uint32_t got = 0;
    if (total < 16 || Failed(file.Read(iv, 16, &got)) || got < 16) return;
    AesContext aes;
    // A key AES cannot take (an odd object-key length) leaves the data as stored.
    const bool keyOk = aes.ExpandKey(key) == kAesOk;
    aes.SetIv(iv);
    std::size_t chunk = static_cast<std::size_t>(std::clamp<std::uint64_t>(total, 1024, 10240));
    chunk = (chunk / 16 + 1) * 16;
    Bytes in(chunk), plain(chunk + 16);
    for (std::uint64_t remaining = total - 16; remaining > 0;) {
        auto want = static_cast<std::uint32_t>(std::min<std::uint64_t>(remaining, chunk));
        got = 0;
        file.Read(in.data(), want, &got);
        const bool last = got < want || remaining == got;
        if (keyOk) {
            std::size_t produced = 0;
            (void)aes.CbcDecryptFinal(std::span(in.data(), got), plain, last, &produced);
            data.insert(data.end(), plain.begin(), plain.begin() + got);
        } else {
            data.insert(data.end(), in.begin(), in.begin() + got);
        }
        remaining -= got;
        if (last) break;
    }
    if (!stripPadding || !keyOk || data.empty()) return;
    // Deliberately a padding byte of 16 stays (strings drop it).
    const std::uint8_t v = data.back();
    if (v < 16 && v <= data.size() &&
        std::all_of(data.end() - v, data.end(), [v](std::uint8_t b) { return b == v; }))
        data.erase(data.end() - v, data.end());
}

ivStatus SetUpEncryption(pdfDocument& doc, ivPasswordPrompt* prompt, const std::string& fileName) {
    const XrefSection* trailer = doc.NewestSection();
    if (!trailer || trailer->encrypt.Empty()) return kRemark;
    ivStdScope scope(doc.Control(), "Encryption Dictionary");
    const pdfObject* dictionary = trailer->encrypt.obj;
    if (!dictionary) {
        dictionary = ResolveRef(doc, trailer->encrypt.Id());
        if (!dictionary) return kFail;
        if (XrefEntry* entry = FindEntry(doc, trailer->encrypt.Id()); entry && entry->role == kRoleNone)
            entry->role = kRoleEncryption;
    }
    dictionary = Deref(doc, dictionary);
    if (!AsDict(dictionary)) {
        Report(doc, "Dictionary must be a Dictionary object");
        return kFail;
    }
    ivDecrypt* decryptor = doc.SetSecurity(std::make_unique<ivDecrypt>(doc, dictionary, *trailer));
    if (ivStatus st = decryptor->ReadDictionary(); Failed(st)) return st;
    std::string password;
    ivStatus st = decryptor->Authenticate(password);
    while (Failed(st)) {
        if (!prompt || !prompt->AskPassword(fileName, password)) {
            st = kCancelled;
            break;
        }
        st = decryptor->Authenticate(password);
    }
    decryptor->SetAuthenticated(Succeeded(st));
    return st;
}
