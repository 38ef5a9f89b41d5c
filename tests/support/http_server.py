#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""A recording HTTP server for Dorvane's web update tests.

Serves HTTP/1.1 with keep-alive on a loopback port and appends one line per request to the
record file:

  <request connection="PORT" method="POST" path="/items" status="200"
           content_type="..." authorization="...">BODY</request>

"connection" is the client's port, so requests over one reused connection share it. BODY is
the request body as text, escaped for XML.

--fail N answers 500 to the Nth request (counted from 1, repeatable); --stall N answers the Nth
request only after --stall-seconds (default 5); --redirect N answers the Nth request with a
302 to /moved, a page that answers any GET with 200 and stores nothing. Once listening it prints "READY <port>" on
stdout; it stops on SIGTERM.

Usage: http_server.py --record FILE [--fail N]... [--stall N]... [--stall-seconds S]
                      [--redirect N]...
"""

import argparse
import http.server
import os
import signal
import sys
import threading
import time
from xml.sax.saxutils import escape, quoteattr


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--record", required=True)
    parser.add_argument("--fail", type=int, action="append", default=[])
    parser.add_argument("--stall", type=int, action="append", default=[])
    parser.add_argument("--stall-seconds", type=float, default=5.0)
    parser.add_argument("--redirect", type=int, action="append", default=[])
    options = parser.parse_args()
    lock = threading.Lock()
    counter = [0]

    class Handler(http.server.BaseHTTPRequestHandler):
        protocol_version = "HTTP/1.1"

        def log_message(self, *args):
            pass

        def do_GET(self):
            self.answer(200, "")

        def do_POST(self):
            length = int(self.headers.get("Content-Length") or 0)
            body = self.rfile.read(length).decode("utf-8", "replace")
            with lock:
                counter[0] += 1
                number = counter[0]
            if number in options.stall:
                time.sleep(options.stall_seconds)
            status = (500 if number in options.fail else 302 if number in options.redirect
                      else 200)
            self.answer(status, body)

        def answer(self, status, body):
            answer = b'{"ok":true}' if status == 200 else b'{"ok":false}'
            with lock, open(options.record, "a", encoding="utf-8") as record:
                record.write(
                    "<request connection=%s method=%s path=%s status=\"%d\" content_type=%s "
                    "authorization=%s>%s</request>\n"
                    % (quoteattr(str(self.client_address[1])), quoteattr(self.command),
                       quoteattr(self.path), status,
                       quoteattr(self.headers.get("Content-Type") or ""),
                       quoteattr(self.headers.get("Authorization") or ""), escape(body)))
            self.send_response(status)
            if status == 302:
                self.send_header("Location", "/moved")
            self.send_header("Content-Type", "application/json")
            self.send_header("Content-Length", str(len(answer)))
            self.end_headers()
            self.wfile.write(answer)

    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
    server.daemon_threads = True
    signal.signal(signal.SIGTERM, lambda *a: os._exit(0))
    parent = os.getppid()

    def watch_parent():
        while os.getppid() == parent:
            time.sleep(0.5)
        os._exit(0)

    threading.Thread(target=watch_parent, daemon=True).start()
    open(options.record, "w").close()
    print("READY %d" % server.server_address[1], flush=True)
    server.serve_forever()


if __name__ == "__main__":
    sys.exit(main())
