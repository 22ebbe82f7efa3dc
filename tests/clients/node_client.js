// A client with Node's modules http and https. Its arguments, input and output are described in
// client_program.py. The workers share one agent, as is usual: one like the default agent, or one
// that keeps no connections open.
'use strict';

const crypto = require('crypto');
const fs = require('fs');
const readline = require('readline');

const [certificate, setting] = process.argv.slice(2);
const ca = fs.readFileSync(certificate);

function openAgent(transport) {
  return setting === 'helped'
    ? new transport.Agent({ keepAlive: false })
    : new transport.Agent(transport.globalAgent.options);
}

function send(transport, url, options) {
  return new Promise((resolve) => {
    const fail = (error) => resolve(`error ${error.code} ${error.message}`);
    const request = transport.request(url, options, (reply) => {
      const hash = crypto.createHash('sha256');
      let size = 0;
      reply.on('data', (piece) => {
        hash.update(piece);
        size += piece.length;
      });
      reply.on('end', () => resolve(`${reply.statusCode} ${size} ${hash.digest('hex')}`));
      reply.on('error', fail);
    });
    request.on('error', fail);
    request.end();
  });
}

async function sendAll(line) {
  const [method, url, count, workers, name, value] = line.split(' ');
  const transport = require(url.startsWith('https:') ? 'https' : 'http');
  const agent = openAgent(transport);
  const options = {
    method,
    agent,
    ca,
    family: 4, // the gateway listens on IPv4 addresses only
    headers: name === undefined ? {} : { [name]: value },
  };
  await Promise.all(
    Array.from({ length: Number(workers) }, async () => {
      for (let i = 0; i < count / workers; ++i) {
        console.log((await send(transport, url, options)).replaceAll('\n', ' '));
      }
    }),
  );
  agent.destroy();
}

(async () => {
  for await (const line of readline.createInterface({ input: process.stdin })) {
    await sendAll(line);
  }
})();
