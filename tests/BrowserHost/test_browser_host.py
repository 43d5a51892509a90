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

import listener
from listener import frame

PATIENCE = 20.0
BROWSER_SAYS = '{"v":1,"origin":"https://example.org","focused":true}'

# What a few buffers and the allocator's own may take, in kilobytes; a flood is twenty times that.
ROOM = 600


class BrowserHost(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="orvanta-host-")
        self.addCleanup(folder.cleanup)
        self.runtime = pathlib.Path(folder.name)
        self.host = None

    def start(self, expect_connection_at=None):
        self.host = subprocess.Popen(
            [os.environ["ORVANTA_BROWSER_HOST"], "chrome-extension://id/"],
            env=dict(os.environ, XDG_RUNTIME_DIR=str(self.runtime)), stdin=subprocess.PIPE,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, bufsize=0)
        self.addCleanup(self._end_host, self.host)
        if expect_connection_at:
            return self.accept(expect_connection_at)
        # Asleep in poll(2): all that it does by itself is done.
        self.wait_until(lambda: self._status("State").startswith("S") and
                        "inotify" in " ".join(self.descriptors().values()), "a sleeping host")
        return None

    def _end_host(self, host):
        host.kill()
        host.wait()
        for stream in (host.stdin, host.stdout, host.stderr):
            stream.close()

    def listen(self):
        orvanta = listener.Listener(self.runtime)
        self.addCleanup(orvanta.close)
        return orvanta

    def accept(self, orvanta):
        connection = orvanta.accept(PATIENCE)
        self.addCleanup(connection.close)
        return connection

    def wait_until(self, condition, what):
        deadline = time.monotonic() + PATIENCE
        while not condition():
            self.assertLess(time.monotonic(), deadline, f"{what}: not in time")
            time.sleep(0.005)

    def _status(self, field):
        for line in pathlib.Path(f"/proc/{self.host.pid}/status").read_text().splitlines():
            name, _, value = line.partition(":")
            if name == field:
                return value.strip()
        raise KeyError(field)

    def memory(self):
        return int(self._status("VmRSS").split()[0])

    def switches(self):
        return (int(self._status("voluntary_ctxt_switches"))
                + int(self._status("nonvoluntary_ctxt_switches")))

    def descriptors(self):
        found = {}
        for entry in pathlib.Path(f"/proc/{self.host.pid}/fd").iterdir():
            with contextlib.suppress(FileNotFoundError):  # closed since the folder was read
                found[int(entry.name)] = os.readlink(entry)
        return found

    def say(self, text=BROWSER_SAYS):
        self.host.stdin.write(frame(text))

    def read_exactly(self, descriptor, size):
        got = b""
        while len(got) < size:
            ready, _, _ = select.select([descriptor], [], [], PATIENCE)
            self.assertTrue(ready, f"only {got!r}")
            more = os.read(descriptor.fileno(), size - len(got))
            self.assertTrue(more, f"ended after {got!r}")
            got += more
        return got

    def assert_passes(self, connection):
        """What either says comes out at the other, and nothing before it."""
        self.say()
        self.assertEqual(self.read_exactly(connection, len(frame(BROWSER_SAYS))),
                         frame(BROWSER_SAYS))
        connection.sendall(listener.ask(7))
        self.assertEqual(self.read_exactly(self.host.stdout, len(listener.ask(7))),
                         listener.ask(7))

    def assert_ends(self, code, complaint=""):
        self.assertEqual(self.host.wait(PATIENCE), code)
        self.assertIn(complaint, self.host.stderr.read().decode())

    def assert_hung_up(self, connection):
        with contextlib.suppress(ConnectionResetError):
            while connection.recv(65536):
                pass

    # Both ways

    def test_frames_pass_unchanged_however_they_are_cut(self):
        connection = self.start(self.listen())
        texts = [BROWSER_SAYS, "{}", "x" * 4096, "é", "\0"]
        sent = b"".join(frame(text) for text in texts)
        for step in (1, 3, 4100, len(sent)):
            for write, reading in ((self.host.stdin.write, connection),
                                   (connection.sendall, self.host.stdout)):
                for at in range(0, len(sent), step):
                    write(sent[at:at + step])
                self.assertEqual(self.read_exactly(reading, len(sent)), sent)

    # Coming and going of Orvanta

    def test_it_waits_for_orvanta_wherever_the_folder_stands(self):
        def nothing():
            return None

        def folder_without_socket():
            (self.runtime / listener.FOLDER).mkdir()

        def socket_of_one_that_was_killed():
            listener.Listener(self.runtime).close(leave_name=True)

        for beginning in (nothing, folder_without_socket, socket_of_one_that_was_killed):
            with self.subTest(beginning.__name__):
                beginning()
                self.start()
                orvanta = self.listen()
                self.assert_passes(self.accept(orvanta))
                self._end_host(self.host)
                orvanta.close()
                orvanta.folder.rmdir()

    def test_a_folder_that_is_removed_or_moved_away_is_found_again(self):
        orvanta = self.listen()
        connection = self.start(orvanta)
        for number, away in enumerate((lambda: orvanta.folder.rmdir(),
                                       lambda: orvanta.folder.rename(self.runtime / "moved"))):
            with self.subTest(number):
                before = self.switches()
                connection.close()
                orvanta.close()
                away()
                self.wait_until(lambda: self.switches() > before, "notice of it")
                orvanta = self.listen()
                connection = self.accept(orvanta)
                self.assert_passes(connection)

    def test_what_is_said_while_orvanta_is_away_is_dropped(self):
        for leave_name in (False, True):
            with self.subTest(leave_name=leave_name):
                orvanta = self.listen()
                connection = self.start(orvanta)
                connection.close()
                orvanta.close(leave_name)
                self.say('"early"')
                # The pipe is empty once it was taken.
                self.wait_until(lambda: fcntl.ioctl(self.host.stdin, 0x541B, b"\0" * 4)
                                == b"\0" * 4, "the frame being taken")  # FIONREAD
                orvanta = self.listen()
                self.assert_passes(self.accept(orvanta))
                self._end_host(self.host)
                orvanta.close()

    def test_a_successor_that_listens_before_the_old_connection_ends_is_found(self):
        orvanta = self.listen()
        connection = self.start(orvanta)
        self.assert_passes(connection)
        orvanta.path.chmod(0o600)
        successor = self.listen()
        # What happens in the folder is no reason to leave a connection that is good.
        self.assert_passes(connection)
        connection.close()
        self.assert_passes(self.accept(successor))

    def test_a_connection_that_orvanta_ends_is_not_tried_again_until_the_browser_speaks(self):
        orvanta = self.listen()
        connection = self.start(orvanta)
        for _ in range(3):
            self.assert_passes(connection)
            connection.close()
            self.wait_until(lambda: "socket" not in "".join(self.descriptors().values()),
                            "the end of the connection")
            self.assertEqual(select.select([orvanta], [], [], 0.1)[0], [])
            self.say()
            connection = self.accept(orvanta)
            self.read_exactly(connection, len(frame(BROWSER_SAYS)))

    def test_a_socket_of_another_person_gets_nothing(self):
        self.assertEqual(os.geteuid(), 0, "only root can play another person")
        orvanta = self.listen()
        orvanta.close()
        self.runtime.chmod(0o711)
        orvanta.folder.chmod(0o777)
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

    def test_it_ends_with_its_browser(self):
        for name, end, code in (
                ("input closed", lambda: self.host.stdin.close(), 0),
                ("in the middle of a frame", lambda: (self.host.stdin.write(frame("abc")[:5]),
                                                      self.host.stdin.close()), 0),
                ("output closed", lambda: self.host.stdout.close(), 0),
                ("asked to", lambda: self.host.terminate(), -signal.SIGTERM)):
            for is_connected in (False, True):
                with self.subTest(name, is_connected=is_connected):
                    orvanta = self.listen() if is_connected else None
                    self.start(orvanta)
                    end()
                    self.assert_ends(code)
                    if orvanta:
                        orvanta.close()

    def test_a_broken_frame_of_the_browser_ends_it_with_a_reason(self):
        for header, reason in ((0, "empty"), (4097, "longer"), (0xFFFFFFFF, "longer")):
            with self.subTest(header):
                orvanta = self.listen()
                connection = self.start(orvanta)
                self.host.stdin.write(frame(BROWSER_SAYS) + struct.pack("=I", header) + b"rest")
                self.assert_ends(1, reason)
                received = connection.recv(65536)
                self.assertEqual(received, frame(BROWSER_SAYS))
                orvanta.close()

    def test_a_broken_frame_of_orvanta_ends_only_that_connection(self):
        orvanta = self.listen()
        connection = self.start(orvanta)
        for header in (0, 4097, 0xFFFFFFFF):
            with self.subTest(header):
                connection.sendall(struct.pack("=I", header) + frame("lost"))
                self.assert_hung_up(connection)
                self.say()
                connection = self.accept(orvanta)
                self.read_exactly(connection, len(frame(BROWSER_SAYS)))
                self.assert_passes(connection)

    # Those who do not read

    def test_orvanta_hanging_costs_no_memory_and_is_found_again(self):
        orvanta = self.listen()
        connection = self.start(orvanta)
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
            ready, _, _ = select.select([orvanta, *open_ones], [], [], PATIENCE)
            self.assertTrue(ready, "nothing more")
            for one in ready:
                if one is orvanta:
                    open_ones.append(self.accept(orvanta))
                elif received := one.recv(65536):
                    connection = one
                else:
                    open_ones.remove(one)
        self.assert_passes(connection)

    def test_a_browser_hanging_holds_orvanta_back_and_loses_nothing(self):
        connection = self.start(self.listen())
        self.assert_passes(connection)
        before = self.memory()
        asked = 0
        connection.settimeout(0.3)
        with contextlib.suppress(TimeoutError):
            while True:
                connection.sendall(listener.ask(1_000_000 + asked))
                asked += 1
        self.assertLess(self.memory() - before, ROOM)
        # It sleeps over it, and still hears the browser's own words.
        before = self.switches()
        self.say()
        self.read_exactly(connection, len(frame(BROWSER_SAYS)))
        self.assertLess(self.switches() - before, 10)
        for number in range(asked):
            expected = listener.ask(1_000_000 + number)
            self.assertEqual(self.read_exactly(self.host.stdout, len(expected)), expected)

    def test_orvanta_going_while_the_browser_hangs_is_no_reason_to_spin(self):
        connection = self.start(self.listen())
        connection.settimeout(0.3)
        with contextlib.suppress(TimeoutError):
            while True:
                connection.sendall(listener.ask(1))
        connection.close()
        self.wait_until(lambda: "socket" not in "".join(self.descriptors().values()),
                        "the end of the connection")
        before = self.switches()
        time.sleep(0.3)
        self.assertLessEqual(self.switches() - before, 1)

    # Costs and hygiene

    def test_it_sleeps_while_nothing_happens(self):
        for is_connected in (False, True):
            with self.subTest(is_connected=is_connected):
                connection = self.start(self.listen() if is_connected else None)
                if connection:
                    self.assert_passes(connection)
                self.wait_until(lambda: self._status("State").startswith("S"), "sleep")
                before = self.switches()
                time.sleep(1.5)
                self.assertEqual(self.switches(), before)
                self._end_host(self.host)

    def test_a_stray_print_goes_to_standard_error_and_nothing_is_inherited(self):
        self.start(self.listen())
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


if __name__ == "__main__":
    unittest.main(verbosity=2)
