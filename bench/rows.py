"""What is measured, with what it is compared, and what it has to reach."""

from dataclasses import dataclass
from typing import Optional


@dataclass(frozen=True)
class Row:
    """A figure of ours, as a ratio to a bare one if there is any. Rates are compared by their times."""

    work: str
    compared: str
    ours: str
    bare: Optional[str]
    at_least: float  # the value that has to hold
    stretch: float  # the value that is aimed at
    unit: str = "x"
    is_rate: bool = False  # more is better: bare time / our time


PARSER = "a bare parser of 64 KiB at a time"
TWO_RECV = "two `recv` per packet, no decoding"
STD = "`std::string`"

ROWS = [
    Row("CPU per 30-byte packet, on the receive thread, one core", PARSER,
        "receive.30.1.on_thread.cpu_ns", "receive.30.1.parser.cpu_ns", 3.5, 2.5),
    Row("the same, two cores", PARSER,
        "receive.30.2.on_thread.cpu_ns", "receive.30.2.parser.cpu_ns", 5, 3.5),
    Row("the same, drained every millisecond, one core", PARSER,
        "receive.30.1.queued.cpu_ns", "receive.30.1.parser.cpu_ns", 4.5, 3),
    Row("the same, two cores", PARSER,
        "receive.30.2.queued.cpu_ns", "receive.30.2.parser.cpu_ns", 6, 4),
    Row("rate on the receive thread, two cores", TWO_RECV,
        "receive.30.2.on_thread.ns", "receive.30.2.two_recv.ns", 10, 20, is_rate=True),
    Row("rate drained every millisecond, two cores", TWO_RECV,
        "receive.30.2.queued.ns", "receive.30.2.two_recv.ns", 10, 20, is_rate=True),
    Row("delay of a pushed message, idle, one core", "a thread in `recv`",
        "push.1.library.delay_ns", "push.1.bare.delay_ns", 1.15, 1.05),
    Row("CPU per such message", "a thread in `recv`",
        "push.1.library.cpu_ns", "push.1.bare.cpu_ns", 1.1, 1.0),
    Row("CPU per message, 1000 connections, one at a time", "1000 threads in `recv`",
        "push.1000.library.cpu_ns", "push.1000.bare.cpu_ns", 1.3, 1.1),
    Row("round trip of a waiting request, one core", "ping-pong and a condition variable",
        "request.RoundTrip", "request.RoundTripBare", 1.05, 0.95),
    Row("the same right after a movement report", "the same behind a bare send",
        "request.AfterReport", "request.AfterReportBare", 1.25, 1.1),
    Row("rate of sending 26-byte packets, one core", "a bare `send` per packet",
        "request.Send", "request.SendBare", 0.8, 0.95, is_rate=True),
    Row("building a request", "zeroing 4096 bytes, storing the fields",
        "packet.BuildRequest", "packet.BuildBare", 0.18, 0.14),
    Row("the same fields through chained `<<`", "the same",
        "packet.BuildChained", "packet.BuildBare", 1.35, 1.0),
    Row("dispatching a movement message", "its reads and call by hand",
        "packet.Dispatch", "packet.DispatchBare", 1.3, 1.0),
    Row("one of 1000 connections, resident", "-", "memory.thousand.kib", None, 24, 16, "KiB"),
    Row("the same after 200 packets", "-", "memory.after_200.kib", None, 64, 32, "KiB"),
    Row("a connection after two floods of 200000", "the same, just connected",
        "memory.after_floods.kib", "memory.before_floods.kib", 2, 1.1),
    Row("first connection of a process, its own memory", "-", "memory.first.own_kib", None, 200, 100, "KiB"),
    Row("wake-ups of 50 idle connections in 2 s", "-", "idle.wake_ups", None, 0, 0, ""),
    Row("copying a `CString`", "an atomic increment", "string.Copy", "string.BareIncrement", 2, 1.2),
    Row("copying and destroying one", "increment and decrement",
        "string.CopyAndDestroy", "string.BareIncrementAndDecrement", 2, 1.2),
    Row("`+=` of short texts", STD, "string.Append", "string.AppendStd", 2, 1),
    Row("`Find` of a character in 1 KiB", STD, "string.FindCharacter", "string.FindCharacterStd", 2, 1),
    Row("`Find` of a text in 1 KiB", STD, "string.FindText", "string.FindTextStd", 2, 1),
    Row("`Replace` in 1 KiB, same length", STD, "string.ReplaceSame", "string.ReplaceSameStd", 2, 1),
    Row("`Replace` in 1 KiB, longer", STD, "string.ReplaceLonger", "string.ReplaceLongerStd", 2, 1),
    Row("a property among 1000", "among 10", "property.FindAmong1000", "property.FindAmong10", 6, 3),
]

# Each case is a process of its own.
MAIN_RUNS = [
    ("ReceiveBench", "1"),
    ("ReceiveBench", "2"),
    ("DelayBench", "1"),
    ("DelayBench", "1000"),
    ("RequestBench",),
    ("PacketBench",),
    ("MemoryBench", "first"),
    ("MemoryBench", "thousand"),
    ("MemoryBench", "flood"),
    ("MemoryBench", "idle"),
    ("StringBench",),
    ("PropertyBench",),
]

# How the cost grows, for the plots; one run.
PACKET_BYTES = [4, 8, 16, 64, 256, 1024, 4096]
CONNECTIONS = [10, 100]
FLOODS = [1000, 10000, 100000, 1000000]
GROWTH_RUNS = (
    [("ReceiveBench", "1", str(size), str(max(20000, min(400000, 40000000 // size)))) for size in PACKET_BYTES]
    + [("DelayBench", str(count)) for count in CONNECTIONS]
    + [("MemoryBench", "backlog", *map(str, FLOODS))]
)
