#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""A small authoritative DNS server for Dorvane's mail tests (dnslib on loopback).

Serves the records of a zone file (standard master-file text, e.g.
"example.test. 60 IN MX 10 mx1.example.test.") over UDP and TCP on one port of 127.0.0.1.
A name that has records but none of the asked type answers NOERROR without records (NODATA);
a name without any record answers NXDOMAIN. Every question is appended to the record file as
one XML element per line: <query name="example.test." type="MX"/>.

Once listening it prints "READY <port>" on stdout. It stops on SIGTERM or SIGINT, and when
the process that started it goes away.

Usage: dns_server.py --zone FILE --record FILE [--port 0]
"""

import argparse
import os
import random
import signal
import sys
import threading
import xml.etree.ElementTree as ET

from dnslib import QTYPE, RCODE, RR
from dnslib.server import BaseResolver, DNSLogger, DNSServer


class ZoneResolver(BaseResolver):
    def __init__(self, zone_text, record_path):
        self.records = RR.fromZone(zone_text)
        self.fd = os.open(record_path, os.O_WRONLY | os.O_CREAT | os.O_APPEND, 0o644) \
            if record_path else None
        self.lock = threading.Lock()

    def resolve(self, request, handler):
        reply = request.reply()
        qname = request.q.qname
        qtype = request.q.qtype
        if self.fd is not None:
            line = ET.tostring(ET.Element("query", name=str(qname),
                                          type=QTYPE.get(qtype, str(qtype))),
                               encoding="unicode") + "\n"
            with self.lock:
                os.write(self.fd, line.encode())
        named = [rr for rr in self.records if rr.rname == qname]
        if not named:
            reply.header.rcode = RCODE.NXDOMAIN
            return reply
        for rr in named:
            if rr.rtype == qtype or qtype == QTYPE.ANY:
                reply.add_answer(rr)
        return reply


class QuietLogger(DNSLogger):
    def __init__(self):
        super().__init__(log="-recv,-send,-request,-reply,-truncated,-error,-data")


def start_servers(resolver, port):
    # UDP and TCP must share one port; a free port for one may be taken for the other.
    attempts = [port] if port else [random.randint(20000, 60000) for _ in range(50)]
    for candidate in attempts:
        try:
            udp = DNSServer(resolver, address="127.0.0.1", port=candidate, logger=QuietLogger())
        except OSError:
            continue
        try:
            tcp = DNSServer(resolver, address="127.0.0.1", port=candidate, tcp=True,
                            logger=QuietLogger())
        except OSError:
            udp.server.server_close()
            continue
        return candidate, udp, tcp
    sys.exit("no free port for the DNS server")


def main():
    parser = argparse.ArgumentParser(description="Zone-serving DNS server for tests")
    parser.add_argument("--zone", required=True)
    parser.add_argument("--record", default=None)
    parser.add_argument("--port", type=int, default=0)
    args = parser.parse_args()
    with open(args.zone) as f:
        resolver = ZoneResolver(f.read(), args.record)
    port, udp, tcp = start_servers(resolver, args.port)
    udp.start_thread()
    tcp.start_thread()
    print("READY %d" % port, flush=True)

    stop = threading.Event()
    signal.signal(signal.SIGTERM, lambda *_: stop.set())
    signal.signal(signal.SIGINT, lambda *_: stop.set())
    parent = os.getppid()
    while not stop.is_set() and os.getppid() == parent:
        stop.wait(0.2)
    # Every question is already on disk; the serving threads need no orderly shutdown.
    os._exit(0)


if __name__ == "__main__":
    main()
