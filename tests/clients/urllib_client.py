"""A client with urllib; see client_program.py."""

import ssl
import urllib.error
import urllib.request

import client_program


def open_client(certificate, _):
    context = ssl.create_default_context(cafile=certificate)
    opener = urllib.request.build_opener(urllib.request.HTTPSHandler(context=context))

    def send(method, url, headers):
        request = urllib.request.Request(url, headers=headers, method=method)
        try:
            with opener.open(request) as reply:
                return reply.status, reply.read()
        except urllib.error.HTTPError as reply:
            return reply.code, reply.read()

    return send


client_program.run(open_client)
