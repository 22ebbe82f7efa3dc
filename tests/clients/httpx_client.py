"""A client with httpx; see client_program.py."""

import httpx

import client_program


def open_client(certificate, helped):
    limits = httpx.Limits(max_keepalive_connections=0) if helped else httpx.Limits()
    client = httpx.Client(verify=certificate, limits=limits, timeout=60)

    def send(method, url, headers):
        reply = client.request(method, url, headers=headers)
        return reply.status_code, reply.content

    return send


client_program.run(open_client)
