#!/usr/bin/env python3
"""Has velkcom write a document and reads it with olefile, a program that has nothing in common
with the one under test and that refuses what is not as the format says.

read_written.py VELKCOM
"""
import pathlib
import subprocess
import sys
import tempfile

try:
    import olefile
except ImportError:
    print("skipped: python3-olefile is not installed")
    sys.exit(77)

# Around the size from which on a stream has sectors of its own.
TITLES = ["A report", "b" * 4000, "c" * 9000, "d"]


def main(velkcom):
    with tempfile.TemporaryDirectory() as folder:
        document = str(pathlib.Path(folder) / "written.doc")

        def props(command, *arguments):
            subprocess.run([velkcom, "props", command, document, *arguments], check=True,
                           stdout=subprocess.DEVNULL)

        props("create")
        for number, title in enumerate(TITLES):
            props("set", "summary", "Title", title)
            props("set", "summary", "PageCount", str(number))
            props("set", "custom", f"Client {number}", title)
            with olefile.OleFileIO(document, raise_defects=olefile.DEFECT_INCORRECT) as file:
                read = file.getproperties("\x05SummaryInformation")
                assert read[2].rstrip(b"\0") == title.encode(), f"another title: {read[2]!r}"
                assert read[14] == number, f"another number of pages: {read[14]!r}"
                custom = file.openstream("\x05DocumentSummaryInformation").read()
                assert title.encode("utf-16-le") in custom, "the own property is not there"
    print(f"{len(TITLES)} states of a document are read as they were written")


main(*sys.argv[1:])
