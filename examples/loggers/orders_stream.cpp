#include <iostream>
#include <quor/ostream.hpp>
#include <quor/quor.hpp>

QUOR_APPLICATION("orders");
QUOR_POINT(orders_db, "orders", "db");

int main() {
  quor::OStream info(orders_db, QUOR_INFO);
  info << "connected to db.example.com in " << 12 << " ms\n";
  const quor::Redirect log(std::clog, orders_db, QUOR_WARN);
  std::clog << "query " << 7 << " took " << 2.5 << " s" << std::endl;
}
