"""Machines of a small network, as network namespaces, for scripts/test-two-gateways."""

import concurrent.futures
import contextlib
import ctypes
import os
import shutil
import subprocess

SWITCH = "switch"
CLONE_NEWNET = 0x40000000
# Bytes of a TCP buffer: least, initial, most. With the usual maximum of some MiB, the buffers
# between a gateway and a slow client would hold whole files.
TCP_BUFFER = "4096 65536 262144"
COMMAND_TIMEOUT = 30  # seconds


class NotAllowed(Exception):
    """This system or account does not allow network namespaces."""


def run(*command):
    """Runs a command; returns its output. Raises CalledProcessError if it fails."""
    return subprocess.run(command, check=True, capture_output=True, text=True,
                          timeout=COMMAND_TIMEOUT).stdout


class Machine:
    """A network namespace with one address, connected to the switch."""

    def __init__(self, network, role, address):
        self.role = role
        self.address = address
        self.namespace = network.namespace_of(role)
        self._port = network.namespace_of(SWITCH), f"p-{role}"

    def prefix(self):
        """The start of a command that runs another command on this machine, with the role as host
        name. Both commands run in the same process."""
        return ["ip", "netns", "exec", self.namespace, "unshare", "--uts", "sh", "-c",
                f'hostname {self.role} && exec "$@"', "sh"]

    def run(self, *command):
        return run("ip", "netns", "exec", self.namespace, *command)

    def enter(self):
        """Sockets that the calling thread creates from now on belong to this machine."""
        with open(f"/run/netns/{self.namespace}", "rb") as namespace:
            libc = ctypes.CDLL(None, use_errno=True)
            if libc.setns(namespace.fileno(), CLONE_NEWNET) != 0:
                raise OSError(ctypes.get_errno(), "setns")

    def call(self, function):
        """Returns the result of a function that creates sockets of this machine."""
        def enter_and_call():
            self.enter()
            return function()

        # A thread cannot leave the namespace: it ends with the call.
        with concurrent.futures.ThreadPoolExecutor(1) as executor:
            return executor.submit(enter_and_call).result()

    @contextlib.contextmanager
    def disconnected(self):
        """The switch has no link to this machine; neither side is told."""
        namespace, port = self._port
        run("ip", "-n", namespace, "link", "set", port, "nomaster")
        try:
            yield
        finally:
            run("ip", "-n", namespace, "link", "set", port, "master", "bridge")

    @contextlib.contextmanager
    def losing(self, percent):
        """Drops packets in both directions. Yields how that is done, or None if the system
        cannot."""
        for method, start, stop in (("netem", self._start_netem, self._stop_netem),
                                    ("nftables", self._start_nft, self._stop_nft)):
            try:
                start(percent)
            except (subprocess.CalledProcessError, FileNotFoundError):
                stop()
                continue
            try:
                yield method
            finally:
                stop()
            return
        yield None

    def _start_netem(self, percent):
        namespace, port = self._port
        for where, device in ((namespace, port), (self.namespace, "eth0")):
            run("tc", "-n", where, "qdisc", "add", "dev", device, "root", "netem", "loss",
                f"{percent}%")

    def _stop_netem(self):
        namespace, port = self._port
        for where, device in ((namespace, port), (self.namespace, "eth0")):
            subprocess.run(["tc", "-n", where, "qdisc", "del", "dev", device, "root"],
                           capture_output=True, timeout=COMMAND_TIMEOUT)

    # A dropped packet must not be reported to its sender, so it is dropped by the receiver: this
    # machine, or the switch.
    def _start_nft(self, percent):
        namespace, port = self._port
        for where, device in ((namespace, port), (self.namespace, "eth0")):
            run("ip", "netns", "exec", where, "nft",
                "add table netdev loss; add chain netdev loss drops "
                f'{{ type filter hook ingress device "{device}" priority 0; }}; '
                f"add rule netdev loss drops numgen random mod 100 < {percent} drop")

    def _stop_nft(self):
        if shutil.which("nft"):
            for where in (self._port[0], self.namespace):
                subprocess.run(["ip", "netns", "exec", where, "nft", "delete table netdev loss"],
                               capture_output=True, timeout=COMMAND_TIMEOUT)


class Network:
    """Machines of 192.168.0.0/24, by role. Nothing of it is visible to the rest of the system.
    Removed at the end of a with statement. Raises NotAllowed if namespaces cannot be created."""

    def __init__(self, addresses):
        self._created = []
        self._name = f"quorin-{os.getpid()}"
        self._addresses = addresses
        self.machines = {}

    def namespace_of(self, role):
        return f"{self._name}-{role}"

    def __enter__(self):
        try:
            self._create()
        except BaseException as error:
            self.__exit__()
            if isinstance(error, subprocess.CalledProcessError):
                raise NotAllowed(f"{' '.join(error.cmd)}: {error.stderr.strip()}") from error
            if isinstance(error, (FileNotFoundError, PermissionError)):
                raise NotAllowed(str(error)) from error
            raise
        return self

    def __exit__(self, *_):
        for namespace in self._created:
            subprocess.run(["ip", "netns", "delete", namespace], timeout=COMMAND_TIMEOUT)
        self._created.clear()

    def _create(self):
        switch = self._add(SWITCH)
        run("ip", "-n", switch, "link", "add", "bridge", "type", "bridge")
        run("ip", "-n", switch, "link", "set", "bridge", "up")
        for role, address in self._addresses.items():
            namespace = self._add(role)
            port = f"p-{role}"
            run("ip", "-n", switch, "link", "add", port, "type", "veth", "peer", "name", "eth0",
                "netns", namespace)
            run("ip", "-n", switch, "link", "set", port, "master", "bridge", "up")
            run("ip", "-n", namespace, "link", "set", "lo", "up")
            run("ip", "-n", namespace, "address", "add", f"{address}/24", "dev", "eth0")
            run("ip", "-n", namespace, "link", "set", "eth0", "up")
            self.machines[role] = machine = Machine(self, role, address)
            for buffer in ("rmem", "wmem"):
                machine.run("sh", "-c", f"echo {TCP_BUFFER} >/proc/sys/net/ipv4/tcp_{buffer}")
        # A host name of its own, see Machine.prefix().
        run("unshare", "--uts", "hostname", "test")

    def _add(self, role):
        namespace = self.namespace_of(role)
        run("ip", "netns", "add", namespace)
        self._created.append(namespace)
        return namespace
