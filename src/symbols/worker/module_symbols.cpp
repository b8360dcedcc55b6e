#include "symbols/worker/module_symbols.h"

#include <cxxabi.h>
#include <dwarf.h>
#include <elfutils/libdw.h>
#include <elfutils/libdwfl.h>

#include <cstdlib>
#include <string_view>

#include "symbols/worker/symbol_files.h"

namespace {

bool BeginsWith(std::string_view text, std::string_view begin) {
  return text.substr(0, begin.size()) == begin;
}

// Rust's older names are those of C++ with a hash behind them.
std::string WithoutHash(std::string name) {
  constexpr std::string_view kBefore = "::h";
  constexpr std::size_t kHashDigits = 16;
  if (name.size() <= kBefore.size() + kHashDigits) return name;
  const std::size_t at = name.size() - kBefore.size() - kHashDigits;
  const bool hash = name.compare(at, kBefore.size(), kBefore) == 0 &&
                    name.find_first_not_of("0123456789abcdef", at + kBefore.size()) == name.npos;
  return hash ? name.substr(0, at) : name;
}

std::string Demangled(const char* name) {
  if (!BeginsWith(name, "_Z")) return name;
  char* const text = abi::__cxa_demangle(name, nullptr, nullptr, nullptr);
  const std::string demangled = text ? text : name;
  std::free(text);
  return WithoutHash(demangled);
}

void SetName(Function& function, const char* linkName) {
  function.name = Demangled(linkName);
  function.ofLibrary = BeginsWith(linkName, "_ZN4quor") || BeginsWith(linkName, "quor_");
}

const char* TextOf(Dwarf_Die* die, unsigned attribute) {
  Dwarf_Attribute found;
  return dwarf_formstring(dwarf_attr_integrate(die, attribute, &found));
}

void NameFunction(Function& function, Dwarf_Die* die) {
  const char* name = TextOf(die, DW_AT_linkage_name);
  if (!name) name = TextOf(die, DW_AT_MIPS_linkage_name);
  if (!name) name = dwarf_diename(die);
  if (name) SetName(function, name);
}

// Where the inlined function was called.
void SetCallPlace(Function& caller, Dwarf_Die* unit, Dwarf_Die* inlined) {
  Dwarf_Attribute attribute;
  Dwarf_Word file = 0, line = 0;
  if (dwarf_formudata(dwarf_attr(inlined, DW_AT_call_file, &attribute), &file) != 0 ||
      dwarf_formudata(dwarf_attr(inlined, DW_AT_call_line, &attribute), &line) != 0)
    return;
  Dwarf_Files* files = nullptr;
  std::size_t count = 0;
  if (dwarf_getsrcfiles(unit, &files, &count) != 0) return;
  const char* const name = dwarf_filesrc(files, file, nullptr, nullptr);
  if (!name) return;
  caller.file = name;
  caller.line = static_cast<unsigned>(line);
}

// The scopes of an address from the inside to the outside.
class Scopes {
 public:
  Scopes(Dwarf_Die* unit, Dwarf_Addr address, Dwarf* dwarf) {
    // The first search gives the innermost scope, the second one those that contain it as code.
    Dwarf_Die* by = nullptr;
    const int count = dwarf_getscopes(unit, address, &by);
    Dwarf_Die inner;
    if (count > 0 && dwarf_offdie(dwarf, dwarf_dieoffset(&by[0]), &inner))
      m_count = dwarf_getscopes_die(&inner, &m_scopes);
    std::free(by);
  }
  ~Scopes() { std::free(m_scopes); }
  Scopes(const Scopes&) = delete;
  Scopes& operator=(const Scopes&) = delete;

  Dwarf_Die* begin() const { return m_scopes; }
  Dwarf_Die* end() const { return m_scopes + (m_count > 0 ? m_count : 0); }

 private:
  Dwarf_Die* m_scopes = nullptr;
  int m_count = 0;
};

int FindDebug(Dwfl_Module*, void** data, const char*, Dwarf_Addr, const char*, const char*,
              GElf_Word, char**) {
  auto* const files = static_cast<SymbolFiles*>(*data);
  return files ? files->debug.Release() : -1;
}

int FindNothing(Dwfl_Module*, void**, const char*, Dwarf_Addr, char**, Elf**) {
  return -1;
}

// No file is looked for but those that were found by their build id.
const Dwfl_Callbacks kCallbacks = {FindNothing, FindDebug, dwfl_offline_section_address, nullptr};

std::string MissingOf(const StackModule& module, bool found, bool hasLines,
                      const std::string& whyNotModule) {
  const std::string name =
      std::string(module.Name()) +
      (module.buildId.empty() ? " (no build id)" : " (build id " + module.buildId + ")");
  if (!found) return "no names for " + name + ": " + module.path + " " + whyNotModule;
  if (!hasLines) return "no debug information for " + name + ": names of its symbols only";
  if (module.buildId.empty()) return name + " may be another build than the recorded one";
  return {};
}

}  // namespace

struct ModuleSymbols::Reader {
  explicit Reader(SymbolFiles found) : files(std::move(found)) {
    // Debug information without its module has the same addresses.
    if (!files.module) std::swap(files.module, files.debug);
    dwfl = dwfl_begin(&kCallbacks);
    if (!dwfl) return;
    const int descriptor = files.module.Release();
    module = dwfl_report_elf(dwfl, "", files.modulePath.c_str(), descriptor, 0, true);
    if (!module) files.module = RegularFile();
    dwfl_report_end(dwfl, nullptr, nullptr);
    if (!module) return;
    void** data = nullptr;
    dwfl_module_info(module, &data, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    if (data) *data = &files;
  }
  ~Reader() { dwfl_end(dwfl); }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  bool HasLines() const {
    Dwarf_Addr bias = 0;
    return module && dwfl_module_getdwarf(module, &bias);
  }
  std::vector<Function> FromLines(Dwarf_Addr address) const {
    Dwarf_Addr bias = 0;
    Dwarf* const dwarf = dwfl_module_getdwarf(module, &bias);
    Dwarf_Die* const unit = dwarf ? dwfl_module_addrdie(module, address, &bias) : nullptr;
    if (!unit) return {};
    std::vector<Function> functions(1);
    if (Dwfl_Line* const line = dwfl_module_getsrc(module, address)) {
      int number = 0;
      const char* const file = dwfl_lineinfo(line, nullptr, &number, nullptr, nullptr, nullptr);
      functions[0].file = file ? file : "";
      functions[0].line = static_cast<unsigned>(number);
    }
    for (Dwarf_Die& scope : Scopes(unit, address - bias, dwarf)) {
      const int tag = dwarf_tag(&scope);
      if (tag != DW_TAG_inlined_subroutine && tag != DW_TAG_subprogram) continue;
      NameFunction(functions.back(), &scope);
      if (tag == DW_TAG_subprogram) return functions;
      functions.back().inlined = true;
      functions.emplace_back();
      SetCallPlace(functions.back(), unit, &scope);
    }
    return {};
  }

  std::vector<Function> FromSymbols(Dwarf_Addr address) const {
    GElf_Off offset = 0;
    GElf_Sym symbol;
    const char* const name =
        dwfl_module_addrinfo(module, address, &offset, &symbol, nullptr, nullptr, nullptr);
    if (!name) return {};
    std::vector<Function> functions(1);
    SetName(functions[0], name);
    functions[0].offset = offset;
    return functions;
  }

  SymbolFiles files;
  Dwfl* dwfl = nullptr;
  Dwfl_Module* module = nullptr;
};

ModuleSymbols::ModuleSymbols(const StackModule& module, const std::vector<std::string>& folders) {
  SymbolFiles files = FindSymbolFiles(module, folders);
  const std::string why = files.whyNotModule;
  const bool found = files.module || files.debug;
  if (files.modulePath.empty()) files.modulePath = files.debugPath;
  if (found) m_reader = std::make_unique<Reader>(std::move(files));
  m_missing = MissingOf(module, found, m_reader && m_reader->HasLines(), why);
}

ModuleSymbols::~ModuleSymbols() = default;

std::vector<Function> ModuleSymbols::At(std::uint64_t address) const {
  if (!m_reader || !m_reader->module) return {};
  std::vector<Function> functions = m_reader->FromLines(address);
  // A symbol may name what the debug information does not: code in assembler.
  if (functions.empty() || functions.back().name.empty())
    functions = m_reader->FromSymbols(address);
  return functions;
}
