"""The browser host as a process, between a browser's pipes and Orvanta's socket."""

import contextlib
import fcntl
import json
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

PATIENCE = 20.0
BROWSER_SAYS = '{"v":1,"origin":"https://example.org","focused":true}'

# What a few buffers and the allocator's own may take, in kilobytes; a flood is twenty times that.
ROOM = 600

# Frames that neither side may send, as header and what follows, with the host's complaint.
BROKEN = ((0, "empty"), (4097, "longer"), (0xFFFFFFFF, "longer"))


def frame(text):
    return struct.pack("=I", len(text.encode())) + text.encode()


def ask(number):
    return frame(json.dumps({"v": 1, "ask": number}, separators=(",", ":")))


class Listener:
    """Orvanta's end. The socket gets its name when it can be connected to."""

    def __init__(self, folder):
        self.path = folder / "browsers"
        folder.mkdir(mode=0o700, exist_ok=True)
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(PATIENCE)
        self.socket.bind(str(folder / "browsers.new"))
        self.socket.listen(4)
        os.rename(folder / "browsers.new", self.path)

    def close(self, leave_name=False):
        """With its name left behind it looks killed."""
        self.socket.close()
        if not leave_name:
            self.path.unlink(missing_ok=True)


class BrowserHost(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="orvanta-host-")
        self.addCleanup(folder.cleanup)
        self.runtime = pathlib.Path(folder.name)
        self.folder = self.runtime / "com.brindlework.orvanta"

    @contextlib.contextmanager
    def row(self, *what):
        """Of a table: with a folder and a host of its own."""
        with self.subTest(" ".join(map(str, what))):
            self.setUp()
            try:
                yield
            finally:
                self.doCleanups()

    def start(self):
        self.host = self.enterContext(subprocess.Popen(
            [os.environ["ORVANTA_BROWSER_HOST"], "chrome-extension://id/"],
            env=dict(os.environ, XDG_RUNTIME_DIR=str(self.runtime)), stdin=subprocess.PIPE,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, bufsize=0))
        self.addCleanup(self.host.kill)
        # Asleep in poll(2): all that it does by itself is done.
        self.wait_until(lambda: self.is_asleep()
                        and "inotify" in "".join(self.descriptors().values()), "a sleeping host")

    def start_connected(self):
        orvanta = self.listen()
        self.start()
        return orvanta, self.accept(orvanta)

    def listen(self):
        orvanta = Listener(self.folder)
        self.addCleanup(orvanta.close)
        return orvanta

    def accept(self, orvanta):
        connection, _ = orvanta.socket.accept()
        connection.settimeout(PATIENCE)
        self.addCleanup(connection.close)
        return connection

    def wait_until(self, condition, what):
        deadline = time.monotonic() + PATIENCE
        while not condition():
            self.assertLess(time.monotonic(), deadline, f"{what}: not in time")
            time.sleep(0.005)

    def wait_for_no_connection(self):
        self.wait_until(lambda: "socket" not in "".join(self.descriptors().values()),
                        "the end of the connection")

    def status(self, field):
        lines = pathlib.Path(f"/proc/{self.host.pid}/status").read_text().splitlines()
        return dict(line.split(":", 1) for line in lines)[field].strip()

    def is_asleep(self):
        return self.status("State").startswith("S")

    def memory(self):
        return int(self.status("VmRSS").split()[0])

    def switches(self):
        return (int(self.status("voluntary_ctxt_switches"))
                + int(self.status("nonvoluntary_ctxt_switches")))

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
            ready, _, _ = select.select([descriptor], [], [], PATIENCE)
            self.assertTrue(ready, f"only {got!r}")
            more = os.read(descriptor.fileno(), len(expected) - len(got))
            self.assertTrue(more, f"ended after {got!r}")
            got += more
        self.assertEqual(got, expected)

    def assert_passes(self, connection):
        """What either says comes out at the other, and nothing before it."""
        self.say()
        self.read(connection, frame(BROWSER_SAYS))
        connection.sendall(ask(7))
        self.read(self.host.stdout, ask(7))

    def assert_ends(self, code, complaint=""):
        self.assertEqual(self.host.wait(PATIENCE), code)
        self.assertIn(complaint, self.host.stderr.read().decode())

    def assert_hung_up(self, connection):
        with contextlib.suppress(ConnectionResetError):
            while connection.recv(65536):
                pass

    # Both ways

    def test_frames_pass_unchanged_however_they_are_cut(self):
        _, connection = self.start_connected()
        sent = b"".join(map(frame, (BROWSER_SAYS, "{}", "x" * 4096, "é", "\0")))
        for step in (1, 3, 4100, len(sent)):
            for write, reading in ((self.host.stdin.write, connection),
                                   (connection.sendall, self.host.stdout)):
                for at in range(0, len(sent), step):
                    write(sent[at:at + step])
                self.read(reading, sent)

    # Coming and going of Orvanta

    def test_orvanta_is_found_wherever_the_folder_stands_and_hears_nothing_of_before(self):
        def dropped():
            is_taken = fcntl.ioctl(self.host.stdin, 0x541B, b"\0" * 4) == b"\0" * 4  # FIONREAD
            return is_taken and self.is_asleep()

        for name, was_there, act in (
                ("nothing", False, lambda _: None),
                ("a folder without a socket", False, lambda _: self.folder.mkdir()),
                ("the socket of one that was killed", False,
                 lambda _: Listener(self.folder).close(leave_name=True)),
                ("ended", True, Listener.close),
                ("killed", True, lambda orvanta: orvanta.close(leave_name=True)),
                ("folder removed", True, lambda orvanta: (orvanta.close(), self.folder.rmdir())),
                ("folder moved", True, lambda orvanta: (
                    orvanta.close(), self.folder.rename(self.runtime / "moved")))):
            with self.row(name):
                if was_there:
                    orvanta, connection = self.start_connected()
                    before = self.switches()
                    connection.close()
                    act(orvanta)
                    self.wait_until(lambda: self.switches() > before, "notice of it")
                else:
                    act(None)
                    self.start()
                self.say('"early"')
                self.wait_until(dropped, "the end of the frame")
                self.assert_passes(self.accept(self.listen()))

    def test_a_successor_that_listens_before_the_old_connection_ends_is_found(self):
        orvanta, connection = self.start_connected()
        self.assert_passes(connection)
        orvanta.path.chmod(0o600)
        successor = self.listen()
        # What happens in the folder is no reason to leave a connection that is good.
        self.assert_passes(connection)
        connection.close()
        self.assert_passes(self.accept(successor))

    def test_a_connection_that_orvanta_ends_is_not_tried_again_until_the_browser_speaks(self):
        orvanta, connection = self.start_connected()
        for _ in range(3):
            self.assert_passes(connection)
            connection.close()
            self.wait_for_no_connection()
            self.assertEqual(select.select([orvanta.socket], [], [], 0.1)[0], [])
            self.say()
            connection = self.accept(orvanta)
            self.read(connection, frame(BROWSER_SAYS))

    def test_a_socket_of_another_person_gets_nothing(self):
        self.assertEqual(os.geteuid(), 0, "only root can play another person")
        orvanta = self.listen()
        orvanta.close()
        self.runtime.chmod(0o711)
        self.folder.chmod(0o777)
        reading, writing = os.pipe()
        child = os.fork()
        if child == 0:
            os.setuid(65534)
            stranger = socket.socket(socket.AF_UNIX)
            stranger.bind(str(orvanta.path))
            stranger.listen(1)
            os.write(writing, b"+")
            connection, _ = stranger.accept()
            os.write(writing, b"-" if connection.recv(1) == b"" else b"!")
            os._exit(0)
        try:
            os.close(writing)
            self.assertEqual(os.read(reading, 1), b"+")
            self.start()
            self.say()
            self.assertEqual(os.read(reading, 1), b"-")
            self.host.stdin.close()
            self.assert_ends(0, "another person")
        finally:
            os.kill(child, signal.SIGKILL)
            os.waitpid(child, 0)
            os.close(reading)

    # Its end

    def test_it_ends_with_its_browser_and_at_its_broken_frames(self):
        ends = [("input closed", lambda: self.host.stdin.close(), 0, ""),
                ("in the middle of a frame", lambda: (self.host.stdin.write(frame("abc")[:5]),
                                                      self.host.stdin.close()), 0, ""),
                ("output closed", lambda: self.host.stdout.close(), 0, ""),
                ("asked to", lambda: self.host.terminate(), -signal.SIGTERM, ""),
                *((header, lambda header=header: self.host.stdin.write(
                    struct.pack("=I", header) + b"rest"), 1, reason) for header, reason in BROKEN)]
        for name, end, code, reason in ends:
            with self.row(name):
                self.start()
                end()
                self.assert_ends(code, reason)
            with self.row(name, "connected"):
                _, connection = self.start_connected()
                self.say()
                self.read(connection, frame(BROWSER_SAYS))
                end()
                self.assert_ends(code, reason)
                self.assertEqual(connection.recv(65536), b"")

    def test_a_broken_frame_of_orvanta_ends_only_that_connection(self):
        orvanta, connection = self.start_connected()
        for header, _ in BROKEN:
            with self.subTest(header):
                connection.sendall(struct.pack("=I", header) + frame("lost"))
                self.assert_hung_up(connection)
                self.say()
                connection = self.accept(orvanta)
                self.read(connection, frame(BROWSER_SAYS))
                self.assert_passes(connection)

    # Those who do not read

    def test_orvanta_hanging_costs_no_memory_and_is_found_again(self):
        orvanta, connection = self.start_connected()
        self.assert_passes(connection)
        before = self.memory()
        flood = frame(BROWSER_SAYS) * 1000
        for _ in range(200):
            self.host.stdin.write(flood)
        self.assertLess(self.memory() - before, ROOM)
        # The first connection was given up. Of those that wait to be accepted the last may be good;
        # if not, the browser's next word makes another.
        self.assert_hung_up(connection)
        self.say('"after"')
        open_ones = []
        received = b""
        while not received.endswith(frame('"after"')):
            ready, _, _ = select.select([orvanta.socket, *open_ones], [], [], PATIENCE)
            self.assertTrue(ready, "nothing more")
            for one in ready:
                if one is orvanta.socket:
                    open_ones.append(self.accept(orvanta))
                elif received := one.recv(65536):
                    connection = one
                else:
                    open_ones.remove(one)
        self.assert_passes(connection)

    def fill(self, connection):
        """Until the host takes no more: the browser does not read. Returns how many were sent."""
        asked = 0
        connection.settimeout(0.3)
        with contextlib.suppress(TimeoutError):
            while True:
                connection.sendall(ask(1_000_000 + asked))
                asked += 1
        return asked

    def test_a_browser_hanging_holds_orvanta_back_and_loses_nothing(self):
        _, connection = self.start_connected()
        self.assert_passes(connection)
        before = self.memory()
        asked = self.fill(connection)
        self.assertLess(self.memory() - before, ROOM)
        # It sleeps over it, and still hears the browser's own words.
        before = self.switches()
        self.say()
        self.read(connection, frame(BROWSER_SAYS))
        self.assertLess(self.switches() - before, 10)
        for number in range(asked):
            self.read(self.host.stdout, ask(1_000_000 + number))

    # Costs and hygiene

    def test_it_sleeps_while_nothing_happens(self):
        def connected():
            self.assert_passes(self.start_connected()[1])

        def after_orvanta_went_while_the_browser_hangs():
            connection = self.start_connected()[1]
            self.fill(connection)
            connection.close()
            self.wait_for_no_connection()

        for begin in (self.start, connected, after_orvanta_went_while_the_browser_hangs):
            with self.row(begin.__name__):
                begin()
                self.wait_until(self.is_asleep, "sleep")
                before = self.switches()
                time.sleep(1)
                self.assertEqual(self.switches(), before)

    def test_a_stray_print_goes_to_standard_error_and_nothing_is_inherited(self):
        self.start_connected()
        links = self.descriptors()
        self.assertEqual(links.pop(0), "/dev/null")
        self.assertEqual(links.pop(1), links.pop(2))
        self.assertGreaterEqual(len(links), 4)
        for number in links:
            flags = pathlib.Path(f"/proc/{self.host.pid}/fdinfo/{number}").read_text()
            self.assertTrue(int(flags.split()[3], 8) & os.O_CLOEXEC, links[number])

    def test_without_a_runtime_folder_it_says_so_and_fails(self):
        for folder in ("", "relative", "/nonexistent"):
            with self.subTest(folder):
                self.runtime = folder
                result = subprocess.run(
                    [os.environ["ORVANTA_BROWSER_HOST"]], env={"XDG_RUNTIME_DIR": folder},
                    stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=PATIENCE)
                self.assertEqual((result.returncode, result.stdout), (1, ""))
                self.assertIn("XDG_RUNTIME_DIR", result.stderr)
