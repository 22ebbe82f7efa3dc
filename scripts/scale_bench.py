"""Measures how the cost of a gateway grows with the number of clients and with the number and size
of files, for `scripts/bench scale`."""

import os
import random
import re
import socket
import statistics
import subprocess
import time
import typing

from gateway_process import Gateway
from nginx_process import Nginx
from simultaneous_clients import SimultaneousClients, allow_descriptors

KIB = 1024
MIB = 1024 * KIB
GIB = 1024 * MIB

SESSIONS = 2048  # MaxUserSession, more than clients in any row
POLL = 0.1  # seconds; a connection to an idle queue is noticed after at most this time
REQUESTING_CLIENTS = 256  # of the table about folders
SAMPLES = 100  # requests for a small file beside stalled clients
REST = 5  # seconds in which the processor time at rest is measured
LONG = 10 * GIB  # a file from this size on is downloaded in one round only

CLIENTS = (10, 100, 1000, 2000)
REQUESTING = (16, 64, 256, 1024)
FOLDERS = (10, 1000, 100_000)
FILES = {KIB: 200, MIB: 100, GIB: 2, 10 * GIB: 1, 100 * GIB: 1}  # downloads of each size in a round
NOTIFICATIONS = {KIB: 200, 64 * KIB: 100, MIB: 20, 16 * MIB: 4, 64 * MIB: 2}  # requests in a round

# A later reset acknowledges the first item; the second keeps the document.
ITEMS = ('"RemoteExecution":{"IsExist":true,"LastUpdated":"2024-01-01T00:00:00Z"},'
         '"RemoteSetting":{"IsExist":true,"LastUpdated":"2030-01-01T00:00:00Z"}')
RESET = "X-Quorin-Notification-Reset-Date: 2025-01-01T00:00:00Z\r\n"

# For wrk: requests the files of a folder at random.
RANDOM_FILE = """math.randomseed({count})
request = function()
  return wrk.format("GET", "/fwfiles/{folder}/" .. math.random({count}))
end
"""


class Table(typing.NamedTuple):
    title: str
    measure: typing.Callable  # of a site and the arguments of scripts/bench; returns lines


class Cost(typing.NamedTuple):
    """What a number of requests took."""
    seconds: float
    cpu: float  # seconds
    peak: float  # MiB, of the server since its start


def size_text(size):
    for unit, name in ((GIB, "GiB"), (MIB, "MiB"), (KIB, "KiB")):
        if size >= unit:
            return f"{size // unit} {name}"
    return f"{size} B"


def start(kind, site, arguments, chunk=64 * KIB):
    server = (Nginx(site, tls=False) if kind == "nginx" else
              Gateway(arguments.program, site, tls=False, chunk=chunk, sessions=SESSIONS))
    time.sleep(0.5)  # The measured figures do not include the start.
    return server


def create_sparse(path, size):
    path.parent.mkdir(exist_ok=True)
    with open(path, "wb") as file:
        file.truncate(size)


def read_through(path):
    with open(path, "rb") as file:
        while file.read(MIB):
            pass


def fetch(server, target, method="GET", header=""):
    """Returns the seconds from connecting until the end of the reply, those from its first byte on,
    and its status."""
    buffer = bytearray(MIB)
    begin = time.monotonic()
    with socket.create_connection(("127.0.0.1", server.port)) as client:
        client.sendall(f"{method} {target} HTTP/1.1\r\nHost: localhost\r\n{header}\r\n".encode())
        count = client.recv_into(buffer)
        first = time.monotonic()
        status = int(buffer[:count].split(b" ", 2)[1][:3])
        while client.recv_into(buffer):
            pass
    end = time.monotonic()
    return end - begin, end - first, status


def fetch_times(server, count, *request, expected=200):
    """Fetches `count` times; returns the Cost of one, with the median of the seconds from its first
    byte on and the mean of the processor time, and the median of the complete seconds."""
    before = server.cpu_seconds()
    results = [fetch(server, *request) for _ in range(count)]
    cpu = (server.cpu_seconds() - before) / count
    if wrong := {status for *_, status in results} - {expected}:
        raise RuntimeError(f"{request}: status {wrong}")
    whole, after, _ = zip(*results)
    return (Cost(statistics.median(after), cpu, server.status("VmHWM") / KIB),
            statistics.median(whole))


def growth(costs):
    """For each cost of a unit: its ratio to the one before, as text."""
    return [""] + [f"{cost / before:.2f}" if before else "" for before, cost in
                   zip(costs, costs[1:])]


def table(header, rows, cost_of):
    """Lines of a table; the last column says how much more a unit costs than in the row before.
    `rows` are tuples of a cost for cost_of() and cells."""
    costs = [cost_of(measured) for measured, _ in rows]
    lines = ["| " + " | ".join([*header, "Growth"]) + " |", "|---" * (len(header) + 1) + "|"]
    lines += ["| " + " | ".join([*cells, text]) + " |"
              for (_, cells), text in zip(rows, growth(costs))]
    return lines


def medians(rounds):
    """Medians of tuples of numbers."""
    return [statistics.median(values) for values in zip(*rounds)]


# Clients at once


def stall(server, count):
    """Figures of a server to which `count` clients connect at once that do not read the reply."""
    fetch(server, "/fwfiles/1k")  # The first request of a process takes longer.
    memory, cpu = server.status("VmRSS"), server.cpu_seconds()
    with SimultaneousClients(server.port, "/fwfiles/large", count, receive_buffer=4096,
                             is_stalled=True) as clients:
        time.sleep(2)
        starting = server.cpu_seconds() - cpu
        growth_of_memory = server.status("VmRSS") - memory
        threads, descriptors = server.status("Threads"), server.descriptors()
        before = server.cpu_seconds()
        time.sleep(REST)
        rest = 100 * (server.cpu_seconds() - before) / REST
        beside = []
        for _ in range(SAMPLES):
            time.sleep(random.random() * POLL)  # at a random point of the polling interval
            beside.append(1000 * fetch(server, "/fwfiles/1k")[0])
        served = clients.times.served
    beside.sort()
    return (served, growth_of_memory / count, 1000 * starting / count, threads, descriptors, rest,
            statistics.median(beside), beside[len(beside) * 99 // 100])


def quit_time(server, arguments, site):
    """Seconds from `quit` until the end of the process."""
    begin = time.monotonic()
    subprocess.run([arguments.program, "stop"], check=True, capture_output=True,
                   env=Gateway.environment(arguments.program, site))
    if server.process.wait(60) != 0:
        raise RuntimeError("the gateway failed to end")
    return time.monotonic() - begin


def measure_clients(site, arguments):
    allow_descriptors()
    create_sparse(site.files / "large", 256 * MIB)
    (site.files / "1k").write_bytes(os.urandom(KIB))
    rows = []
    for count in CLIENTS:
        rounds = {"gateway": [], "nginx": []}
        quits = []
        for _ in range(arguments.rounds):
            for kind, results in rounds.items():
                with start(kind, site, arguments) as server:
                    results.append(stall(server, count))
                    if kind == "gateway":
                        quits.append(quit_time(server, arguments, site))
        ours, theirs = medians(rounds["gateway"]), medians(rounds["nginx"])
        cells = [f"{count:,}"] + [
            f"{of(ours)} / {of(theirs)}" for of in (
                lambda f: f"{1000 * f[0]:.0f}", lambda f: f"{f[1]:.0f}", lambda f: f"{f[2]:.2f}",
                lambda f: f"{f[3]:.0f}", lambda f: f"{f[4]:.0f}", lambda f: f"{f[5]:.1f}",
                lambda f: f"{f[6]:.0f}, {f[7]:.0f}")]
        rows.append((ours, cells + [f"{1000 * statistics.median(quits):.0f}"]))
        print(" ".join(rows[-1][1]), flush=True)
    header = ["Clients", "All have their first byte, ms", "Memory per client, KiB",
              "Processor time per client, ms", "Threads", "Descriptors",
              "Processor at rest, % of a core",
              "Small file beside them, ms: median, 99th percentile", "`quit`, ms"]
    lines = ["Each client requests a file of 256 MiB, reads the first bytes of the reply and then "
             "nothing, with a receive buffer of 4 KiB; chunks of 64 KiB. "
             f"`quit` follows as soon as the clients have disconnected. Cells are gateway / nginx; "
             "growth is that of the gateway's memory per client.", ""]
    return lines + table(header, rows, lambda figures: figures[1]) + [
        "", "The kernel buffers about 2 MiB for each of these clients. With 1,000 of them, this "
        "can exhaust the memory for TCP buffers (`net.ipv4.tcp_mem`); the kernel then drops "
        "packets, which are retransmitted seconds later."]


# Requests per second


def load(server, clients, seconds, target, script=None):
    """Requests per second, each on a new connection, and processor time of each in milliseconds."""
    command = ["wrk", "-t2", f"-c{clients}", f"-d{seconds}s", "--timeout", "20s",
               "-H", "Connection: close"]
    if script:
        command += ["-s", script]
    before = server.cpu_seconds()
    shown = subprocess.run([*command, server.address + target], check=True, capture_output=True,
                           text=True).stdout
    cpu = server.cpu_seconds() - before
    if "Non-2xx" in shown:
        raise RuntimeError(shown)
    requests = int(re.search(r"(\d+) requests in", shown)[1])
    return float(re.search(r"Requests/sec:\s+([\d.]+)", shown)[1]), 1000 * cpu / requests


def compared_loads(site, arguments, *load_arguments):
    """Medians of load(), of the gateway and of nginx."""
    rounds = {"gateway": [], "nginx": []}
    for _ in range(arguments.rounds):
        for kind, results in rounds.items():
            with start(kind, site, arguments) as server:
                load(server, load_arguments[0], 1, *load_arguments[1:])  # starts the threads
                results.append(load(server, load_arguments[0], arguments.seconds,
                                    *load_arguments[1:]))
    return medians(rounds["gateway"]), medians(rounds["nginx"])


def measure_requests(site, arguments):
    (site.files / "1k").write_bytes(os.urandom(KIB))
    rows = []
    for count in REQUESTING:
        ours, theirs = compared_loads(site, arguments, count, "/fwfiles/1k")
        bound = count / POLL
        rows.append((ours, [f"{count:,}", f"{bound:,.0f}", f"{ours[0]:,.0f}",
                            f"{ours[0] / bound:.2f}", f"{theirs[0]:,.0f}",
                            f"{ours[1]:.3f} / {theirs[1]:.3f}"]))
        print(" ".join(rows[-1][1]), flush=True)
    lines = ["Files of 1 KiB over plain TCP, a new connection for each request. The gateway "
             f"notices a connection to an idle queue after at most {1000 * POLL:.0f} ms, which "
             "bounds the rate of clients that wait for their replies. The rate exceeds this bound "
             "if clients connect again while the queue is still being emptied, and stays below it "
             "if servers and clients use all processors. Growth is that of the gateway's processor "
             "time per request.", ""]
    return lines + table(["Clients", "Bound, requests/s", "Gateway", "Gateway / bound", "nginx",
                          "Processor time per request, ms, gateway / nginx"],
                         rows, lambda figures: figures[1])


# Files in a folder


def measure_folders(site, arguments):
    rows = []
    for count in FOLDERS:
        folder = site.files / f"of{count}"
        folder.mkdir()
        content = os.urandom(KIB)
        for number in range(1, count + 1):
            (folder / str(number)).write_bytes(content)
        script = site.folder / f"of{count}.lua"
        script.write_text(RANDOM_FILE.format(folder=folder.name, count=count))
        ours, theirs = compared_loads(site, arguments, REQUESTING_CLIENTS, "/", script)
        rows.append((ours, [f"{count:,}", f"{ours[0]:,.0f} / {theirs[0]:,.0f}",
                            f"{ours[1]:.3f} / {theirs[1]:.3f}"]))
        print(" ".join(rows[-1][1]), flush=True)
    lines = [f"{REQUESTING_CLIENTS} clients request random files of 1 KiB in one folder. Cells are "
             "gateway / nginx; growth is that of the gateway's processor time per request, which "
             "would be constant if the number of files did not matter.", ""]
    return lines + table(["Files", "Requests/s", "Processor time per request, ms"],
                         rows, lambda figures: figures[1])


# Size of files


def measure_files(site, arguments):
    rows = []
    create_sparse(site.files / f"sparse-{KIB}", KIB)
    for size, count in FILES.items():
        name = f"sparse-{size}"
        create_sparse(site.files / name, size)
        # Fills the page cache, so that neither server has to allocate its pages.
        read_through(site.files / name)
        rounds = {"gateway": [], "nginx": []}
        for _ in range(arguments.rounds if size < LONG else 1):
            for kind, results in rounds.items():
                with start(kind, site, arguments, chunk=MIB) as server:
                    fetch(server, f"/fwfiles/sparse-{KIB}")
                    results.append(fetch_times(server, count, f"/fwfiles/{name}")[0])
        if size > KIB:  # the smallest is the first request of each process
            (site.files / name).unlink()
        ours, theirs = Cost(*medians(rounds["gateway"])), Cost(*medians(rounds["nginx"]))
        rate = (f"{size / MIB / ours.seconds:,.0f} / {size / MIB / theirs.seconds:,.0f}"
                if size >= GIB else "")
        rows.append((ours.cpu / size, [
            size_text(size), rate, f"{1000 * ours.cpu:,.2f} / {1000 * theirs.cpu:,.2f}",
            f"{1000 * ours.cpu * MIB / size:.2f} / {1000 * theirs.cpu * MIB / size:.2f}",
            f"{ours.peak:.1f} / {theirs.peak:.1f}"]))
        print(" ".join(rows[-1][1]), flush=True)
    lines = ["Sparse files, one client over plain TCP, one download after the other; chunks of "
             "1 MiB. Each file is read once before, so that it is in memory if it fits. "
             f"Files from {size_text(LONG)} on: one round. Cells are gateway / nginx; "
             "growth is that of the gateway's processor time per MiB.", ""]
    return lines + table(["File", "MiB/s after the first byte", "Processor time, ms",
                          "Processor time per MiB, ms", "Peak memory, MiB"],
                         rows, lambda cost: cost)


# Notifications


def create_notification(path, size):
    """A document of about `size` bytes with two items and a list of entries."""
    entry = '{{"Id":{:06},"Name":"Workstation {:06}","State":"pending"}}'
    length = len(entry.format(0, 0)) + 1
    count = max(0, (size - len(ITEMS) - 16) // length)
    entries = ",".join(entry.format(100_000 + number % 900_000, number % 1_000_000)
                       for number in range(count))
    path.write_text(f'{{"Entries":[{entries}],{ITEMS}}}')


def measure_notifications(site, arguments):
    rows = []
    for size, count in NOTIFICATIONS.items():
        path = site.notifications / f"{size}.json"
        target = f"/notifications/{path.name}"
        requests = (("gateway", 200, target), ("nginx", 200, target),
                    ("gateway", 204, target, "DELETE", RESET))
        rounds = [[], [], []]
        for _ in range(arguments.rounds):
            for (kind, status, *request), results in zip(requests, rounds):
                create_notification(path, size)
                with start(kind, site, arguments) as server:
                    fetch(server, *request)
                    cost, whole = fetch_times(server, count, *request, expected=status)
                    results.append((whole, cost.cpu, cost.peak))
                if path.stat().st_size < size // 2:
                    raise RuntimeError("the document was not kept")
        ours, theirs, deleted = (medians(results) for results in rounds)
        rows.append(((ours[1] + deleted[1]) / size, [
            size_text(size), f"{1000 * ours[0]:,.0f} / {1000 * theirs[0]:,.0f}",
            f"{1000 * ours[1]:,.1f} / {1000 * theirs[1]:,.1f}", f"{ours[2]:.0f}",
            f"{1000 * deleted[0]:,.0f}", f"{1000 * deleted[1]:,.1f}", f"{deleted[2]:.0f}",
            f"{1000 * (ours[1] + deleted[1]) * MIB / size:.1f}"]))
        print(" ".join(rows[-1][1]), flush=True)
    lines = ["One client, one request after the other. GET: cells are gateway / nginx. DELETE "
             "acknowledges one item; another, newer one keeps the document, so it is parsed and "
             "written completely. Growth is that of the gateway's processor time per MiB for a GET "
             "and a DELETE.", ""]
    return lines + table(["Document", "GET, ms", "Processor time, ms", "Peak memory, MiB",
                          "DELETE, ms", "Processor time, ms", "Peak memory, MiB",
                          "Processor time per MiB, ms"], rows, lambda cost: cost)


TABLES = {
    "clients": Table("Clients at once", measure_clients),
    "requests": Table("Requests per second", measure_requests),
    "folders": Table("Files in a folder", measure_folders),
    "files": Table("Size of a file", measure_files),
    "notifications": Table("Size of a notification", measure_notifications),
}


def measure(site, arguments):
    """Returns the page with the tables named by the arguments."""
    loads = [os.getloadavg()[0]]
    sections = []
    for name in arguments.only:
        sections += ["", f"## {TABLES[name].title}", "", *TABLES[name].measure(site, arguments)]
        loads.append(os.getloadavg()[0])
    return "\n".join([
        "# Growth of cost", "",
        f"Medians of {arguments.rounds} rounds of `scripts/bench scale`, with servers and clients "
        f"on one machine with {os.cpu_count()} processor cores and a load average of "
        f"{min(loads):.0f} to {max(loads):.0f}, the load of the benchmark included. nginx serves "
        "the same files in the same run, with sendfile, two workers and no access log; "
        f"`MaxUserSession` is {SESSIONS:,}.", "",
        "The last column of each table is the cost of a unit as a ratio to that in the row above: "
        "a value of at most 1, apart from variation between runs, means that cost grows no worse "
        "than linearly.", *sections, ""])
