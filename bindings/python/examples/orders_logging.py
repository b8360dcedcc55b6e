import logging

import quor

quor.application("orders")
logging.basicConfig(level=logging.DEBUG, handlers=[quor.Handler()])
log = logging.getLogger("orders.db")

log.info("connected to %s in %d ms", "db.example.com", 12)
log.warning("query %d took %.1f s", 7, 2.5)
log.debug("for developers: off until it is switched on")
try:
    1 / 0
except ZeroDivisionError:
    log.error("query 8 failed")
