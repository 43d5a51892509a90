"""Orvanta's end of the browser connection, as much of it as a test needs."""

import contextlib
import json
import os
import pathlib
import socket
import struct

FOLDER = "com.brindlework.orvanta"


def frame(text):
    encoded = text.encode() if isinstance(text, str) else text
    return struct.pack("=I", len(encoded)) + encoded


def ask(number):
    return frame(json.dumps({"v": 1, "ask": number}, separators=(",", ":")))


class Frames:
    """Cuts what comes in into the texts of frames."""

    def __init__(self):
        self._bytes = b""

    def add(self, more):
        self._bytes += more
        while len(self._bytes) >= 4:
            end = 4 + struct.unpack("=I", self._bytes[:4])[0]
            if len(self._bytes) < end:
                break
            yield self._bytes[4:end]
            self._bytes = self._bytes[end:]


class Listener:
    """Listens in a runtime folder. The socket gets its name when it can be connected to."""

    def __init__(self, runtime):
        self.folder = pathlib.Path(runtime) / FOLDER
        self.path = self.folder / "browsers"
        self.folder.mkdir(mode=0o700, exist_ok=True)
        self._socket = socket.socket(socket.AF_UNIX)
        unnamed = self.folder / "browsers.new"
        self._socket.bind(str(unnamed))
        self._socket.listen(4)
        os.rename(unnamed, self.path)

    def accept(self, seconds):
        self._socket.settimeout(seconds)
        connection, _ = self._socket.accept()
        connection.settimeout(seconds)
        return connection

    def fileno(self):
        return self._socket.fileno()

    def close(self, leave_name=False):
        """With its name left behind it looks killed."""
        self._socket.close()
        if not leave_name:
            with contextlib.suppress(FileNotFoundError):
                self.path.unlink()
