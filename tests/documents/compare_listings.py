#!/usr/bin/env python3
"""Compares what velkcom lists of sample documents with what other readers say.

compare_listings.py VELKCOM

The folder $VELK_DOCUMENTS holds documents, and in its folder "expected" for each of them the
properties that olefile (NAME.olefile.json) and libgsf (NAME.gsf.txt) read.
Where these decode a value of a kind that scripts see, ours must be the same.
"""
import datetime
import json
import os
import pathlib
import re
import subprocess
import sys

# What CTest takes as skipped.
SKIPPED = 77
SETS = {"\x05SummaryInformation": "SummaryInformation",
        "\x05DocumentSummaryInformation": "DocSummaryInformation"}
CODECS = {0: "cp1252", None: "cp1252", 10000: "mac_roman", 65001: "utf-8", 1200: "utf-16-le"}


def listing(velkcom, path):
    environment = dict(os.environ, TZ="UTC")
    run = subprocess.run([velkcom, "props", "list", "--json", str(path)], timeout=60,
                         capture_output=True, env=environment, check=False)
    if run.returncode not in (0, 1):
        raise SystemExit(f"{path}: exit code {run.returncode}")
    lines = run.stdout.decode("utf-8").splitlines()
    if len(lines) != 1:
        raise SystemExit(f"{path}: {len(lines)} lines")
    return json.loads(lines[0])


def seconds_since_1601(text):
    """Of a time as scripts see it."""
    match = re.fullmatch(r"(\d\d)\.(\d\d)\.(\d+) (\d\d):(\d\d):(\d\d)\.\d{3}", text)
    if not match:
        return None
    day, month, year, hour, minute, second = map(int, match.groups())
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


def compare_with_olefile(name, ours, theirs):
    compared = 0
    for stream, properties in theirs.get("props", {}).items():
        listed = next((s for s in ours["sets"] if s["name"] == SETS.get(stream)), None)
        if listed is None or not isinstance(properties, dict):
            continue
        page = listed["codePage"]
        codec = CODECS.get(page, f"cp{page}")
        by_id = {p["id"]: p for p in listed["properties"]}
        for key, value in properties.items():
            ours_value = by_id.get(int(key))
            if ours_value is None or ours_value["value"] is None:
                continue
            kind, got = ours_value["type"], ours_value["value"]
            if kind in ("VT_LPSTR", "VT_LPWSTR"):
                want = expected_text(value, "utf-16-le" if kind == "VT_LPWSTR" else codec)
            elif kind == "VT_FILETIME":
                got, want = seconds_since_1601(got), value
            elif kind == "VT_BOOL":
                want = bool(value)
            else:
                want = value
            if want is None:
                continue
            if kind == "VT_I2" and isinstance(want, int):
                want &= 0xFFFF
            compared += 1
            if got != want:
                raise SystemExit(f"{name}: {listed['name']} {key}: {got!r}, olefile {want!r}")
    return compared


def compare_with_gsf(name, ours, text):
    """Texts of the user's own properties, which olefile does not read."""
    custom = next((s for s in ours["sets"] if s["name"] == "Custom"), None)
    if custom is None:
        return 0
    theirs = dict(re.findall(r'^(.+?) = "((?:[^"\\]|\\.)*)"$', text, re.M))
    compared = 0
    for each in custom["properties"]:
        if each["type"] not in ("VT_LPSTR", "VT_LPWSTR") or each["name"] not in theirs:
            continue
        want = re.sub(rb"\\(\d{3}|.)", lambda m: bytes([int(m[1], 8)]) if len(m[1]) == 3 else m[1],
                      theirs[each["name"]].encode())
        compared += 1
        if each["value"] != want.decode("utf-8", "replace"):
            raise SystemExit(f"{name}: {each['name']}: {each['value']!r}, libgsf {want!r}")
    return compared


def main(velkcom):
    if not os.environ.get("VELK_DOCUMENTS"):
        print("skipped: VELK_DOCUMENTS names no folder of documents")
        sys.exit(SKIPPED)
    folder = pathlib.Path(os.environ["VELK_DOCUMENTS"])
    compared = documents = 0
    for expected in sorted((folder / "expected").glob("*.gsf.txt")):
        name = expected.name[:-len(".gsf.txt")]
        ours = listing(velkcom, folder / name)
        documents += 1
        olefile = folder / "expected" / f"{name}.olefile.json"
        if olefile.exists():
            compared += compare_with_olefile(name, ours, json.loads(olefile.read_text()))
        compared += compare_with_gsf(name, ours, expected.read_text(errors="replace"))
    print(f"{documents} documents, {compared} values are the same")
    if documents == 0 or compared == 0:
        raise SystemExit("nothing was compared")


if len(sys.argv) != 2:
    raise SystemExit(__doc__)
main(sys.argv[1])
