"""The property sets of a document as its bytes have them, through olefile's streams: what stands
in their tables, and the values of a few types. No value is interpreted further."""

import struct
import uuid

import olefile

# Types whose values are one number, and how it is stored.
NUMBERS = {2: "<H", 3: "<i", 11: "<h", 19: "<I", 64: "<Q"}


def number(data, offset, form="<I"):
    return struct.unpack_from(form, data, offset)[0]


def section(data, offset):
    """{id: (type, number or None)} without what tells of the set itself."""
    properties = {}
    for i in range(number(data, offset + 4)):
        key, place = (number(data, offset + 8 + 8 * i + 4 * part) for part in (0, 1))
        kind = number(data, offset + place)
        form = NUMBERS.get(kind)
        value = number(data, offset + place + 4, form) if form else None
        if 2 <= key < 0x80000000:
            properties[key] = (kind, value)
    return properties


def property_sets(path):
    """[(stream, format id, properties)] of the document's own sets, properties as None where the
    bytes end too early; nothing for a file that olefile does not open."""
    try:
        document = olefile.OleFileIO(str(path))
    except OSError:
        return []
    found = []
    with document:
        for name in document.listdir(storages=False):
            if len(name) != 1 or not name[0].startswith("\x05"):
                continue
            data = document.openstream(name).read()
            if len(data) < 28:
                continue
            for i in range(min(number(data, 24), 2)):
                try:
                    identifier = uuid.UUID(bytes_le=data[28 + 20 * i:44 + 20 * i])
                    properties = section(data, number(data, 44 + 20 * i))
                except (struct.error, ValueError):
                    identifier, properties = None, None
                found.append((name[0], identifier, properties))
    return found
