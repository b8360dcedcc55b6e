#include "views/view_parts.h"

#include <charconv>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "base/fail_with.h"

namespace {

using Json = nlohmann::json;

constexpr std::size_t kHeadsMax = 16, kPrintDigits = 16;

bool Wrong(std::string* why, const char* name) {
  return FailWith(why, "\"" + std::string(name) + "\" is not what it should be");
}

// Null: there is no such member.
const Json* Member(const Json& json, const char* name) {
  const auto found = json.is_object() ? json.find(name) : json.end();
  return json.is_object() && found != json.end() ? &*found : nullptr;
}

std::string HexOf(std::uint64_t print) {
  char text[kPrintDigits + 1];
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(print));
  return text;
}

bool ReadHex(const Json& json, std::uint64_t& print) {
  if (!json.is_string()) return false;
  const auto& text = json.get_ref<const std::string&>();
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, print, 16);
  return text.size() == kPrintDigits && read.ec == std::errc() && read.ptr == end;
}

bool ReadNumber(const Json* json, std::uint64_t& number) {
  if (!json || !json->is_number_unsigned()) return false;
  number = json->get<std::uint64_t>();
  return true;
}

bool ReadText(const Json& json, std::size_t longest, std::string& text) {
  if (!json.is_string()) return false;
  text = json.get<std::string>();
  return text.size() <= longest;
}

bool ReadColumn(const Json& json, ViewColumn& column) {
  const Json *const name = Member(json, "name"), *const shown = Member(json, "shown");
  std::uint64_t width = 0;
  if (!name || !ReadText(*name, kViewNameBytes, column.header) || !shown || !shown->is_boolean() ||
      !ReadNumber(Member(json, "width"), width) || width > kViewWidthMaxPx)
    return false;
  column.widthPx = static_cast<int>(width);
  column.shown = shown->get<bool>();
  return true;
}

bool ReadColumns(const Json& json, std::vector<ViewColumn>& columns) {
  if (!json.is_array() || json.size() > kViewColumnsMax) return false;
  for (const Json& each : json)
    if (!ReadColumn(each, columns.emplace_back())) return false;
  return true;
}

bool ReadPanes(const Json& json, std::vector<std::string>& panes) {
  if (!json.is_array() || json.size() > kViewPanesMax) return false;
  for (const Json& each : json)
    if (!ReadText(each, kViewNameBytes, panes.emplace_back())) return false;
  return true;
}

bool ReadColours(const Json& json, ViewColours& colours, std::string* why) {
  const Json *const shown = Member(json, "shown"), *const rules = Member(json, "rules");
  if (!shown || !shown->is_boolean()) return Wrong(why, "colours");
  colours.shown = shown->get<bool>();
  if (!rules) return true;
  std::string reason;
  auto read = ReadColourRules(rules->dump(), &reason);
  if (!read) return FailWith(why, "colours: " + reason);
  if (colours.shown) colours.rules = std::move(*read);
  return true;
}

bool ReadRow(const Json& json, ViewRow& row) {
  const Json* const print = Member(json, "print");
  return ReadNumber(Member(json, "row"), row.row) && print && ReadHex(*print, row.print);
}

bool ReadHead(const Json& json, FilePrint::Head& head) {
  return json.is_array() && json.size() == 2 && ReadNumber(&json[0], head.bytes) &&
         ReadHex(json[1], head.print);
}

// What is written can be read again.
bool Fits(const ViewState& state, std::string* why) {
  for (const auto* const text : {&state.filter, &state.marks})
    if (*text && (*text)->size() > kViewFilterBytes)
      return FailWith(why, "the filter text is too long to be kept");
  if (state.columns.size() > kViewColumnsMax ||
      (state.panes && state.panes->size() > kViewPanesMax))
    return FailWith(why, "there are too many columns or panes");
  return true;
}

}  // namespace

bool AddStateParts(Json& json, const ViewState& state, std::string* why) {
  if (!Fits(state, why)) return false;
  for (const ViewColumn& column : state.columns)
    json["columns"].push_back(
        {{"name", column.header}, {"width", column.widthPx}, {"shown", column.shown}});
  if (state.filter) json["filter"] = *state.filter;
  if (state.marks) json["tree-filter"] = *state.marks;
  if (state.colours) {
    Json& colours = json["colours"];
    colours["shown"] = state.colours->shown;
    if (state.colours->shown)
      colours["rules"] = Json::parse(ColourRulesText(state.colours->rules), nullptr, false);
  }
  if (state.tree) json["view"] = *state.tree ? "tree" : "list";
  if (state.panes) json["panes"] = *state.panes;
  if (state.row) json["row"] = {{"row", state.row->row}, {"print", HexOf(state.row->print)}};
  return true;
}

bool ReadStateParts(const Json& json, ViewState& state, std::string* why) {
  const auto read = [&](const char* name, auto take) {
    const Json* const member = Member(json, name);
    return !member || take(*member) || Wrong(why, name);
  };
  const Json* const colours = Member(json, "colours");
  if (colours && !ReadColours(*colours, state.colours.emplace(), why)) return false;
  return read("columns", [&](const Json& part) { return ReadColumns(part, state.columns); }) &&
         read("filter",
              [&](const Json& part) {
                return ReadText(part, kViewFilterBytes, state.filter.emplace());
              }) &&
         read("tree-filter",
              [&](const Json& part) {
                return ReadText(part, kViewFilterBytes, state.marks.emplace());
              }) &&
         read("view",
              [&](const Json& part) {
                state.tree = part == "tree";
                return part == "tree" || part == "list";
              }) &&
         read("panes", [&](const Json& part) { return ReadPanes(part, state.panes.emplace()); }) &&
         read("row", [&](const Json& part) { return ReadRow(part, state.row.emplace()); });
}

Json PartOfPrint(const FilePrint& print) {
  Json heads = Json::array();
  for (const FilePrint::Head& head : print.heads) heads.push_back({head.bytes, HexOf(head.print)});
  return {{"bytes", print.size}, {"heads", heads}};
}

bool ReadPrintPart(const Json& json, FilePrint& print, std::string* why) {
  const Json* const part = Member(json, "file");
  if (!part) return true;
  const Json* const heads = Member(*part, "heads");
  if (!ReadNumber(Member(*part, "bytes"), print.size) || !heads || !heads->is_array() ||
      heads->size() > kHeadsMax)
    return Wrong(why, "file");
  for (const Json& head : *heads)
    if (!ReadHead(head, print.heads.emplace_back())) return Wrong(why, "file");
  if (print.heads.empty()) print = {};  // it says nothing
  return true;
}

bool ReadTextPart(const Json& json, const char* name, std::size_t longest, std::string& text,
                  std::string* why) {
  const Json* const member = Member(json, name);
  return (member && ReadText(*member, longest, text)) || Wrong(why, name);
}

bool ReadFlagPart(const Json& json, const char* name, bool& flag, std::string* why) {
  const Json* const member = Member(json, name);
  flag = member && member->is_boolean() && member->get<bool>();
  return !member || member->is_boolean() || Wrong(why, name);
}

bool ReadNumberPart(const Json& json, const char* name, std::uint64_t& number, std::string* why) {
  const Json* const member = Member(json, name);
  return !member || ReadNumber(member, number) || Wrong(why, name);
}
