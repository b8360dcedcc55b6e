import { Writable } from 'stream';

/** What a trace is: exactly one of INFO, WARN and ERROR, with DEVELOPER, VERBOSE or both. */
export const INFO: number;
export const WARN: number;
export const ERROR: number;
export const DEVELOPER: number;
export const VERBOSE: number;

/** Names this program in the monitor. Without this call it has the name of its script. */
export function application(name: string): void;
/** Names this thread, the main one or a worker, in its traces, instead of its number. */
export function threadName(name: string): void;

/** A trace point. The same names give the same Point. Texts are formatted as by `util.format`, and only where
 *  the point is on. No trace throws. */
export class Point {
  constructor(component: string, category: string);
  readonly component: string;
  readonly category: string;
  info(text: unknown, ...values: unknown[]): void;
  warn(text: unknown, ...values: unknown[]): void;
  error(text: unknown, ...values: unknown[]): void;
  trace(attributes: number, text: unknown, ...values: unknown[]): void;
  /** Whether a trace with these attributes passes now; INFO without them. */
  isOn(attributes?: number): boolean;
}

/** Traces "Begin: TEXT", calls the function, and traces "End: TEXT" when it returns, or when its promise is
 *  settled. Gives what the function gives. An exception is traced for developers, and goes on. */
export function block<T>(point: Point, text: unknown, ...valuesAndBody: [...values: unknown[], body: () => T]): T;

/** A block that ends elsewhere. */
export interface Block {
  end(): void;
  /** Traces the error for developers, and the end. */
  fail(error: unknown): void;
}
export function begin(point: Point, text: unknown, ...values: unknown[]): Block;

/** A destination for pino and bunyan, and a transport for winston. */
export class LogStream extends Writable {
  /** With a component, the names of loggers are its categories. */
  constructor(options?: { component?: string });
  log(entry: object, callback?: () => void): void;
}

/** Traces what is written to the console, too. Gives the function that ends it. */
export function traceConsole(options?: { component?: string; category?: string }): () => void;

/** Waits until all traces have left the process; false if they have not after that time. */
export function flush(milliseconds: number): boolean;
/** Of this process: traced = lost + delivered (now or later). */
export function counts(): { traced: number; lost: number };
