"""The sites that a real browser visits."""

import collections
import contextlib
import http.server
import queue
import threading

import desktop

# A browser starts slowly on a busy machine; a condition that holds is seen within milliseconds.
PATIENCE = 2 * desktop.DEADLINE

_PAGE = """<!doctype html><title>{host}</title><h1>{host}</h1>
<script>
fetch("/order").then((answer) => answer.text()).then((order) => {{ eval(order); }});
</script>"""


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
            self.send_header("Cache-Control", "no-store")
            self.end_headers()
            self.wfile.write(text.encode())

    def log_message(self, *_):
        pass


class Sites:
    """A web server on this machine that answers for every host. Its pages do what they are told,
    which is surer than a keyboard while a browser is still starting."""

    def __init__(self):
        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), _Page)
        self._server.orders = collections.defaultdict(queue.SimpleQueue)
        self.port = self._server.server_port
        threading.Thread(target=self._server.serve_forever, daemon=True).start()

    def go(self, host, address):
        self._server.orders[host].put(f"location = {address!r}")

    def close(self):
        self._server.shutdown()
        self._server.server_close()
