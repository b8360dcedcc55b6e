const quor = require('quor');

quor.application('orders');
quor.traceConsole({ component: 'Orders' });

console.info('connected to %s in %d ms', 'db.example.com', 12);
console.warn('query %d took %s s', 7, 2.5);
console.debug('for developers: off until it is switched on');
console.error('query 8 failed');
