#include "shop.h"

#include <cstddef>
#include <random>
#include <string>

#include "quor/quor.hpp"

QUOR_POINT(worker_queue, "Worker", "Queue");
QUOR_POINT(http_request, "Http", "Request");
QUOR_POINT(http_session, "Http", "Session");
QUOR_POINT(orders_place, "Orders", "Place");
QUOR_POINT(orders_stock, "Orders", "Stock");
QUOR_POINT(database_query, "Database", "Query");
QUOR_POINT(database_connection, "Database", "Connection");
QUOR_POINT(payment_charge, "Payment", "Charge");

namespace {

constexpr const char* kCustomers[] = {"anna",  "bao",    "carlos",     "dilek",
                                      "emeka", "fatima", "g\u00fcnter"};
constexpr const char* kArticles[] = {"blue kettle",  "desk lamp",   "travel mug", "wool blanket",
                                     "tea strainer", "garden hose", "step stool"};
constexpr const char* kProviders[] = {"cardhouse", "paynow"};

class Worker {
 public:
  Worker(unsigned number, Pace& pace) : m_number(number), m_pace(pace), m_random(number) {}

  void Run() {
    for (unsigned turn = 0; !m_pace.Stopped(); ++turn) {
      if (turn % 8 == 0) LookAtQueue();
      if (Chance(25))
        Browse();
      else
        Order();
    }
  }

 private:
  bool Chance(int percent) { return Number(1, 100) <= percent; }
  int Number(int from, int to) { return std::uniform_int_distribution<int>(from, to)(m_random); }
  template <class T, std::size_t N>
  T Any(T const (&list)[N]) {
    return list[static_cast<std::size_t>(Number(0, static_cast<int>(N) - 1))];
  }
  int NextId() { return static_cast<int>(m_number) * 100000 + ++m_requests; }

  void LookAtQueue() {
    const int waiting = Number(0, 30);
    m_pace.Wait();
    if (waiting > 26)
      QUOR_TRACE_WARN(worker_queue, "{} requests wait, the oldest for {} ms", waiting,
                      waiting * 40);
    else
      QUOR_TRACE_INFO(worker_queue, "{} requests wait", waiting);
  }

  void Browse() {
    const int request = NextId();
    m_pace.Wait(2);
    QUOR_BLOCK(http_request, "request {}: GET /articles", request);
    Session();
    Query("select name, price from articles where shown order by name", "articles", Number(20, 60));
    Answer(request, 200);
  }

  void Order() {
    const int request = NextId();
    m_pace.Wait(2);
    QUOR_BLOCK(http_request, "request {}: POST /orders", request);
    Session();
    const bool paid = PlaceOrder(request);
    Answer(request, paid ? 201 : 402);
  }

  void Session() {
    m_pace.Wait();
    QUOR_TRACE_INFO(http_session, "customer {} from 10.0.{}.{}", Any(kCustomers), Number(0, 9),
                    Number(1, 254));
    QUOR_TRACE_AT(http_session, QUOR_INFO | QUOR_VERBOSE,
                  "cookie theme=light; basket={}; accepts gzip, br; {} headers", Number(1, 9),
                  Number(8, 20));
  }

  bool PlaceOrder(int order) {
    m_pace.Wait(2);
    QUOR_BLOCK(orders_place, "place order {}", order);
    const char* const article = Any(kArticles);
    const int wanted = Number(1, 4), held = Number(0, 40);
    m_pace.Wait();
    if (held < wanted) {
      QUOR_TRACE_WARN(orders_stock, "{}: {} wanted, {} left, rest ordered from the depot", article,
                      wanted, held);
    } else {
      QUOR_TRACE_INFO(orders_stock, "{}: {} reserved, {} left", article, wanted, held - wanted);
    }
    Query("insert into orders (id, article, pieces) values (?, ?, ?)", "orders", 1);
    return Charge(order, wanted * Number(500, 9000));
  }

  void Query(const char* sql, const char* table, int rows) {
    m_pace.Wait(2);
    QUOR_BLOCK(database_query, "query {}", table);
    QUOR_TRACE_AT(database_query, QUOR_INFO | QUOR_DEVELOPER, "{}", sql);
    if (Chance(2)) Reconnect();
    const int ms = Chance(6) ? Number(300, 900) : Number(1, 20);
    m_pace.Wait();
    if (ms >= 300)
      QUOR_TRACE_WARN(database_query, "slow: {} rows in {} ms", rows, ms);
    else
      QUOR_TRACE_INFO(database_query, "{} rows in {} ms", rows, ms);
  }

  void Reconnect() {
    m_pace.Wait(3);
    QUOR_TRACE_ERROR(database_connection, "connection to db-{} lost: the server closed it",
                     Number(1, 3));
    QUOR_BLOCK(database_connection, "connect");
    QUOR_TRACE_AT(database_connection, QUOR_INFO | QUOR_DEVELOPER,
                  "pool: {} of 8 connections in use", Number(1, 8));
  }

  bool Charge(int order, int cents) {
    const char* const provider = Any(kProviders);
    m_pace.Wait(3);
    QUOR_BLOCK(payment_charge, "charge {}.{}{} EUR for order {}", cents / 100, cents / 10 % 10,
               cents % 10, order);
    QUOR_TRACE_AT(payment_charge, QUOR_INFO | QUOR_DEVELOPER, "provider {}, attempt 1, key {}",
                  provider, order * 7919LL);
    if (Chance(4)) {
      QUOR_TRACE_ERROR(payment_charge, "{} does not answer, order {} stays open", provider, order);
      return false;
    }
    if (Chance(8)) {
      QUOR_TRACE_WARN(payment_charge, "{} declined the card", provider);
      return false;
    }
    QUOR_TRACE_INFO(payment_charge, "{} accepted the card", provider);
    return true;
  }

  void Answer(int request, int status) {
    m_pace.Wait();
    QUOR_TRACE_INFO(http_request, "request {}: {} in {} ms", request, status, Number(4, 120));
  }

  const unsigned m_number;
  Pace& m_pace;
  std::mt19937 m_random;
  int m_requests = 0;
};

}  // namespace

void RunWorker(unsigned number, Pace& pace) {
  quor_thread_name(("worker " + std::to_string(number)).c_str());
  Worker(number, pace).Run();
}
