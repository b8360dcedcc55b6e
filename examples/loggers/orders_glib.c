#define G_LOG_USE_STRUCTURED
#define G_LOG_DOMAIN "orders.db"
#include <glib.h>
#include <quor/glib.h>

int main(void) {
  quor_application("orders");
  g_log_set_writer_func(quor_glib_writer, NULL, NULL);
  g_message("connected to %s in %d ms", "db.example.com", 12);
  g_warning("query %d took %.1f s", 7, 2.5);
  g_debug("for developers: off until it is switched on");
  g_critical("query %d failed", 8);
  return 0;
}
