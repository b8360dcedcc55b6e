import quor

quor.application("orders")
net_connect = quor.Point("Net", "Connect")
db_query = quor.Point("Database", "Query")


def query(number):
    with quor.block(db_query, "query %d", number):
        if number > 1:
            db_query.error("query %d failed", number)


net_connect.info("connected to %s in %d ms", "db.example.com", 12)
query(1)
query(2)
