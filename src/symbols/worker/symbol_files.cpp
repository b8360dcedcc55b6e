#include "symbols/worker/symbol_files.h"

#include <elfutils/libdwelf.h>

#include <cstdlib>

#include "symbols/elf_build_id.h"

namespace {

constexpr char kSystemFolder[] = "/usr/lib/debug";

// "/.build-id/0a/1b..."
std::string IdPath(const std::string& id) {
  return "/.build-id/" + id.substr(0, 2) + "/" + id.substr(2);
}

std::string FetchedFolder() {
  const auto set = [](const char* name) {
    const char* const value = std::getenv(name);
    return std::string(value ? value : "");
  };
  if (const std::string folder = set("DEBUGINFOD_CACHE_PATH"); !folder.empty()) return folder;
  if (const std::string cache = set("XDG_CACHE_HOME"); !cache.empty())
    return cache + "/debuginfod_client";
  return set("HOME") + "/.cache/debuginfod_client";
}

// The name of the separate debug information, as the module has it; empty if it has none.
std::string LinkedName(int descriptor) {
  elf_version(EV_CURRENT);
  Elf* const elf = elf_begin(descriptor, ELF_C_READ_MMAP, nullptr);
  GElf_Word checksum = 0;
  const char* const name = elf ? dwelf_elf_gnu_debuglink(elf, &checksum) : nullptr;
  const std::string linked = name ? name : "";
  elf_end(elf);
  return linked.find('/') == linked.npos ? linked : "";
}

class FileSearch {
 public:
  FileSearch(const StackModule& module, const std::vector<std::string>& folders)
      : m_module(module), m_folders(folders) {}

  SymbolFiles Run() {
    SymbolFiles files;
    if (m_module.path.front() == '/') files.whyNotModule = TakeRecorded(files);
    if (m_module.path.front() != '/') files.whyNotModule = "is no file";
    const bool found = files.module || Take(ModulePaths(), files.module, files.modulePath);
    const std::string linked = found ? LinkedName(files.module.Descriptor()) : "";
    Take(DebugPaths(files.modulePath, linked), files.debug, files.debugPath);
    return files;
  }

 private:
  // Gives the reason if it does not count.
  std::string TakeRecorded(SymbolFiles& files) const {
    RegularFile file(m_module.path);
    if (!file) return "cannot be read here";
    if (const std::string id = ElfBuildId(file.Descriptor()); id != m_module.buildId)
      return "has changed since: its build id is " + (id.empty() ? "none" : id);
    files.module = std::move(file);
    files.modulePath = m_module.path;
    return {};
  }

  bool Take(const std::vector<std::string>& paths, RegularFile& file, std::string& path) const {
    if (m_module.buildId.empty()) return false;
    for (const std::string& candidate : paths) {
      RegularFile found(candidate);
      if (!found || ElfBuildId(found.Descriptor()) != m_module.buildId) continue;
      file = std::move(found);
      path = candidate;
      return true;
    }
    return false;
  }

  std::vector<std::string> ModulePaths() const {
    std::vector<std::string> paths;
    const std::string name(m_module.Name());
    for (const std::string& folder : m_folders) {
      paths.push_back(folder + "/" + m_module.path);
      paths.push_back(folder + "/" + name);
      if (!m_module.buildId.empty()) paths.push_back(folder + IdPath(m_module.buildId));
    }
    return paths;
  }

  std::vector<std::string> DebugPaths(const std::string& modulePath,
                                      const std::string& linked) const {
    std::vector<std::string> paths;
    if (m_module.buildId.empty()) return paths;
    const std::string name(m_module.Name());
    for (const std::string& folder : m_folders) {
      paths.push_back(folder + IdPath(m_module.buildId) + ".debug");
      paths.push_back(folder + "/" + m_module.path + ".debug");
      paths.push_back(folder + "/" + name + ".debug");
      if (!linked.empty()) paths.push_back(folder + "/" + linked);
    }
    paths.push_back(kSystemFolder + IdPath(m_module.buildId) + ".debug");
    const std::size_t slash = modulePath.rfind('/');
    if (slash != modulePath.npos) {
      const std::string beside = modulePath.substr(0, slash + 1);
      for (const std::string& file : {linked, name + ".debug"})
        for (const std::string& folder : {beside, beside + ".debug/", kSystemFolder + beside})
          if (!file.empty()) paths.push_back(folder + file);
    }
    paths.push_back(FetchedFolder() + "/" + m_module.buildId + "/debuginfo");
    return paths;
  }

  const StackModule& m_module;
  const std::vector<std::string>& m_folders;
};

}  // namespace

SymbolFiles FindSymbolFiles(const StackModule& module, const std::vector<std::string>& folders) {
  return FileSearch(module, folders).Run();
}
