'use strict';
// The traces of a program that uses a logger already, or the console.
const { Writable } = require('stream');
const { INFO, WARN, ERROR, DEVELOPER, VERBOSE, NO_ROOM, Point, place, write } = require('./point');
const { formatted, shown, shownAsJson } = require('./texts');

const WORDS = new Map();
const enter = (attributes, words) => words.split(' ').forEach((word) => WORDS.set(word, attributes));
enter(ERROR, 'fatal emerg alert crit critical error');
enter(WARN, 'warn warning');
enter(INFO, 'notice info http');
enter(INFO | DEVELOPER, 'debug verbose');
enter(INFO | DEVELOPER | VERBOSE, 'trace silly');

// A word of the loggers in use, or a number as pino and bunyan have them: 30 is info.
function attributesOf(level) {
  if (typeof level !== 'number') return WORDS.get(String(level).toLowerCase()) ?? INFO;
  if (level >= 30) return level < 40 ? INFO : level < 50 ? WARN : ERROR;
  return level >= 20 ? INFO | DEVELOPER : INFO | DEVELOPER | VERBOSE;
}

// These are columns of their own, or say again what a trace has.
const COLUMNS = new Set(['level', 'name', 'logger', 'label', 'service', 'msg', 'message', 'time', 'timestamp',
  'pid', 'hostname', 'v']);

function nameOf(entry) {
  const name = entry.name ?? entry.logger ?? entry.label ?? entry.service;
  return name === undefined || name === null ? '' : shown(name);
}

// The message, the other fields as JSON, and a stack below them.
function textOf(entry) {
  const stack = entry.err?.stack ?? entry.stack;
  const isStack = (key) => stack !== undefined && (key === 'stack' || key === 'err');
  const rest = Object.entries(entry).filter(([key]) => !COLUMNS.has(key) && !isStack(key));
  const parts = [shown(entry.msg ?? entry.message ?? '')];
  if (rest.length > 0) parts.push(shownAsJson(Object.fromEntries(rest)));
  return parts.filter(Boolean).join(' ') + (stack === undefined ? '' : `\n${shown(stack)}`);
}

const notOfALibrary = (file) => !file.includes('/node_modules/');

// A stream for loggers: it takes the lines of JSON that pino and bunyan write, and the objects of winston. A
// line that is no JSON is traced as it is.
class LogStream extends Writable {
  #component;

  constructor({ component } = {}) {
    super({ objectMode: true, decodeStrings: false });
    this.#component = component;
  }

  // The calls of loggers. They return at once, so that the caller of the logger is on the stack.
  write(entry, encoding, callback) {
    this.#take(entry);
    const done = typeof encoding === 'function' ? encoding : callback;
    if (typeof done === 'function') process.nextTick(done);
    return true;
  }

  log(entry, callback) {
    this.#take(entry);
    callback?.();
  }

  _write(entry, encoding, callback) {
    this.#take(entry);
    callback();
  }

  #take(entry) {
    for (const each of entriesOf(entry)) {
      try {
        this.#traceEntry(each);
      } catch (error) {
        this.#traceEntry({ level: 'error', msg: `an entry cannot be traced: ${shown(error)}` });
      }
    }
  }

  #traceEntry(entry) {
    const attributes = attributesOf(entry.level);
    const name = nameOf(entry);
    const point = this.#pointOf(name);
    if (!point.isOn(attributes)) return;
    const text = point.category === NO_ROOM[1] ? `[${name}] ${textOf(entry)}` : textOf(entry);
    write(point, attributes, place(point, notOfALibrary), text);
  }

  #pointOf(name) {
    if (this.#component !== undefined) return new Point(this.#component, name || 'Log');
    const [, first, rest] = /^([^.:]*)[.:]?(.*)$/s.exec(name);
    return new Point(first || 'Log', rest || 'Log');
  }
}

function entriesOf(entry) {
  if (typeof entry === 'object' && entry !== null && !Buffer.isBuffer(entry)) return [entry];
  return shown(Buffer.isBuffer(entry) ? entry.toString() : entry).split('\n').filter(Boolean).map((line) => {
    try {
      const read = JSON.parse(line);
      return typeof read === 'object' && read !== null ? read : { msg: line };
    } catch {
      return { msg: line };
    }
  });
}

const CONSOLE = { debug: INFO | DEVELOPER, log: INFO, info: INFO, warn: WARN, error: ERROR };

// Traces what is written to the console, which is written there all the same. Gives the function that ends it.
function traceConsole({ component = 'Console', category = 'Log' } = {}) {
  const point = new Point(component, category);
  const before = {};
  for (const [method, attributes] of Object.entries(CONSOLE)) {
    const original = before[method] = console[method];
    console[method] = function (...values) {
      if (point.isOn(attributes)) {
        const [text, ...rest] = values.length > 0 ? values : [''];
        write(point, attributes, place(point), formatted(text, rest));
      }
      return original.apply(this, values);
    };
  }
  return () => Object.assign(console, before);
}

module.exports = { LogStream, traceConsole };
