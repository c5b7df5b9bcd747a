"""Runs a program whose standard error is a terminal and passes on what it writes.

    run_on_terminal.py PROGRAM ARGUMENT...

Standard output is a pipe, and from its first bytes on nothing is taken out of it for longer than a program keeps silent
about its progress; then all of it.
"""

import os
import pty
import select
import subprocess
import sys
import threading

PAUSE = 0.6  # seconds


def drain(descriptor, target):
    while True:
        try:
            data = os.read(descriptor, 65536)
        except OSError:  # how the end of a terminal shows
            return
        if not data:
            return
        target.append(data)


terminal, terminal_of_program = pty.openpty()
process = subprocess.Popen(sys.argv[1:], stdout=subprocess.PIPE, stderr=terminal_of_program)
os.close(terminal_of_program)
errors = []
reader = threading.Thread(target=drain, args=(terminal, errors))
reader.start()
output = []
pipe = process.stdout.fileno()
select.select([pipe], [], [])
select.select([], [], [], PAUSE)
drain(pipe, output)
reader.join()
status = process.wait()
sys.stdout.buffer.write(b"".join(output))
sys.stderr.buffer.write(b"".join(errors))
sys.exit(status)
