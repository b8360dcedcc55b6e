#include "sample/sample_vocabulary.h"

#include <array>

#include "base/json_text.h"
#include "records/raw_trace.h"

namespace {

constexpr int kInfo = kAttributeInfo;
constexpr int kWarn = kAttributeWarn;
constexpr int kError = kAttributeError;
constexpr int kDeveloper = kAttributeInfo | kAttributeDeveloper;
constexpr int kVerbose = kAttributeInfo | kAttributeVerbose;
constexpr int kDetail = kAttributeInfo | kAttributeDeveloper | kAttributeVerbose;

constexpr SamplePoint kGatewayBlocks[] = {
    {"Http", "Request", "Gateway::Serve", "src/gateway/serve.cpp", 88, kInfo,
     "GET /shop/products/%N?lang=de&page=%n from %a, keep-alive, request %x"},
    {"Http", "Request", "Gateway::Serve", "src/gateway/serve.cpp", 88, kInfo,
     "POST /shop/cart/%x/items from %a, %n bytes of application/json, request %x"},
    {"Session", "Lookup", "SessionTable::Find", "src/gateway/session_table.cpp", 141, kDeveloper,
     "look up session %x%x in shard %n"},
    {"Route", "Forward", "Upstream::Forward", "src/gateway/upstream.cpp", 203, kDeveloper,
     "forward request %x to %a, attempt 1 of 3, deadline 1500 ms"},
};

constexpr SamplePoint kGatewayMessages[] = {
    {"Http", "Request", "Gateway::Reply", "src/gateway/serve.cpp", 131, kInfo,
     "200 OK in %m ms, %N bytes sent, cache miss, compressed with br from %N bytes, client %a"},
    {"Http", "Request", "Gateway::Reply", "src/gateway/serve.cpp", 134, kInfo,
     "304 Not Modified in %m ms for /static/img/%x.webp, client %a"},
    {"Http", "Headers", "Header::Parse", "src/gateway/header.cpp", 57, kDetail,
     "accept-language: de-DE,de;q=0.9,en;q=0.%n; user-agent: Mozilla/5.0 (X11; Linux x86_64) "
     "rv:%n.0; cookie of %n bytes"},
    {"Session", "Lookup", "SessionTable::Find", "src/gateway/session_table.cpp", 158, kDeveloper,
     "session %x belongs to %u, last seen %n s ago, %n entries in the shard"},
    {"Session", "Expiry", "SessionTable::Sweep", "src/gateway/session_table.cpp", 240, kVerbose,
     "swept %n expired sessions of %N in %m ms; oldest was idle for %n minutes"},
    {"Route", "Forward", "Upstream::Measure", "src/gateway/upstream.cpp", 266, kVerbose,
     "upstream %a answers in %m ms (median %m, 99th percentile %m), weight now %n"},
    {"Route", "Health", "Upstream::Probe", "src/gateway/upstream.cpp", 311, kWarn,
     "upstream %a did not answer the health probe within 250 ms (%n of 3), still in rotation"},
    {"Http", "Limits", "RateLimit::Check", "src/gateway/rate_limit.cpp", 72, kWarn,
     "429 Too Many Requests for %a: %n requests in 10 s, allowed 120; retry after %n s"},
    {"Route", "Forward", "Upstream::Forward", "src/gateway/upstream.cpp", 229, kError,
     "cannot connect to %a: Connection refused; request %x answered with 502 Bad Gateway"},
};

constexpr SamplePoint kShopBlocks[] = {
    {"Cart", "Update", "Cart::AddItem", "src/shop/cart.cpp", 64, kInfo,
     "add %n x \"%p\" to the cart of %u (cart %x)"},
    {"Payment", "Charge", "Payment::Charge", "src/shop/payment.cpp", 118, kInfo,
     "charge %n.%c EUR for order %N of %u, method card, reference %x"},
    {"Catalogue", "Query", "Catalogue::Search", "src/shop/catalogue.cpp", 205, kInfo,
     "search \"%p\" sorted by price, page %n, at most 48 hits"},
    {"Sql", "Query", "Connection::Run", "src/common/sql_connection.cpp", 91, kDeveloper,
     "SELECT id, title, price FROM product WHERE shelf = %n AND stock > 0 ORDER BY price"},
    {"Cache", "Refresh", "Cache::Refresh", "src/common/cache.cpp", 150, kDeveloper,
     "refresh product:%N, stale for %n s"},
};

constexpr SamplePoint kShopMessages[] = {
    {"Cart", "Update", "Cart::AddItem", "src/shop/cart.cpp", 79, kInfo,
     "cart %x of %u now holds %n items worth %n.%c €, voucher FRÜHLING%n applied"},
    {"Catalogue", "Query", "Catalogue::Search", "src/shop/catalogue.cpp", 231, kInfo,
     "%n hits for \"%p\" in %m ms, %n filtered out because they do not ship to the country"},
    {"Sql", "Query", "Connection::Run", "src/common/sql_connection.cpp", 117, kDeveloper,
     "%n rows in %m ms on connection %n; plan: index scan on product_shelf_price, cost %N"},
    {"Sql", "Pool", "Pool::Take", "src/common/sql_pool.cpp", 48, kVerbose,
     "connection %n taken, %n of 64 in use, longest wait in the last minute %m ms"},
    {"Cache", "Lookup", "Cache::Get", "src/common/cache.cpp", 77, kDetail,
     "hit product:%N (%n bytes, age %n s); hit rate %n per mille over the last 10,000 look-ups"},
    {"Cache", "Lookup", "Cache::Get", "src/common/cache.cpp", 83, kDetail,
     "miss product:%N, asking %a, bucket %x, %n waiting behind the same key"},
    {"Payment", "Charge", "Payment::Confirm", "src/shop/payment.cpp", 166, kInfo,
     "order %N of %u confirmed by the bank after %m ms, authorisation %x, 支払い済み"},
    {"Payment", "Retry", "Payment::Retry", "src/shop/payment.cpp", 190, kWarn,
     "no answer for reference %x after 2000 ms, asking again (attempt %n); nothing charged yet"},
    {"Sql", "Query", "Connection::Run", "src/common/sql_connection.cpp", 129, kWarn,
     "slow query: %m s for %N rows, sequential scan on order_line; missing index on (order_id)?"},
    {"Payment", "Charge", "Payment::Fail", "src/shop/payment.cpp", 211, kError,
     "charge of order %N of %u refused: insufficient funds (code 51), reference %x"},
    {"Cart", "Update", "Cart::Lock", "src/shop/cart.cpp", 143, kError,
     "cart %x is locked by another request since %n ms, update for %u given up"},
};

constexpr SamplePoint kDatabaseBlocks[] = {
    {"Transaction", "Commit", "Transaction::Commit", "src/store/transaction.cpp", 172, kInfo,
     "commit transaction %N, %n pages, log position 0/%x"},
    {"Log", "Flush", "WriteAheadLog::Flush", "src/store/write_ahead_log.cpp", 95, kDeveloper,
     "flush log up to 0/%x, %n records, group of %n transactions"},
    {"Vacuum", "Table", "Vacuum::Table", "src/store/vacuum.cpp", 60, kInfo,
     "vacuum table order_line, %N pages, %N dead rows expected"},
};

constexpr SamplePoint kDatabaseMessages[] = {
    {"Transaction", "Commit", "Transaction::Commit", "src/store/transaction.cpp", 188, kInfo,
     "transaction %N committed in %m ms, %n rows written, %n indexes touched, snapshot %x"},
    {"Lock", "Wait", "LockTable::Wait", "src/store/lock_table.cpp", 121, kDeveloper,
     "transaction %N waits for row lock %x held by transaction %N, queue length %n"},
    {"Log", "Flush", "WriteAheadLog::Write", "src/store/write_ahead_log.cpp", 133, kVerbose,
     "%N bytes in %m ms to segment %x, %n µs in fdatasync, device queue %n"},
    {"Buffer", "Evict", "BufferPool::Evict", "src/store/buffer_pool.cpp", 207, kDetail,
     "page %N of file %n evicted, usage 0, dirty no; clock hand at %N, free list %n"},
    {"Checkpoint", "Progress", "Checkpoint::Step", "src/store/checkpoint.cpp", 82, kInfo,
     "checkpoint %n %% done: %N buffers written, %m s since the start, target completion 0.9"},
    {"Lock", "Wait", "LockTable::Wait", "src/store/lock_table.cpp", 140, kWarn,
     "transaction %N has waited %n ms for lock %x; holder is idle in transaction, client %a"},
    {"Lock", "Deadlock", "LockTable::Resolve", "src/store/lock_table.cpp", 264, kError,
     "deadlock between transactions %N and %N over rows of order_line; the younger is rolled back"},
};

constexpr SamplePoint kExportBlocks[] = {
    {"Export", "File", "export_file", "nightly/export.py", 41, kInfo,
     "write orders-%n.csv for branch Köln-Süd, %N rows"},
    {"Mail", "Send", "send_report", "nightly/mail.py", 77, kInfo,
     "send the nightly report to %u, 3 attachments"},
};

constexpr SamplePoint kExportMessages[] = {
    {"Export", "File", "export_file", "nightly/export.py", 63, kInfo,
     "Zeile %N: „%p“, Menge %n, Übertrag %n,%c €"},
    {"Export", "Check", "check_row", "nightly/check.py", 29, kVerbose,
     "row %N agrees with the ledger (%x), difference 0.00, checked %n columns"},
    {"Mail", "Send", "send_report", "nightly/mail.py", 101, kInfo,
     "250 2.0.0 Ok: queued as %x; %u receives %N bytes"},
    {"Export", "Check", "check_row", "nightly/check.py", 35, kWarn,
     "row %N: the name „%p“ holds a character that the ledger's code page lacks, replaced by "
     "\"?\""},
    {"Mail", "Send", "send_report", "nightly/mail.py", 118, kError,
     "%u: 550 5.1.1 mailbox unavailable; traceback\n  send_report\n  deliver\nSMTPError: %n"},
};

constexpr SampleApp kGateway = {"gateway", 6, true, kGatewayBlocks, kGatewayMessages};
constexpr SampleApp kShop = {"shop", 5, true, kShopBlocks, kShopMessages};
constexpr SampleApp kDatabase = {"orders-db", 4, true, kDatabaseBlocks, kDatabaseMessages};
constexpr SampleApp kExport = {"nightly-export", 2, false, kExportBlocks, kExportMessages};

constexpr SampleProcess kProcesses[] = {
    {"web-01", &kGateway}, {"web-01", &kShop},    {"web-01", &kShop},    {"web-02", &kGateway},
    {"web-02", &kShop},    {"db-01", &kDatabase}, {"db-01", &kDatabase}, {"büro-03", &kExport},
};

constexpr std::array kPeople = {"Zoë Krüger", "Łukasz Nowak",  "mario.rossi", "佐藤さくら",
                                "Anna Berg",  "Siân Ó Briain", "guest",       "Ελένη Παππά"};
constexpr std::array kProducts = {"Gießkanne 5 l, grün", "desk lamp \"Ålesund\"",
                                  "crème brûlée set",    "notebook A5 dotted",
                                  "抹茶 tea tin 100 g",  "USB-C cable 2 m"};

void AppendTens(std::string& to, std::uint32_t tenths) {
  AppendNumber(to, tenths / 10);
  to.push_back('.');
  AppendNumber(to, tenths % 10);
}

void AppendHexWord(std::string& to, std::uint32_t value) {
  char bytes[4];
  StoreBe32(bytes, value);
  AppendHex(to, {bytes, sizeof bytes});
}

void AppendAddress(std::string& to, SampleRandom& random) {
  to.append("10.4.");
  AppendNumber(to, random.Below(8));
  to.push_back('.');
  AppendNumber(to, 1 + random.Below(254));
  to.push_back(':');
  AppendNumber(to, 1024 + random.Below(60000));
}

void AppendPlace(std::string& to, char place, SampleRandom& random) {
  switch (place) {
    case 'n':
      return AppendNumber(to, 1 + random.Below(999));
    case 'N':
      return AppendNumber(to, 1000 + random.Below(9'000'000));
    case 'x':
      return AppendHexWord(to, random.Below(0xFFFFFFFF));
    case 'c':
      to.push_back(static_cast<char>('0' + random.Below(10)));
      to.push_back(static_cast<char>('0' + random.Below(10)));
      return;
    case 'm':
      return AppendTens(to, 1 + random.Below(4000));
    case 'u':
      to.append(kPeople[random.Below(kPeople.size())]);
      return;
    case 'p':
      to.append(kProducts[random.Below(kProducts.size())]);
      return;
    case 'a':
      return AppendAddress(to, random);
    default:
      to.push_back(place);
  }
}

}  // namespace

std::span<const SampleProcess> SampleProcesses() {
  return kProcesses;
}

void AppendFilled(std::string& to, std::string_view text, SampleRandom& random) {
  for (;;) {
    const std::size_t mark = text.find('%');
    to.append(text.substr(0, mark));
    if (mark == std::string_view::npos || mark + 1 == text.size()) return;
    AppendPlace(to, text[mark + 1], random);
    text.remove_prefix(mark + 2);
  }
}
