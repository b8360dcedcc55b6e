#include "where/colours/colour_rules.h"

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>

#include "base/fail_with.h"
#include "base/new_file.h"
#include "base/text.h"

namespace {

bool IsControl(char c) {
  return static_cast<unsigned char>(c) < ' ' || c == '\x7f';
}

bool IsBlank(std::string_view text) {
  return text.find_first_not_of(' ') == text.npos;
}

std::string Quoted(const std::string& text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

bool ReadFile(const std::string& path, std::string& content, std::string* why) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return FailOn(why, path);
  content.resize(kColourFileBytes + 1);
  errno = 0;
  in.read(content.data(), static_cast<std::streamsize>(content.size()));
  if (in.bad() || errno != 0) return FailOn(why, path);
  content.resize(static_cast<std::size_t>(in.gcount()));
  return true;
}

}  // namespace

bool CheckColourRule(const ColourRule& rule, std::string* why) {
  if (IsBlank(rule.name)) return FailWith(why, "a rule needs a name");
  if (rule.name.size() > kColourNameBytes) return FailWith(why, "the name is too long");
  if (!IsUtf8(rule.name) || std::any_of(rule.name.begin(), rule.name.end(), IsControl))
    return FailWith(why, "the name has a character that cannot be shown");
  if (rule.where.size() > kColourTextBytes) return FailWith(why, "the filter text is too long");
  if (!IsUtf8(rule.where)) return FailWith(why, "the filter text is not UTF-8");
  return true;
}

std::string ColourRulesText(const ColourRules& rules) {
  std::string text = "{\n  \"colour-rules\": 1,\n  \"rules\": [";
  for (std::size_t i = 0; i < rules.size(); ++i) {
    const ColourRule& rule = rules[i];
    text += i == 0 ? "\n" : ",\n";
    text += "    {\"name\": " + Quoted(rule.name) + ", \"where\": " + Quoted(rule.where) +
            ",\n     \"ink\": \"" + ColourText(rule.ink) + "\", \"ground\": \"" +
            ColourText(rule.ground) + "\", \"on\": " + (rule.on ? "true}" : "false}");
  }
  return text + "\n  ]\n}\n";
}

std::optional<ColourRules> LoadColourRules(const std::string& path, std::string* why) {
  std::string content, reason;
  if (!ReadFile(path, content, why)) return std::nullopt;
  std::optional<ColourRules> rules = ReadColourRules(content, &reason);
  if (!rules) FailWith(why, path + ": " + reason);
  return rules;
}

bool SaveColourRules(const std::string& path, const ColourRules& rules, std::string* why) {
  NewFile file;
  if (!file.Begin(path, why)) return false;
  std::ofstream out(file.WriteTo(), std::ios::binary | std::ios::trunc);
  out << ColourRulesText(rules);
  out.close();
  if (!out) return FailOn(why, path);
  return file.Finish(why);
}
