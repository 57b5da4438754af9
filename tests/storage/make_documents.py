#!/usr/bin/env python3
"""Puts documents together byte by byte that hardly anybody writes, as the rows of
tests/data/storage/documents.tsv say, and the property sets of property_sets.tsv there.

make_documents.py DATA FOLDER [SEEDS]      DATA is tests/data/storage

Writes FOLDER/documents/NAME512 and NAME4096, FOLDER/nested, a file whose storages lie in one
another without end, and FOLDER/sets, each notation of a set with its bytes in hexadecimal. Documents that are not too big for a fuzz target go to
SEEDS too.

Elements stand between bars: `name=content`, `name/` for a storage, `storage/name=` for what is in
the last one of that name, `name:TYPE=` for another type, `(base)` for those of another row,
`(tables)` for more tables than the header has places for. S and D are the streams of the summary
sets. A content is SIZE*NUMBER, so many bytes that follow from a number, or a set:

    S{1:page 1252;2:text A title}D{15:lpstr 5573} @52=ffffff7f cut 40

S, D, U and O are sections of the summary, the document, the user's and of other properties; each
property is its number and a value: `page` and `i4` a number, `text` an ASCII text and `lpstr` its
bytes, `pad` a text of so many letters, `names` a dictionary of one entry (2=kept), `hex` all bytes
from the type on. `@`: bytes in place of those at an offset.

Damage is statements with a `;` between them:

    entry NAME:FIELD=PLACE    next PLACE=PLACE     header OFFSET=PLACE
    small next PLACE=PLACE    cut=NUMBER           more=BYTES

A PLACE is a number, `free`, the `first` or `last` sector or the `number` of an element, or where
the `directory`, the `table` of sectors, the `list` of tables or the table of `small` sectors
begins, with a number added or not.
"""
import pathlib
import re
import struct
import sys

END, FREE, TABLE, LIST = 0xFFFFFFFE, 0xFFFFFFFF, 0xFFFFFFFD, 0xFFFFFFFC
SMALLEST_BIG, IN_HEADER, ENTRY, MOST_FOR_FUZZ = 4096, 109, 128, 200_000
FIELDS = {"type": 66, "left": 68, "right": 72, "child": 76, "first": 116, "size": 120}
FORMAT_IDS = {"S": "e0859ff2f94f6810ab9108002b27b3d9", "D": "02d5cdd59c2e1b10939708002b2cf9ae",
              "U": "05d5cdd59c2e1b10939708002b2cf9ae", "O": "37be068d341221439091929394959697"}


def number(*values):
    return struct.pack(f"<{len(values)}I", *values)


def padded(data, size):
    return data + bytes(-len(data) % size)


def value_bytes(form, value):
    """A property from its type on."""
    if form in ("page", "i4"):
        return number(2 if form == "page" else 3, int(value))
    if form == "hex":
        return bytes.fromhex(value)
    if form == "names":
        key, name = value.split("=")
        return number(1, int(key), len(name) + 1) + padded(name.encode() + b"\0", 4)
    text = {"text": value.encode(), "pad": b"p" * int(value) if form == "pad" else b"",
            "lpstr": bytes.fromhex(value) if form == "lpstr" else b""}[form] + b"\0"
    return number(30, len(text)) + padded(text, 4)


def section_bytes(notation):
    properties = [re.fullmatch(r" *(\d+):(\w+) ?(.*)", each).groups()
                  for each in notation.split(";")]
    table = values = b""
    for key, form, value in properties:
        table += number(int(key), 8 + 8 * len(properties) + len(values))
        values += value_bytes(form, value)
    return number(8 + len(table) + len(values), len(properties)) + table + values


def set_bytes(notation):
    found = re.findall(r"(\w)\{(.*?)\}", notation)
    if not found:
        return b""
    sections = [section_bytes(section) for _, section in found]
    data = number(0xFFFE, 0x20105) + bytes(16) + number(len(found))
    offset = 28 + 20 * len(found)
    for (letter, _), section in zip(found, sections):
        data += bytes.fromhex(FORMAT_IDS[letter]) + number(offset)
        offset += len(section)
    data = bytearray(data + b"".join(sections))
    for at, put, cut in re.findall(r"@(\d+)=(\w+)|cut (\d+)", notation[notation.rindex("}"):]):
        if cut:
            del data[int(cut):]
        else:
            data[int(at):int(at) + len(put) // 2] = bytes.fromhex(put)
    return bytes(data)


def content(notation):
    if "{" in notation or "*" not in notation:
        return set_bytes(notation)
    size, seed = map(int, notation.split("*"))
    return bytes((i * 7 + i // 251 + seed) & 255 for i in range(size))


def element_name(notation):
    return {"S": "\5SummaryInformation", "D": "\5DocumentSummaryInformation"}.get(notation, notation)


class Element:
    def __init__(self, name, data=b"", kind=2, parent=0):
        self.name, self.data, self.kind, self.parent = name, data, kind, parent
        self.first = self.last = END


class File:
    """A sound file first; then what shall be wrong in it is set in its bytes."""

    def __init__(self, sector_size):
        self.each = sector_size
        self.tables = 1
        self.elements = [Element("Root Entry", kind=5)]
        self.next, self.small_next = [], []
        self.places = {"free": FREE, "list": END, "small": END}
        self.data = bytearray(sector_size)

    def add(self, notation, bases):
        for element in filter(None, (part.strip(" ") for part in notation.split("|"))):
            if element == "(tables)":
                self.tables = 240 if self.each == 512 else 120
            elif element.startswith("("):
                self.add(bases[element], bases)
            else:
                name, _, text = element.partition("=")
                kind, parent = 2, 0
                if ":" in name:
                    name, kind = name.split(":")
                if name.endswith("/"):
                    name, kind = name[:-1], 1
                if "/" in name:
                    storage, name = name.split("/")
                    parent = max(i for i, each in enumerate(self.elements)
                                 if each.kind == 1 and each.name == element_name(storage))
                self.elements.append(Element(element_name(name), content(text), int(kind), parent))

    def set(self, at, value, size=4):
        self.data[at:at + size] = value.to_bytes(size, "little")

    def place(self, data):
        """Appends bytes in sectors of their own, one behind the other."""
        first = len(self.next)
        self.data += padded(data, self.each)
        self.next += range(first + 1, len(self.data) // self.each)
        self.next[-1] = END
        return first

    def place_small(self):
        """The streams below 4096 bytes in the root's."""
        container = b""
        for element in self.elements:
            if element.data and len(element.data) < SMALLEST_BIG:
                element.first = len(self.small_next)
                container += padded(element.data, 64)
                self.small_next += range(element.first + 1, len(container) // 64 + 1)
                self.small_next[-1] = END
                element.last = len(self.small_next) - 1
        if container:
            root = self.elements[0]
            root.data, root.first = container, self.place(container)
            root.last = len(self.next) - 1
            table = padded(number(*self.small_next), self.each)
            table = number(*self.small_next) + b"\xff" * (len(table) - 4 * len(self.small_next))
            self.places["small"] = self.place(table)
            self.set(60, self.places["small"])
            self.set(64, len(table) // self.each)

    def entries(self):
        data = bytearray()
        for element in self.elements:
            name = element.name.encode("utf-16-le")
            data += padded(name, 64)[:64].ljust(64, b"\0") + struct.pack(
                "<HHIII36xIQ", len(name) + 2 if name else 0, element.kind + 256, FREE, FREE, FREE,
                element.first, len(element.data))
        # Trees that go to the right only, in the published order: shorter names first.
        links = [i * ENTRY + FIELDS["child"] for i in range(len(self.elements))]
        order = sorted(range(1, len(self.elements)), key=lambda i: (
            len(self.elements[i].name), self.elements[i].name.upper()))
        for inner in order:
            parent = self.elements[inner].parent
            data[links[parent]:links[parent] + 4] = number(inner)
            links[parent] = inner * ENTRY + FIELDS["right"]
        return bytes(data)

    def place_tables(self):
        per_table = self.each // 4

        def lists_for(tables):
            return max(0, -(-(tables - IN_HEADER) // (per_table - 1)))

        while self.tables * per_table < len(self.next) + self.tables + lists_for(self.tables):
            self.tables += 1
        lists = lists_for(self.tables)
        first = len(self.next)
        places = [*range(first + lists, first + lists + self.tables)]
        in_lists = b""
        for i in range(lists):
            begin = IN_HEADER + i * (per_table - 1)
            part = places[begin:begin + per_table - 1]
            part += [FREE] * (per_table - 1 - len(part))
            in_lists += number(*part, first + i + 1 if i + 1 < lists else END)
        if lists:
            self.places["list"] = self.place(in_lists)
            self.next[first:] = [LIST] * lists
        self.places["table"] = len(self.next)
        table = self.next + [TABLE] * self.tables
        table += [FREE] * (self.tables * per_table - len(table))
        self.place(number(*table))
        self.set(44, self.tables)
        self.set(68, self.places["list"])
        self.set(72, lists)
        self.data[76:512] = number(*(places + [FREE] * IN_HEADER)[:IN_HEADER])

    def build(self, damage=""):
        large = self.each != 512
        self.data[:34] = bytes.fromhex("d0cf11e0a1b11ae1") + bytes(16) + struct.pack(
            "<5H", 0x3E, 4 if large else 3, 0xFFFE, 12 if large else 9, 6)
        self.set(56, SMALLEST_BIG)
        self.set(60, END)
        for element in self.elements:
            if len(element.data) >= SMALLEST_BIG:
                element.first, element.last = self.place(element.data), len(self.next) - 1
        self.place_small()
        self.places["directory"] = self.place(self.entries())
        self.set(48, self.places["directory"])
        if large:
            self.set(40, len(self.next) - self.places["directory"])
        # Free ones, in which there are bytes.
        used = len(self.next)
        self.place(b"f" * (2 * self.each))
        self.next[used:] = [FREE] * (len(self.next) - used)
        self.place_tables()
        for statement in filter(None, (part.strip() for part in damage.split(";"))):
            self.apply(statement)
        return bytes(self.data)

    def find(self, name):
        names = [each.name for each in self.elements]
        return 0 if name == "root" else names.index(element_name(name))

    def place_of(self, words):
        what, _, name = words.partition(" ")
        if name:
            at = self.find(name)
            return at if what == "number" else getattr(self.elements[at], what)
        base, more = re.fullmatch(r"(\w+?)([+-]\d+)?", what).groups()
        return self.places[base] + int(more or 0) if base in self.places else int(base)

    def apply(self, statement):
        target, value = statement.split("=", 1)
        word = target.rsplit("next ", 1)
        if target.startswith("entry "):
            name, field = target[6:].split(":")
            at = (self.places["directory"] + 1) * self.each + self.find(name) * ENTRY
            self.set(at + FIELDS[field], self.place_of(value), 1 if field == "type" else 4)
        elif len(word) == 2:
            table = self.places["small" if word[0] else "table"]
            self.set((table + 1) * self.each + 4 * self.place_of(word[1]), self.place_of(value))
        elif target.startswith("header "):
            self.set(int(target[7:]), self.place_of(value))
        elif target == "cut":
            del self.data[-int(value):]
        elif target == "more":
            self.data += value.encode()
        else:
            raise ValueError(statement)


def rows(path):
    lines = [line.split("\t") for line in path.read_text().splitlines()
             if line and not line.startswith("#")]
    return [dict(zip(lines[0], cells + [""] * len(lines[0]))) for cells in lines[1:]]


def main(data, folder, seeds=None):
    data, folder = pathlib.Path(data), pathlib.Path(folder)
    (folder / "documents").mkdir(parents=True, exist_ok=True)
    bases = {}
    for row in rows(data / "documents.tsv"):
        name, elements = row["name"], row["elements"].replace("\\0", "\0")
        if name.startswith("("):
            bases[name] = elements
            continue
        for size in (512, 4096):
            file = File(size)
            file.add(elements, bases)
            document = file.build(row["damage"])
            (folder / "documents" / f"{name}{size}").write_bytes(document)
            if seeds and len(document) <= MOST_FOR_FUZZ:
                (pathlib.Path(seeds) / f"{name}{size}").write_bytes(document)
    nested = File(4096)
    nested.elements += [Element("s", kind=1, parent=i) for i in range(100_000)]
    (folder / "nested").write_bytes(nested.build())
    sets = {row["bytes"] for row in rows(data / "property_sets.tsv")}
    (folder / "sets").write_text("".join(f"{each}\t{set_bytes(each).hex()}\n"
                                         for each in sorted(sets) if not each.endswith(".doc")))


main(*sys.argv[1:])
