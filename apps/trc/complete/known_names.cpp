#include "complete/known_names.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "base/mapped_file.h"
#include "documents/trace_doc.h"
#include "input/unpack.h"
#include "quor/client/trace_config.h"
#include "records/trc_walk.h"
#include "terminal/terminal_host.h"
#include "tree/filter/filter_dialog.h"
#include "views/stored_views.h"

namespace {

using Names = std::vector<std::string>;

// The shell hands "~" over as it is typed.
std::string WithHome(const std::string& path) {
  const char* const home = getenv("HOME");
  return path.starts_with("~/") && home ? home + path.substr(1) : path;
}

bool IsPacked(int file) {
  char begin[4] = {};
  const ssize_t count = pread(file, begin, sizeof begin, 0);
  return count > 0 && PackingOf({begin, static_cast<std::size_t>(count)}) != PackedAs::Plain;
}

// Null: it cannot be read. Of a packed one only what is looked at is unpacked.
std::shared_ptr<const MappedFile> OpenToLook(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) return nullptr;
  std::shared_ptr<const MappedFile> mapped;
  PrivateFile unpacked;
  if (!IsPacked(file))
    mapped = MappedFile::Open(path);
  else if (CopyUnpacked(file, unpacked, nullptr, KnownNames::kFileBytesMax) != UnpackResult::Failed)
    mapped = MappedFile::Open(unpacked.Path());
  close(file);
  return mapped;
}

std::vector<std::shared_ptr<const MappedFile>> TraceFiles(const Names& words) {
  std::vector<std::shared_ptr<const MappedFile>> files;
  for (const std::string& word : words) {
    const std::string path = WithHome(word);
    struct stat status {};
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) continue;
    auto file = OpenToLook(path);
    if (file && VersionOf(file->View()) == TrcVersion::Current) files.push_back(std::move(file));
  }
  return files;
}

struct NameSink {
  CTraceDoc& to;
  const std::uint64_t bytesMax;

  void OnName(NameId id, std::string_view utf8) { to.m_names[id].name = utf8; }
  void OnTrace(const std::uint8_t* record) { to.m_indexes.Note(RawTrace(record)); }
  void OnUnknownTag(std::uint64_t) {}
  bool OnProgress(std::uint64_t position) { return position < bytesMax; }
};

// Calls `visit` with a document of each trace file, which has its names and ids.
template <class Visit>
void VisitFiles(const Names& words, const Visit& visit) {
  const auto files = TraceFiles(words);
  for (const auto& file : files) {
    TerminalHost host;
    CTraceDoc document(host);
    WalkTrc(file->View(), NameSink{document, KnownNames::kFileBytesMax / files.size()});
    visit(host, document);
  }
}

// "Threads/web/" leads to the children of "web", "Threads/we" to "Threads/web".
void AddLevel(const FilterNode& node, const std::string& path, std::string_view prefix,
              Names& found) {
  for (std::size_t place = 0; place < node.ChildCount(); ++place) {
    const FilterNode& child = node.Child(place);
    const std::string full = path.empty() ? child.Label() : path + "/" + child.Label();
    if (full.starts_with(prefix))
      found.push_back(full);
    else if (prefix.starts_with(full + "/"))
      AddLevel(child, full, prefix, found);
  }
}

Names LevelOf(Host& host, CTraceFilter& filter, NameMap names, std::string_view prefix) {
  CFilterDialog dialog(host, filter, names);
  dialog.OnInitDialog();
  Names found;
  AddLevel(dialog.Tree().Root(), {}, prefix, found);
  return found;
}

}  // namespace

std::vector<std::string> KnownNames::Apps(const std::string& machine) {
  const QuorPtr<trace_Config_i> config = trace_Config_i::CreateToList(machine);
  if (!config) return {};
  const std::list<std::string>& apps = config->GetAppList();
  Names names(apps.begin(), apps.end());
  for (const trace_Waiting_t& waiting : config->GetWaiting()) names.push_back(waiting.app);
  return names;
}

std::vector<std::string> KnownNames::Traces(const std::string& machine, const std::string& app) {
  const QuorPtr<trace_App_i> look = trace_App_i::Look(machine, app);
  Names names;
  if (!look) return names;
  for (const trace_Component_t& component : look->GetTraceMap()) {
    names.push_back(component.name);
    for (const trace_Category_t& category : component.categories)
      names.push_back(component.name + "/" + category.name);
  }
  return names;
}

std::vector<std::string> KnownNames::FilePaths(const std::vector<std::string>& words,
                                               std::string_view prefix) {
  Names paths;
  VisitFiles(words, [&](Host& host, CTraceDoc& document) {
    CTraceFilter filter;
    filter.MergeDocumentNames(document);
    for (std::string& path : LevelOf(host, filter, document.m_names, prefix))
      paths.push_back(std::move(path));
  });
  return paths;
}

std::vector<std::string> KnownNames::FileNames(const std::vector<std::string>& words,
                                               ChoiceField field) {
  Names names;
  VisitFiles(words, [&](Host&, CTraceDoc& document) {
    for (const NameId id : IdsOf(field, document.m_indexes).Ids())
      names.push_back(NameOf(document.m_names, id));
  });
  return names;
}

std::vector<std::string> KnownNames::LiveNames(const std::string& machine, ChoiceField field) {
  Names apps = Apps(machine);
  if (field == ChoiceField::App) return apps;
  Names names;
  if (field != ChoiceField::Component && field != ChoiceField::Category) return names;
  apps.resize(std::min(apps.size(), kAppsMax));
  for (const std::string& app : apps) {
    const QuorPtr<trace_App_i> look = trace_App_i::Look(machine, app);
    if (!look) continue;
    for (const trace_Component_t& component : look->GetTraceMap()) {
      if (field == ChoiceField::Component) names.push_back(component.name);
      for (const trace_Category_t& category : component.categories)
        if (field == ChoiceField::Category) names.push_back(category.name);
    }
  }
  return names;
}

// Of threads nothing is known before their traces come.
std::vector<std::string> KnownNames::LivePaths(const std::string& machine,
                                               std::string_view prefix) {
  TerminalHost host;
  NameMap names;
  CTraceFilter filter;
  std::map<std::string, NameId> ids;
  const auto add = [&](std::map<NameId, int>& marks, const std::string& name) {
    const auto [entry, fresh] = ids.try_emplace(name, static_cast<NameId>(ids.size() + 1));
    if (entry->second == 0) return;  // no ids are left
    names[entry->second].name = name;
    marks[entry->second] = 1;
  };
  Names apps = Apps(machine);
  apps.resize(std::min(apps.size(), kAppsMax));
  for (const std::string& app : apps) {
    add(filter.applications, app);
    const QuorPtr<trace_App_i> look = trace_App_i::Look(machine, app);
    if (!look) continue;
    for (const trace_Component_t& component : look->GetTraceMap()) {
      add(filter.components, component.name);
      for (const trace_Category_t& category : component.categories)
        add(filter.categories, category.name);
    }
  }
  return LevelOf(host, filter, std::move(names), prefix);
}

std::vector<std::string> KnownNames::Profiles() {
  Names names;
  for (Profile& profile : ReadProfiles()) names.push_back(std::move(profile.name));
  return names;
}
