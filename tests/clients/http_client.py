"""A client with http.client; see client_program.py."""

import http.client
import ssl
import urllib.parse

import client_program


def open_client(certificate, helped):
    connection = None

    def connect(url):
        if url.scheme == "http":
            return http.client.HTTPConnection(url.netloc)
        return http.client.HTTPSConnection(
            url.netloc, context=ssl.create_default_context(cafile=certificate))

    def send(method, url, headers):
        nonlocal connection
        url = urllib.parse.urlsplit(url)
        connection = connection or connect(url)
        try:
            connection.request(method, url.path, headers=headers)
            reply = connection.getresponse()
            result = reply.status, reply.read()
        except BaseException:
            connection.close()
            raise
        if helped:
            connection.close()
        return result

    return send


client_program.run(open_client)
