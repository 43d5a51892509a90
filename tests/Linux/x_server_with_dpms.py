"""An X server with no more than DPMS, which the virtual ones do not have.

Usage: x_server_with_dpms.py MINOR

Speaks version 1.MINOR of the extension to one client. Prints the display's name to connect to.
Each line of its input is the power level from then on (0 on, 3 off), of which it tells the client
if that has asked for it, as from 1.2 on it can; each is answered by a line "level N".
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
client, _ = listener.accept()


def read(count):
    data = b""
    while len(data) < count:
        part = client.recv(count - len(data))
        if not part:
            sys.exit()
        data += part
    return data


name, authorization = struct.unpack("<6xHH2x", read(12))
read((name + 3) // 4 * 4 + (authorization + 3) // 4 * 4)
screen = struct.pack("<5I6HI4B", 256, 32, 0, 0, 0, 800, 600, 200, 150, 1, 1, 33, 0, 0, 24, 0)
setup = struct.pack("<4I2H8BI", 1, 0x200000, 0x1FFFFF, 0, 0, 65535, 1, 0, 0, 0, 32, 32, 8, 255, 0)
setup += screen
client.sendall(struct.pack("<BxHHH", 1, 11, 0, len(setup) // 4) + setup)

sequence = level = 0
selected = False


def answer(data):
    client.sendall(struct.pack("<BxHI", 1, sequence, 0) + data.ljust(24, b"\0"))


while True:
    ready, _, _ = select.select([client, sys.stdin.buffer.raw], [], [])
    if client not in ready:
        line = sys.stdin.buffer.raw.readline()
        if not line:
            sys.exit()
        level = int(line)
        if selected:
            client.sendall(struct.pack("<BBHIH2xIHB13x", GENERIC_EVENT, DPMS, sequence, 0, 0, 0,
                                       level, 1))
        print("level", level, flush=True)
        continue
    major, operation, length = struct.unpack("<BBH", read(4))
    body = read(length * 4 - 4)
    sequence += 1
    if major == QUERY_EXTENSION:
        present = body[4:].startswith(b"DPMS")
        answer(struct.pack("<4B", present, DPMS if present else 0, 0, 0))
    elif major == GET_INPUT_FOCUS:
        answer(b"")
    elif major == DPMS and operation == GET_VERSION:
        answer(struct.pack("<2H", 1, minor))
    elif major == DPMS and operation == CAPABLE:
        answer(b"\1")
    elif major == DPMS and operation == INFO:
        answer(struct.pack("<HB", level, 1))
    elif major == DPMS and operation == SELECT_INPUT and minor >= 2:
        selected = struct.unpack("<I", body)[0] == 1
    else:
        sys.exit(f"unknown request {major} {operation}")
