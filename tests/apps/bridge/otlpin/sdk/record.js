// Records what an exporter sends: the bytes of each connection in a file of its own.
//
// usage: node record.js PREFIX [refuse|drop] -- COMMAND...
//   URL in the command is replaced by the address to send to. refuse: the first request gets
//   503 with Retry-After. drop: its connection ends without an answer.
'use strict';
const fs = require('fs');
const net = require('net');
const { spawn } = require('child_process');

const end = process.argv.indexOf('--');
const [prefix, fault] = process.argv.slice(2, end);
const command = process.argv.slice(end + 1);
let connections = 0, requests = 0;

// The end of a request: the SDK sends chunks, and the last one is empty.
const isWhole = (bytes) => bytes.subarray(-5).toString('latin1') === '0\r\n\r\n';

const server = net.createServer((socket) => {
  const file = `${prefix}.${++connections}.http`;
  let request = Buffer.alloc(0);
  fs.writeFileSync(file, '');
  socket.on('error', () => {});
  socket.on('data', (bytes) => {
    fs.appendFileSync(file, bytes);
    request = Buffer.concat([request, bytes]);
    if (!isWhole(request)) return;
    request = Buffer.alloc(0);
    const isFirst = ++requests === 1;
    if (isFirst && fault === 'drop') return socket.destroy();
    const head = isFirst && fault === 'refuse'
      ? 'HTTP/1.1 503 Service Unavailable\r\nRetry-After: 1\r\n' : 'HTTP/1.1 200 OK\r\n';
    socket.write(`${head}Content-Type: application/x-protobuf\r\nContent-Length: 0\r\n\r\n`);
  });
});
server.listen(0, '127.0.0.1', () => {
  const url = `http://127.0.0.1:${server.address().port}`;
  const [program, ...words] = command.map((word) => (word === 'URL' ? url : word));
  spawn(program, words, { stdio: 'inherit' }).on('exit', (status) => process.exit(status));
});
