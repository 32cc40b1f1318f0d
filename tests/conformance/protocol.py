"""The protocol's tables, read out of docs/protocol.md.

The document is the only source: constants, records, requests, replies and messages are its tables, found by
their header rows; tables with other header rows are for people alone. Sizes and offsets that the document states
have to be those that its fields add up to.
"""

import re
from dataclasses import dataclass, field
from pathlib import Path

DOCUMENT = Path(__file__).resolve().parents[2] / "docs" / "protocol.md"

HEADER_SIZE = 4

# Width in bytes of every form that is one value, and so one run of the scrambling pattern.
SCALARS = {"i8": 1, "u8": 1, "bool": 1, "i16": 2, "u16": 2, "i32": 4, "u32": 4, "f32": 4, "f64": 8,
           "date": 8, "systemtime": 16, "decimal": 16}
COMPOUNDS = {"vector": (("f32", "x"), ("f32", "z")),
             "movement": (("f32", "x"), ("f32", "z"), ("f32", "heading"), ("f32", "speed"))}


class DocumentError(Exception):
    """The document contradicts itself or uses a notation it does not explain."""


@dataclass(frozen=True)
class Field:
    form: str
    name: str


@dataclass(frozen=True)
class Layout:
    number: int
    name: str
    fields: tuple

    @property
    def waits(self):
        return any(f.name == "serial" for f in self.fields)


@dataclass
class Protocol:
    key: int = 0
    smallest: int = 0
    largest: int = 0
    highest_serial: int = 0
    plain: frozenset = frozenset()
    written_plain: frozenset = frozenset()
    requests: dict = field(default_factory=dict)
    replies: dict = field(default_factory=dict)
    messages: dict = field(default_factory=dict)
    reply_numbers: frozenset = frozenset()
    records: dict = field(default_factory=dict)
    variants: dict = field(default_factory=dict)
    examples: list = field(default_factory=list)

    def smallest_form(self, form):
        """Bytes of a form whose texts and lists are empty, and whether it can grow beyond them."""
        if form in SCALARS:
            return SCALARS[form], False
        if form in COMPOUNDS:
            return sum(SCALARS[f] for f, _ in COMPOUNDS[form]), False
        if form in self.records:
            return self.smallest_of(self.records[form])
        if form == "text" or parameter(form, "text") is not None:
            return 2, True
        element = parameter(form, "list")
        if element is None:
            raise DocumentError(f"unknown form {form!r}")
        return 2, self.smallest_form(element) != (0, False)

    def smallest_of(self, fields):
        sizes = [self.smallest_form(f.form) for f in fields]
        return sum(size for size, _ in sizes), any(grows for _, grows in sizes)


def parameter(form, name):
    """What stands between the brackets of form if it is name(...), else None."""
    inside = re.fullmatch(re.escape(name) + r"\((.+)\)", form)
    return inside.group(1) if inside else None


def tables(text):
    """Yields (heading, header row, other rows) of every table of a Markdown document."""
    heading, rows = "", []
    for line in text.splitlines() + [""]:
        if line.startswith("|"):
            rows.append([cell.strip() for cell in line.strip().strip("|").split("|")])
            continue
        if rows:
            yield heading, rows[0], rows[2:]
            rows = []
        if line.startswith("#"):
            heading = line.lstrip("#").strip().strip("`")


def code_spans(cell):
    return re.findall(r"`([^`]+)`", cell)


def first_number(cell):
    return int(re.match(r"\d+", cell).group())


def payload(cell):
    spans = code_spans(cell)
    if not spans and cell != "none":
        raise DocumentError(f"payload {cell!r} names no field and is not 'none'")
    return tuple(Field(*span.rsplit(" ", 1)) for span in spans)


def load(path=DOCUMENT):
    """Reads the whole document and checks it against itself."""
    protocol = Protocol()
    sizes = []
    for heading, header, rows in tables(Path(path).read_text(encoding="utf-8")):
        take_table(protocol, heading, header, rows, sizes)
    check(protocol, sizes)
    return protocol


def take_table(protocol, heading, header, rows, sizes):
    catalogue = {("Request", "Payload"): protocol.requests, ("Request", "Reply"): protocol.replies,
                 ("Message", "Payload"): protocol.messages}
    if header[0] == "Number":
        target = catalogue[header[1], header[3]]
        for number, name, size, fields in rows:
            layout = Layout(int(number), code_spans(name)[0], payload(fields))
            if layout.number in target:
                raise DocumentError(f"{layout.number} stands in the tables twice")
            target[layout.number] = layout
            sizes.append((layout, size))
    elif header == ["Offset", "Form", "Field", "Meaning"]:
        protocol.records[heading] = tuple(Field(code_spans(row[1])[0], row[2]) for row in rows)
        sizes.append((heading, [first_number(row[0]) for row in rows]))
    elif header[0] in ("Constant", "Limit"):
        take_constants(protocol, dict(rows))
    elif header == ["Reply numbers"]:
        protocol.reply_numbers = frozenset(int(n) for n in re.findall(r"\d+", rows[0][0]))
    elif header[0] == "Tag":
        protocol.variants = {int(tag): (code_spans(form) or [None])[0] for tag, _, form in rows}
    elif header == ["Packet", "Bytes"]:
        protocol.examples += [(code_spans(name)[0], bytes.fromhex(data)) for name, data in rows]


def take_constants(protocol, rows):
    if "Scrambling key" in rows:
        protocol.key = int(rows["Scrambling key"], 16)
        protocol.plain = frozenset(int(n) for n in rows["Messages that travel plain"].split(","))
        protocol.written_plain = frozenset(int(n) for n in rows["Packet numbers written plain"].split(","))
    else:
        protocol.largest = first_number(rows["Largest packet, header included"])
        protocol.smallest = first_number(rows["Smallest packet (header alone)"])
        protocol.highest_serial = int(re.match(r"1 to (\d+)", rows["Serials of waiting requests"]).group(1))


def check(protocol, sizes):
    """The sizes and offsets that the tables state are those that their forms add up to."""
    for what, stated in sizes:
        if isinstance(what, Layout):
            size, grows = protocol.smallest_of(what.fields)
            computed = f"{HEADER_SIZE + size}{'+' if grows else ''}"
        else:
            fields = protocol.records[what]
            computed = [protocol.smallest_of(fields[:i])[0] for i in range(len(fields))]
        if stated != computed:
            name = what.name if isinstance(what, Layout) else what
            raise DocumentError(f"{name}: the document says {stated}, its fields make {computed}")
    waiting = {number for number, layout in protocol.requests.items() if layout.waits}
    if waiting != set(protocol.replies):
        raise DocumentError(f"requests with a serial and replies disagree: {waiting ^ set(protocol.replies)}")
    for form in set(protocol.variants.values()) - {None}:
        protocol.smallest_form(form)
    if not (protocol.key and protocol.plain and protocol.variants and protocol.reply_numbers and protocol.largest):
        raise DocumentError("a constant is missing")
