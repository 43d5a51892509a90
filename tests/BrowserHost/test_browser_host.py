"""The browser host as a process, between a browser's pipes and Orvanta's socket."""

import contextlib
import fcntl
import os
import pathlib
import select
import signal
import socket
import struct
import subprocess
import tempfile
import time
import unittest

from desktop import DEADLINE, wait_until

BROWSER_SAYS = '{"v":1,"origin":"https://é.example.org","focused":true}'
ORVANTA_ASKS = "x" * 4096  # The longest.

# Frames that neither side may send, as header and what follows, with the host's complaint.
BROKEN = ((0, "empty"), (4097, "longer"), (0xFFFFFFFF, "longer"))


def frame(text):
    return struct.pack("=I", len(text.encode())) + text.encode()


class BrowserHost(unittest.TestCase):
    def setUp(self):
        """Called again for each row of a table."""
        folder = tempfile.TemporaryDirectory(prefix="orvanta-host-")
        self.addCleanup(folder.cleanup)
        self.runtime = pathlib.Path(folder.name)
        self.folder = self.runtime / "com.brindlework.orvanta"
        self.path = self.folder / "browsers"

    def start(self):
        self.host = self.enterContext(subprocess.Popen(
            [os.environ["ORVANTA_BROWSER_HOST"], "chrome-extension://id/"],
            env=dict(os.environ, XDG_RUNTIME_DIR=str(self.runtime)), stdin=subprocess.PIPE,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, bufsize=0))
        self.addCleanup(self.host.kill)
        # Asleep in poll(2): all that it does by itself is done.
        wait_until(lambda: "inotify" in "".join(self.descriptors().values()) and self.is_asleep(),
                   "a sleeping host")

    def start_connected(self):
        orvanta = self.listen()
        self.start()
        return orvanta, self.accept(orvanta)

    def listen(self):
        """Orvanta's end. The socket gets its name when it can be connected to."""
        self.folder.mkdir(mode=0o700, exist_ok=True)
        orvanta = self.enterContext(socket.socket(socket.AF_UNIX))
        orvanta.settimeout(DEADLINE)
        orvanta.bind(f"{self.path}.new")
        orvanta.listen(4)
        os.rename(f"{self.path}.new", self.path)
        return orvanta

    def accept(self, orvanta):
        connection = self.enterContext(orvanta.accept()[0])
        connection.settimeout(DEADLINE)
        return connection

    def wait_for_no_connection(self):
        wait_until(lambda: "socket" not in "".join(self.descriptors().values()), "no connection")

    def wait_until_all_is_taken(self):
        wait_until(lambda: fcntl.ioctl(self.host.stdin, 0x541B, b"\0" * 4) == b"\0" * 4
                   and self.is_asleep(), "the end of what the browser said")  # FIONREAD

    def status(self, field):
        lines = pathlib.Path(f"/proc/{self.host.pid}/status").read_text().splitlines()
        return dict(line.split(":", 1) for line in lines)[field].split()[0]

    def is_asleep(self):
        return self.status("State") == "S"

    def assert_sleeps_on(self):
        wait_until(self.is_asleep, "sleep")
        before = self.status("voluntary_ctxt_switches")
        time.sleep(0.5)
        self.assertEqual(self.status("voluntary_ctxt_switches"), before)
        self.assertTrue(self.is_asleep())

    def descriptors(self):
        found = {}
        for entry in pathlib.Path(f"/proc/{self.host.pid}/fd").iterdir():
            with contextlib.suppress(FileNotFoundError):  # closed since the folder was read
                found[int(entry.name)] = os.readlink(entry)
        return found

    def say(self, text=BROWSER_SAYS):
        self.host.stdin.write(frame(text))

    def read(self, descriptor, expected):
        got = b""
        while len(got) < len(expected):
            self.assertTrue(select.select([descriptor], [], [], DEADLINE)[0], f"only {got!r}")
            more = os.read(descriptor.fileno(), len(expected) - len(got))
            self.assertTrue(more, f"ended after {got!r}")
            got += more
        self.assertEqual(got, expected)

    def assert_passes(self, connection):
        """What either says comes out at the other, and nothing before it."""
        self.say()
        self.read(connection, frame(BROWSER_SAYS))
        connection.sendall(frame(ORVANTA_ASKS))
        self.read(self.host.stdout, frame(ORVANTA_ASKS))

    def assert_ends(self, code, complaint=""):
        self.assertEqual(self.host.wait(DEADLINE), code)
        self.assertIn(complaint, self.host.stderr.read().decode())

    def assert_hung_up(self, connection):
        with contextlib.suppress(ConnectionResetError):
            while connection.recv(65536):
                pass

    def test_orvanta_is_found_wherever_the_folder_stands_and_hears_nothing_of_before(self):
        for name, was_there, act in (
                ("nothing", False, lambda: None),
                ("a folder without a socket", False, lambda: self.folder.mkdir()),
                ("the socket of one that was killed", False, lambda: self.listen().close()),
                ("ended", True, lambda: self.path.unlink()),
                ("killed", True, lambda: None),
                ("folder removed", True, lambda: (self.path.unlink(), self.folder.rmdir())),
                ("folder moved", True, lambda: self.folder.rename(self.runtime / "moved"))):
            with self.subTest(name):
                self.setUp()
                for one in self.start_connected() if was_there else ():
                    one.close()
                act()
                self.wait_for_no_connection() if was_there else self.start()
                self.say('"early"')
                self.wait_until_all_is_taken()
                self.assert_passes(self.accept(self.listen()))

    def test_it_changes_to_a_successor_only_when_its_connection_ends(self):
        orvanta, connection = self.start_connected()
        for _ in range(2):
            self.assert_passes(connection)
            connection.close()
            self.wait_for_no_connection()
            # Not tried again until the browser speaks.
            self.assertEqual(select.select([orvanta], [], [], 0.1)[0], [])
            self.say()
            connection = self.accept(orvanta)
            self.read(connection, frame(BROWSER_SAYS))
        successor = self.listen()
        self.assert_passes(connection)
        connection.close()
        self.assert_passes(self.accept(successor))

    def test_a_socket_of_another_person_gets_nothing(self):
        self.assertEqual(os.geteuid(), 0, "only root can play another person")
        self.runtime.chmod(0o777)
        os.seteuid(65534)
        try:
            orvanta = self.listen()
        finally:
            os.seteuid(0)
        self.start()
        self.say()
        self.assertEqual(self.accept(orvanta).recv(1), b"")
        self.host.stdin.close()
        self.assert_ends(0, "another person")

    def test_it_ends_with_its_browser_and_at_its_broken_frames(self):
        ends = [("input closed", lambda: self.host.stdin.close(), 0, ""),
                ("in the middle of a frame", lambda: (self.host.stdin.write(frame("abc")[:5]),
                                                      self.host.stdin.close()), 0, ""),
                ("output closed", lambda: self.host.stdout.close(), 0, ""),
                ("asked to", lambda: self.host.terminate(), -signal.SIGTERM, ""),
                *((header, lambda header=header: self.host.stdin.write(
                    struct.pack("=I", header) + b"rest"), 1, reason) for header, reason in BROKEN)]
        for name, end, code, reason in ends:
            with self.subTest(name):
                self.setUp()
                _, connection = self.start_connected()
                end()
                self.assert_ends(code, reason)
                self.assertEqual(connection.recv(65536), b"")

    def test_a_broken_frame_of_orvanta_ends_only_that_connection(self):
        orvanta, connection = self.start_connected()
        for header, _ in BROKEN:
            with self.subTest(header):
                connection.sendall(struct.pack("=I", header) + frame("lost"))
                self.assert_hung_up(connection)
                self.say("again")
                connection = self.accept(orvanta)
                self.read(connection, frame("again"))
                self.assert_passes(connection)

    def test_orvanta_hanging_is_given_up_and_found_again(self):
        orvanta, connection = self.start_connected()
        for _ in range(10000):
            self.say()
        self.assert_hung_up(connection)
        self.wait_until_all_is_taken()
        orvanta.close()
        self.wait_for_no_connection()
        self.assert_passes(self.accept(self.listen()))

    def test_a_browser_hanging_holds_orvanta_back_and_loses_nothing(self):
        orvanta, connection = self.start_connected()
        connection.settimeout(0.3)
        sent = b""
        with contextlib.suppress(TimeoutError):  # Until it takes no more.
            while True:
                connection.sendall(frame(ORVANTA_ASKS))
                sent += frame(ORVANTA_ASKS)
        self.assert_sleeps_on()
        self.say()  # It still hears the browser.
        self.read(connection, frame(BROWSER_SAYS))
        self.read(self.host.stdout, sent[:-4])
        connection.close()
        self.wait_for_no_connection()
        self.assert_sleeps_on()

    def test_a_stray_print_goes_to_standard_error(self):
        self.start_connected()
        self.assert_sleeps_on()
        links = self.descriptors()
        self.assertEqual((links[0], links[1]), ("/dev/null", links[2]))

    def test_without_a_runtime_folder_it_says_so_and_fails(self):
        for folder in ("", "relative", "/nonexistent"):
            result = subprocess.run(
                [os.environ["ORVANTA_BROWSER_HOST"]], env={"XDG_RUNTIME_DIR": folder},
                stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=DEADLINE)
            self.assertEqual((result.returncode, result.stdout), (1, ""), folder)
            self.assertIn("XDG_RUNTIME_DIR", result.stderr)
