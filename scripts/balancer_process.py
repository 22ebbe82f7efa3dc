"""The balancers with the shipped configuration, for scripts/test-two-gateways."""

import csv
import re
import shutil
import socket
import subprocess
import time

from gateway_process import TREE

HAPROXY = TREE / "packaging/haproxy/haproxy.cfg"
NGINX = TREE / "packaging/nginx/nginx.conf"
PLAIN_PORT, TLS_PORT = 8080, 8443
SESSIONS = 256  # MaxUserSession to which the limits of the shipped file belong
WAIT = 30  # seconds


def haproxy_configuration(folder, limit=None):
    """The shipped file with its folder and log replaced; with another limit of connections for each
    gateway in each backend, if there is one."""
    text = (HAPROXY.read_text().replace("/run/haproxy", str(folder))
            .replace("log /dev/log local0", "log stderr format timed local0"))
    return re.sub(r"(    server .* maxconn )\d+", rf"\g<1>{limit}", text) if limit else text


def nginx_configuration(folder):
    """The shipped file with its folders replaced."""
    return (NGINX.read_text().replace("/var/log/nginx", str(folder))
            .replace("/run/nginx.pid", f"{folder}/nginx.pid"))


class Balancer:
    """A process on a machine of the network that listens on a port; it also has to create a file,
    if one is named. Ended at the end of a with statement. Its messages are appended to a file."""

    def __init__(self, machine, command, port, messages, created=None):
        with open(messages, "a", encoding="utf-8") as file:
            self.process = subprocess.Popen(["ip", "netns", "exec", machine.namespace, *command],
                                            stderr=file)
        try:
            wait_for(lambda: machine.call(lambda: is_listening(port))
                     and (created is None or created.exists()), f"{command[0]} to listen",
                     self.process)
        except BaseException:
            self.__exit__()
            raise

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        try:
            self.process.wait(WAIT)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()


class HaProxy(Balancer):
    """HAProxy with the backends of plain HTTP or of HTTPS in use."""

    def __init__(self, machine, folder, tls, *, log=None, limit=None):
        configuration = folder / "haproxy.cfg"
        configuration.write_text(haproxy_configuration(folder, limit))
        control = folder / "admin.sock"
        control.unlink(missing_ok=True)  # of a previous process
        self._socket = str(control)
        self._backends = (("https_gateways",) if tls else
                          ("plain_files", "plain_firmware", "plain_notifications"))
        super().__init__(machine, ["haproxy", "-db", "-f", configuration],
                         TLS_PORT if tls else PLAIN_PORT, log or folder / "haproxy.log", control)

    def command(self, text):
        with socket.socket(socket.AF_UNIX) as control:
            control.settimeout(WAIT)
            control.connect(self._socket)
            control.sendall(f"{text}\n".encode())
            pieces = []
            while piece := control.recv(65536):
                pieces.append(piece)
        return b"".join(pieces).decode()

    def figures(self, server):
        """The rows of "show stat" for a server, or for the BACKEND, of the backends in use."""
        table = self.command("show stat").removeprefix("# ").splitlines()
        return [row for row in csv.DictReader(table)
                if row["pxname"] in self._backends and row["svname"] == server]

    def is_in_state(self, server, state):
        return all(row["status"].startswith(state) for row in self.figures(server))

    def wait_until_up(self):
        """Until both gateways have passed their checks."""
        wait_for(lambda: self.is_in_state("primary", "UP") and self.is_in_state("secondary", "UP"),
                 "both gateways to be up")

    def set_state(self, server, state):
        for backend in self._backends:
            if answer := self.command(f"set server {backend}/{server} state {state}").strip():
                raise RuntimeError(f"haproxy: {answer}")

    def wait_until_unused(self, server):
        """Until no connection uses the gateway."""
        wait_for(lambda: all(int(row["scur"]) == 0 for row in self.figures(server)),
                 f"{server} to be unused", seconds=60)


class Nginx(Balancer):
    FAIL_TIMEOUT = 2  # seconds, as in the shipped file

    def __init__(self, machine, folder):
        configuration = folder / "nginx.conf"
        configuration.write_text(nginx_configuration(folder))
        folder.chmod(0o755)
        super().__init__(machine, ["nginx", "-c", configuration, "-e", folder / "error.log", "-g",
                                   "daemon off;"], PLAIN_PORT, folder / "nginx.log")

    def wait_until_up(self):
        """nginx does not use a gateway for this time after a failed connection."""
        time.sleep(self.FAIL_TIMEOUT + 0.1)


def is_listening(port, address="127.0.0.1"):
    with socket.socket() as probe:
        return probe.connect_ex((address, port)) == 0


def wait_for(is_reached, what, process=None, *, seconds=WAIT, pause=0.05):
    """Raises RuntimeError if the state is not reached in time, or if the process ends."""
    deadline = time.monotonic() + seconds
    while not is_reached():
        if process and process.poll() is not None:
            raise RuntimeError(f"waited for {what}; it ended with {process.returncode}")
        if time.monotonic() > deadline:
            raise RuntimeError(f"waited {seconds} s for {what}")
        time.sleep(pause)


def in_network_namespace(*command):
    """The command, run in a network namespace that ends with it."""
    return ["unshare", "--net", *command]


def rejected_files(folder):
    """The shipped files that their program does not accept without a warning, with its messages."""
    rejected = {}
    for program, arguments, name, text in (
            ("haproxy", ["-c", "-f"], HAPROXY, haproxy_configuration(folder)),
            ("nginx", ["-t", "-c"], NGINX, nginx_configuration(folder))):
        path = folder / name.name
        path.write_text(text)
        program = shutil.which(program) or f"/usr/sbin/{program}"
        checked = subprocess.run(in_network_namespace(program, *arguments, path),
                                 capture_output=True, text=True)
        messages = checked.stdout + checked.stderr
        if checked.returncode != 0 or re.search(r"warn", messages, re.I):
            rejected[name] = messages
    return rejected
