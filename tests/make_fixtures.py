#!/usr/bin/env python3
"""Expands the hand-typed fixtures tests/fixtures/*.pdf.in into tests/data/*.pdf.

Placeholders ({{object 3 0}}, {{xref}}, {{startxref}}, ...) are described in
tests/fixtures/README.md. Every run rewrites every output and removes outputs whose
source is gone; --check only compares and exits 1 when an output is stale.

Run from the repository root:  python3 tests/make_fixtures.py [--check]
"""

import re
import sys
import zlib
from pathlib import Path

ROOT = Path(__file__).resolve().parent
SOURCES = ROOT / "fixtures"
DATA = ROOT / "data"
MANIFEST = DATA / "generated.txt"
MAX_PASSES = 12

PLACEHOLDER = re.compile(rb"\{\{(.*?)\}\}", re.S)
BLOCKS = {"flate", "objstm"}


class FixtureError(Exception):
    pass


class Node:
    """A placeholder or block; `ordinal` is its place in document order."""

    def __init__(self, name, args, ordinal, children=None):
        self.name, self.args, self.ordinal, self.children = name, args, ordinal, children


def parse(text, where):
    """Splits a template into literal bytes and Nodes, nesting {{flate}}/{{objstm}} blocks."""
    root, stack, ordinal, pos = [], [], 0, 0
    current = root
    for m in PLACEHOLDER.finditer(text):
        if m.start() > pos:
            current.append(text[pos:m.start()])
        pos = m.end()
        words = m.group(1).decode("ascii").split()
        if not words:
            raise FixtureError(f"{where}: empty placeholder")
        name, args = words[0], words[1:]
        ordinal += 1
        if name.startswith("/"):
            if not stack or stack[-1][0].name != name[1:]:
                raise FixtureError(f"{where}: {{{{{name}}}}} closes nothing")
            _, current = stack.pop()
            continue
        node = Node(name, args, ordinal, [] if name in BLOCKS else None)
        current.append(node)
        if name in BLOCKS:
            stack.append((node, current))
            current = node.children
    if pos < len(text):
        current.append(text[pos:])
    if stack:
        raise FixtureError(f"{where}: {{{{{stack[-1][0].name}}}}} is not closed")
    return root


def walk(nodes):
    for n in nodes:
        if isinstance(n, Node):
            yield n
            if n.children is not None:
                yield from walk(n.children)


class Layout:
    """What one pass learned: where each placeholder landed, block sizes, stream lengths."""

    def __init__(self):
        self.pos = {}      # ordinal -> offset in the output (top level) or in its object stream
        self.first = {}    # objstm ordinal -> header length (First)
        self.count = {}    # objstm ordinal -> number of members (N)
        self.include = {}  # include ordinal -> startxref value of the included file
        self.length = {}   # {{len}} ordinal -> data length of the stream after it

    def key(self):
        return (self.pos, self.first, self.count, self.include, self.length)


class Fixture:
    def __init__(self, name, text, outputs):
        self.name = name
        self.outputs = outputs  # outputs built so far, which an include prefers to tests/data
        self.nodes = parse(text, name)
        self.all = list(walk(self.nodes))
        self.objects = [n for n in self.all if n.name == "object"]
        self.members = []  # (member node, objstm node, enclosing object node)
        for block in (n for n in self.all if n.name == "objstm"):
            owner = self.last_before(self.objects, block.ordinal)
            if owner is None:
                raise FixtureError(f"{name}: {{{{objstm}}}} outside an object")
            for m in walk(block.children):
                if m.name == "member":
                    self.members.append((m, block, owner))
        self.sections = [n for n in self.all if n.name in ("xref", "section", "include")]
        self.generators = [n for n in self.all if n.name in ("xref", "xrefdata")]

    @staticmethod
    def last_before(nodes, ordinal):
        found = None
        for n in nodes:
            if n.ordinal < ordinal:
                found = n
        return found

    @staticmethod
    def ident(node):
        if len(node.args) < 2:
            raise FixtureError(f"{{{{{node.name}}}}} needs an object number and generation")
        return int(node.args[0]), int(node.args[1])

    # --- values taken from the previous pass -------------------------------------------

    def object_offset(self, num, gen, ordinal, layout):
        """Offset of the mark of num gen nearest before `ordinal`, else the first after it."""
        marks = [n for n in self.objects if self.ident(n) == (num, gen)]
        if not marks:
            raise FixtureError(f"{self.name}: object {num} {gen} is never marked")
        before = [n for n in marks if n.ordinal < ordinal]
        return layout.pos.get((before[-1] if before else marks[0]).ordinal, 0)

    def section_offset(self, node, layout):
        if node.name == "include":
            return layout.pos.get(node.ordinal, 0) + layout.include.get(node.ordinal, 0)
        return layout.pos.get(node.ordinal, 0)

    def segment(self, node):
        """Objects and members marked since the previous generated section of the same kind
        (so the classic table and the stream of a hybrid file list the same objects)."""
        start = max((g.ordinal for g in self.generators if g.ordinal < node.ordinal and g.name == node.name),
                    default=0)
        objects = {}
        for n in self.objects:
            if start < n.ordinal < node.ordinal:
                ident = self.ident(n)
                if ident[0] in objects:
                    raise FixtureError(f"{self.name}: object {ident[0]} marked twice in one section")
                objects[ident[0]] = ("n", ident[1], n)
        for m, block, owner in self.members:
            if start < block.ordinal < node.ordinal:
                num = int(m.args[0])
                if num in objects:
                    raise FixtureError(f"{self.name}: object {num} marked twice in one section")
                objects[num] = ("c", self.ident(owner)[0], m, block)
        return objects

    def size(self):
        nums = [self.ident(n)[0] for n in self.objects] + [int(m.args[0]) for m, _, _ in self.members]
        return max(nums, default=0) + 1

    # --- rendering ----------------------------------------------------------------------

    def render(self, layout):
        new = Layout()
        out = self.render_nodes(self.nodes, layout, new, top=True)
        for n in self.all:
            if n.name == "len":
                new.length[n.ordinal] = stream_length(out, new.pos[n.ordinal], self.name)
        return bytes(out), new

    def render_nodes(self, nodes, layout, new, top, objstm=None):
        out = bytearray()
        for n in nodes:
            if isinstance(n, bytes):
                out += n
                continue
            if n.name == "member":
                if objstm is None:
                    raise FixtureError(f"{self.name}: {{{{member}}}} outside {{{{objstm}}}}")
                objstm.append((int(n.args[0]), len(out)))
                continue
            if top:
                new.pos[n.ordinal] = len(out)
            elif n.name in ("object", "xref", "section", "include", "len", "mark"):
                raise FixtureError(f"{self.name}: {{{{{n.name}}}}} inside a block")
            out += self.expand(n, layout, new, top)
        return out

    def expand(self, n, layout, new, top):
        a = n.args
        if n.name in ("object", "section", "mark"):
            return b""
        if n.name == "offset":
            value = self.object_offset(int(a[0]), int(a[1]), n.ordinal, layout)
            return str(value).zfill(int(a[2]) if len(a) > 2 else 0).encode()
        if n.name == "entry":
            num, gen = self.ident(n)
            return b"%010d %05d n " % (self.object_offset(num, gen, n.ordinal, layout), gen)
        if n.name == "at":
            marks = [m for m in self.all if m.name in ("mark", "include") and m.args[-1] == a[0]]
            if len(marks) != 1:
                raise FixtureError(f"{self.name}: mark {a[0]} must be set exactly once")
            return str(self.section_offset(marks[0], layout) if marks[0].name == "include"
                       else layout.pos.get(marks[0].ordinal, 0)).encode()
        if n.name == "startxref":
            section = self.last_before(self.sections, n.ordinal)
            if section is None:
                raise FixtureError(f"{self.name}: {{{{startxref}}}} before any section")
            return str(self.section_offset(section, layout)).encode()
        if n.name == "size":
            return str(self.size()).encode()
        if n.name == "len":
            return str(layout.length.get(n.ordinal, 0)).encode()
        if n.name in ("first", "n"):
            block = next((b for b in self.all if b.name == "objstm" and b.ordinal > n.ordinal), None)
            if block is None:
                raise FixtureError(f"{self.name}: {{{{{n.name}}}}} without a following {{{{objstm}}}}")
            table = layout.first if n.name == "first" else layout.count
            return str(table.get(block.ordinal, 0)).encode()
        if n.name == "hex":
            return bytes.fromhex("".join(a))
        if n.name == "xref":
            return self.classic_table(n, layout)
        if n.name == "xrefdata":
            return self.stream_rows(n, layout)
        if n.name == "include":
            if not top or len(a) != 3 or a[1] != "as":
                raise FixtureError(f"{self.name}: write {{{{include FILE as NAME}}}} at top level")
            data = self.outputs.get(a[0]) or (DATA / a[0]).read_bytes()
            found = re.findall(rb"startxref\s+(\d+)", data)
            if not found:
                raise FixtureError(f"{self.name}: {a[0]} has no startxref")
            new.include[n.ordinal] = int(found[-1])
            return data
        if n.name == "flate":
            return zlib.compress(bytes(self.render_nodes(n.children, layout, new, False)), 9)
        if n.name == "objstm":
            members = []
            body = self.render_nodes(n.children, layout, new, False, members)
            header = b"".join(b"%d %d " % m for m in members)[:-1] + b"\n"
            new.first[n.ordinal], new.count[n.ordinal] = len(header), len(members)
            return header + body
        raise FixtureError(f"{self.name}: unknown placeholder {{{{{n.name}}}}}")

    def classic_table(self, n, layout):
        rows = {}
        for num, entry in self.segment(n).items():
            if entry[0] != "n":
                continue  # compressed objects are listed only by a cross-reference stream
            rows[num] = b"%010d %05d n \n" % (layout.pos.get(entry[2].ordinal, 0), entry[1])
        if self.last_before(self.sections, n.ordinal) is None:
            rows[0] = b"0000000000 65535 f \n"
        out, nums = bytearray(b"xref\n"), sorted(rows)
        i = 0
        while i < len(nums):
            j = i
            while j + 1 < len(nums) and nums[j + 1] == nums[j] + 1:
                j += 1
            out += b"%d %d\n" % (nums[i], j - i + 1)
            for k in range(i, j + 1):
                out += rows[nums[k]]
            i = j + 1
        return bytes(out)

    def stream_rows(self, n, layout):
        widths, index, predictor, overrides = None, None, False, {}
        for arg in n.args:
            key, _, value = arg.partition("=")
            if key == "W":
                widths = [int(v) for v in value.split(",")]
            elif key == "index":
                index = [int(v) for v in value.split(",")]
            elif key == "up":
                predictor = True
            elif key.isdigit():
                overrides[int(key)] = [int(v) for v in value.split(",")]
            else:
                raise FixtureError(f"{self.name}: unknown xrefdata argument {arg}")
        if widths is None or len(widths) != 3:
            raise FixtureError(f"{self.name}: xrefdata needs W=a,b,c")
        segment = self.segment(n)
        if index is None:
            index = [0, max(segment, default=0) + 1]
        rows = []
        for first, count in zip(index[0::2], index[1::2]):
            for num in range(first, first + count):
                if num in overrides:
                    fields = overrides[num]
                elif num in segment and segment[num][0] == "n":
                    fields = [1, layout.pos.get(segment[num][2].ordinal, 0), segment[num][1]]
                elif num in segment:
                    _, stream, member, block = segment[num]
                    position = [m for m, b, _ in self.members if b is block].index(member)
                    fields = [2, stream, position]
                else:
                    fields = [0, 0, 65535 if num == 0 else 0]
                row = b""
                for width, value in zip(widths, fields):
                    row += (min(value, 256 ** width - 1)).to_bytes(width, "big") if width else b""
                rows.append(row)
        if predictor:
            # PNG Up: each row is tag 2 and its bytes minus the bytes of the row above.
            previous, encoded = bytes(sum(widths)), []
            for row in rows:
                encoded.append(b"\x02" + bytes((c - p) & 0xFF for c, p in zip(row, previous)))
                previous = row
            rows = encoded
        return b"".join(rows)

    def build(self):
        layout, output = Layout(), None
        for _ in range(MAX_PASSES):
            data, new = self.render(layout)
            if data == output and new.key() == layout.key():
                return data
            output, layout = data, new
        raise FixtureError(f"{self.name}: offsets did not settle after {MAX_PASSES} passes")


def stream_length(out, start, name):
    """Bytes between the EOL after the next "stream" keyword and the EOL before "endstream"."""
    m = re.compile(rb"(?<!end)stream(\r\n|\n)").search(out, start)
    if not m:
        raise FixtureError(f"{name}: {{{{len}}}} without a following stream")
    end = out.find(b"endstream", m.end())
    if end < 0:
        raise FixtureError(f"{name}: stream without endstream")
    for eol in (b"\r\n", b"\n", b"\r"):
        if out[:end].endswith(eol) and end - len(eol) >= m.end():
            end -= len(eol)
            break
    return end - m.end()


def build_all():
    """Every output in dependency order: a fixture that includes another output comes after it."""
    sources = {p.name[: -len(".in")]: p for p in sorted(SOURCES.glob("*.pdf.in"))}
    built = {}

    def build(name, chain=()):
        if name in built:
            return
        if name in chain:
            raise FixtureError(f"{name}: includes itself")
        text = sources[name].read_bytes()
        for m in re.finditer(rb"\{\{include\s+(\S+)", text):
            dep = m.group(1).decode()
            if dep in sources:
                build(dep, chain + (name,))
        built[name] = Fixture(name, text, built).build()

    for name in sources:
        build(name)
    return sources, built


def crc(data):
    return "%08x" % (zlib.crc32(data) & 0xFFFFFFFF)


def main(argv):
    check = "--check" in argv[1:]
    try:
        sources, built = build_all()
    except (FixtureError, OSError, ValueError, IndexError) as e:
        print(f"make_fixtures: {e}", file=sys.stderr)
        return 2
    manifest = "".join(f"{name} {crc(sources[name].read_bytes())} {crc(data)}\n" for name, data in sorted(built.items()))
    previous = MANIFEST.read_text().split("\n") if MANIFEST.exists() else []
    stale_names = {line.split()[0] for line in previous if line.strip()} - set(built)
    if check:
        stale = [n for n, d in built.items() if not (DATA / n).exists() or (DATA / n).read_bytes() != d]
        stale += sorted(n for n in stale_names if (DATA / n).exists())
        if not MANIFEST.exists() or MANIFEST.read_text() != manifest:
            stale.append(MANIFEST.name)
        for n in stale:
            print(f"stale: tests/data/{n}", file=sys.stderr)
        return 1 if stale else 0
    for name in stale_names:
        (DATA / name).unlink(missing_ok=True)
    for name, data in built.items():
        (DATA / name).write_bytes(data)
    MANIFEST.write_text(manifest)
    print(f"make_fixtures: wrote {len(built)} files to tests/data")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
