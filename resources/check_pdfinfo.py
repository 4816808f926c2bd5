#!/usr/bin/env python3
"""Check resources/pdfinfo.xml, the key-help knowledge base of the object viewer.

Checks: the file parses; every required section exists; every <i> has a
non-empty id and help; every <enum> and <bit> has an id and help, and each bit
id is a position from 1 to 32; no key id appears twice in one section (the
reader would only ever find the first); cm and Tm carry args="matrix"; every
content-stream operator of the PDF reference's operator summary is present
under <operators>, in a category with the expected name; every parent
attribute names an existing section; an id with a dot has the form
Outer.Inner, both of them key names, and Outer is a plain id of the same
section or of a section it inherits through parent. Prints a count of
sections and keys. Exits 1 on any problem.

Usage: check_pdfinfo.py [PATH]   (default: pdfinfo.xml beside this script)
"""

import os
import sys
import xml.etree.ElementTree as ET

REQUIRED_SECTIONS = [
    "FontFile", "fontDescriptor", "font", "operators", "page", "ColorSpace",
    "ICCColorSpace", "palette", "image", "form", "Pattern", "tounicode",
    "catalog", "stream", "metadata", "resources", "ExtGState", "Shading",
    "DocInfo", "Outlines", "OutlineItem", "StreamAction", "Annotations",
    "Annotations.Link", "Annotations.Highlight", "Annotations.FreeText",
    "Annotations.Widget", "Annotations.3D", "x3d.Activation", "x3d.view",
    "EncryptionDictionary", "Signature", "InteractiveForm", "StructureRoot",
    "StructureItem", "PageTree", "BorderStyle", "StreamColorProfile",
    "Function", "Linearization", "HintStream", "XREF", "CIDSysInfo",
    "stream3D",
]

# The content-stream operators of the PDF reference (ISO 32000-1, Annex A),
# by the category under which each must stand.
OPERATORS = {
    "General Graphics State": ["w", "J", "j", "M", "d", "ri", "i", "gs"],
    "Special Graphics State": ["q", "Q", "cm"],
    "Path Construction": ["m", "l", "c", "v", "y", "h", "re"],
    "Path Painting": ["S", "s", "f", "F", "f*", "B", "B*", "b", "b*", "n"],
    "Clipping Paths": ["W", "W*"],
    "Text Objects": ["BT", "ET"],
    "Text State": ["Tc", "Tw", "Tz", "TL", "Tf", "Tr", "Ts"],
    "Text Positioning": ["Td", "TD", "Tm", "T*"],
    "Text Showing": ["Tj", "TJ", "'", '"'],
    "Type 3 Fonts": ["d0", "d1"],
    "Color": ["CS", "cs", "SC", "SCN", "sc", "scn", "G", "g", "RG", "rg",
              "K", "k"],
    "Shading Patterns": ["sh"],
    "Inline Images": ["BI", "ID", "EI"],
    "XObjects": ["Do"],
    "Marked Content": ["MP", "DP", "BMC", "BDC", "EMC"],
    "Compatibility": ["BX", "EX"],
}
MATRIX_OPERATORS = ["cm", "Tm"]

# Characters that end a name in PDF syntax, so never part of a key.
NAME_DELIMITERS = set("()<>[]{}/%")


def is_key_name(text):
    """Whether text can be a dictionary key as the viewer shows it."""
    return bool(text) and all(
        "!" <= c <= "~" and c not in NAME_DELIMITERS for c in text)


def lineage(name, sections, by_lower):
    """name and the sections it inherits through parent, nearest first."""
    chain = []
    while name in sections and name not in chain:
        chain.append(name)
        parent = sections[name].get("parent")
        name = by_lower.get(parent.lower()) if parent else None
    return chain


def walk(node, path, out):
    """Collect (item, category path) for every <i> under node, in order."""
    for child in node:
        if child.tag == "category":
            walk(child, path + [child.get("name", "")], out)
        elif child.tag == "i":
            out.append((child, path))


def main(argv):
    here = os.path.dirname(os.path.abspath(__file__))
    path = argv[1] if len(argv) > 1 else os.path.join(here, "pdfinfo.xml")
    problems = []

    try:
        root = ET.parse(path).getroot()
    except (OSError, ET.ParseError) as e:
        print(f"{path}: cannot parse: {e}")
        return 1

    if root.tag != "pdf":
        problems.append(f"root element is <{root.tag}>, expected <pdf>")

    sections = {}
    for sec in root:
        if sec.tag in sections:
            problems.append(f"section {sec.tag} appears twice")
        sections[sec.tag] = sec
    lower_names = {name.lower() for name in sections}
    by_lower = {name.lower(): name for name in sections}

    for name in REQUIRED_SECTIONS:
        if name not in sections:
            problems.append(f"missing section {name}")

    plain_ids = {}
    for name, sec in sections.items():
        items = []
        walk(sec, [], items)
        plain_ids[name] = {item.get("id") for item, _ in items
                           if item.get("id") and "." not in item.get("id")}

    total_keys = 0
    total_nested = 0
    total_enums = 0
    total_bits = 0
    rows = []
    for name, sec in sections.items():
        parent = sec.get("parent")
        if parent is not None and parent.lower() not in lower_names:
            problems.append(f"{name}: parent {parent!r} is no section")
        if parent is not None and parent.lower() == name.lower():
            problems.append(f"{name}: is its own parent")
        for child in sec.iter():
            if child.tag not in ("category", "i", "enum", "bit") and child is not sec:
                problems.append(f"{name}: unexpected element <{child.tag}>")
        for cat in sec.iter("category"):
            if not cat.get("name"):
                problems.append(f"{name}: category without a name")
        items = []
        walk(sec, [], items)
        seen = {}
        for item, cpath in items:
            where = f"{name}/{'/'.join(cpath)}" if cpath else name
            iid = item.get("id")
            help_text = item.get("help")
            if not iid:
                problems.append(f"{where}: <i> without id")
                continue
            if not help_text or not help_text.strip():
                problems.append(f"{where}: {iid} has no help")
            if iid in seen:
                problems.append(f"{where}: {iid} already defined in {seen[iid]}")
            else:
                seen[iid] = where
            if "." in iid:
                total_nested += 1
                outer_inner = iid.split(".")
                if len(outer_inner) != 2 or not all(is_key_name(n) for n in outer_inner):
                    problems.append(f"{where}: {iid!r} is not of the form Outer.Inner")
                else:
                    chain = lineage(name, sections, by_lower)
                    if not any(outer_inner[0] in plain_ids[s] for s in chain):
                        problems.append(
                            f"{where}: {iid}: outer key {outer_inner[0]} is not a key of "
                            f"{' or '.join(chain)}")
            for kind in ("enum", "bit"):
                ids = set()
                for sub in item.findall(kind):
                    sid = sub.get("id")
                    if not sid:
                        problems.append(f"{where}: {iid} has a <{kind}> without id")
                        continue
                    if not (sub.get("help") or "").strip():
                        problems.append(f"{where}: {iid} {kind} {sid} has no help")
                    if sid in ids:
                        problems.append(f"{where}: {iid} {kind} {sid} appears twice")
                    ids.add(sid)
                    if kind == "bit" and not (sid.isdigit() and 1 <= int(sid) <= 32):
                        problems.append(f"{where}: {iid} bit id {sid!r} is no position 1-32")
            total_enums += len(item.findall("enum"))
            total_bits += len(item.findall("bit"))
        total_keys += len(items)
        rows.append((name, parent, len(items)))

    ops = sections.get("operators")
    if ops is not None:
        items = []
        walk(ops, [], items)
        found = {}
        for item, cpath in items:
            if item.get("id"):
                found[item.get("id")] = (item, cpath)
        expected = [op for cat in OPERATORS.values() for op in cat]
        for cat, names in OPERATORS.items():
            for op in names:
                if op not in found:
                    problems.append(f"operators: missing operator {op}")
                    continue
                item, cpath = found[op]
                if not cpath or cpath[-1] != cat:
                    problems.append(
                        f"operators: {op} is under {'/'.join(cpath) or '(none)'}, "
                        f"expected category {cat!r}")
        for op in found:
            if op not in expected:
                problems.append(f"operators: {op} is not a known operator")
        for op in MATRIX_OPERATORS:
            if op in found and found[op][0].get("args") != "matrix":
                problems.append(f"operators: {op} lacks args=\"matrix\"")
        print(f"operators: {len(expected)} expected, {len(found)} present")

    width = max((len(r[0]) for r in rows), default=10)
    for name, parent, count in rows:
        extra = f"  (parent {parent})" if parent else ""
        print(f"  {name:<{width}} {count:4d} keys{extra}")
    print(f"{len(sections)} sections, {total_keys} keys ({total_nested} nested), "
          f"{total_enums} enum values, {total_bits} bits")

    for p in problems:
        print(f"problem: {p}")
    if problems:
        print(f"{len(problems)} problem(s)")
        return 1
    print("ok")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
