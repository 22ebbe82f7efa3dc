"""The clients that clients_test.py runs: the program of each, or a class that builds its command
line."""

import dataclasses
import hashlib
import os
import pathlib
import shutil
import subprocess
import sys
import threading
import typing

HERE = pathlib.Path(__file__).resolve().parent
TIMEOUT = 120  # seconds for all requests of a run
ENVIRONMENT = dict(os.environ, LC_ALL="C.UTF-8", GO111MODULE="off", no_proxy="localhost",
                   NO_PROXY="localhost")


class MissingError(Exception):
    """The client is not installed; the text says what is missing."""


@dataclasses.dataclass(frozen=True)
class Result:
    """Of a request: the status, size and SHA-256 of the content, or the error of the client."""
    status: int = 0
    size: int = 0
    sha256: str = hashlib.sha256().hexdigest()
    error: str | None = None


class Plan(typing.NamedTuple):
    """Requests; see the input in client_program.py."""
    url: str
    method: str = "GET"
    count: int = 1
    workers: int = 1
    header: tuple[str, str] | None = None
    helped: bool = False


def execute(command):
    return subprocess.run(command, env=ENVIRONMENT, capture_output=True, text=True, check=False,
                          timeout=TIMEOUT)


def content_of(file):
    return file.read_bytes() if file.exists() else b""


def result_of(status, file):
    content = content_of(file)
    return Result(status, len(content), hashlib.sha256(content).hexdigest())


def require(program):
    if shutil.which(program) is None:
        raise MissingError(f"{program} is not installed")
    return program


class Program:
    """A program with the command line that client_program.py describes. `prepare` returns the
    command that starts it; it is called with a folder for files that last as long as the client."""

    def __init__(self, prepare, folder):
        self.command = prepare(folder)
        self.processes = {}

    def _process(self, *arguments):
        """Starts a process with these arguments, or returns the one that has been started."""
        if arguments not in self.processes:
            self.processes[arguments] = subprocess.Popen(
                [*self.command, *arguments], env=ENVIRONMENT, stdin=subprocess.PIPE,
                stdout=subprocess.PIPE, text=True)
        return self.processes[arguments]

    def send(self, plan, certificate):
        process = self._process(certificate, "helped" if plan.helped else "default")
        watchdog = threading.Timer(TIMEOUT, process.kill)
        watchdog.start()
        try:
            print(plan.method, plan.url, plan.count, plan.workers, *(plan.header or ()),
                  file=process.stdin, flush=True)
            return [self._result(process.stdout.readline()) for _ in range(plan.count)]
        finally:
            watchdog.cancel()

    @staticmethod
    def _result(line):
        if not line:
            raise AssertionError(f"the client ended, or did not reply for {TIMEOUT} seconds")
        first, _, rest = line.rstrip("\n").partition(" ")
        if first == "error":
            return Result(error=rest)
        size, sha256 = rest.split()
        return Result(int(first), int(size), sha256)

    def close(self):
        for process in self.processes.values():
            process.stdin.close()
            process.stdout.close()
            process.wait(TIMEOUT)


def python(module, program):
    """`module` may be installed for another Python than the one that runs this."""
    def prepare(_):
        for interpreter in (sys.executable, "/usr/bin/python3"):
            if execute([interpreter, "-c", f"import {module}"]).returncode == 0:
                return [interpreter, HERE / program]
        raise MissingError(f"Python has no module {module}")
    return prepare


def perl(_):
    require("perl")
    modules = ["-MLWP::UserAgent", "-MLWP::Protocol::https", "-MDigest::SHA"]
    if execute(["perl", *modules, "-e", "1"]).returncode != 0:
        raise MissingError("Perl has no module LWP::UserAgent or LWP::Protocol::https")
    return ["perl", HERE / "lwp_client.pl"]


def go(folder):
    program = folder / "go_client"
    subprocess.run([require("go"), "build", "-o", program, HERE / "go_client.go"], env=ENVIRONMENT,
                   check=True, timeout=5 * TIMEOUT)
    return [program]


def node(_):
    return [require("node"), HERE / "node_client.js"]


def java(folder):
    require("java")
    subprocess.run([require("javac"), "-d", folder, HERE / "JavaClient.java"], env=ENVIRONMENT,
                   check=True, timeout=TIMEOUT)
    return ["java", "-cp", folder, "JavaClient"]


class Curl:
    def __init__(self, folder):
        self.command = [require("curl"), "--silent", "--max-time", str(TIMEOUT)]
        self.folder = folder

    def send(self, plan, certificate):
        files = [self.folder / f"curl-{number}" for number in range(plan.count)]
        for file in files:
            file.unlink(missing_ok=True)
        command = [*self.command, "--cacert", certificate, "--request", plan.method, "--write-out",
                   r"%{filename_effective}\t%{exitcode}\t%{http_code}\t%{errormsg}\n"]
        if plan.header:
            command += ["--header", ": ".join(plan.header)]
        if plan.workers > 1:
            command += ["--parallel", "--parallel-immediate", "--parallel-max", str(plan.workers)]
        for file in files:
            command += ["--output", file, plan.url]
        results = {}
        for line in execute(command).stdout.splitlines():
            name, code, status, error = line.split("\t")
            results[name] = (result_of(int(status), pathlib.Path(name)) if code == "0" else
                             Result(error=f"({code}) {error}"))
        return [results[str(file)] for file in files]

    def close(self):
        pass

    def resume(self, url, certificate, file):
        """Continues the download of a file. Returns the exit code."""
        return execute([*self.command, "--cacert", certificate, "--continue-at", "-",
                        "--output", file, url]).returncode


class Wget:
    def __init__(self, folder):
        # By default it repeats a failed request up to 20 times, and waits longer each time.
        self.command = [require("wget"), "--no-config", "--no-verbose", "--server-response",
                        "--content-on-error", "--tries=3", f"--timeout={TIMEOUT}"]
        self.folder = folder / "wget"

    def send(self, plan, certificate):
        shutil.rmtree(self.folder, ignore_errors=True)
        command = [*self.command, f"--ca-certificate={certificate}", f"--method={plan.method}"]
        if plan.header:
            command.append(f"--header={': '.join(plan.header)}")
        each = plan.count // plan.workers
        runs = []
        for worker in range(plan.workers):
            folder = self.folder / str(worker)
            folder.mkdir(parents=True)
            runs.append((folder, subprocess.Popen(
                [*command, f"--directory-prefix={folder}", *[plan.url] * each], env=ENVIRONMENT,
                stderr=subprocess.PIPE, text=True)))
        results = []
        for folder, process in runs:
            results += self._results(process, folder / plan.url.rpartition("/")[2], each)
        return results

    @staticmethod
    def _results(process, file, count):
        """Of a wget that saves file, file.1, file.2 and so on."""
        log = process.communicate(timeout=TIMEOUT)[1]
        statuses = [int(line.split()[1]) for line in log.splitlines()
                    if line.startswith("  HTTP/1.1 ")]
        # 8: a status of 400 or more; not an error here.
        if process.returncode not in (0, 8) or len(statuses) != count:
            return [Result(error=f"({process.returncode}) {log}")] * count
        files = [file] + [pathlib.Path(f"{file}.{number}") for number in range(1, count)]
        return [result_of(status, saved) for status, saved in zip(statuses, files)]

    def close(self):
        pass

    def resume(self, url, certificate, file):
        """Continues the download of a file. Returns the exit code."""
        return execute([*self.command, f"--ca-certificate={certificate}", "--continue",
                        f"--output-document={file}", url]).returncode


UNNOTICED = "unnoticed"


class Client(typing.NamedTuple):
    """What a client does by default; open(folder) returns an object with send() and close()."""
    open: typing.Callable
    # A part of the error if a download ends before Content-Length, or UNNOTICED. Several of them if
    # it depends on the version.
    truncation: tuple[str, ...]
    # Requests may fail that are sent with a client object that has been used for another one.
    fails_on_reuse: bool = False
    # Exit code when it continues a download. 0: it appends the rest of the file to what it has. None:
    # it has no such option.
    resume_code: int | None = None


def program(prepare):
    return lambda folder: Program(prepare, folder)


CLIENTS = {
    "curl": Client(Curl, ("(18)",), resume_code=33),
    "wget": Client(Wget, ("(4)",), resume_code=0),
    "urllib": Client(program(python("urllib.request", "urllib_client.py")), ("IncompleteRead",)),
    "http.client": Client(program(python("http.client", "http_client.py")), ("IncompleteRead",),
                          fails_on_reuse=True),
    # Depends on the version of urllib3: 2 and later report it.
    "requests": Client(program(python("requests", "requests_client.py")),
                       (UNNOTICED, "IncompleteRead"), fails_on_reuse=True),
    "httpx": Client(program(python("httpx", "httpx_client.py")), ("RemoteProtocolError",),
                    fails_on_reuse=True),
    "aiohttp": Client(program(python("aiohttp", "aiohttp_client.py")), ("ClientPayloadError",),
                      fails_on_reuse=True),
    "LWP": Client(program(perl), (UNNOTICED,)),
    "Go": Client(program(go), ("unexpected EOF",), fails_on_reuse=True),
    "Node": Client(program(node), ("aborted",), fails_on_reuse=True),
    "java.net.http": Client(program(java), ("fixed content-length",), fails_on_reuse=True),
}
