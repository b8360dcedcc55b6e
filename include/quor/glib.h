/* Traces what GLib logs: g_log_set_writer_func(quor_glib_writer, NULL, NULL);
 *
 * Shape    The domain gives component and category (logger.h); without one it is Log/GLib. DEBUG:
 *          Info, Developer. INFO, MESSAGE: Info. WARNING: Warn. CRITICAL, ERROR: Error. File and
 *          line are those of structured messages: define G_LOG_USE_STRUCTURED before <glib.h> to
 *          have them of g_message() and the like.
 *          quor_glib_writer hands the message on to GLib's own writer, quor_glib_writer_only does
 *          not.
 * Threads  Any. */
#ifndef QUOR_GLIB_H
#define QUOR_GLIB_H

#include <glib.h>

#include "logger.h"

#ifdef __cplusplus
extern "C" {
#endif

static inline unsigned quor_glib_attributes(GLogLevelFlags level) {
  if (level & (G_LOG_LEVEL_ERROR | G_LOG_LEVEL_CRITICAL)) return QUOR_ERROR;
  if (level & G_LOG_LEVEL_WARNING) return QUOR_WARN;
  if (level & G_LOG_LEVEL_DEBUG) return QUOR_INFO | QUOR_DEVELOPER;
  return QUOR_INFO;
}

static inline size_t quor_glib_length(const GLogField* field) {
  return field->length < 0 ? strlen((const char*)field->value) : (size_t)field->length;
}

static inline unsigned quor_glib_number(const GLogField* field) {
  const char* const text = (const char*)field->value;
  unsigned number = 0;
  size_t i;
  for (i = 0; i < quor_glib_length(field) && text[i] >= '0' && text[i] <= '9' && i < 9; ++i)
    number = number * 10 + (unsigned)(text[i] - '0');
  return number;
}

static inline GLogWriterOutput quor_glib_writer_only(GLogLevelFlags level, const GLogField* fields,
                                                     gsize count, gpointer data) {
  const GLogField *message = NULL, *domain = NULL;
  const char* file = NULL;
  unsigned line = 0;
  const unsigned attributes = quor_glib_attributes(level);
  quor_point* point;
  gsize i;
  (void)data;
  for (i = 0; i < count; ++i) {
    if (!fields[i].value) continue;
    if (strcmp(fields[i].key, "MESSAGE") == 0) message = &fields[i];
    if (strcmp(fields[i].key, "GLIB_DOMAIN") == 0) domain = &fields[i];
    if (strcmp(fields[i].key, "CODE_FILE") == 0 && fields[i].length < 0)
      file = (const char*)fields[i].value;
    if (strcmp(fields[i].key, "CODE_LINE") == 0) line = quor_glib_number(&fields[i]);
  }
  point = quor_logger_point(domain ? (const char*)domain->value : "",
                            domain ? quor_glib_length(domain) : 0, "GLib");
  if (quor_on(point, attributes))
    quor_trace(point, attributes, file, line, message ? (const char*)message->value : "",
               message ? quor_glib_length(message) : 0);
  return G_LOG_WRITER_HANDLED;
}

static inline GLogWriterOutput quor_glib_writer(GLogLevelFlags level, const GLogField* fields,
                                                gsize count, gpointer data) {
  quor_glib_writer_only(level, fields, count, data);
  return g_log_writer_default(level, fields, count, NULL);
}

#ifdef __cplusplus
}
#endif
#endif
