/* The C interface of libquor for index.js, which alone loads this.
 *
 * Shape    A point is a number: its place in a table of the process, which all workers share. Its
 * settings are given to JavaScript as memory, so that a point that is off calls nothing here. Owner
 * Points are never freed: the library keeps their addresses as long as the process lives. Errors A
 * point for which there is no room is the last one, whose name says so. Only `point` and `settings`
 * throw. Threads  Any worker.
 */
#include <pthread.h>
#include <stdlib.h>
#include <string.h>

#define NAPI_VERSION 6
#include <node_api.h>

#include <quor/quor.h>

/* As many as the library has room for; the last one is for all further ones. */
#define POINTS 16384
#define SLOTS (4 * POINTS)
#define ROOM 1024

static pthread_mutex_t g_lock = PTHREAD_MUTEX_INITIALIZER;
static quor_point* g_points[POINTS]; /* read without the lock by who has got the number */
static uint32_t g_count;
static uint16_t g_slots[SLOTS]; /* number + 1; 0: free */
static int g_named;             /* under the lock */

typedef struct {
  char room[ROOM];
  char* data;
  size_t length;
} Text;

/* What is longer than the room is allocated, and without memory cut. */
static void take_text(napi_env env, napi_value value, Text* text) {
  size_t length = 0;
  text->data = text->room;
  text->room[0] = '\0';
  if (napi_get_value_string_utf8(env, value, text->room, ROOM, &length) != napi_ok) length = 0;
  text->length = length;
  if (length + 4 < ROOM) return; /* the last character did fit, whatever its size */
  if (napi_get_value_string_utf8(env, value, NULL, 0, &length) != napi_ok) return;
  char* const longer = malloc(length + 1);
  if (!longer) return;
  napi_get_value_string_utf8(env, value, longer, length + 1, &text->length);
  text->data = longer;
}

static void free_text(Text* text) {
  if (text->data != text->room) free(text->data);
}

static uint32_t hash_of(const char* component, const char* category) {
  uint32_t hash = 2166136261u;
  for (; *component; ++component) hash = (hash ^ (unsigned char)*component) * 16777619u;
  hash = (hash ^ 0x100u) * 16777619u;
  for (; *category; ++category) hash = (hash ^ (unsigned char)*category) * 16777619u;
  return hash;
}

static quor_point* new_point(const char* component, const char* category) {
  const size_t first = strlen(component) + 1, second = strlen(category) + 1;
  quor_point* const point = calloc(1, sizeof(quor_point) + first + second);
  if (!point) return NULL;
  char* const names = (char*)(point + 1);
  memcpy(names, component, first);
  memcpy(names + first, category, second);
  point->settings = QUOR_UNREGISTERED;
  point->component = names;
  point->category = names + first;
  quor_declare(point);
  return point;
}

/* The number of the point with these names; -1 without memory. REQUIRES: the lock. */
static int number_of(const char* component, const char* category) {
  if (g_count == POINTS - 1) {
    /* Those that are known are found all the same. */
    g_points[g_count] = new_point("Quor", "(no room for more trace points)");
    if (!g_points[g_count]) return -1;
    ++g_count;
  }
  uint32_t slot = hash_of(component, category) % SLOTS;
  for (; g_slots[slot] != 0; slot = (slot + 1) % SLOTS) {
    const quor_point* const point = g_points[g_slots[slot] - 1];
    if (strcmp(point->component, component) == 0 && strcmp(point->category, category) == 0)
      return g_slots[slot] - 1;
  }
  if (g_count == POINTS) return POINTS - 1;
  quor_point* const point = new_point(component, category);
  if (!point) return -1;
  g_points[g_count] = point;
  g_slots[slot] = (uint16_t)++g_count;
  return (int)g_count - 1;
}

static int take_arguments(napi_env env, napi_callback_info info, size_t wanted,
                          napi_value* values) {
  size_t count = wanted;
  return napi_get_cb_info(env, info, &count, values, NULL, NULL) == napi_ok && count >= wanted;
}

static quor_point* point_of(napi_env env, napi_value value) {
  uint32_t number = POINTS;
  if (napi_get_value_uint32(env, value, &number) != napi_ok || number >= POINTS) return NULL;
  return g_points[number];
}

static uint32_t number_in(napi_env env, napi_value value) {
  uint32_t number = 0;
  napi_get_value_uint32(env, value, &number);
  return number;
}

/* application(name, onlyIfUnnamed) */
static napi_value application(napi_env env, napi_callback_info info) {
  napi_value values[2];
  bool only = false;
  if (!take_arguments(env, info, 2, values)) return NULL;
  napi_get_value_bool(env, values[1], &only);
  Text name;
  take_text(env, values[0], &name);
  /* No other worker traces before the library has the name. */
  pthread_mutex_lock(&g_lock);
  if (name.length > 0 && !(only && g_named)) {
    quor_application(name.data);
    g_named = 1;
  }
  pthread_mutex_unlock(&g_lock);
  free_text(&name);
  return NULL;
}

/* threadName(name) */
static napi_value thread_name(napi_env env, napi_callback_info info) {
  napi_value values[1];
  if (!take_arguments(env, info, 1, values)) return NULL;
  Text name;
  take_text(env, values[0], &name);
  quor_thread_name(name.data);
  free_text(&name);
  return NULL;
}

static void keep(napi_env env, void* data, void* hint) {
  (void)env, (void)data, (void)hint;
}

/* point(component, category) gives its number. */
static napi_value point(napi_env env, napi_callback_info info) {
  napi_value values[2], number = NULL;
  if (!take_arguments(env, info, 2, values)) return NULL;
  Text component, category;
  take_text(env, values[0], &component);
  take_text(env, values[1], &category);
  pthread_mutex_lock(&g_lock);
  const int at = number_of(component.data, category.data);
  pthread_mutex_unlock(&g_lock);
  free_text(&component);
  free_text(&category);
  if (at < 0)
    napi_throw_error(env, NULL, "no memory for a trace point");
  else
    napi_create_uint32(env, (uint32_t)at, &number);
  return number;
}

/* settings(number) gives the memory of its settings. Call it once for each point. */
static napi_value settings(napi_env env, napi_callback_info info) {
  napi_value values[1], memory = NULL;
  if (!take_arguments(env, info, 1, values)) return NULL;
  quor_point* const at = point_of(env, values[0]);
  if (!at || napi_create_external_arraybuffer(env, &at->settings, sizeof at->settings, keep, NULL,
                                              &memory) != napi_ok)
    napi_throw_error(env, NULL, "this runtime allows no memory of an addon in JavaScript");
  return memory;
}

/* firstUse(number, attributes) gives whether the point is on. */
static napi_value first_use(napi_env env, napi_callback_info info) {
  napi_value values[2], result = NULL;
  if (!take_arguments(env, info, 2, values)) return NULL;
  quor_point* const at = point_of(env, values[0]);
  napi_get_boolean(env, at && quor_first_use(at, number_in(env, values[1])), &result);
  return result;
}

/* trace(number, attributes, file, line, text): an empty file is none. */
static napi_value trace(napi_env env, napi_callback_info info) {
  napi_value values[5];
  if (!take_arguments(env, info, 5, values)) return NULL;
  quor_point* const at = point_of(env, values[0]);
  if (!at) return NULL;
  Text file, text;
  take_text(env, values[2], &file);
  take_text(env, values[4], &text);
  quor_trace(at, number_in(env, values[1]), file.length > 0 ? file.data : NULL,
             number_in(env, values[3]), text.data, text.length);
  free_text(&file);
  free_text(&text);
  return NULL;
}

/* flush(milliseconds) gives whether all traces have left. */
static napi_value flush(napi_env env, napi_callback_info info) {
  napi_value values[1], result = NULL;
  if (!take_arguments(env, info, 1, values)) return NULL;
  napi_get_boolean(env, quor_flush(number_in(env, values[0])), &result);
  return result;
}

/* counts() gives [traced, lost]. */
static napi_value counts(napi_env env, napi_callback_info info) {
  (void)info;
  napi_value result = NULL, number;
  quor_counts now;
  quor_get_counts(&now);
  napi_create_array_with_length(env, 2, &result);
  napi_create_double(env, (double)now.traced, &number);
  napi_set_element(env, result, 0, number);
  napi_create_double(env, (double)now.lost, &number);
  napi_set_element(env, result, 1, number);
  return result;
}

NAPI_MODULE_INIT() {
  const napi_property_descriptor functions[] = {
      {"application", NULL, application, NULL, NULL, NULL, napi_default, NULL},
      {"threadName", NULL, thread_name, NULL, NULL, NULL, napi_default, NULL},
      {"point", NULL, point, NULL, NULL, NULL, napi_default, NULL},
      {"settings", NULL, settings, NULL, NULL, NULL, napi_default, NULL},
      {"firstUse", NULL, first_use, NULL, NULL, NULL, napi_default, NULL},
      {"trace", NULL, trace, NULL, NULL, NULL, napi_default, NULL},
      {"flush", NULL, flush, NULL, NULL, NULL, napi_default, NULL},
      {"counts", NULL, counts, NULL, NULL, NULL, napi_default, NULL},
  };
  napi_define_properties(env, exports, sizeof functions / sizeof functions[0], functions);
  return exports;
}
