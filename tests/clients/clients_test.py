#!/usr/bin/env python3
"""Tests what a real client sees: downloads, api queries, notifications, reuse of a client object,
refusals, resumed and truncated downloads.

usage: clients_test.py CLIENT PROGRAM

CLIENT is one of the names in clients.py, PROGRAM a built quorin-gateway. Prints how many requests
failed that reused a client object. Exit code 0: passed; 77: the client is not installed.
"""

import collections
import hashlib
import os
import pathlib
import sys
import time
import unittest

from clients import CLIENTS, UNNOTICED, MissingError, Plan, Result

TREE = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(TREE / "scripts"))
from gateway_process import ORGANIZATION, Gateway, Site  # noqa: E402

SKIPPED = 77
MIB = 1024 * 1024
LARGE, SMALL = 20 * MIB, MIB
SESSIONS = 10
PARALLEL = 50
REUSES = 10
PARTIAL = 1000  # bytes of a download that is resumed

RESET = ("X-Quorin-Notification-Reset-Date", "2025-01-01T00:00:00Z")
PENDING = b'{"RemoteSetting":{"IsExist":true,"LastUpdated":"2024-01-01T00:00:00Z"}}'
EMPTY = b"{}"
API_DOCUMENT = b'{"OrganizationId":"%s"}' % ORGANIZATION.encode()
SECOND_REPLY = b"HTTP/1.1 500 Internal Server Error\r\n\r\n"


def reply(status, content=b""):
    return Result(status, len(content), hashlib.sha256(content).hexdigest())


class ClientTest(unittest.TestCase):
    # Set by main().
    program = None
    client = None
    site = None
    content = {}
    sender = None

    gateway = None
    tls = False
    request_timeout = 600

    @classmethod
    def setUpClass(cls):
        cls.gateway = Gateway(cls.program, cls.site, tls=cls.tls, sessions=SESSIONS,
                              request_timeout=cls.request_timeout)

    @classmethod
    def tearDownClass(cls):
        if not cls.gateway.stop():
            raise AssertionError("the gateway did not exit with 0")

    def url(self, target):
        return self.gateway.address + target

    def send(self, target, *arguments, **more):
        return self.sender.send(Plan(self.url(target), *arguments, **more), self.site.certificate)


class ServingTest(ClientTest):
    def test_downloads_large_file(self):
        self.assertEqual(self.send("/fwfiles/large"), [reply(200, self.content["large"])])

    def test_sends_api_query(self):
        self.assertEqual(self.send("/api/WebApiOrganizationId"), [reply(200, API_DOCUMENT)])

    def test_acknowledges_notification(self):
        file = self.site.notifications / "1.json"
        file.write_bytes(PENDING)
        self.assertEqual(self.send("/notifications/1.json"), [reply(200, PENDING)])
        self.assertEqual(self.send("/notifications/1.json", "DELETE", header=RESET), [reply(204)])
        self.assertEqual(self.send("/notifications/1.json"), [reply(200, EMPTY)])

    def test_shows_second_reply_as_content(self):
        self.assertEqual(self.send("/fwfiles/missing"), [reply(404, SECOND_REPLY)])

    def test_downloads_50_files_at_once(self):
        self.assertEqual(self.send("/fwfiles/small", count=PARALLEL, workers=PARALLEL),
                         [reply(200, self.content["small"])] * PARALLEL)

    def test_ignores_range(self):
        self.assertEqual(self.send("/fwfiles/small", header=("Range", f"bytes={PARTIAL}-")),
                         [reply(200, self.content["small"])])

    def test_resumes_download_of_older_version(self):
        if self.client.resume_code is None:
            self.skipTest("the client cannot resume a download")
        file = self.site.folder / "partial"
        older = b"x" * PARTIAL
        file.write_bytes(older)
        code = self.sender.resume(self.url("/fwfiles/small"), self.site.certificate, file)
        self.assertEqual(code, self.client.resume_code)
        rest = self.content["small"][PARTIAL:] if code == 0 else b""
        self.assertEqual(file.read_bytes(), older + rest)

    def check_reuse(self, method, expected, *arguments, **more):
        for helped in (False, True) if self.client.fails_on_reuse else (False,):
            results = self.send(*arguments, method, count=REUSES, helped=helped, **more)
            errors = [result.error for result in results if result.error]
            print(f"{method} over {'HTTPS' if self.tls else 'HTTP'}, "
                  f"{'with' if helped else 'without'} the setting: "
                  f"{len(errors)} of {REUSES} failed {dict(collections.Counter(errors))}")
            self.assertEqual([result for result in results if not result.error],
                             [expected] * (REUSES - len(errors)))
            if helped or not self.client.fails_on_reuse:  # else a race decides
                self.assertEqual(errors, [])

    def test_reuses_client_for_downloads(self):
        self.check_reuse("GET", reply(200, self.content["small"]), "/fwfiles/small")

    def test_reuses_client_for_acknowledgements(self):
        (self.site.notifications / "2.json").write_bytes(PENDING)
        self.check_reuse("DELETE", reply(204), "/notifications/2.json", header=RESET)


class HttpTest(ServingTest):
    pass


class HttpsTest(ServingTest):
    tls = True


class TruncationTest(ClientTest):
    request_timeout = 0  # ends every transfer of a file after its header

    def test_truncated_download(self):
        result = self.send("/fwfiles/small")[0]
        print(f"truncated download: {result.error or UNNOTICED}")
        if result.error is None:
            self.assertEqual(result, reply(200))
        self.assertTrue(any(text in (result.error or UNNOTICED)
                            for text in self.client.truncation), result)


def load_tests(loader, _, __):
    return unittest.TestSuite(loader.loadTestsFromTestCase(case)
                              for case in (HttpTest, HttpsTest, TruncationTest))


def main():
    if len(sys.argv) != 3 or sys.argv[1] not in CLIENTS:
        sys.exit(f"{__doc__}\nCLIENT: {', '.join(CLIENTS)}")
    ClientTest.client = CLIENTS[sys.argv[1]]
    ClientTest.program = pathlib.Path(sys.argv[2]).resolve()
    with Site() as site:
        ClientTest.site = site
        try:
            ClientTest.sender = ClientTest.client.open(site.folder)
        except MissingError as error:
            print(f"skipped: {error}")
            return SKIPPED
        for name, size in (("large", LARGE), ("small", SMALL)):
            ClientTest.content[name] = os.urandom(size)
            (site.files / name).write_bytes(ClientTest.content[name])
        start = time.monotonic()
        outcome = unittest.main(argv=sys.argv[:1], exit=False, verbosity=2)
        ClientTest.sender.close()
        print(f"{time.monotonic() - start:.1f} seconds")
        return 0 if outcome.result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main())
