"""door.py FILE: starts programs of this system for a test that runs in Wine, which can't by itself.

Listens on 127.0.0.1 and writes "PORT KEY" into FILE. A connection is one program:
  first a line of JSON from the test: {"key": KEY, "command": [...]}
  then frames in both directions, a letter, four bytes of length (big-endian) and as many bytes:
    from the test   i  input          c  end of input     t  SIGTERM       k  SIGKILL
    to the test     s  its id         o  its output       e  its errors
                    x  its status, negative for a signal's number; the last frame
A program whose test has gone is killed.
"""
import asyncio
import json
import os
import secrets
import signal
import struct
import subprocess
import sys

KEY = secrets.token_hex(16)


def send(writer, kind, content=b""):
    writer.write(kind + struct.pack(">I", len(content)) + content)


async def pass_on(stream, writer, kind):
    while content := await stream.read(65536):
        send(writer, kind, content)
        await writer.drain()


async def receive(reader):
    kind, length = struct.unpack(">cI", await reader.readexactly(5))
    return kind, await reader.readexactly(length)


async def obey(reader, process):  # until the test has gone
    while True:
        try:
            kind, content = await receive(reader)
        except (asyncio.IncompleteReadError, ConnectionError):
            return
        if kind == b"i":
            process.stdin.write(content)
        elif kind == b"c":
            process.stdin.close()
        elif process.returncode is None:
            process.send_signal({b"t": signal.SIGTERM, b"k": signal.SIGKILL}[kind])


async def tell(process, writer):  # until it has ended
    send(writer, b"s", str(process.pid).encode())
    await asyncio.gather(pass_on(process.stdout, writer, b"o"),
                         pass_on(process.stderr, writer, b"e"))
    send(writer, b"x", str(await process.wait()).encode())
    await writer.drain()


async def run(command, reader, writer):
    process = await asyncio.create_subprocess_exec(
        *command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    tasks = [asyncio.create_task(obey(reader, process)),
             asyncio.create_task(tell(process, writer))]
    try:
        await asyncio.wait(tasks, return_when=asyncio.FIRST_COMPLETED)
    finally:
        for task in tasks:
            task.cancel()
        if process.returncode is None:
            process.kill()


async def serve(reader, writer):
    try:
        request = json.loads(await reader.readline())
        if request["key"] == KEY:
            await run(request["command"], reader, writer)
    except OSError as error:
        send(writer, b"e", f"{error}\n".encode())
        send(writer, b"x", b"127")
    except asyncio.CancelledError:
        pass  # this door closes
    finally:
        writer.close()


async def main(told):
    server = await asyncio.start_server(serve, "127.0.0.1", 0)
    over = asyncio.Event()
    asyncio.get_running_loop().add_signal_handler(signal.SIGTERM, over.set)
    with open(told + ".new", "w") as file:
        print(server.sockets[0].getsockname()[1], KEY, file=file)
    os.rename(told + ".new", told)
    await over.wait()  # then asyncio cancels what still runs


asyncio.run(main(sys.argv[1]))
