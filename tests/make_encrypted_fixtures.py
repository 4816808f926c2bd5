#!/usr/bin/env python3
"""Builds the encrypted fixtures tests/data/enc-*.pdf (see tests/fixtures/README.md).

Two kinds of output:
- templates tests/fixtures/encrypted/NAME.pdf.in, expanded like tests/make_fixtures.py does
  with a few more placeholders: {{repeat N}}, {{standard ...}}, {{O}} and {{U}} (hexadecimal,
  or literal with {{O literal}}), {{rc4 N G}}, {{rc4string N G}} and {{rc4literal N G}};
  RC4 and the MD5-based keys are computed here;
- copies of the files qpdf wrote (tests/data/README.md) changed in place, every replacement
  as long as what it replaces, so that no offset moves.

Run it before the qpdf commands of tests/data/README.md (they read enc-source.pdf) and again
after them (the copies are made from their output):
    python3 tests/make_encrypted_fixtures.py           # rewrite every output
    python3 tests/make_encrypted_fixtures.py --check   # exit 1 and name stale outputs
"""

import hashlib
import re
import sys

import make_fixtures as mf

TEMPLATES = mf.SOURCES / "encrypted"
mf.BLOCKS.update({"repeat", "rc4", "rc4string", "rc4literal"})

# Completes a password to 32 bytes.
PAD = bytes.fromhex("28BF4E5E4E758A4164004E56FFFA01082E2E00B6D0683E802F0CA9FE6453697A")


def md5(*parts):
    h = hashlib.md5()
    for p in parts:
        h.update(p)
    return h.digest()


def rc4(key, data):
    s, j = list(range(256)), 0
    for i in range(256):
        j = (j + s[i] + key[i % len(key)]) & 0xFF
        s[i], s[j] = s[j], s[i]
    out, i, j = bytearray(), 0, 0
    for byte in data:
        i = (i + 1) & 0xFF
        j = (j + s[i]) & 0xFF
        s[i], s[j] = s[j], s[i]
        out.append(byte ^ s[(s[i] + s[j]) & 0xFF])
    return bytes(out)


def rc4_passes(key, data):
    """RC4 with the key, then with the key XORed with 1 to 19 (revision 3 and later)."""
    data = rc4(key, data)
    for n in range(1, 20):
        data = rc4(bytes(b ^ n for b in key), data)
    return data


class Standard:
    """The RC4 parameters of {{standard V=2 R=3 Length=128 P=-4 user= owner=o id=HEX}}.

    id=HEX gives the identifier bytes the keys are made from (the trailer's ID is typed by
    hand, so it may differ); objkey=N cuts object keys to N bytes; utail=HEX gives U's last
    16 bytes (zeros by default, revision 3 and later)."""

    def __init__(self, args, where):
        p = dict(a.split("=", 1) for a in args)
        try:
            self.r, self.length, self.p = int(p["R"]), int(p["Length"]), int(p["P"])
            user, owner = p["user"].encode("latin-1"), p["owner"].encode("latin-1")
            keyid = bytes.fromhex(p["id"])
        except (KeyError, ValueError) as e:
            raise mf.FixtureError(f"{where}: bad {{{{standard}}}}: {e}")
        n = self.length // 8
        self.objkey = int(p.get("objkey", min(n + 5, 16)))
        padded = lambda pw: (pw + PAD)[:32]
        # O: the padded user password under a key made from the owner password.
        okey = md5(padded(owner or user))
        if self.r >= 3:
            for _ in range(50):
                okey = md5(okey[:n])
        okey = okey[:n]
        self.o = rc4_passes(okey, padded(user)) if self.r >= 3 else rc4(okey, padded(user))
        # The file key and U.
        key = md5(padded(user), self.o, (self.p & 0xFFFFFFFF).to_bytes(4, "little"), keyid)
        if self.r >= 3:
            for _ in range(50):
                key = md5(key[:n])
        self.key = key[:n]
        if self.r >= 3:
            tail = bytes.fromhex(p.get("utail", "00" * 16))
            self.u = rc4_passes(self.key, md5(PAD, keyid)) + tail
        else:
            self.u = rc4(self.key, PAD)

    def object_key(self, num, gen):
        return md5(self.key, num.to_bytes(3, "little"), gen.to_bytes(2, "little"))[: self.objkey]


def literal_escapes(data):
    """The body of a literal string: brackets and backslashes escaped, control bytes in octal."""
    out = bytearray()
    for b in data:
        if b in b"()\\":
            out += b"\\" + bytes([b])
        elif b < 0x20:
            out += b"\\%03o" % b
        else:
            out.append(b)
    return bytes(out)


class EncryptedFixture(mf.Fixture):
    def __init__(self, name, text, outputs):
        super().__init__(name, text, outputs)
        declared = [n for n in self.all if n.name == "standard"]
        self.standard = Standard(declared[0].args, name) if declared else None

    def expand(self, n, layout, new, top):
        if n.name == "repeat":
            return bytes(self.render_nodes(n.children, layout, new, False)) * int(n.args[0])
        if n.name == "standard":
            return b""
        if n.name in ("O", "U", "rc4", "rc4string", "rc4literal"):
            if self.standard is None:
                raise mf.FixtureError(f"{self.name}: {{{{{n.name}}}}} without {{{{standard}}}}")
            if n.name in ("O", "U"):
                value = self.standard.o if n.name == "O" else self.standard.u
                if n.args == ["literal"]:
                    return b"(" + literal_escapes(value) + b")"
                return b"<" + value.hex().encode() + b">"
            num, gen = self.ident(n)
            plain = bytes(self.render_nodes(n.children, layout, new, False))
            data = rc4(self.standard.object_key(num, gen), plain)
            if n.name == "rc4string":
                return b"<" + data.hex().encode() + b">"
            if n.name == "rc4literal":
                return b"(" + literal_escapes(data) + b")"
            if data.endswith((b"\r", b"\n")):
                # {{len}} would take that byte for the line end before endstream.
                raise mf.FixtureError(f"{self.name}: encrypted data of {num} {gen} ends in a line end")
            return data
        return super().expand(n, layout, new, top)


# --- copies of qpdf's files, changed in place ---------------------------------------------

def zero_u_tail(data):
    """U's last 16 bytes as zeros, the form revisions 3 and 4 need here."""
    m = re.search(rb"/U <([0-9a-f]{64})>", data)
    return data[: m.start(1) + 32] + b"0" * 32 + data[m.end(1):]


def replace(old, new):
    if len(old) != len(new):
        raise ValueError(f"{old!r} and {new!r} differ in length")

    def patch(data):
        if data.count(old) != 1:
            raise mf.FixtureError(f"{old!r} occurs {data.count(old)} times")
        return data.replace(old, new)
    return patch


def shorten(key):
    """The hexadecimal string of `key` one byte shorter, spaces after it."""
    def patch(data):
        m = re.search(rb"/" + key + rb" <([0-9a-f]+)>", data)
        return data[: m.end(1) - 2] + b">  " + data[m.end(1) + 1:]
    return patch


def number_for(key):
    """The hexadecimal string of `key` replaced by the number 5, spaces after it."""
    def patch(data):
        m = re.search(rb"/" + key + rb" (<[0-9a-f]+>)", data)
        return data[: m.start(1)] + b"5".ljust(m.end(1) - m.start(1)) + data[m.end(1):]
    return patch


def blank(pattern):
    """The first match of `pattern` as spaces."""
    def patch(data):
        m = re.search(pattern, data)
        return data[: m.start()] + b" " * (m.end() - m.start()) + data[m.end():]
    return patch


PATCHES = {
    # output: (qpdf's file, changes in order)
    "enc-rc4-128-zero-tail.pdf": ("enc-rc4-128.pdf", [zero_u_tail]),
    "enc-rc4-128-user-zero-tail.pdf": ("enc-rc4-128-user.pdf", [zero_u_tail]),
    "enc-aes-128-zero-tail.pdf": ("enc-aes-128.pdf", [zero_u_tail]),
    "enc-aes-128-user-zero-tail.pdf": ("enc-aes-128-user.pdf", [zero_u_tail]),
    "enc-aes-128-cleartext-metadata-zero-tail.pdf": ("enc-aes-128-cleartext-metadata.pdf", [zero_u_tail]),
    "enc-encrypt-metadata-not-boolean.pdf": (
        "enc-aes-128.pdf", [zero_u_tail, replace(b"/StmF /StdCF /StrF /StdCF", b"/EncryptMetadata (false) ")]),
    "enc-v3.pdf": ("enc-rc4-128.pdf", [zero_u_tail, replace(b"/V 2 >>", b"/V 3 >>")]),
    "enc-v4-crypt-filter-rc4.pdf": ("enc-aes-128.pdf", [zero_u_tail, replace(b"/CFM /AESV2", b"/CFM /V2   ")]),
    "enc-v4-r3.pdf": ("enc-aes-128.pdf", [zero_u_tail, replace(b"/R 4 ", b"/R 3 ")]),
    "enc-v5-r5.pdf": ("enc-aes-256.pdf", [replace(b"/R 6 ", b"/R 5 ")]),
    "enc-v5-length-missing.pdf": ("enc-aes-256.pdf", [replace(b"/Length 256 ", b" " * 12)]),
    "enc-v7.pdf": ("enc-rc4-40.pdf", [replace(b"/V 1 >>", b"/V 7 >>")]),
    "enc-v-missing.pdf": ("enc-rc4-40.pdf", [replace(b"/V 1 >>", b"     >>")]),
    "enc-filter-not-standard.pdf": ("enc-rc4-40.pdf", [replace(b"/Filter /Standard", b"/Filter /Custom  ")]),
    "enc-filter-missing.pdf": ("enc-rc4-40.pdf", [blank(rb"/Filter /Standard")]),
    "enc-o-short.pdf": ("enc-rc4-40.pdf", [shorten(b"O")]),
    "enc-o-not-string.pdf": ("enc-rc4-40.pdf", [number_for(b"O")]),
    "enc-u-short.pdf": ("enc-rc4-40.pdf", [shorten(b"U")]),
    "enc-oe-short.pdf": ("enc-aes-256.pdf", [shorten(b"OE")]),
    "enc-ue-short.pdf": ("enc-aes-256.pdf", [shorten(b"UE")]),
    "enc-perms-short.pdf": ("enc-aes-256.pdf", [shorten(b"Perms")]),
    "enc-unknown-key.pdf": ("enc-rc4-40.pdf", [replace(b"/Length 40 ", b"/Foo 40    ")]),
    "enc-p-not-number.pdf": ("enc-rc4-40.pdf", [replace(b"/P -4 ", b"/P () ")]),
    "enc-r-not-number.pdf": ("enc-rc4-40.pdf", [replace(b"/R 2 ", b"/R() ")]),
    "enc-length-not-number.pdf": ("enc-rc4-40.pdf", [replace(b"/Length 40", b"/Length ()")]),
}


def build_all():
    built = {}
    for path in sorted(TEMPLATES.glob("*.pdf.in")):
        name = path.name[: -len(".in")]
        built[name] = EncryptedFixture(name, path.read_bytes(), built).build()
    missing = []
    for name, (source, changes) in PATCHES.items():
        if not (mf.DATA / source).exists():
            missing.append(source)
            continue
        data = (mf.DATA / source).read_bytes()
        for change in changes:
            try:
                data = change(data)
            except (mf.FixtureError, AttributeError) as e:
                raise mf.FixtureError(f"{name}: {e}")
        if len(data) != (mf.DATA / source).stat().st_size:
            raise mf.FixtureError(f"{name}: the patches changed the length")
        built[name] = data
    return built, sorted(set(missing))


def main(argv):
    check = "--check" in argv[1:]
    try:
        built, missing = build_all()
    except (mf.FixtureError, OSError, ValueError) as e:
        print(f"make_encrypted_fixtures: {e}", file=sys.stderr)
        return 2
    for source in missing:
        print(f"make_encrypted_fixtures: tests/data/{source} is missing: run the qpdf commands of "
              "tests/data/README.md, then this script again", file=sys.stderr)
    if check:
        stale = [n for n, d in built.items() if not (mf.DATA / n).exists() or (mf.DATA / n).read_bytes() != d]
        for n in stale:
            print(f"stale: tests/data/{n}", file=sys.stderr)
        return 1 if stale or missing else 0
    for name, data in built.items():
        (mf.DATA / name).write_bytes(data)
    print(f"make_encrypted_fixtures: wrote {len(built)} files to tests/data")
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
