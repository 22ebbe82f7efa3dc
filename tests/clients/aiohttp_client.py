"""A client with aiohttp; see client_program.py."""

import asyncio
import ssl

import aiohttp

import client_program


def open_client(certificate, helped):
    loop = asyncio.new_event_loop()

    async def open_session():
        context = ssl.create_default_context(cafile=certificate)
        return aiohttp.ClientSession(
            connector=aiohttp.TCPConnector(ssl=context, force_close=helped))

    session = loop.run_until_complete(open_session())

    async def request(method, url, headers):
        async with session.request(method, url, headers=headers) as reply:
            return reply.status, await reply.read()

    return lambda *arguments: loop.run_until_complete(request(*arguments))


client_program.run(open_client)
