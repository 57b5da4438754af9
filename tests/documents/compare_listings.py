#!/usr/bin/env python3
"""Compares what velkcom lists of sample documents with what other readers say.

compare_listings.py VELKCOM
compare_listings.py --wine RUN_WINE VELKCOM

The folder $VELK_DOCUMENTS holds documents, and in its folder "expected" for each of them the
properties that olefile (NAME.olefile.json) and libgsf (NAME.gsf.txt) read.
Where these decode a value of a kind that scripts see, ours must be the same, and so must be the
ids, types and numbers that stand in the sets' bytes. The differences are explained one by one in
differences.tsv, those of Wine's own property sets in wine_differences.tsv.
"""
import datetime
import json
import os
import pathlib
import re
import subprocess
import sys

try:
    from property_bytes import property_sets
except ImportError:
    property_sets = None

# What CTest takes as skipped.
SKIPPED = 77
SETS = {"\x05SummaryInformation": "SummaryInformation",
        "\x05DocumentSummaryInformation": "DocSummaryInformation"}
CODECS = {0: "cp1252", None: "cp1252", 10000: "mac_roman", 65001: "utf-8", 1200: "utf-16-le"}


def listing(command, path):
    """None when the program does not come to its end."""
    environment = dict(os.environ, TZ="UTC")
    try:
        run = subprocess.run([*command, "props", "list", "--json", path], timeout=10,
                             capture_output=True, env=environment, check=False)
    except subprocess.TimeoutExpired:
        return None
    lines = run.stdout.decode("utf-8", "replace").splitlines()
    # What is printed of a program that crashed has more lines.
    if run.returncode not in (0, 1) or len(lines) != 1:
        return None
    return json.loads(lines[0])


def seconds_since_1601(text):
    """Of a time as it is listed."""
    match = re.fullmatch(r"(\d+)-(\d\d)-(\d\d)T(\d\d):(\d\d):(\d\d)(?:\.\d{1,7})?Z", text)
    if not match:
        return None
    year, month, day, hour, minute, second = map(int, match.groups())
    return int((datetime.datetime(year, month, day, hour, minute, second) -
                datetime.datetime(1601, 1, 1)).total_seconds())


def expected_text(value, codec):
    """The text of a value that olefile gives as bytes; None where it is no text."""
    if isinstance(value, str):
        return value.split("\0")[0]
    if isinstance(value, dict) and set(value) == {"hex"}:
        text = bytes.fromhex(value["hex"]).decode(codec, "replace")
        return text.split("\0")[0]
    return None


class Comparison:
    """Counts values, and tells of each that differs or is missing."""

    def __init__(self):
        self.same = 0
        self.differences = {}

    def add(self, place, got, want):
        if got == want:
            self.same += 1
        else:
            self.differences[place] = f"{got!r} instead of {want!r}"


def expected_value(kind, value, codec):
    """What olefile's value is for scripts; None where it is of another kind."""
    if kind in ("VT_LPSTR", "VT_LPWSTR"):
        return expected_text(value, "utf-16-le" if kind == "VT_LPWSTR" else codec)
    if kind == "VT_BOOL":
        return bool(value)
    if kind == "VT_I2" and isinstance(value, int):
        return value & 0xFFFF
    return value


def compare_with_olefile(name, ours, theirs, comparison):
    for stream, properties in theirs.get("props", {}).items():
        if not isinstance(properties, dict) or not properties:
            continue
        set_name = SETS.get(stream)
        listed = next((s for s in ours["sets"] if s["name"] == set_name), None)
        if listed is None:
            if set_name is not None:
                comparison.add((name, set_name, "-"), None, "a set")
            continue
        page = listed["codePage"]
        codec = CODECS.get(page, f"cp{page}")
        by_id = {p["id"]: p for p in listed["properties"]}
        for key, value in properties.items():
            found = by_id.get(int(key))
            if found is None:
                # The ids below and above tell of the set itself.
                if 2 <= int(key) < 0x80000000:
                    comparison.add((name, set_name or "-", key), None, value)
                continue
            if found["value"] is None:
                continue
            want = expected_value(found["type"], value, codec)
            is_time = found["type"] == "VT_FILETIME"
            got = seconds_since_1601(found["value"]) if is_time else found["value"]
            if want is not None:
                comparison.add((name, set_name or "-", key), got, want)


def compare_with_gsf(name, ours, text, comparison):
    """Texts of the user's own properties, which olefile does not read."""
    custom = next((s for s in ours["sets"] if s["name"] == "Custom"), None)
    if custom is None:
        return
    theirs = dict(re.findall(r'^(.+?) = "((?:[^"\\]|\\.)*)"$', text, re.M))
    for each in custom["properties"]:
        if each["type"] not in ("VT_LPSTR", "VT_LPWSTR") or each["name"] not in theirs:
            continue
        want = re.sub(rb"\\(\d{3}|.)", lambda m: bytes([int(m[1], 8)]) if len(m[1]) == 3 else m[1],
                      theirs[each["name"]].encode())
        comparison.add((name, "Custom", each["name"]), each["value"],
                       want.decode("utf-8", "replace"))


def value_in_bytes(kind, value):
    """A number as it is listed; None for what is listed in another form."""
    if value is None or kind in (19, 64):
        return None
    return value != 0 if kind == 11 else value


def compare_with_bytes(name, ours, path, comparison):
    for stream, identifier, properties in property_sets(path):
        place = (name, stream.lstrip("\x05"), str(identifier))
        if properties is None:
            comparison.add(place, "a set", None)
            continue
        listed = next((s for s in ours["sets"]
                       if s["formatId"].strip("{}").lower() == str(identifier)), None)
        if listed is None:
            comparison.add(place, None, "a set")
            continue
        got = {p["id"]: p["value"] for p in listed["properties"]}
        want = {key: value_in_bytes(*typed) for key, typed in properties.items()}
        comparison.add(place, sorted(got), sorted(want))
        for key in got.keys() & want.keys():
            if want[key] is not None:
                comparison.add((*place[:2], f"{identifier} {key}"), got[key], want[key])


def compare_all(folder, command, path_of, with_bytes):
    comparison = Comparison()
    documents = 0
    for expected in sorted((folder / "expected").glob("*.gsf.txt")):
        name = expected.name[:-len(".gsf.txt")]
        ours = listing(command, path_of(folder / name))
        documents += 1
        if ours is None:
            comparison.add((name, "-", "-"), None, "an end")
            continue
        olefile = folder / "expected" / f"{name}.olefile.json"
        if olefile.exists():
            compare_with_olefile(name, ours, json.loads(olefile.read_text()), comparison)
        compare_with_gsf(name, ours, expected.read_text(errors="replace"), comparison)
        if with_bytes:
            compare_with_bytes(name, ours, folder / name, comparison)
    print(f"{documents} documents, {comparison.same} values are the same")
    if documents == 0 or comparison.same == 0:
        raise SystemExit("nothing was compared")
    return comparison.differences


def known_differences(name):
    lines = (pathlib.Path(__file__).parent / name).read_text().splitlines()
    return {tuple(line.split("\t")[:3]) for line in lines if line}


def main(arguments):
    on_wine = arguments[:1] == ["--wine"]
    command = arguments[1:] if on_wine else arguments
    if not command:
        raise SystemExit(__doc__)
    if not os.environ.get("VELK_DOCUMENTS"):
        print("skipped: VELK_DOCUMENTS names no folder of documents")
        sys.exit(SKIPPED)
    path_of = (lambda path: "Z:" + str(path).replace("/", "\\")) if on_wine else str
    with_bytes = not on_wine and property_sets is not None
    if not with_bytes and not on_wine:
        print("without the bytes: python3-olefile is not installed")
    differences = compare_all(pathlib.Path(os.environ["VELK_DOCUMENTS"]), command, path_of,
                              with_bytes)
    known = known_differences("wine_differences.tsv") if on_wine else set()
    if with_bytes:
        known = known_differences("differences.tsv")
    for place in sorted(differences.keys() - known):
        print(*place, differences[place], sep="\t")
    for place in sorted(known - differences.keys()):
        print(*place, "is marked as a difference, and is none", sep="\t")
    print(f"{len(known & differences.keys())} differences as expected")
    sys.exit(known != differences.keys())


main(sys.argv[1:])
