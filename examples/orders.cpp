// A traced program in C++: names itself, declares its trace points, traces.
#include <iostream>
#include <string>

#include <quor/quor.hpp>

QUOR_APPLICATION("orders");
QUOR_POINT(net_connect, "Net", "Connect");
QUOR_POINT(db_query, "Database", "Query");

namespace {

void Query(int number) {
  QUOR_BLOCK(db_query, "query {}", number);
  QUOR_TRACE_AT(db_query, QUOR_INFO | QUOR_DEVELOPER, "for developers: off until switched on");
  if (number > 1) QUOR_TRACE_ERROR(db_query, "query {} failed", number);
}

}  // namespace

int main() {
  const std::string host = "db.example.com";
  QUOR_TRACE_INFO(net_connect, "connected to {} in {} ms", host, 12.5);
  Query(2);

  quor_counts counts{};
  quor_get_counts(&counts);
  std::cout << "traced " << counts.traced << ", lost " << counts.lost << '\n';
}
