"""A client with requests; see client_program.py."""

import requests
from requests.adapters import HTTPAdapter
from urllib3.util.retry import Retry

import client_program


def open_client(certificate, helped):
    session = requests.Session()
    session.trust_env = False  # the environment would replace the certificate
    session.verify = certificate
    if helped:
        retry = HTTPAdapter(max_retries=Retry(total=3, status=0, backoff_factor=0.1))
        session.mount("http://", retry)
        session.mount("https://", retry)

    def send(method, url, headers):
        reply = session.request(method, url, headers=headers)
        return reply.status_code, reply.content

    return send


client_program.run(open_client)
