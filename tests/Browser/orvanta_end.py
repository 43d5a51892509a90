"""Orvanta's end of the connections of real browsers, and the sites that they visit."""

import collections
import contextlib
import http.server
import json
import pathlib
import queue
import select
import socket
import struct
import threading
import time

import desktop
import listener

# A browser starts slowly on a busy machine; a condition that holds is seen within milliseconds.
PATIENCE = 40.0


class Connection:
    """One profile of a browser: what it said, and what of that came by itself."""

    def __init__(self, accepted):
        self.socket = accepted
        self.host_pid = struct.unpack("3i", accepted.getsockopt(
            socket.SOL_SOCKET, socket.SO_PEERCRED, 12))[0]
        self.browser_pid = int(pathlib.Path(f"/proc/{self.host_pid}/stat").read_text()
                               .rpartition(")")[2].split()[1])
        self.is_open = True
        self.messages = []
        self.answers = {}
        self.asked = 0
        self._frames = listener.Frames()

    @property
    def state(self):
        """(origin, focused) as last told; None before anything was."""
        return self.messages and (self.messages[-1]["origin"], self.messages[-1]["focused"])

    def read(self):
        with contextlib.suppress(ConnectionResetError):
            if more := self.socket.recv(65536):
                for text in self._frames.add(more):
                    message = json.loads(text)
                    self.messages.append(message)
                    if "answer" in message:
                        self.answers[message["answer"]] = message
                return
        self.is_open = False
        self.socket.close()

    def ask(self):
        self.asked += 1
        self.socket.sendall(listener.ask(self.asked))
        return self.asked


class OrvantaEnd:
    """Asks each connection when it comes, as Orvanta does, and listens from then on."""

    def __init__(self, runtime):
        self._runtime = runtime
        self._listener = None
        self.connections = []
        self.listen()

    def listen(self):
        self._listener = listener.Listener(self._runtime)

    def close(self, leave_name=False):
        for connection in self.open_connections():
            connection.is_open = False
            connection.socket.close()
        if self._listener:
            self._listener.close(leave_name)
            self._listener = None

    def open_connections(self):
        return [connection for connection in self.connections if connection.is_open]

    def pump(self, seconds):
        """Takes in what has come, or comes in this time."""
        sources = [self._listener, *(one.socket for one in self.open_connections())]
        ready, _, _ = select.select(sources, [], [], seconds)
        if self._listener in ready:
            connection = Connection(self._listener.accept(seconds))
            connection.ask()
            self.connections.append(connection)
        for connection in self.open_connections():
            if connection.socket in ready:
                connection.read()

    def wait_until(self, condition, what, seconds=PATIENCE, remind=None):
        """`remind` repeats what may have been lost, such as a key pressed too early."""
        deadline = time.monotonic() + seconds
        reminded = time.monotonic()
        while not (value := condition()):
            left = deadline - time.monotonic()
            if left <= 0:
                said = [(one.is_open, one.messages[-5:]) for one in self.connections]
                raise desktop.DesktopError(f"{what}: not within {seconds:g} s; {said}")
            # Not all that is waited for is a message.
            self.pump(min(left, 0.05))
            if remind and time.monotonic() > reminded + 3:
                remind()
                reminded = time.monotonic()
        return value

    def wait_for_connection(self, known):
        """The first open connection that is not among these, once it has said something."""
        return self.wait_until(
            lambda: next((one for one in self.open_connections()
                          if one not in known and one.messages), None), "a connection")

    def wait_for_state(self, connection, origin, focused, remind=None):
        self.wait_until(lambda: connection.state == (origin, focused), f"{origin}, {focused}",
                        remind=remind)

    def answer(self, connection):
        """Asks and returns the answer's (origin, focused)."""
        number = connection.ask()
        self.wait_until(lambda: number in connection.answers, "an answer")
        return connection.answers[number]["origin"], connection.answers[number]["focused"]


_PAGE = """<!doctype html><title>{host}</title><h1>{host}</h1>
<script>
fetch("/order").then((answer) => answer.text()).then((order) => {{ eval(order); }});
</script>"""

# Changes the page's address and title many times and only then goes elsewhere.
_WANDER = """let n = 0;
const wander = setInterval(() => {{
  history.pushState(null, "", "/step" + n);
  document.title = "t" + n;
  if (++n === 20) {{ clearInterval(wander); location = {address!r}; }}
}}, 20);"""


class _Page(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        host = self.headers["Host"].partition(":")[0]
        if self.path == "/order":
            # Answered when there is one; an order for a page that is gone by then is lost.
            self._answer(self.server.orders[host].get())
        else:
            self._answer(_PAGE.format(host=host))

    def _answer(self, text):
        with contextlib.suppress(ConnectionError):
            self.send_response(200)
            self.send_header("Content-Type", "text/html")
            self.send_header("Content-Length", str(len(text)))
            self.send_header("Cache-Control", "no-store")
            self.end_headers()
            self.wfile.write(text.encode())

    def log_message(self, *_):
        pass


class Sites:
    """A web server on this machine that answers for every host. Its pages do what they are told, which
    is surer than a keyboard while a browser is still starting."""

    def __init__(self):
        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), _Page)
        self._server.orders = collections.defaultdict(queue.SimpleQueue)
        self.port = self._server.server_port
        threading.Thread(target=self._server.serve_forever, daemon=True).start()

    def go(self, host, address):
        self._server.orders[host].put(f"location = {address!r}")

    def wander(self, host, address):
        self._server.orders[host].put(_WANDER.format(address=address))

    def close(self):
        self._server.shutdown()
        self._server.server_close()
