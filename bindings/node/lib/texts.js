'use strict';
// Texts for the library. Nothing here throws.
const { format } = require('util');

// A record takes 65,535 bytes, and the library cuts between two characters.
const LONGEST = 65536;

function described(error) {
  try {
    return error instanceof Error ? `${error.name}: ${error.message}` : String(error);
  } catch {
    return 'an error that cannot be shown';
  }
}

function shown(value) {
  try {
    return typeof value === 'string' ? value : format(value);
  } catch (error) {
    return `(a value that cannot be shown: ${described(error)})`;
  }
}

function formatted(text, values) {
  try {
    return values.length === 0 ? shown(text) : format(text, ...values);
  } catch (error) {
    return `${shown(text)} (cannot be formatted: ${described(error)})`;
  }
}

function shownAsJson(value) {
  try {
    return format('%j', value);
  } catch { // a BigInt, or a toJSON that fails
    return shown(value);
  }
}

// A NUL would end the text for its readers.
function plain(text) {
  const short = text.length > LONGEST ? text.slice(0, LONGEST) : text;
  return short.includes('\0') ? short.replace(/\0/g, '\\x00') : short;
}

module.exports = { described, formatted, plain, shown, shownAsJson };
