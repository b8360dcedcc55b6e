// An application that is instrumented with OpenTelemetry's own SDK: handles some orders, and ends
// when all has been exported.
//
// usage: node orders.js URL ORDERS [--gzip] [--bare]
'use strict';
const api = require('@opentelemetry/api');
const { SeverityNumber } = require('@opentelemetry/api-logs');
const { LoggerProvider, BatchLogRecordProcessor } = require('@opentelemetry/sdk-logs');
const { OTLPLogExporter } = require('@opentelemetry/exporter-logs-otlp-proto');
const { NodeTracerProvider, BatchSpanProcessor } = require('@opentelemetry/sdk-trace-node');
const { OTLPTraceExporter } = require('@opentelemetry/exporter-trace-otlp-proto');
const { defaultResource, resourceFromAttributes } = require('@opentelemetry/resources');

const [url, orders, ...options] = process.argv.slice(2);
const compression = options.includes('--gzip') ? 'gzip' : 'none';
const described = resourceFromAttributes({
  'service.name': 'orders', 'service.namespace': 'shop', 'host.name': 'web1', 'process.pid': 4711,
});
// Without a configuration a program says no more than this of itself.
const resource = options.includes('--bare') ? defaultResource() : defaultResource().merge(described);
api.diag.setLogger(new api.DiagConsoleLogger(), api.DiagLogLevel.WARN);

const logs = new LoggerProvider({
  resource,
  processors: [new BatchLogRecordProcessor({
    exporter: new OTLPLogExporter({ url: `${url}/v1/logs`, compression }),
  })],
});
const traces = new NodeTracerProvider({
  resource,
  spanProcessors: [new BatchSpanProcessor(
    new OTLPTraceExporter({ url: `${url}/v1/traces`, compression }))],
});
const log = logs.getLogger('db.pool');
const tracer = traces.getTracer('web');

function handle(order) {
  const root = tracer.startSpan('POST /orders', { kind: api.SpanKind.SERVER });
  const inside = api.trace.setSpan(api.context.active(), root);
  const query = tracer.startSpan('insert', { attributes: { 'db.rows': order } }, inside);
  query.addEvent('cache miss');
  log.emit({
    severityNumber: SeverityNumber.WARN, severityText: 'WARN', body: `slow insert ${order}`,
    context: api.trace.setSpan(inside, query),
    attributes: { 'code.file.path': '/srv/orders/pool.js', 'code.line.number': 42,
                  'thread.name': 'main', user: 'Jörg' },
  });
  if (order % 3 === 2) {
    query.recordException({ name: 'Error', message: 'no connection', stack: 'at insert' });
    query.setStatus({ code: api.SpanStatusCode.ERROR, message: 'failed' });
  }
  query.end();
  root.end();
}

async function main() {
  for (let order = 0; order < Number(orders); ++order) {
    handle(order);
    // Two exports over one connection.
    if (order === 1) await logs.forceFlush();
  }
  await logs.shutdown();
  await traces.shutdown();
}
main();
