#include "statistics/stat_field.h"

#include <cstring>

#include "base/text.h"
#include "statistics/text_pattern.h"
#include "where/steps/cell_step.h"

namespace {

constexpr std::string_view kWords[kStatFields] = {"component", "category", "application",
                                                  "thread",    "severity", "pattern"};
constexpr const char* kSeverities[] = {"info", "warn", "error"};
constexpr std::size_t kNoSeverity = 3;
constexpr const char* kOnlyNoSeverity = "not severity in {info, warn, error}";

WhereField FieldOf(StatField field) {
  switch (field) {
    case StatField::Category:
      return WhereField::Category;
    case StatField::Application:
      return WhereField::Application;
    default:
      return WhereField::Component;
  }
}

std::size_t SeverityOfKey(std::string_view key) {
  return std::min<std::size_t>(static_cast<unsigned char>(key.front()), kNoSeverity);
}

struct ThreadNames {
  ThreadNames(std::string_view key, const NameMap& names)
      : ids(ThreadOfKey(key)),
        machine(NameOf(names, ids.machine)),
        process(NameOf(names, ids.process)),
        thread(NameOf(names, ids.thread)) {}
  const StatThread ids;
  const std::string machine, process, thread;
};

}  // namespace

std::string_view WordOf(StatField field) {
  return kWords[static_cast<std::size_t>(field)];
}

std::optional<StatField> StatFieldOfWord(std::string_view word) {
  for (const StatField field : kAllStatFields)
    if (CompareIgnoringCase(WordOf(field), word) == 0) return field;
  return std::nullopt;
}

NameId IdOfKey(std::string_view key) {
  NameId id = 0;
  std::memcpy(&id, key.data(), sizeof id);
  return id;
}

StatThread ThreadOfKey(std::string_view key) {
  return {IdOfKey(key), IdOfKey(key.substr(2)), IdOfKey(key.substr(4))};
}

std::string ShownValue(StatField field, std::string_view key, const NameMap& names) {
  switch (field) {
    case StatField::Pattern:
      return ShownPattern(key);
    case StatField::Severity: {
      const std::size_t severity = SeverityOfKey(key);
      return severity == kNoSeverity ? "(none)" : kSeverities[severity];
    }
    case StatField::Thread: {
      const ThreadNames thread(key, names);
      return thread.machine + "/" + thread.process + "/" + thread.thread;
    }
    default:
      return NameOf(names, IdOfKey(key));
  }
}

std::string IdentityOf(StatField field, std::string_view key, const NameMap& names) {
  if (field == StatField::Pattern || field == StatField::Severity) return std::string(key);
  if (field != StatField::Thread) return NameOf(names, IdOfKey(key));
  const ThreadNames thread(key, names);
  return std::to_string(thread.machine.size()) + "," + std::to_string(thread.process.size()) + "," +
         thread.machine + thread.process + thread.thread;
}

std::optional<std::string> OnlyThisValue(StatField field, std::string_view key,
                                         const NameMap& names) {
  switch (field) {
    case StatField::Pattern:
      return OnlyThisPattern(key);
    case StatField::Severity: {
      const std::size_t severity = SeverityOfKey(key);
      if (severity == kNoSeverity) return kOnlyNoSeverity;
      return OnlyThis(WhereField::Severity, kSeverities[severity]);
    }
    case StatField::Thread: {
      const ThreadNames thread(key, names);
      return OnlyThisThread({thread.machine, thread.process, thread.thread});
    }
    default:
      return OnlyThis(FieldOf(field), NameOf(names, IdOfKey(key)));
  }
}
