"""The command line, input and output of the client programs in this folder that are written in
Python.

usage: PROGRAM CERTIFICATE default|helped

"helped" applies the setting that docs/clients.md recommends to reuse a client object. Each line of
the standard input is

    METHOD URL COUNT WORKERS [NAME VALUE]

and asks for COUNT requests, each with the header NAME: VALUE if it is given. With one worker, they
are sent one after the other with the same client object, which no other line uses. Otherwise that
number of workers share them, each with its own client object. Prints one line for each request: its
status, the number of bytes received and their SHA-256, or "error" and the error.
"""

import concurrent.futures
import hashlib
import sys


def run(open_client):
    """open_client(certificate, helped) returns a function (method, url, headers) that returns the
    status and the content."""
    certificate, setting = sys.argv[1:]

    def send(number, method, url, *header):
        client = open_client(certificate, setting == "helped")
        headers = {header[0]: header[1]} if header else {}
        lines = []
        for _ in range(number):
            try:
                status, content = client(method, url, headers)
                lines.append(f"{status} {len(content)} {hashlib.sha256(content).hexdigest()}")
            except Exception as error:  # any error of a client is its result
                lines.append("error " + repr(error).replace("\n", " "))
        return lines

    for line in sys.stdin:
        method, url, count, workers, *header = line.split()
        workers = int(workers)
        with concurrent.futures.ThreadPoolExecutor(workers) as pool:
            results = [pool.submit(send, int(count) // workers, method, url, *header)
                       for _ in range(workers)]
            for result in results:
                print("\n".join(result.result()), flush=True)
