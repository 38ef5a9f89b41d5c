#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Reads a message file the way a standard mail reader does (Python's email package,
policy default) and checks what the recipient would see.

  - the body (get_body(('html', 'plain'))) is the text/html document;
  - every "cid:" reference in it names a part of the message;
  - the HTML part's bytes are all ASCII, as its header (text/html, no charset) says;
  - each --text appears in the document's visible text (tags dropped, references decoded);
  - each --absent appears nowhere in the HTML;
  - each --image file is the content of a part that the HTML refers to by "cid:";
  - --subject is the subject, letter for letter.

Prints one line per problem and exits 1, or prints "ok" and exits 0.

Usage: mail_reader.py FILE [--text T]... [--absent T]... [--image FILE]... [--subject S]
"""

import argparse
import email
import email.policy
import html
import html.parser
import re
import sys


class VisibleText(html.parser.HTMLParser):
    def __init__(self):
        super().__init__(convert_charrefs=True)
        self.pieces = []

    def handle_data(self, data):
        self.pieces.append(data)

    def text(self):
        return " ".join(" ".join(self.pieces).split())


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("file")
    parser.add_argument("--text", action="append", default=[])
    parser.add_argument("--absent", action="append", default=[])
    parser.add_argument("--image", action="append", default=[])
    parser.add_argument("--subject")
    args = parser.parse_args()

    with open(args.file, "rb") as f:
        msg = email.message_from_binary_file(f, policy=email.policy.default)
    problems = []

    body = msg.get_body(("html", "plain"))
    if body is None or body.get_content_type() != "text/html":
        found = body.get_content_type() if body is not None else "nothing"
        problems.append("the body is " + found + ", not the HTML document")
        body = next((p for p in msg.walk() if p.get_content_type() == "text/html"), None)
    if body is None:
        problems.append("no text/html part")
        raw = b""
    else:
        raw = body.get_payload(decode=True) or b""
    wide = sorted({b for b in raw if b > 0x7F})
    if wide:
        problems.append("the HTML part has bytes above 0x7F: " + " ".join("%02X" % b for b in wide))
    document = raw.decode("ascii", errors="replace")

    parts = {}
    for part in msg.walk():
        cid = part.get("Content-ID")
        if cid:
            parts[cid.strip().strip("<>")] = part
    resolved = []
    for cid in re.findall(r"cid:([^\"'\s>)]+)", document):
        if cid not in parts:
            problems.append("cid:" + cid + " names no part")
        else:
            resolved.append(parts[cid].get_payload(decode=True) or b"")

    reader = VisibleText()
    reader.feed(document)
    visible = reader.text()
    for text in args.text:
        if text not in visible:
            problems.append("not in the document: " + repr(text) + "; it reads " + repr(visible))
    for text in args.absent:
        if text in document or html.escape(text) in document:
            problems.append("in the HTML: " + repr(text))
    for image in args.image:
        with open(image, "rb") as f:
            content = f.read()
        if content not in resolved:
            problems.append("no part referred to by cid: holds " + image)
    if args.subject is not None and str(msg["Subject"]) != args.subject:
        problems.append("the subject reads " + repr(str(msg["Subject"])))

    for problem in problems:
        print(problem)
    if not problems:
        print("ok")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
