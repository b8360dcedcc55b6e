'use strict';
const { INFO, WARN, ERROR, DEVELOPER, VERBOSE, Point, application, begin, block, native,
  threadName } = require('./lib/point');
const { LogStream, traceConsole } = require('./lib/logs');

function flush(milliseconds) {
  return native.flush(Math.min(Math.max(Number(milliseconds) || 0, 0), 0xFFFFFFFF));
}

function counts() {
  const [traced, lost] = native.counts();
  return { traced, lost };
}

module.exports = { INFO, WARN, ERROR, DEVELOPER, VERBOSE, Point, LogStream, application, begin, block, counts,
  flush, threadName, traceConsole };
