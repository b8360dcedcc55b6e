#include "quor/runtime/process/loaded_module.h"

#include <dlfcn.h>
#include <link.h>
#include <sys/auxv.h>

#include <cstring>

namespace {

constexpr std::size_t kHeaderPageBytes = 4096;
constexpr std::size_t kBuildIdBytesMax = 64;
constexpr std::uint32_t kNoteAlign = 4;

struct Image {
  const link_map* map;
  const std::uint8_t* begin;  // of its first segment, which has the file's header
};

#if defined(__GLIBC__) && __GLIBC_PREREQ(2, 35)
bool FindImage(std::uintptr_t address, Image& image) {
  dl_find_object found;
  if (_dl_find_object(reinterpret_cast<void*>(address), &found) != 0) return false;
  image = {found.dlfo_link_map, static_cast<const std::uint8_t*>(found.dlfo_map_start)};
  return image.map != nullptr;
}
#else
bool FindImage(std::uintptr_t address, Image& image) {
  Dl_info info{};
  void* map = nullptr;
  if (dladdr1(reinterpret_cast<void*>(address), &info, &map, RTLD_DL_LINKMAP) == 0) return false;
  image = {static_cast<const link_map*>(map), static_cast<const std::uint8_t*>(info.dli_fbase)};
  return image.map != nullptr;
}
#endif

// Looks for the build id among the notes of [at, end).
void ReadNotes(const std::uint8_t* at, const std::uint8_t* end, LoadedModule& module) {
  const auto padded = [](std::size_t size) { return (size + kNoteAlign - 1) & ~(kNoteAlign - 1); };
  while (static_cast<std::size_t>(end - at) >= sizeof(ElfW(Nhdr))) {
    ElfW(Nhdr) note;
    std::memcpy(&note, at, sizeof note);
    at += sizeof note;
    const auto room = static_cast<std::size_t>(end - at);
    const std::size_t name = padded(note.n_namesz);
    if (name > room || note.n_descsz > room - name) return;
    if (note.n_type == NT_GNU_BUILD_ID && note.n_namesz == sizeof ELF_NOTE_GNU &&
        std::memcmp(at, ELF_NOTE_GNU, sizeof ELF_NOTE_GNU) == 0) {
      module.buildId = at + name;
      module.buildIdBytes = note.n_descsz <= kBuildIdBytesMax ? note.n_descsz : 0;
      return;
    }
    const std::size_t description = padded(note.n_descsz);
    if (description > room - name) return;
    at += name + description;
  }
}

// Is the whole of `part` in memory, and readable?
bool IsLoaded(const ElfW(Phdr) * heads, unsigned count, const ElfW(Phdr) & part) {
  for (unsigned i = 0; i < count; ++i) {
    const ElfW(Phdr)& load = heads[i];
    if (load.p_type != PT_LOAD || (load.p_flags & PF_R) == 0) continue;
    if (part.p_vaddr >= load.p_vaddr && part.p_vaddr - load.p_vaddr <= load.p_filesz &&
        part.p_filesz <= load.p_filesz - (part.p_vaddr - load.p_vaddr))
      return true;
  }
  return false;
}

struct Heads {
  const ElfW(Phdr) * at = nullptr;
  unsigned count = 0;
};

// The program headers follow the header as good as always. Further pages may not be mapped.
// The begin of a program that is linked statically is that of its code, without a header.
Heads HeadsOf(const Image& image) {
  const auto* const header = reinterpret_cast<const ElfW(Ehdr)*>(image.begin);
  if (std::memcmp(header->e_ident, ELFMAG, SELFMAG) != 0) {
    const bool program = !image.map->l_name || *image.map->l_name == '\0';
    const auto* const heads = reinterpret_cast<const ElfW(Phdr)*>(getauxval(AT_PHDR));
    if (!program || !heads || getauxval(AT_PHENT) != sizeof(ElfW(Phdr))) return {};
    return {heads, static_cast<unsigned>(getauxval(AT_PHNUM))};
  }
  const std::size_t most = (kHeaderPageBytes - sizeof *header) / sizeof(ElfW(Phdr));
  if (header->e_phentsize != sizeof(ElfW(Phdr)) || header->e_phnum > most ||
      header->e_phoff > kHeaderPageBytes - header->e_phnum * sizeof(ElfW(Phdr)))
    return {};
  return {reinterpret_cast<const ElfW(Phdr)*>(image.begin + header->e_phoff), header->e_phnum};
}

void ReadBuildId(const Image& image, LoadedModule& module) {
  const Heads heads = HeadsOf(image);
  for (unsigned i = 0; i < heads.count && module.buildIdBytes == 0; ++i) {
    const ElfW(Phdr)& head = heads.at[i];
    if (head.p_type != PT_NOTE || !IsLoaded(heads.at, heads.count, head)) continue;
    const auto* const notes = reinterpret_cast<const std::uint8_t*>(module.bias + head.p_vaddr);
    ReadNotes(notes, notes + head.p_filesz, module);
  }
}

}  // namespace

bool FindModule(std::uintptr_t address, LoadedModule& module) {
  Image image{};
  if (!FindImage(address, image)) return false;
  module = {};
  module.key = image.map;
  module.path = image.map->l_name ? image.map->l_name : "";
  module.bias = image.map->l_addr;
  ReadBuildId(image, module);
  return true;
}
