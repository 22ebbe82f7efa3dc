"""HTTP clients that repeat failed requests and count them, for scripts/test-two-gateways."""

import asyncio
import collections
import dataclasses
import hashlib
import random
import threading
import time
import typing

ATTEMPTS = 8  # a request for a notification may fail for 30 s after its gateway was killed
PAUSE = 0.5  # seconds before a request is repeated
PATIENCE = 100  # seconds for one attempt, longer than the time-outs of the balancer

NO_CONNECTION = "no connection or TLS session"
NO_REPLY = "no reply"
INTERRUPTED = "interrupted transfer"
WRONG_CONTENT = "wrong content"
NO_END = "no end"


def digest(content):
    return hashlib.sha256(content).digest()


@dataclasses.dataclass(frozen=True)
class Request:
    kind: str
    target: str
    method: str = "GET"
    header: str = ""
    status: int = 200
    digests: typing.Collection | None = None  # of the possible contents; None: any
    rate: int | None = None  # bytes per second at which the client reads


class Failure(Exception):
    """A request failed. The text is one of the constants above, or "status N"."""


async def send(address, port, request, tls=None):
    """Sends a request on a new connection; returns status, header and content. Raises Failure if no
    complete reply arrives."""
    try:
        reader, writer = await asyncio.open_connection(
            address, port, ssl=tls, server_hostname="localhost" if tls else None)
    except OSError as error:
        raise Failure(NO_CONNECTION) from error
    try:
        return await _exchange(reader, writer, request)
    finally:
        writer.transport.abort()


async def _exchange(reader, writer, request):
    try:
        writer.write(f"{request.method} {request.target} HTTP/1.1\r\nHost: localhost\r\n"
                     f"{request.header}\r\n".encode())
        header = await reader.readuntil(b"\r\n\r\n")
    except (OSError, asyncio.IncompleteReadError) as error:
        raise Failure(NO_REPLY) from error
    lines = header.decode().split("\r\n")
    fields = dict(line.split(": ", 1) for line in lines[1:] if line)
    length = fields.get("Content-Length")
    content = bytearray()
    begin = time.monotonic()
    try:
        while piece := await reader.read(262144):
            content += piece
            if request.rate:
                await asyncio.sleep(begin + len(content) / request.rate - time.monotonic())
            if length and len(content) >= int(length):
                break
    except OSError as error:
        raise Failure(INTERRUPTED) from error
    if length and len(content) < int(length):
        raise Failure(INTERRUPTED)
    return int(lines[0].split()[1]), header, bytes(content)


async def check(address, port, request, tls=None):
    """Sends a request; returns the content. Raises Failure if the reply is not the expected one."""
    try:
        async with asyncio.timeout(PATIENCE):
            status, _, content = await send(address, port, request, tls)
    except TimeoutError as error:
        raise Failure(NO_END) from error
    if status != request.status:
        raise Failure(f"status {status}")
    if request.digests is not None and digest(content) not in request.digests:
        raise Failure(WRONG_CONTENT)
    return content


class Load:
    """Clients on a machine of the network. Each repeats act(load, number, chance) until the end of
    a with statement, and completes the last one; chance is its random generator. act is a
    coroutine that sends requests with serve(). Read the results after the with statement.
    """

    def __init__(self, machine, clients, act):
        self.requests = collections.Counter()  # by kind
        self.failures = collections.Counter()  # by kind and text
        self.repeated = 0  # requests that failed and succeeded when they were repeated
        self.lost = 0  # requests that failed each time
        self.repeating = 0  # requests that have failed and are being repeated now
        self.longest = 0.0, ""  # seconds and kind of a successful attempt of a request without rate
        self._machine = machine
        self._clients = clients
        self._act = act
        self._stopping = threading.Event()
        self._thread = threading.Thread(target=self._run, daemon=True)
        self._error = None

    def __enter__(self):
        self._thread.start()
        return self

    def __exit__(self, *_):
        self._stopping.set()
        self._thread.join(ATTEMPTS * (PATIENCE + PAUSE))
        if self._error or self._thread.is_alive():
            raise RuntimeError("the clients failed") from self._error

    def total(self):
        return sum(self.requests.values())

    async def serve(self, address, port, request, tls=None):
        """Sends a request, and sends it again if it fails, at most ATTEMPTS times; returns the
        content, or None if all failed."""
        content = None
        failed = 0
        while content is None and failed < ATTEMPTS:
            begin = time.monotonic()
            try:
                content = await check(address, port, request, tls)
            except Failure as failure:
                self.failures[request.kind, str(failure)] += 1
                self.repeating += failed == 0
                failed += 1
                await asyncio.sleep(PAUSE)
        self.repeating -= failed > 0
        if content is None:
            self.lost += 1
        else:
            self.repeated += failed > 0
            if not request.rate:
                self.longest = max(self.longest, (time.monotonic() - begin, request.kind))
        self.requests[request.kind] += 1
        return content

    def _run(self):
        try:
            self._machine.enter()
            asyncio.run(self._run_clients())
        except BaseException as error:  # reported by the thread that ends the load
            self._error = error

    async def _run_clients(self):
        await asyncio.gather(*(self._run_client(number) for number in range(self._clients)))

    async def _run_client(self, number):
        chance = random.Random(number)
        while not self._stopping.is_set():
            await self._act(self, number, chance)
