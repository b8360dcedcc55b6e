'use strict';
// Trace points and blocks. The settings of a point are read where the library writes them, so that a point
// that is off costs a load and a branch.
const path = require('path');
const { fileURLToPath } = require('url');
const { described, formatted, plain, shown } = require('./texts');

const INFO = 0x01, WARN = 0x02, ERROR = 0x04, DEVELOPER = 0x08, VERBOSE = 0x10;
const LOCATION = 0x100, UNREGISTERED = 0xFFFFFFFF;
const NOWHERE = ['', 0];
const LAST_POINT = 16383; // the number of all for which there is no room
const NO_ROOM = ['Quor', '(no room for more trace points)'];
const OWN = __dirname + path.sep;

function load() {
  const file = path.join(__dirname, '../build/quor.node');
  try {
    return require(file);
  } catch (error) {
    const why = /libquor\.so/.test(error.message)
      ? 'install the package libquor1, or put the folder of libquor.so.1 into LD_LIBRARY_PATH'
      : 'build it with `node build.js` in the folder of the package';
    throw new Error(`quor cannot be loaded: ${error.message.split('\n')[0]}; ${why}`);
  }
}

const native = load();
const points = new Map(); // by component, then by category

let isNamed = false;

function application(name) {
  native.application(plain(shown(name)), false);
  isNamed = true;
}

// The name of the script is better than that of the interpreter.
function nameByDefault() {
  isNamed = true;
  const script = process.argv[1];
  if (!script || !path.basename(process.execPath).startsWith('node')) return;
  const name = path.basename(script, path.extname(script));
  native.application(plain(name === 'index' ? path.basename(path.dirname(script)) : name), true);
}

function threadName(name) {
  if (!isNamed) nameByDefault();
  native.threadName(plain(shown(name)));
}

function restore(before) {
  for (const [name, value] of Object.entries(before)) {
    try {
      Error[name] = value;
    } catch {
      // It cannot be written to, and so it has not been.
    }
  }
}

// The first caller outside this package for which `isCaller` holds: [file, line].
function placeOfCaller(isCaller) {
  if (Object.isFrozen(Error)) return NOWHERE; // of a program with hardened built-ins
  const { prepareStackTrace, stackTraceLimit } = Error;
  const holder = {};
  try {
    Error.stackTraceLimit = isCaller ? 50 : 5;
    Error.prepareStackTrace = (_, sites) => sites;
    Error.captureStackTrace(holder, placeOfCaller);
    for (const site of holder.stack) {
      const name = site.getFileName();
      if (!name || name.startsWith('node:') || name.startsWith(OWN)) continue;
      const file = name.startsWith('file:') ? fileURLToPath(name) : name;
      if (!isCaller || isCaller(file)) return [file, site.getLineNumber() || 0];
    }
  } catch {
    // A host that gives no stack gives no place.
  } finally {
    restore({ prepareStackTrace, stackTraceLimit });
  }
  return NOWHERE;
}

let place, write; // for the other files of this package

// A Point is known by its names: the same names give the same Point.
class Point {
  #number;
  #settings;

  constructor(component, category) {
    if (typeof component !== 'string' || typeof category !== 'string')
      throw new TypeError('a trace point has a component and a category, both strings');
    const known = points.get(component)?.get(category);
    if (known) return known;
    this.#number = native.point(plain(component), plain(category));
    if (this.#number === LAST_POINT && component !== NO_ROOM[0]) return new Point(...NO_ROOM);
    this.#settings = new Uint32Array(native.settings(this.#number));
    this.component = component;
    this.category = category;
    if (!points.has(component)) points.set(component, new Map());
    points.get(component).set(category, this);
  }

  static {
    place = (point, isCaller) =>
      point.#settings[0] & LOCATION ? placeOfCaller(isCaller) : NOWHERE;
    write = (point, attributes, [file, line], text) => {
      if (!isNamed) nameByDefault(); // a library of the program has traced before
      native.trace(point.#number, attributes, file, line, plain(text));
    };
  }

  info(text, ...values) {
    if (this.#settings[0] & INFO) this.#trace(INFO, text, values);
  }

  warn(text, ...values) {
    if (this.#settings[0] & WARN) this.#trace(WARN, text, values);
  }

  error(text, ...values) {
    if (this.#settings[0] & ERROR) this.#trace(ERROR, text, values);
  }

  trace(attributes, text, ...values) {
    if ((this.#settings[0] & attributes) === attributes) this.#trace(attributes, text, values);
  }

  isOn(attributes = INFO) {
    const settings = this.#settings[0];
    if ((settings & attributes) !== attributes) return false;
    return settings !== UNREGISTERED || this.#isOnAtFirst(attributes);
  }

  #isOnAtFirst(attributes) {
    if (!isNamed) nameByDefault();
    return native.firstUse(this.#number, attributes);
  }

  #trace(attributes, text, values) {
    if (this.isOn(attributes)) write(this, attributes, place(this), formatted(text, values));
  }
}

// A block that has begun. A point that was off at the begin has no end.
class Block {
  #point;
  #place;
  #text;

  constructor(point, text, values) {
    if (!point.isOn(INFO)) return;
    this.#point = point;
    this.#place = place(point);
    this.#text = formatted(text, values);
    write(point, INFO, this.#place, `Begin: ${this.#text}`);
  }

  end() {
    const point = this.#point;
    this.#point = undefined;
    if (point) write(point, INFO, this.#place, `End: ${this.#text}`);
  }

  fail(error) {
    if (this.#point?.isOn(INFO | DEVELOPER))
      write(this.#point, INFO | DEVELOPER, this.#place, `left by ${described(error)}`);
    this.end();
  }
}

function begin(point, text, ...values) {
  return new Block(point, text, values);
}

// Read once; a value whose property cannot be read is no promise.
function thenOf(value) {
  try {
    return value?.then;
  } catch {
    return undefined;
  }
}

// block(point, text, ...values, body)
function block(point, text, ...values) {
  const body = values.pop();
  if (typeof body !== 'function') throw new TypeError('the last argument of a block is its function');
  const begun = new Block(point, text, values);
  let result;
  try {
    result = body();
  } catch (error) {
    begun.fail(error);
    throw error;
  }
  const then = thenOf(result);
  if (typeof then !== 'function') {
    begun.end();
    return result;
  }
  return then.call(result, (value) => {
    begun.end();
    return value;
  }, (error) => {
    begun.fail(error);
    throw error;
  });
}

module.exports = { INFO, WARN, ERROR, DEVELOPER, VERBOSE, NO_ROOM, Point, application, begin, block, native, place,
  threadName, write };
