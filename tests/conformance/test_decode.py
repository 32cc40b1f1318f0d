"""Checks the decoder with packets assembled by hand: what is right decodes, what is wrong is found."""

import contextlib
import io
import json
import struct
import tempfile
import unittest
from pathlib import Path

import decode
import protocol as document

PROTOCOL = document.load()
KEY = 0x3C


def value(data, plain=False):
    """One scrambled value."""
    return bytes(b if plain or i % 4 else b ^ KEY for i, b in enumerate(data))


def i16(number):
    return value(struct.pack("<h", number))


def u32(number):
    return value(struct.pack("<I", number))


def f32(number):
    return value(struct.pack("<f", number))


def bits(number):
    return f"0x{struct.unpack('<I', struct.pack('<f', number))[0]:08x}"


def text(data):
    return value(struct.pack("<H", len(data))) + value(data)


def packet(number, *values):
    body = b"".join(values)
    return struct.pack("<HH", number, 4 + len(body)) + body


class DocumentTest(unittest.TestCase):
    def test_catalogue_is_complete(self):
        self.assertEqual(len(PROTOCOL.requests), 65 + 1)
        self.assertEqual(len(PROTOCOL.messages), 72 + 1)
        self.assertEqual(len(PROTOCOL.replies), 12)
        self.assertEqual(len(PROTOCOL.reply_numbers), 12)
        self.assertFalse(PROTOCOL.reply_numbers & set(PROTOCOL.messages))

    def test_examples_decode_to_what_they_say(self):
        expected = {
            "CS_EnterSession()": [],
            "CS_BearAgain(7)": [7],
            "CS_DeleteAvatar(serial 1, 2)": [1, 2],
            'CS_Change_AvatarNickName(1, serial 2, "abc")': [1, 2, b"abc".hex()],
            'CS_Chat("")': [""],
            'CS_Chat("hello")': [b"hello".hex()],
            "CS_Dealing(1, [], [], 0)": [1, 0, 0, 0],
            "CS_Breakwith_Party()": [],
            "CS_GM_Transparent(true)": [True],
            'CS_GM_Purge_Avatar("")': [""],
            "SC_NpcList(4)": [4],
            "SC_GSList([(1, 2), (3, 4)])": [2, 1, 2, 3, 4],
            "Clock(5000, 40)": [5000, 40],
        }
        self.assertEqual({name for name, _ in PROTOCOL.examples}, set(expected))
        for name, data in PROTOCOL.examples:
            catalogue = PROTOCOL.requests if name.startswith("CS_") else PROTOCOL.messages
            layout = catalogue[struct.unpack_from("<H", data)[0]]
            self.assertEqual(layout.name, name.partition("(")[0])
            [whole] = decode.packets(data, PROTOCOL)
            values = decode.Decoder(PROTOCOL, whole, name.startswith("CS_"), PROTOCOL.plain).decode(layout.fields)
            self.assertEqual([v.value for v in values], expected[name], name)

    def test_contradictions_in_the_document_are_found(self):
        good = document.DOCUMENT.read_text(encoding="utf-8")
        for old, new in (("| 1009 | `CS_BearAgain` | 6 |", "| 1009 | `CS_BearAgain` | 8 |"),
                         ("| 26 | `f32` | MonHP |", "| 28 | `f32` | MonHP |"),
                         ("`u32 avatarID`, `bool accept`", "`u32 avatarID`, `flag accept`"),
                         ("| 1003 | `CS_CreateAvatar` | 10 |", "| 1002 | `CS_CreateAvatar` | 10 |")):
            with self.subTest(new), tempfile.TemporaryDirectory() as folder:
                self.assertIn(old, good)
                path = Path(folder) / "protocol.md"
                path.write_text(good.replace(old, new), encoding="utf-8")
                with self.assertRaises(document.DocumentError):
                    document.load(path)


class SessionTest(unittest.TestCase):
    """A small session, right in every byte, and the faults that can be put into it."""

    def setUp(self):
        self.client = [packet(2015, u32(7), text("안녕".encode("cp949"))),
                       packet(1012, value(b"\1\0"), i16(-1), i16(2), i16(3), i16(4)),
                       packet(2012, u32(9), u32(5), i16(59), i16(999))]
        self.server = [struct.pack("<HHhhhhh", 508, 14, 2, 1, 2, 3, 4),
                       packet(10008, value(b"\1\0"), f32(1.5), f32(-0.0), u32(0)),
                       packet(14002, i16(1), i16(1), u32(2**32 - 1), i16(-1), i16(0), i16(5), f32(1), f32(2), f32(3),
                              f32(4), i16(6), text(b"abcde"), value(b"\1"), i16(2), u32(110000), u32(7)),
                       packet(12002, i16(3), text(b"x" * 250))]
        self.values = [
            {"dir": "c2s", "number": 2015, "fields": [7, "안녕".encode("cp949").hex()]},
            {"dir": "c2s", "number": 1012, "fields": [1, -1, 2, 3, 4]},
            {"dir": "reply", "number": 1012, "fields": [1, bits(1.5), "0x80000000", 0]},
            {"dir": "s2c", "number": 508, "fields": [2, 1, 2, 3, 4]},
            {"dir": "c2s", "number": 2012, "fields": [9, {"min": 2**32 - 3, "max": 5}, 59, {"min": 0, "max": 999}]},
            {"dir": "s2c", "number": 14002,
             "fields": [1, 1, 2**32 - 1, -1, 0, 5, bits(1), bits(2), bits(3), bits(4), 6, b"abcde".hex(), True, 2,
                        110000, 7]},
            {"dir": "s2c", "number": 12002, "fields": [3, (b"x" * 200).hex()]},
        ]

    def decode(self, *options, client=None, server=None):
        """Exit status and error text of the program over the session."""
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder)
            (path / "client.bin").write_bytes(b"".join(self.client) if client is None else client)
            (path / "server.bin").write_bytes(b"".join(self.server) if server is None else server)
            (path / "values.jsonl").write_text("".join(json.dumps(line) + "\n" for line in self.values))
            errors = io.StringIO()
            with contextlib.redirect_stdout(io.StringIO()), contextlib.redirect_stderr(errors):
                return decode.main([*options, folder]), errors.getvalue()

    def assert_refused(self, *expected, **streams):
        status, errors = self.decode(**streams)
        self.assertEqual(status, 1)
        for words in expected:
            self.assertIn(words, errors)

    def test_whole_session_agrees(self):
        self.assertEqual(self.decode(), (0, ""))

    def test_missing_kinds_are_named_on_demand(self):
        status, errors = self.decode("--require-all")
        self.assertEqual(status, 1)
        self.assertIn("1010 CS_ResponseNetTime", errors)
        self.assertIn("12003 SC_AvatarMove", errors)
        self.assertNotIn("14002", errors)

    def test_every_truncation_is_found(self):
        stream = b"".join(self.server)
        for length in range(len(stream)):
            with self.subTest(length):
                self.assert_refused(server=stream[:length])

    def test_every_changed_byte_is_found(self):
        """Except where it may differ: in a text beyond its capacity, and in values recorded as a range."""
        for name, packets, unseen in (("server", self.server, 50), ("client", self.client, 8)):
            stream = b"".join(packets)
            for at in range(len(stream) - unseen):
                changed = bytearray(stream)
                changed[at] ^= 0x40
                with self.subTest(name, at=at):
                    self.assert_refused(**{name: bytes(changed)})

    def test_bytes_left_over_are_found(self):
        self.server[3] = packet(12002, i16(3), text(b"x" * 250), b"\0")
        self.assert_refused("packet 3 (number 12002)", "1 bytes left over")

    def test_short_packet_is_found(self):
        self.client[2] = packet(2012, u32(9), u32(5), i16(59))
        self.assert_refused("client.bin packet 2 (number 2012): millisecond: 2 bytes wanted at offset 14, 0 left")

    def test_unknown_numbers_are_found(self):
        self.server.append(packet(12011))
        self.client.append(packet(2001))
        self.assert_refused("packet 4 (number 12011): no message", "packet 3 (number 2001): no request")

    def test_sizes_outside_the_limits_are_found(self):
        for size in (0, 3, 4097, 65535):
            with self.subTest(size):
                self.assert_refused(f"states a size of {size}", client=struct.pack("<HH", 1007, size) + bytes(70000))

    def test_replies_need_a_request(self):
        self.server[1] = packet(10008, value(b"\2\0"), u32(0))
        self.assert_refused("a reply to serial 2", "1 recorded replies are not in the streams")

    def test_disagreeing_value_is_named(self):
        self.values[2]["fields"][2] = "0x00000000"
        self.values[5]["fields"][12] = 1
        self.assert_refused("CS_Warp_SessionIn.position.z: recorded '0x00000000', decoded '0x80000000'",
                            "SC_AvatarList.avatars[0].TransparentFlag: recorded 1, decoded True")

    def test_count_below_zero_is_an_empty_list(self):
        self.server.append(packet(14002, i16(-1)))
        self.values.append({"dir": "s2c", "number": 14002, "fields": [0]})
        self.assertEqual(self.decode(), (0, ""))

    def test_values_outside_a_range_are_found(self):
        self.values[4]["fields"][1] = {"min": 6, "max": 2**32 - 1}
        self.assert_refused("CS_Avatar_AttackMonster.tickCount")

    def test_recording_and_streams_hold_the_same_packets(self):
        for remove in range(len(self.values)):
            whole = list(self.values)
            del self.values[remove]
            with self.subTest(remove):
                self.assert_refused("recorded")
            self.values = whole

    def test_client_keeps_to_a_texts_capacity(self):
        self.client[0] = packet(2015, u32(7), text(b"x" * 201))
        self.assert_refused("201 bytes in a text of at most 200")


class OwnPacketTest(unittest.TestCase):
    """Packets of a game's own: forms that no message carries."""

    def decode(self, number, form, *values):
        fields = [document.Field(form, "it")]
        return [v.value for v in decode.Decoder(PROTOCOL, packet(number, *values), True, PROTOCOL.written_plain)
                .decode(fields)]

    def test_variants(self):
        tag = lambda number: value(struct.pack("<H", number))
        self.assertEqual(self.decode(700, "variant", tag(3), u32(5)), [3, 5])
        self.assertEqual(self.decode(700, "variant", tag(8), text(b"abc")), [8, b"abc".hex()])
        self.assertEqual(self.decode(700, "variant", tag(11), value(b"\1")), [11, True])
        self.assertEqual(self.decode(700, "variant", tag(6)), [6])
        self.assertEqual(self.decode(700, "variant", tag(14), value(bytes(range(16)))), [14, bytes(range(16)).hex()])
        with self.assertRaises(decode.Malformed):
            self.decode(700, "variant", tag(1), u32(0))

    def test_collections(self):
        self.assertEqual(self.decode(700, "collection", u32(2), text(b"A"), value(b"\2\0"), i16(2), text(b"b"),
                                     value(b"\0\0")), [2, b"A".hex(), 2, 2, b"b".hex(), 0])

    def test_plain_numbers(self):
        for number in (486, 747):
            self.assertEqual(self.decode(number, "u32", struct.pack("<I", 7)), [7])
        self.assertEqual(self.decode(508, "u32", u32(7)), [7])


if __name__ == "__main__":
    unittest.main()
