// Lines of JSON: those that trc dump writes, without a loss, and those of other programs.
//
// Shape    Keys are compared without regard to case, nested ones with dots ("log.level"). The first
//          key for a field counts. What has no field stands behind the text, as key=value.
// Errors   A line is not understood if it is no object or none of its times is one.
// Threads  One.
#pragma once

#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "import/fields/import_field.h"
#include "import/lines/flat_json.h"
#include "import/lines/line_format.h"

class JsonLines final : public LineFormat, private FlatJsonTaker {
 public:
  // `keys`: further ones with their fields, before those that are known.
  JsonLines(ImportFields& fields,
            const std::vector<std::pair<std::string, ImportField>>& keys = {});
  bool Read(std::string_view line, ImportedTrace& trace) override;
  std::vector<std::string> Notes() const override { return MendedNote(m_mended); }

 private:
  enum class Role { Field, Hex, DatePart, TimePart, Index, Count, Tic, Account, Context, Extra };
  struct Target {
    Role role = Role::Extra;
    ImportField field{};
    unsigned part = 0;  // of an array
  };
  struct Met {
    std::string path;
    Target target;
  };
  static constexpr std::size_t kFields = static_cast<std::size_t>(ImportField::Attributes) + 1;
  static constexpr std::size_t kOwn = 5;  // keys that mean something only together

  bool OnValue(const std::string& path, JsonKind kind, std::string_view value) override;
  void OnAgain() override;
  void Begin();
  const Target& TargetOf(const std::string& path);
  Target Find(const std::string& path) const;
  void SetField(const Target& target, std::string_view value, bool& taken);
  bool SetPart(const Target& target, std::string_view value);
  // Has it the keys of a dump? Today's has its time as a text, earlier ones as two arrays.
  bool IsOwn() const;
  bool Finish();
  bool TakeOwn();
  void AddExtra(std::string_view path, JsonKind kind, std::string_view value);

  ImportFields& m_fields;
  std::unordered_map<std::string, Target> m_keys;
  std::vector<Met> m_met;  // the paths of the line before, in their order
  std::size_t m_place = 0;
  ImportedTrace* m_trace = nullptr;
  std::uint64_t m_set = 0;  // fields, by their numbers
  std::uint64_t m_levelsBefore = 0, m_mended = 0;
  bool m_again = false, m_hasBadTime = false;
  unsigned m_dateParts = 0, m_timeParts = 0;
  std::uint32_t m_date[3], m_time[4];
  std::string m_own[kOwn];
  std::string m_values[kFields];
  std::string m_extra;
};
