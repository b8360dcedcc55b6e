const quor = require('quor');

quor.application('orders');
const netConnect = new quor.Point('Net', 'Connect');
const dbQuery = new quor.Point('Database', 'Query');

async function query(number) {
  return quor.block(dbQuery, 'query %d', number, async () => {
    if (number > 1) dbQuery.error('query %d failed', number);
  });
}

async function main() {
  netConnect.info('connected to %s in %d ms', 'db.example.com', 12);
  await query(1);
  await query(2);
}

main();
