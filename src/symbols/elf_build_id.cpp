#include "symbols/elf_build_id.h"

#include <elf.h>
#include <unistd.h>

#include <cstring>
#include <string_view>
#include <vector>

namespace {

constexpr std::size_t kHeadersMax = 512;  // of segments, and of sections
constexpr std::size_t kNoteBytesMax = 64 * 1024;
constexpr std::size_t kIdBytesMax = 64;

// Numbers of the file, in its word size and byte order.
class ElfNumbers {
 public:
  ElfNumbers(bool wide, bool big) : m_wide(wide), m_big(big) {}

  bool IsWide() const { return m_wide; }
  std::uint64_t At(const std::uint8_t* bytes, std::size_t size) const {
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < size; ++i) number = number << 8 | bytes[m_big ? i : size - 1 - i];
    return number;
  }

 private:
  bool m_wide, m_big;
};

// A table of headers, and the offset and size of what its headers of one type describe.
struct Table {
  std::uint64_t at;
  std::size_t count, entryBytes;
  std::uint32_t type;
  std::size_t typeAt, offsetAt, sizeAt;
};

class BuildIdSearch {
 public:
  BuildIdSearch(const ReadElfBytes& read, ElfNumbers numbers) : m_read(read), m_numbers(numbers) {}

  // A file with separate debug information keeps its notes only by their sections.
  std::string Find(const std::uint8_t* header) const {
    const bool wide = m_numbers.IsWide();
    const auto half = [&](std::size_t at) { return m_numbers.At(header + at, 2); };
    const Table sections = {m_numbers.At(header + (wide ? 40 : 32), wide ? 8 : 4),
                            half(wide ? 60 : 48),
                            wide ? sizeof(Elf64_Shdr) : sizeof(Elf32_Shdr),
                            SHT_NOTE,
                            4,
                            wide ? 24u : 16u,
                            wide ? 32u : 20u};
    const Table segments = {m_numbers.At(header + (wide ? 32 : 28), wide ? 8 : 4),
                            half(wide ? 56 : 44),
                            wide ? sizeof(Elf64_Phdr) : sizeof(Elf32_Phdr),
                            PT_NOTE,
                            0,
                            wide ? 8u : 4u,
                            wide ? 32u : 16u};
    std::string id = FindIn(sections);
    return id.empty() ? FindIn(segments) : id;
  }

 private:
  std::string FindIn(const Table& table) const {
    std::uint8_t entry[sizeof(Elf64_Shdr)];
    const std::size_t word = m_numbers.IsWide() ? 8 : 4;
    for (std::size_t i = 0; i < table.count && i < kHeadersMax; ++i) {
      if (!m_read(table.at + i * table.entryBytes, entry, table.entryBytes)) return {};
      if (m_numbers.At(entry + table.typeAt, 4) != table.type) continue;
      const std::uint64_t size = m_numbers.At(entry + table.sizeAt, word);
      if (size > kNoteBytesMax) continue;
      std::vector<std::uint8_t> notes(static_cast<std::size_t>(size));
      if (!m_read(m_numbers.At(entry + table.offsetAt, word), notes.data(), notes.size())) continue;
      if (std::string id = FindAmong(notes); !id.empty()) return id;
    }
    return {};
  }

  std::string FindAmong(const std::vector<std::uint8_t>& notes) const {
    constexpr std::size_t kHeadBytes = 12;
    std::size_t at = 0;
    while (notes.size() - at >= kHeadBytes) {
      const std::uint8_t* const head = notes.data() + at;
      const std::uint64_t nameBytes = m_numbers.At(head, 4), idBytes = m_numbers.At(head + 4, 4);
      const std::uint64_t idAt = kHeadBytes + Padded(nameBytes);
      const std::uint64_t room = notes.size() - at;
      if (idAt > room || idBytes > room - idAt) return {};
      if (m_numbers.At(head + 8, 4) == NT_GNU_BUILD_ID && nameBytes == sizeof ELF_NOTE_GNU &&
          std::memcmp(head + kHeadBytes, ELF_NOTE_GNU, sizeof ELF_NOTE_GNU) == 0)
        return Digits(head + idAt, static_cast<std::size_t>(idBytes));
      if (Padded(idBytes) > room - idAt) return {};
      at += static_cast<std::size_t>(idAt + Padded(idBytes));
    }
    return {};
  }

  static std::uint64_t Padded(std::uint64_t size) { return (size + 3) & ~std::uint64_t{3}; }
  static std::string Digits(const std::uint8_t* bytes, std::size_t count) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string digits;
    for (std::size_t i = 0; i < count && count <= kIdBytesMax; ++i)
      digits.append({kDigits[bytes[i] / 16], kDigits[bytes[i] % 16]});
    return digits;
  }

  const ReadElfBytes& m_read;
  ElfNumbers m_numbers;
};

}  // namespace

std::string ElfBuildId(const ReadElfBytes& read) {
  std::uint8_t header[sizeof(Elf64_Ehdr)] = {};
  if (!read(0, header, sizeof(Elf32_Ehdr)) || std::memcmp(header, ELFMAG, SELFMAG) != 0) return {};
  const bool wide = header[EI_CLASS] == ELFCLASS64, big = header[EI_DATA] == ELFDATA2MSB;
  if (!wide && header[EI_CLASS] != ELFCLASS32) return {};
  if (wide && !read(0, header, sizeof header)) return {};
  return BuildIdSearch(read, ElfNumbers(wide, big)).Find(header);
}

std::string ElfBuildId(int descriptor) {
  return ElfBuildId([descriptor](std::uint64_t offset, void* to, std::size_t size) {
    if (offset > static_cast<std::uint64_t>(INT64_MAX)) return false;
    return pread(descriptor, to, size, static_cast<off_t>(offset)) == static_cast<ssize_t>(size);
  });
}
