#!/usr/bin/env python3
"""A Linux game and a Windows game, each built against an installed library, meet on one server.

They play twice, with the names exchanged the second time. Both must see each other, hear each other's Korean
greeting and see each other walk; and whatever one name sends must be the same bytes from either platform.

usage: two_platforms.py SERVER LINUX_GAME WINDOWS_COMMAND...
"""
import socket
import struct
import subprocess
import sys
import threading

GREETING = "안녕하세요"
NAMES = ("Linus", "윈도우")
CLOCK_ANSWER = 1010  # carries the time, so it is left out of the comparison


class Recorder(threading.Thread):
    """Stands between one client and the server and keeps what the client sends."""

    def __init__(self, server_port):
        super().__init__(daemon=True)
        self.sent = bytearray()
        self.server_port = server_port
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.port = self.listener.getsockname()[1]
        self.start()

    def run(self):
        client, _ = self.listener.accept()
        server = socket.create_connection(("127.0.0.1", self.server_port))
        back = threading.Thread(target=self.carry, args=(server, client, None), daemon=True)
        back.start()
        self.carry(client, server, self.sent)
        back.join()

    @staticmethod
    def carry(source, target, keep):
        try:
            while data := source.recv(65536):
                if keep is not None:
                    keep += data
                target.sendall(data)
            target.shutdown(socket.SHUT_WR)
        except OSError:
            target.close()


def packets(stream):
    """The packets of a stream, which has to end with a whole one."""
    at = 0
    while at < len(stream):
        number, size = struct.unpack_from("<HH", stream, at)
        assert 4 <= size <= len(stream) - at, f"a packet of {size} bytes at {at} of {len(stream)}"
        if number != CLOCK_ANSWER:
            yield bytes(stream[at:at + size])
        at += size


def play(server_program, games):
    """One meeting: (command, name) twice; gives what each name sent and printed."""
    server = subprocess.Popen([server_program, "--listen", "127.0.0.1:0"], stdout=subprocess.PIPE)
    try:
        port = int(server.stdout.readline().decode().strip().rpartition(":")[2])
        playing = []
        for (command, name), (_, companion) in zip(games, reversed(games)):
            recorder = Recorder(port)
            arguments = ["127.0.0.1", str(recorder.port), name.encode("cp949"), companion.encode("cp949")]
            if command[0].endswith("wine"):  # Wine takes its command line as UTF-8 and gives the program cp949
                arguments[2:] = [name, companion]
            game = subprocess.Popen([*command, *arguments], stdout=subprocess.PIPE)
            playing.append((name, game, recorder))
        results = {}
        for name, game, recorder in playing:
            printed = game.communicate(timeout=60)[0].decode("utf-8").replace("\r\n", "\n")
            recorder.join(timeout=10)
            results[name] = (game.returncode, printed, list(packets(recorder.sent)))
        return results
    finally:
        server.kill()
        server.wait()


def check(results):
    for name, companion in (NAMES, NAMES[::-1]):
        code, printed, sent = results[name]
        print(f"--- {name}: {len(sent)} packets, {sum(map(len, sent))} bytes\n{printed}")
        assert code == 0, f"{name} ended with {code}"
        assert f"meets {companion}\n" in printed, f"{name} did not meet {companion}"
        assert f"hears {companion}: {GREETING}\n" in printed, f"{name} did not hear {companion}"
        assert printed.count("sees a step to") > 1, f"{name} did not see {companion} walk"


def main():
    server, linux, windows = sys.argv[1], [sys.argv[2]], sys.argv[3:]
    first = play(server, [(linux, NAMES[0]), (windows, NAMES[1])])
    check(first)
    second = play(server, [(windows, NAMES[0]), (linux, NAMES[1])])
    check(second)
    for name in NAMES:
        assert first[name][2] == second[name][2], f"{name} sends other bytes from Windows than from Linux"
    print("The byte streams of both platforms are identical.")


main()
