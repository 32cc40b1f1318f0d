#!/usr/bin/env python3
"""Cuts captured server streams into seeds: make_seeds.py CAPTURES DISPATCH_SEEDS STRUCTURED_SEEDS."""

import struct
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "tests" / "conformance"))

import decode  # noqa: E402
import protocol as document  # noqa: E402

WHOLE = bytes([255, 255, 255, 255])  # how DispatchFuzz cuts the stream: hardly


def main(captures, dispatch, structured):
    protocol = document.load()
    streams = sorted(Path(captures).glob("*/server.bin"))
    for folder in (dispatch, structured):
        Path(folder).mkdir(parents=True, exist_ok=True)
    for stream in streams:
        packets = list(decode.packets(stream.read_bytes(), protocol))
        for i, packet in enumerate(packets):
            name = f"{stream.parent.name}-{struct.unpack_from('<H', packet)[0]:05}-{i:04}"
            (Path(dispatch) / name).write_bytes(WHOLE + packet)
            (Path(structured) / name).write_bytes(packet)


if __name__ == "__main__":
    main(*sys.argv[1:])
