/* The blocks of quor.h in C: include that one. A block ends with the enclosing scope, and its text
 * is printf-like: QUOR_BLOCK(db_query, "query %d", number); */
#ifndef QUOR_BLOCK_H
#define QUOR_BLOCK_H

static inline void quor_block_leave(quor_block* block) {
  if (block->point) quor_block_end(block);
}
#define QUOR_BLOCK_AT(at, attributes, ...)                                                         \
  quor_block QUOR_JOIN(quor_block_, __LINE__) __attribute__((cleanup(quor_block_leave)));          \
  QUOR_JOIN(quor_block_, __LINE__).point = NULL;                                                   \
  do {                                                                                             \
    if (quor_on(&(at), (attributes)))                                                              \
      quor_block_begin(&QUOR_JOIN(quor_block_, __LINE__), &(at), (attributes), __FILE__, __LINE__, \
                       __VA_ARGS__);                                                               \
  } while (0)
#define QUOR_BLOCK(point, ...) QUOR_BLOCK_AT(point, QUOR_INFO, __VA_ARGS__)

#endif
