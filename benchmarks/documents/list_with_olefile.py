"""Prints the properties of every document in a folder, read with olefile.

list_with_olefile.py FOLDER
"""
import os
import sys

import olefile

for folder, _, files in os.walk(sys.argv[1]):
    for name in sorted(files):
        path = os.path.join(folder, name)
        print(path)
        with olefile.OleFileIO(path) as document:
            for stream in ("\x05SummaryInformation", "\x05DocumentSummaryInformation"):
                if not document.exists(stream):
                    continue
                properties = document.getproperties(stream, convert_time=True)
                for key, value in sorted(properties.items()):
                    print(" ", key, value)
