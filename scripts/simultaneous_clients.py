"""Clients that connect to a server at the same time, for scripts/bench."""

import os
import resource
import selectors
import socket
import sys
import time
import typing

PATIENCE = 60  # seconds until the next event of any client


class Times(typing.NamedTuple):
    """Seconds from the begin until all clients have reached a state."""
    connected: float
    served: float


class _Client:
    """Connects, sends a request, and reads the reply to its end or only its first bytes."""

    def __init__(self, port, target, receive_buffer, is_stalled):
        self.socket = socket.socket()
        if receive_buffer:
            self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, receive_buffer)
        self.socket.setblocking(False)
        self.is_connected = False
        self.reply = b""
        self._request = f"GET {target} HTTP/1.1\r\nHost: localhost\r\n\r\n".encode()
        self._is_stalled = is_stalled
        self.socket.connect_ex(("127.0.0.1", port))

    def proceed(self):
        """Handles an event of the socket; returns false when the client is served."""
        if not self.is_connected:
            if error := self.socket.getsockopt(socket.SOL_SOCKET, socket.SO_ERROR):
                sys.exit(f"bench: a client could not connect: {os.strerror(error)}")
            self.is_connected = True
            self.socket.sendall(self._request)
            return True
        received = self.socket.recv(16 if self._is_stalled else 65536)
        self.reply += received
        return bool(received) and not self._is_stalled


class SimultaneousClients:
    """`count` clients that connect at the same time and are served when this returns; `times` says
    how long that took. Stalled clients read only the first bytes of the reply and stay connected
    until the end of a with statement. Ends the program if a client gets another status than
    200."""

    def __init__(self, port, target, count, receive_buffer=None, is_stalled=False):
        allow_descriptors()
        self._selector = selectors.DefaultSelector()
        begin = time.monotonic()
        self._clients = [_Client(port, target, receive_buffer, is_stalled) for _ in range(count)]
        for client in self._clients:
            self._selector.register(client.socket, selectors.EVENT_WRITE, client)
        connected = self._serve()
        self.times = Times(connected - begin, time.monotonic() - begin)
        self._selector.close()
        if bad := sum(not client.reply.startswith(b"HTTP/1.1 200") for client in self._clients):
            sys.exit(f"bench: {bad} of {count} simultaneous clients got no file")
        if not is_stalled:
            self.close()

    def close(self):
        for client in self._clients:
            client.socket.close()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def _serve(self):
        """Returns the time when all clients were connected."""
        waiting, all_connected = len(self._clients), None
        while self._selector.get_map():
            ready = self._selector.select(PATIENCE)
            if not ready:
                sys.exit(f"bench: {len(self._selector.get_map())} simultaneous clients got no "
                         f"event for {PATIENCE} s")
            for key, _ in ready:
                client = key.data
                was_connected = client.is_connected
                if not client.proceed():
                    self._selector.unregister(client.socket)
                elif not was_connected:
                    self._selector.modify(client.socket, selectors.EVENT_READ, client)
                    waiting -= 1
                    if waiting == 0:
                        all_connected = time.monotonic()
        return all_connected


def allow_descriptors():
    """Raises the limit of descriptors of this process and of those that it starts."""
    hard = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
    resource.setrlimit(resource.RLIMIT_NOFILE, (hard, hard))
