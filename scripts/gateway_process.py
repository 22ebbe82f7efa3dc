"""A gateway process, the site that it serves, and its use of resources, for scripts/bench,
scripts/soak, scripts/test-two-gateways and the tests in tests/clients."""

import os
import pathlib
import random
import re
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time

TREE = pathlib.Path(__file__).resolve().parent.parent
ORGANIZATION = "sample"

SETTINGS = """<QuorinGatewaySetting><{group}GatewaySetting>
<Http><Log><QueueSize>8192</QueueSize>
<ApplicationLog><LogLevel>info</LogLevel><Generation>1</Generation></ApplicationLog></Log>
<Port>{port}</Port><MaxUserSession>{sessions}</MaxUserSession>
<MaxTCPConnection>1000</MaxTCPConnection><ConnectionTimeout>{timeout}</ConnectionTimeout>
<HTTPRequestTimeout>{request_timeout}</HTTPRequestTimeout>
<ThreadReadBufferSize>{chunk}</ThreadReadBufferSize>
<MaxLargeFileRequest>{large}</MaxLargeFileRequest><HttpsEnabled>{https}</HttpsEnabled></Http>
<Proxy><IsEnabledHttpInFacility>false</IsEnabledHttpInFacility></Proxy>
</{group}GatewaySetting><General>
<GatewayConnectSetting><GatewayAddress>localhost</GatewayAddress></GatewayConnectSetting>
<GatewayConnectSetting><GatewayAddress>localhost</GatewayAddress></GatewayConnectSetting>
<OrganizationId>{organization}</OrganizationId>
<QuorinCloud><RootUrl>https://cloud.example/QuorinCloud5</RootUrl></QuorinCloud>
</General></QuorinGatewaySetting>
"""


def build(preset):
    """Builds the product with a preset; returns the program."""
    folder = TREE / "build" / preset
    if not (folder / "build.ninja").exists():
        subprocess.run(["cmake", "--preset", preset, "-D", "BUILD_TESTING=OFF"], cwd=TREE,
                       check=True)
    jobs = os.environ.get("QUORIN_JOBS", str(os.cpu_count()))
    subprocess.run(["cmake", "--build", "--preset", preset, "--parallel", jobs, "--target",
                    "product"], cwd=TREE, check=True)
    return folder / "bin/quorin-gateway"


_claims = []  # UDP sockets on the ports that free_port() has returned


def free_port():
    """Returns a port that is not in use. Other tests are not given it before this process ends
    (tests/support/free_port.h)."""
    while True:
        port = random.randrange(15000, 32000)  # below the ephemeral ports
        claim = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        try:
            claim.bind(("127.0.0.1", port))
            with socket.socket() as probe:
                probe.bind(("", port))
        except OSError:
            claim.close()
            continue
        _claims.append(claim)
        return port


class Site:
    """A data folder with an empty document root and a certificate for localhost. Removed at the end
    of a with statement."""

    def __init__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="gateway-site-", dir="/var/tmp"))
        product = self.folder / "Vemo/Quorin5"
        store = product / "certificates/WebHosting"
        self.root = product / "QuorinGatewayHttp/wwwroot"
        self.files = self.root / "fwfiles"
        self.notifications = self.root / "notifications"
        self.staging = product / "QuorinGatewayApp/NotificationTmp"
        for folder in (self.files, self.notifications, self.staging, store, self.folder / "tmp"):
            folder.mkdir(parents=True)
        self.certificate, self.key = store / "localhost.pem", store / "localhost.key"
        subprocess.run(
            ["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2",
             "-subj", "/CN=localhost", "-addext", "subjectAltName=DNS:localhost",
             "-keyout", self.key, "-out", self.certificate],
            check=True, capture_output=True)
        self.key.chmod(0o640)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.folder)


class Server:
    """A process that serves a site on a port of localhost. Stopped at the end of a with
    statement."""

    def __init__(self, command, port, tls, environment=None):
        self.port = port
        self.tls = tls
        self.process = subprocess.Popen(command, env=environment)
        try:
            self._wait_until_listening()
        except BaseException:
            self.stop()
            raise

    def _wait_until_listening(self):
        deadline = time.monotonic() + 60
        while time.monotonic() < deadline:
            if self.process.poll() is not None:
                sys.exit(f"{self.process.args[0]} ended with {self.process.returncode}")
            if self._is_listening():
                return
            time.sleep(0.05)
        sys.exit(f"{self.process.args[0]} does not listen on port {self.port}")

    def _is_listening(self):
        with socket.socket() as probe:
            return probe.connect_ex(("127.0.0.1", self.port)) == 0

    def stop(self):
        """Returns true if the process exits with 0 within a minute of SIGTERM. Kills it after
        that."""
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
        try:
            return self.process.wait(60) == 0
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
            return False

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stop()

    @property
    def address(self):
        """The URL without a target."""
        return f"{'https' if self.tls else 'http'}://localhost:{self.port}"

    def url(self, name):
        """Of a file in site.files."""
        return f"{self.address}/fwfiles/{name}"

    def family(self):
        """The process identifiers of the process and its children."""
        pid = self.process.pid
        children = pathlib.Path(f"/proc/{pid}/task/{pid}/children").read_text().split()
        return [pid] + [int(child) for child in children]

    def cpu_seconds(self):
        """Processor time of the process and its children."""
        ticks = 0
        for member in self.family():
            fields = pathlib.Path(f"/proc/{member}/stat").read_text().rpartition(")")[2].split()
            ticks += int(fields[11]) + int(fields[12])
        return ticks / os.sysconf("SC_CLK_TCK")

    def status(self, field):
        """Sum of a numeric field of /proc/PID/status of the process and its children; KiB for
        memory."""
        total = 0
        for member in self.family():
            status = pathlib.Path(f"/proc/{member}/status").read_text()
            total += int(re.search(rf"^{field}:\s+(\d+)", status, re.M)[1])
        return total

    def descriptors(self):
        """Open descriptors of the process and its children."""
        return sum(len(list(pathlib.Path(f"/proc/{member}/fd").iterdir()))
                   for member in self.family())


class Gateway(Server):
    """A gateway that serves a site. A site has at most one gateway at a time.

    group is primary or secondary, prefix a command that runs the gateway, timeout is
    ConnectionTimeout, request_timeout HTTPRequestTimeout. Without a port, a free one is chosen.
    """

    def __init__(self, program, site, *, tls, sessions, chunk=65536, port=None, timeout=30,
                 request_timeout=600, group="primary", prefix=()):
        port = port or free_port()
        settings = site.folder / "settings.xml"
        settings.write_text(SETTINGS.format(group=group.capitalize(), port=port, sessions=sessions,
                                            timeout=timeout, request_timeout=request_timeout,
                                            chunk=chunk, large=sessions - 1,
                                            https=str(tls).lower(), organization=ORGANIZATION))
        super().__init__([*prefix, program, "run", settings, group], port, tls,
                         self.environment(program, site))

    @staticmethod
    def environment(program, site):
        """Of the programs that run and stop a gateway."""
        environment = dict(os.environ, QUORIN_COMMON_APPDATA=str(site.folder),
                           TMPDIR=str(site.folder / "tmp"),
                           # A sanitizer finds libraries only here.
                           LD_LIBRARY_PATH=str(program.parent))
        for name, value in {
                # As in the systemd unit; with glibc's default, memory grows for a long time.
                "MALLOC_ARENA_MAX": "2",
                "LSAN_OPTIONS": f"suppressions={TREE}/tests/lsan.supp",
                # Qt is not built for the race detector.
                "TSAN_OPTIONS": f"suppressions={TREE}/tests/tsan.supp:"
                                "ignore_noninstrumented_modules=1"}.items():
            environment.setdefault(name, value)
        return environment
