"""The local HTTPS server that stands for the web hosts of the meeting clients.

It answers every path of a host with that host's page of `pages/`, which shows the screen that its
address asks for, and the scripts that the pages share. It listens on loopback only, and its
certificate is its own: made on the spot, for one desktop, and trusted by nobody else.
"""

import http.server
import os
import ssl
import subprocess
import threading

MEET_HOST = "meet.google.com"
ZOOM_HOST = "app.zoom.us"
TEAMS_HOST = "teams.microsoft.com"
# A site that holds no meetings.
OTHER_HOST = "elsewhere.example"
_PAGE_OF_HOST = {
    MEET_HOST: "call.html",
    ZOOM_HOST: "zoom.html",
    "zoom.us": "zoom.html",
    "us02web.zoom.us": "zoom.html",
    "app.zoom.com": "zoom.html",
    TEAMS_HOST: "teams.html",
    "teams.live.com": "teams.html",
    "teams.cloud.microsoft": "teams.html",
    OTHER_HOST: "elsewhere.html",
}
HOSTS = tuple(_PAGE_OF_HOST)
# The server's own address is that of no meeting, whatever its page shows.
_PAGE_OF_HOST["127.0.0.1"] = "call.html"
_SCRIPTS = ("client.js", "sound.js")
_DIRECTORY = os.path.join(os.path.dirname(os.path.abspath(__file__)), "pages")


class MeetingPages:
    """A running server for the length of a `with` block; `port` is where it listens."""

    def __init__(self, directory):
        """`directory` is private to the caller and receives the certificate and its key."""
        certificate, key = _makeCertificate(directory)
        self._server = _Server(("127.0.0.1", 0))
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(certificate, key)
        self._server.socket = context.wrap_socket(
            self._server.socket, server_side=True, do_handshake_on_connect=False)
        self.port = self._server.server_address[1]
        self._thread = threading.Thread(target=self._server.serve_forever, daemon=True)

    def __enter__(self):
        self._thread.start()
        return self

    def __exit__(self, *_):
        self._server.shutdown()
        self._server.server_close()
        self._thread.join()


class _Server(http.server.ThreadingHTTPServer):
    daemon_threads = True
    block_on_close = False

    def __init__(self, address):
        super().__init__(address, _Handler)
        self.files = {name: _contents(name) for name in (*_PAGE_OF_HOST.values(), *_SCRIPTS)}

    def handle_error(self, request, client_address):
        pass  # a browser that closes a connection early is nobody's failure


class _Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):  # pylint: disable=invalid-name
        name = self.path.removeprefix("/")
        if name not in _SCRIPTS:
            name = _PAGE_OF_HOST.get(self.headers.get("Host", "").partition(":")[0])
        if name is None or self.path == "/favicon.ico":
            self.send_response(204)
            self.end_headers()
            return
        kind = "text/javascript" if name in _SCRIPTS else "text/html"
        self.send_response(200)
        self.send_header("Content-Type", f"{kind}; charset=utf-8")
        self.send_header("Content-Length", str(len(self.server.files[name])))
        self.end_headers()
        self.wfile.write(self.server.files[name])

    def log_message(self, *_):
        pass


def _contents(name):
    with open(os.path.join(_DIRECTORY, name), "rb") as file:
        return file.read()


def _makeCertificate(directory):
    """Makes a self-signed certificate for the hosts; gives the paths (certificate, key)."""
    certificate = os.path.join(directory, "certificate.pem")
    key = os.path.join(directory, "key.pem")
    names = ",".join(f"DNS:{host}" for host in HOSTS)
    subprocess.run(
        ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
         "-nodes", "-days", "2", "-subj", f"/CN={MEET_HOST}",
         "-addext", f"subjectAltName={names}", "-keyout", key, "-out", certificate],
        stdin=subprocess.DEVNULL, capture_output=True, check=True, timeout=60)
    return certificate, key
