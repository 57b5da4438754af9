"""Writes the bytes of a stream in a compound file to the standard output, read
by another program than the one under test. Ends with 77 where the module
olefile is not installed."""

import sys

try:
    import olefile
except ImportError:
    sys.exit(77)

path, stream = sys.argv[1:]
with olefile.OleFileIO(path, raise_defects=olefile.DEFECT_INCORRECT) as file:
    sys.stdout.buffer.write(file.openstream(stream).read())
