#!/usr/bin/env python3
"""Serves update feeds on a free port of 127.0.0.1 and prints the port; ends with its standard input.

usage: feed_server.py LOG [CERTIFICATE KEY]

LOG gets a line for each request: its path. With a certificate it speaks https.
"""
import http.server
import os
import ssl
import sys
import threading
import time
import urllib.parse

NAMESPACE = "http://www.andymatuschak.org/xml-namespaces/sparkle"
FEED = (
    '<?xml version="1.0" encoding="utf-8"?>\n<rss version="2.0" xmlns:sparkle="' + NAMESPACE + '">'
    "<channel><title>Changes</title>%s</channel></rss>\n"
)
ITEM = ('<item><enclosure url="https://host.example/Annivo.zip" sparkle:version="%s"/>'
        '<!-- more --></item>')


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *_):
        pass

    def do_GET(self):
        with open(sys.argv[1], "a", encoding="utf-8") as log:
            log.write(self.path + "\n")
        url = urllib.parse.urlsplit(self.path)
        name, _, argument = url.path.lstrip("/").partition("/")
        try:
            getattr(self, "serve_" + name)(argument, urllib.parse.parse_qs(url.query))
        except (BrokenPipeError, ConnectionResetError, ssl.SSLError):
            self.close_connection = True

    def answer(self, body, status=200, headers=()):
        self.send_response(status)
        self.send_header("Content-Length", str(len(body)))
        for key, value in headers:
            self.send_header(key, value)
        self.end_headers()
        self.wfile.write(body)

    def start_chunks(self):
        self.send_response(200)
        self.send_header("Transfer-Encoding", "chunked")
        self.end_headers()

    def chunk(self, data):
        self.wfile.write(b"%x\r\n%s\r\n" % (len(data), data))

    def serve_version(self, version, query):
        """A feed of one item; the query gives it more elements, by their names."""
        more = "".join(f"<sparkle:{name}>{values[0]}</sparkle:{name}>"
                       for name, values in query.items())
        self.answer((FEED % (ITEM % version)).replace("<!-- more -->", more).encode())

    def serve_none(self, *_):
        self.answer((FEED % "").encode())

    def serve_broken(self, *_):
        self.answer(b"<rss><channel><item>")

    def serve_empty(self, *_):
        self.answer(b"")

    def serve_size(self, size, _):
        self.answer(b"x" * int(size))

    def serve_chunks(self, size, _):
        self.start_chunks()
        for _ in range(int(size) // 65536):
            self.chunk(b"x" * 65536)
        self.chunk(b"")

    def serve_endless(self, *_):
        self.start_chunks()
        while True:
            self.chunk(b" " * 65536)

    def serve_headers(self, *_):
        self.send_response(200)
        while True:
            self.wfile.write(b"X-More: " + b"x" * 8000 + b"\r\n")

    def serve_drops(self, *_):
        self.start_chunks()
        while True:
            self.chunk(b" ")
            time.sleep(0.02)

    def serve_short(self, *_):
        self.send_response(200)
        self.send_header("Content-Length", "1000")
        self.end_headers()
        self.wfile.write(b"<rss>")
        self.close_connection = True

    def serve_silent(self, *_):
        time.sleep(3600)

    def serve_status(self, status, _):
        self.answer((FEED % (ITEM % "99")).encode(), int(status))

    def serve_loop(self, *_):
        self.answer(b"", 302, [("Location", "/loop")])

    def serve_hops(self, count, _):
        if int(count) == 0:
            return self.serve_version("99", {})
        return self.answer(b"away", 301, [("Location", "/hops/%d" % (int(count) - 1))])

    def serve_redirect(self, _, query):
        self.answer(b"", 302, [("Location", query["to"][0])])


server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
if len(sys.argv) > 2:
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(sys.argv[2], sys.argv[3])
    server.socket = context.wrap_socket(server.socket, server_side=True,
                                        do_handshake_on_connect=False)
server.handle_error = lambda *_: None
threading.Thread(target=server.serve_forever, daemon=True).start()
print(server.server_address[1], flush=True)
sys.stdin.read()
os._exit(0)
