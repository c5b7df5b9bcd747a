"""Parses a property list with Python's plistlib and writes it again: `plistlib_round_trip.py FILE` prints the seconds of
processor time of both and the number of archived objects."""
import plistlib
import sys
import time

with open(sys.argv[1], "rb") as file:
    text = file.read()
start = time.process_time()
archive = plistlib.loads(text)
parsed = time.process_time()
written = plistlib.dumps(archive)
end = time.process_time()
print(parsed - start, end - parsed, len(archive["$objects"]) if written else 0)
