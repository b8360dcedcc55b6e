/* The functions of quor.h for a program that was built with QUOR_DISABLE: they do nothing. */
#ifndef QUOR_NO_TRACES_H
#define QUOR_NO_TRACES_H

#define QUOR_NOTHING static inline __attribute__((unused))

QUOR_NOTHING void quor_application(const char* name) {
  (void)name;
}
QUOR_NOTHING void quor_declare(quor_point* point) {
  (void)point;
}
QUOR_NOTHING void quor_register(quor_point* point) {
  (void)point;
}
QUOR_NOTHING int quor_on(quor_point* point, unsigned attributes) {
  (void)point, (void)attributes;
  return 0;
}
QUOR_NOTHING int quor_first_use(quor_point* point, unsigned attributes) {
  return quor_on(point, attributes);
}
QUOR_NOTHING quor_point* quor_named_point(const char* component, size_t component_length,
                                          const char* category, size_t category_length) {
  static quor_point none = QUOR_POINT_INIT("", "");
  (void)component, (void)component_length, (void)category, (void)category_length;
  return &none;
}
QUOR_NOTHING void quor_thread_name(const char* name) {
  (void)name;
}
QUOR_NOTHING void quor_trace(quor_point* point, unsigned attributes, const char* file,
                             unsigned line, const char* text, size_t length) {
  (void)point, (void)attributes, (void)file, (void)line, (void)text, (void)length;
}
__attribute__((format(printf, 5, 6))) QUOR_NOTHING void quor_tracef(quor_point* point,
                                                                    unsigned attributes,
                                                                    const char* file, unsigned line,
                                                                    const char* format, ...) {
  (void)point, (void)attributes, (void)file, (void)line, (void)format;
}
__attribute__((format(printf, 5, 0))) QUOR_NOTHING void quor_vtracef(
    quor_point* point, unsigned attributes, const char* file, unsigned line, const char* format,
    va_list arguments) {
  (void)point, (void)attributes, (void)file, (void)line, (void)format, (void)arguments;
}
__attribute__((format(printf, 6, 7))) QUOR_NOTHING void quor_block_begin(
    quor_block* block, quor_point* point, unsigned attributes, const char* file, unsigned line,
    const char* format, ...) {
  (void)point, (void)attributes, (void)file, (void)line, (void)format;
  block->point = NULL;
}
QUOR_NOTHING void quor_block_end(quor_block* block) {
  (void)block;
}
QUOR_NOTHING int quor_flush(unsigned milliseconds) {
  (void)milliseconds;
  return 1;
}
QUOR_NOTHING void quor_get_counts(quor_counts* counts) {
  if (counts) counts->traced = counts->lost = 0;
}

#undef QUOR_NOTHING
#endif
