#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""A recording SMTP server for Dorvane's mail tests and benchmarks.

Runs aiosmtpd on a loopback address and appends one XML element per line to the record
file for everything a test may want to check:

  <connect session="N" peer="127.0.0.1:PORT"/>
  <ehlo session="N" name="..."/>
  <starttls session="N"/>
  <auth session="N" mechanism="PLAIN" user="..." success="True"/>
  <rcpt session="N" address="..." accepted="False"/>
  <message session="N" mail_from="..." status="250 ..." size="BYTES" data="FILE">
    <rcpt_to>...</rcpt_to>... <mime .../></message>
  <dropped session="N" mail_from="..." size="BYTES"><rcpt_to>...</rcpt_to>...</dropped>
  <quit session="N"/>

"session" counts TCP connections from 1. A message's bytes are kept in a file of their own
beside the record ("data" names it). "mime" is the message as Python's email package reads it
back: top-level headers in order, the boundary, and each part's headers in order with its
decoded body kept in a file of its own ("body").

Once listening it prints "READY <port>" on stdout. It stops on SIGTERM or SIGINT, and when
the process that started it goes away.

Usage: smtp_server.py --record FILE [--port 0] [--refuse-rcpt ADDR]... [--refuse-data N]
       [--drop-data N] [--auth-user U --auth-password P] [--auth-required]
       [--auth-mechanism LOGIN|PLAIN]...
       [--tls-cert FILE --tls-key FILE] [--quiet]
"""

import argparse
import asyncio
import email
import email.header
import email.policy
import itertools
import os
import signal
import ssl
import sys
import warnings
import xml.etree.ElementTree as ET

from aiosmtpd.smtp import SMTP, AuthResult


class Recorder:
    def __init__(self, path):
        self.fd = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_APPEND, 0o644) if path else None
        self.folder = os.path.dirname(os.path.abspath(path)) if path else None
        self.files = itertools.count(1)

    def write(self, kind, children=(), **attributes):
        if self.fd is not None:
            event = element(kind, **attributes)
            event.extend(children)
            # One write per line, so a reader never sees half an event followed by another.
            line = ET.tostring(event, encoding="unicode") + "\n"
            os.write(self.fd, line.encode(errors="backslashreplace"))

    def keep(self, data):
        """Writes bytes to a file of their own beside the record; answers its name."""
        name = "%d.bin" % next(self.files)
        with open(os.path.join(self.folder, name), "wb") as f:
            f.write(data)
        return name


def element(tag, text=None, **attributes):
    e = ET.Element(tag, {k: str(v) for k, v in attributes.items() if v is not None})
    e.text = text
    return e


def recipients(addresses):
    return [element("rcpt_to", a) for a in addresses]


def mime_summary(data, keep):
    msg = email.message_from_bytes(data, policy=email.policy.compat32)

    def with_headers(e, part):
        e.extend(element("header", name=name, value=value) for name, value in part.items())
        return e

    subject = msg.get("Subject")
    if subject is not None:
        subject = str(email.header.make_header(email.header.decode_header(subject)))
    summary = with_headers(element("mime", content_type=msg.get_content_type(),
                                   boundary=msg.get_boundary(), subject=subject), msg)
    summary.extend(element("defect", type(d).__name__) for d in msg.defects)
    if msg.is_multipart():
        for p in msg.get_payload():
            summary.append(with_headers(element(
                "part", content_type=p.get_content_type(), filename=p.get_filename(),
                body=keep(p.get_payload(decode=True) or b"")), p))
    return summary


class Handler:
    def __init__(self, args, recorder):
        self.args = args
        self.rec = recorder
        self.refuse_rcpt = {a.lower() for a in args.refuse_rcpt}
        self.refuse_data_left = args.refuse_data

    async def handle_EHLO(self, server, session, envelope, hostname, responses):
        self.rec.write("ehlo", session=server.conn_id, name=hostname)
        session.host_name = hostname
        return responses

    async def handle_RCPT(self, server, session, envelope, address, rcpt_options):
        if address.lower() in self.refuse_rcpt:
            self.rec.write("rcpt", session=server.conn_id, address=address, accepted=False)
            return "550 5.1.1 <%s>: Recipient address rejected" % address
        self.rec.write("rcpt", session=server.conn_id, address=address, accepted=True)
        envelope.rcpt_tos.append(address)
        envelope.rcpt_options.extend(rcpt_options)
        return "250 OK"

    async def handle_DATA(self, server, session, envelope):
        if self.args.data_delay > 0:
            # As a real server takes its time to scan and queue a message.
            await asyncio.sleep(self.args.data_delay / 1000)
        if self.refuse_data_left > 0:
            self.refuse_data_left -= 1
            status = "554 5.6.0 Message content refused"
        else:
            status = "250 2.0.0 OK: queued"
        data = envelope.original_content or b""
        content = {}
        children = recipients(envelope.rcpt_tos)
        if not self.args.quiet:
            content["data"] = self.rec.keep(data)
            children.append(mime_summary(data, self.rec.keep))
        self.rec.write("message", children, session=server.conn_id, mail_from=envelope.mail_from,
                       status=status, size=len(data), **content)
        return status

    async def handle_QUIT(self, server, session, envelope):
        self.rec.write("quit", session=server.conn_id)
        return "221 Bye"


class RecordingSMTP(SMTP):
    def __init__(self, handler, conn_id, **kwargs):
        super().__init__(handler, **kwargs)
        self.conn_id = conn_id
        self.recording_handler = handler

    def connection_made(self, transport):
        first = self.transport is None
        super().connection_made(transport)
        if first:
            peer = transport.get_extra_info("peername")
            self.recording_handler.rec.write("connect", session=self.conn_id,
                                             peer="%s:%s" % (peer[0], peer[1]))

    async def smtp_STARTTLS(self, arg):
        self.recording_handler.rec.write("starttls", session=self.conn_id)
        return await super().smtp_STARTTLS(arg)

    async def smtp_DATA(self, arg):
        handler = self.recording_handler
        if handler.args.drop_data <= 0 or not self.envelope.rcpt_tos or arg:
            return await super().smtp_DATA(arg)
        handler.args.drop_data -= 1
        # Takes the first part of the message, then closes the connection without a reply.
        await self.push("354 End data with <CR><LF>.<CR><LF>")
        received = b""
        while len(received) < 256:
            line = await self._reader.readuntil(b"\r\n")
            if line == b".\r\n":
                break
            received += line
        handler.rec.write("dropped", recipients(self.envelope.rcpt_tos), session=self.conn_id,
                          mail_from=self.envelope.mail_from, size=len(received))
        self.transport.abort()


def make_authenticator(args, recorder):
    def authenticate(server, session, envelope, mechanism, auth_data):
        user = auth_data.login.decode(errors="replace")
        ok = (args.auth_user is not None and auth_data.login == args.auth_user.encode()
              and auth_data.password == (args.auth_password or "").encode())
        recorder.write("auth", session=server.conn_id, mechanism=mechanism, user=user,
                       success=ok)
        return AuthResult(success=ok, handled=False)
    return authenticate


async def serve(args):
    loop = asyncio.get_running_loop()
    recorder = Recorder(args.record)
    handler = Handler(args, recorder)
    tls_context = None
    if args.tls_cert:
        tls_context = ssl.create_default_context(ssl.Purpose.CLIENT_AUTH)
        tls_context.load_cert_chain(args.tls_cert, args.tls_key)
    ids = itertools.count(1)
    offered = {m.upper() for m in args.auth_mechanism}
    excluded = [m for m in ("LOGIN", "PLAIN") if offered and m not in offered]

    def factory():
        return RecordingSMTP(handler, next(ids), hostname="smtp.dorvane-test.localhost",
                             ident="Dorvane test SMTP", tls_context=tls_context,
                             auth_required=args.auth_required, auth_require_tls=False,
                             auth_exclude_mechanism=excluded,
                             authenticator=make_authenticator(args, recorder), loop=loop)

    server = await loop.create_server(factory, host=args.host, port=args.port)
    print("READY %d" % server.sockets[0].getsockname()[1], flush=True)

    stop = asyncio.Event()
    loop.add_signal_handler(signal.SIGTERM, stop.set)
    loop.add_signal_handler(signal.SIGINT, stop.set)
    parent = os.getppid()

    async def watch_parent():
        while os.getppid() == parent:
            await asyncio.sleep(0.5)
        stop.set()

    watcher = loop.create_task(watch_parent())
    await stop.wait()
    watcher.cancel()
    server.close()


def main():
    parser = argparse.ArgumentParser(description="Recording SMTP server for tests")
    parser.add_argument("--host", default="127.0.0.1")
    parser.add_argument("--port", type=int, default=0)
    parser.add_argument("--record", default=None, help="record file, one XML element per line")
    parser.add_argument("--refuse-rcpt", action="append", default=[],
                        help="answer RCPT TO for this address with 550")
    parser.add_argument("--refuse-data", type=int, default=0,
                        help="refuse the first N messages after their data (554)")
    parser.add_argument("--drop-data", type=int, default=0,
                        help="close the connection in the middle of the first N messages")
    parser.add_argument("--auth-user")
    parser.add_argument("--auth-password")
    parser.add_argument("--auth-required", action="store_true")
    parser.add_argument("--auth-mechanism", action="append", default=[],
                        help="offer only these mechanisms (LOGIN, PLAIN)")
    parser.add_argument("--tls-cert")
    parser.add_argument("--tls-key")
    parser.add_argument("--data-delay", type=int, default=0,
                        help="milliseconds to wait before answering a message's data")
    parser.add_argument("--quiet", action="store_true",
                        help="record messages without their content (for benchmarks)")
    args = parser.parse_args()
    if args.host not in ("127.0.0.1", "::1", "localhost"):
        sys.exit("smtp_server.py listens on loopback addresses only")
    # Requiring AUTH without TLS is what these loopback tests want; aiosmtpd warns about it.
    warnings.simplefilter("ignore")
    asyncio.run(serve(args))


if __name__ == "__main__":
    main()
