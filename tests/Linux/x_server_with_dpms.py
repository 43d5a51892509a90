"""An X server with no more than DPMS, which the virtual ones do not have.

Usage: x_server_with_dpms.py MINOR

Speaks version 1.MINOR of the extension to one client. Prints the display's name to connect to.
Each line of its input is whether DPMS is in force (0, 1) and the power level (0 on, 3 off) from
then on, of which it tells the client if that has asked for it, as from 1.2 on it can; each is
answered by an empty line.
"""

import itertools
import select
import socket
import struct
import sys

GET_VERSION, CAPABLE, INFO, SELECT_INPUT = 0, 1, 7, 8
QUERY_EXTENSION, GET_INPUT_FOCUS, DPMS = 98, 43, 140
GENERIC_EVENT = 35

listener = socket.socket(socket.AF_UNIX)
for number in itertools.count(1000):
    try:
        # In the abstract name space: nothing to clear away.
        listener.bind(f"\0/tmp/.X11-unix/X{number}")
        break
    except OSError:
        continue
listener.listen(1)
minor = int(sys.argv[1])
print(f":{number}", flush=True)
client = listener.accept()[0].makefile("rwb", buffering=0)

name, authorization = struct.unpack("<6xHH2x", client.read(12))
client.read((name + 3) // 4 * 4 + (authorization + 3) // 4 * 4)
screen = struct.pack("<5I6HI4B", 256, 32, 0, 0, 0, 800, 600, 200, 150, 1, 1, 33, 0, 0, 24, 0)
setup = struct.pack("<4I2H8BI", 1, 0x200000, 0x1FFFFF, 0, 0, 65535, 1, 0, 0, 0, 32, 32, 8, 255, 0)
setup += screen
client.write(struct.pack("<BxHHH", 1, 11, 0, len(setup) // 4) + setup)

sequence = enabled = level = 0
selected = False

while True:
    ready, _, _ = select.select([client, sys.stdin.buffer.raw], [], [])
    if client not in ready:
        enabled, level = map(int, sys.stdin.buffer.raw.readline().split())
        if selected:
            client.write(struct.pack("<BBHIH2xIHB13x", GENERIC_EVENT, DPMS, sequence, 0, 0, 0,
                                     level, enabled))
        print(flush=True)
        continue
    header = client.read(4)
    if not header:
        sys.exit()
    major, operation, length = struct.unpack("<BBH", header)
    body = client.read(length * 4 - 4) if length > 1 else b""
    sequence += 1
    if (major, operation) == (DPMS, SELECT_INPUT) and minor >= 2:
        selected = struct.unpack("<I", body)[0] == 1
        continue
    present = body[4:].startswith(b"DPMS")
    answers = {(DPMS, GET_VERSION): struct.pack("<2H", 1, minor), (DPMS, CAPABLE): b"\1",
               (DPMS, INFO): struct.pack("<HB", level, enabled)}
    if major == QUERY_EXTENSION:
        answer = struct.pack("<4B", present, DPMS if present else 0, 0, 0)
    elif major == GET_INPUT_FOCUS:
        answer = b""
    else:
        answer = answers[major, operation]
    client.write(struct.pack("<BxHI", 1, sequence, 0) + answer.ljust(24, b"\0"))
