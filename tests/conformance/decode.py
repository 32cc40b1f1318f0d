#!/usr/bin/env python3
"""Decodes recorded sessions of the library to their last byte and compares them with what the library saw.

    decode.py [--require-all] [--print] SESSION...

A session is a directory with client.bin, server.bin and values.jsonl (README.md describes them). The decoder
knows the protocol from docs/protocol.md and shares nothing with the library. It exits with 1 when anything
disagrees, naming stream, packet and field.
"""

import argparse
import json
import struct
import sys
from collections import Counter, defaultdict, deque
from dataclasses import dataclass
from pathlib import Path

import protocol as document
from protocol import COMPOUNDS, HEADER_SIZE, SCALARS, parameter

SHOWN = 10  # disagreements printed before the rest is only counted

UNPACK = {"i8": "<b", "u8": "<B", "i16": "<h", "u16": "<H", "i32": "<i", "u32": "<I"}


class Malformed(Exception):
    """A stream or packet that the protocol does not allow."""


@dataclass(frozen=True)
class Value:
    path: str
    form: str
    value: object


def packets(stream, protocol):
    """Cuts a byte stream into packets."""
    at = 0
    while at < len(stream):
        if len(stream) - at < HEADER_SIZE:
            raise Malformed(f"stream ends inside a header at byte {at}")
        size = struct.unpack_from("<H", stream, at + 2)[0]
        if not protocol.smallest <= size <= protocol.largest:
            raise Malformed(f"header at byte {at} states a size of {size}")
        if len(stream) - at < size:
            raise Malformed(f"stream ends inside the packet at byte {at}: {size} bytes stated, "
                            f"{len(stream) - at} there")
        yield stream[at:at + size]
        at += size


class Decoder:
    """Reads one packet's fields into a flat list of values, in wire order."""

    def __init__(self, protocol, packet, from_client, plain):
        self.protocol = protocol
        self.packet = packet
        self.from_client = from_client
        self.number = struct.unpack_from("<H", packet, 0)[0]
        self.scrambled = self.number not in plain
        self.at = HEADER_SIZE
        self.values = []

    def decode(self, fields):
        for field in fields:
            self.read(field.form, field.name)
        if self.at != len(self.packet):
            raise Malformed(f"{len(self.packet) - self.at} bytes left over after the last field")
        return self.values

    def take(self, size, path):
        """The next size bytes as one value: the scrambling starts at its first byte."""
        if self.at + size > len(self.packet):
            raise Malformed(f"{path}: {size} bytes wanted at offset {self.at}, {len(self.packet) - self.at} left")
        data = bytearray(self.packet[self.at:self.at + size])
        self.at += size
        if self.scrambled:
            for i in range(0, size, 4):
                data[i] ^= self.protocol.key
        return bytes(data)

    def read(self, form, path):
        if form in SCALARS:
            self.values.append(Value(path, form, scalar(form, self.take(SCALARS[form], path), path)))
        elif form in COMPOUNDS:
            for part, name in COMPOUNDS[form]:
                self.read(part, f"{path}.{name}")
        elif form in self.protocol.records:
            for field in self.protocol.records[form]:
                self.read(field.form, f"{path}.{field.name}")
        elif parameter(form, "list"):
            self.read_list(parameter(form, "list"), path)
        elif form == "variant":
            self.read_variant(path)
        elif form == "collection":
            self.read_collection(path)
        else:
            self.read_text(parameter(form, "text"), path)

    def read_list(self, element, path):
        count = max(0, struct.unpack("<h", self.take(2, path))[0])
        self.values.append(Value(f"{path}.count", "i16", count))
        for i in range(count):
            self.read(element, f"{path}[{i}]")

    def read_text(self, capacity, path):
        length = struct.unpack("<H", self.take(2, path))[0]
        text = self.take(length, path)
        if self.from_client and b"\0" in text:
            raise Malformed(f"{path}: a text from the client holds a NUL")
        if capacity and length > int(capacity):
            if self.from_client:
                raise Malformed(f"{path}: {length} bytes in a text of at most {capacity}")
            text = text[:int(capacity)]
        self.values.append(Value(path, "text", text.hex()))


    def read_variant(self, path):
        self.read("u16", f"{path}.tag")
        form = self.protocol.variants.get(self.values[-1].value)
        if form:
            self.read(form, path)

    def read_collection(self, path):
        self.read("i32", f"{path}.count")
        for i in range(self.values[-1].value):
            self.read("text", f"{path}[{i}].name")
            self.read_variant(f"{path}[{i}].value")


def scalar(form, data, path):
    """A scalar as the recording states it: integers as such, floating point as its bits."""
    if form in UNPACK:
        return struct.unpack(UNPACK[form], data)[0]
    if form == "bool":
        if data[0] > 1:
            raise Malformed(f"{path}: {data[0]} is no bool")
        return bool(data[0])
    if form == "systemtime":
        return list(struct.unpack("<8H", data))
    if form == "decimal":
        return data.hex()
    return "0x" + data[::-1].hex()


def agrees(recorded, decoded):
    """Whether a recorded value states the decoded one; a range {"min", "max"} may wrap at 32 bits."""
    if isinstance(recorded, dict):
        low, high = recorded["min"], recorded["max"]
        return (decoded - low) % 2**32 <= (high - low) % 2**32
    return type(recorded) is type(decoded) and recorded == decoded


class Recording:
    """The values that the library's side wrote down: one queue per direction, replies by serial."""

    def __init__(self, path):
        self.sent, self.pushed, self.replies, self.own = deque(), deque(), defaultdict(deque), deque()
        for index, line in enumerate(Path(path).read_text(encoding="utf-8").splitlines()):
            entry = json.loads(line)
            keys = {"dir", "number", "fields"} | ({"forms"} if entry.get("dir") == "own" else set())
            if set(entry) != keys:
                raise Malformed(f"values.jsonl line {index + 1}: keys {sorted(entry)}")
            if entry["dir"] == "reply":
                self.replies[entry["fields"][0]].append(entry)
            else:
                {"c2s": self.sent, "s2c": self.pushed, "own": self.own}[entry["dir"]].append(entry)

    def left(self):
        replies = sum(len(queue) for queue in self.replies.values())
        return len(self.sent), len(self.pushed), replies, len(self.own)


class Session:
    """Decodes one recorded session; disagreements gather in problems."""

    def __init__(self, protocol, directory, show=None):
        self.protocol = protocol
        self.directory = Path(directory)
        self.show = show
        self.problems = []
        self.requests, self.messages, self.replies = Counter(), Counter(), Counter()
        self.waiting = defaultdict(deque)

    def run(self):
        recording = Recording(self.directory / "values.jsonl")
        self.stream("client.bin", lambda packet: self.request(packet, recording))
        self.stream("server.bin", lambda packet: self.message(packet, recording))
        if (self.directory / "own.bin").exists():
            self.stream("own.bin", lambda packet: self.own(packet, recording))
        for what, left in zip(("requests", "messages", "replies", "own packets"), recording.left()):
            if left:
                self.problems.append(f"values.jsonl: {left} recorded {what} are not in the streams")
        return self

    def stream(self, name, decode):
        index = -1
        try:
            for index, packet in enumerate(packets((self.directory / name).read_bytes(), self.protocol)):
                number = struct.unpack_from("<H", packet, 0)[0]
                where = f"{self.directory.name}/{name} packet {index} (number {number})"
                try:
                    for problem in decode(packet):
                        self.problems.append(f"{where}: {problem}")
                except Malformed as problem:
                    self.problems.append(f"{where}: {problem}")
        except Malformed as problem:
            self.problems.append(f"{self.directory.name}/{name} after packet {index}: {problem}")

    def request(self, packet, recording):
        decoder = Decoder(self.protocol, packet, True, self.protocol.plain)
        layout = self.protocol.requests.get(decoder.number)
        entry = recording.sent.popleft() if recording.sent else None
        if layout is None:
            raise Malformed("no request has this number")
        values = decoder.decode(layout.fields)
        self.requests[layout.number] += 1
        if layout.waits:
            serial = next(v.value for v in values if v.path == "serial")
            if not 1 <= serial <= self.protocol.highest_serial:
                raise Malformed(f"serial {serial}")
            self.waiting[serial].append(layout.number)
        return self.compare(layout, values, entry)

    def message(self, packet, recording):
        decoder = Decoder(self.protocol, packet, False, self.protocol.plain)
        if decoder.number in self.protocol.reply_numbers:
            return self.reply(decoder, recording)
        layout = self.protocol.messages.get(decoder.number)
        entry = recording.pushed.popleft() if recording.pushed else None
        if layout is None:
            raise Malformed("no message has this number")
        self.messages[layout.number] += 1
        return self.compare(layout, decoder.decode(layout.fields), entry)

    def reply(self, decoder, recording):
        serial = struct.unpack("<H", decoder.take(2, "serial"))[0]
        if not self.waiting[serial]:
            raise Malformed(f"a reply to serial {serial}, which no request carries")
        layout = self.protocol.replies[self.waiting[serial].popleft()]
        decoder.at = HEADER_SIZE
        entry = recording.replies[serial].popleft() if recording.replies[serial] else None
        self.replies[layout.number] += 1
        return self.compare(layout, decoder.decode(layout.fields), entry)

    def own(self, packet, recording):
        """A packet that the library wrote for the game; its recording also says which forms it holds."""
        decoder = Decoder(self.protocol, packet, True, self.protocol.written_plain)
        if not recording.own:
            raise Malformed("nothing was recorded for it")
        entry = recording.own.popleft()
        fields = tuple(document.Field(form, f"{form} {i}") for i, form in enumerate(entry["forms"].split(",")))
        return self.compare(document.Layout(decoder.number, "own packet", fields), decoder.decode(fields), entry)

    def compare(self, layout, values, entry):
        if self.show:
            self.show(layout, values)
        if entry is None:
            return [f"{layout.name}: nothing was recorded for it"]
        if entry["number"] != layout.number:
            return [f"{layout.name}: recorded as number {entry['number']}"]
        if len(entry["fields"]) != len(values):
            return [f"{layout.name}: {len(entry['fields'])} values recorded, {len(values)} decoded"]
        return [f"{layout.name}.{v.path}: recorded {recorded!r}, decoded {v.value!r}"
                for recorded, v in zip(entry["fields"], values) if not agrees(recorded, v.value)]


def show_packet(layout, values):
    print(f"{layout.number:5} {layout.name} " + " ".join(f"{v.path}={v.value}" for v in values))


def report(protocol, sessions, require_all):
    """Prints problems and coverage; true when all is well."""
    problems = [problem for session in sessions for problem in session.problems]
    for kind, catalogue in (("requests", protocol.requests), ("replies", protocol.replies),
                            ("messages", protocol.messages)):
        seen = sum((getattr(session, kind) for session in sessions), Counter())
        print(f"{kind}: {sum(seen.values())} packets, {len(seen)} of {len(catalogue)} kinds")
        print("  " + " ".join(f"{number}:{seen[number]}" for number in sorted(seen)))
        missing = [f"{number} {catalogue[number].name}" for number in sorted(set(catalogue) - set(seen))]
        if missing and require_all:
            problems.append(f"{kind} that no session holds: " + ", ".join(missing))
    for problem in problems[:SHOWN]:
        print(f"error: {problem}", file=sys.stderr)
    if len(problems) > SHOWN:
        print(f"error: and {len(problems) - SHOWN} more", file=sys.stderr)
    return not problems


def main(arguments=None):
    options = argparse.ArgumentParser(description="Checks recorded sessions against docs/protocol.md.")
    options.add_argument("session", nargs="+", help="directory with client.bin, server.bin and values.jsonl")
    options.add_argument("--require-all", action="store_true",
                         help="fail unless every request, reply and message occurs, the clock both ways")
    options.add_argument("--print", action="store_true", dest="show", help="print every decoded packet")
    options = options.parse_args(arguments)
    protocol = document.load()
    sessions = []
    for directory in options.session:
        session = Session(protocol, directory, show_packet if options.show else None)
        try:
            session.run()
        except (Malformed, OSError, ValueError, KeyError) as problem:
            session.problems.append(f"{directory}: {problem!r}")
        sessions.append(session)
    return 0 if report(protocol, sessions, options.require_all) else 1


if __name__ == "__main__":
    sys.exit(main())
